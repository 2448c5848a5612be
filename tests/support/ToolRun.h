#pragma once
// The `quorvix` tool run in-process with text streams, as a pipeline runs it.

#include <boost/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tool/CliApp.h"

namespace quorvix::testing {

/// What one run of the tool gave.
struct ToolRun {
  int code = -1;
  std::string out;
  std::string err;
  /// Every output line that reads as JSON, in order.
  std::vector<boost::json::value> lines;
};

/// Runs the tool with `arguments`, `input` on its standard input and no terminal.
inline ToolRun runTool(const std::vector<std::string>& arguments, const std::string& input = "") {
  std::istringstream in(input);
  std::ostringstream out, err;
  ToolRun run;
  run.code = cli::runTool(arguments, cli::Streams{in, out, err, cli::TerminalInfo{}});
  run.out = out.str();
  run.err = err.str();
  std::istringstream lines(run.out);
  for (std::string line; std::getline(lines, line);) {
    boost::system::error_code error;
    auto value = boost::json::parse(line, error);
    if (!error) run.lines.push_back(std::move(value));
  }
  return run;
}

}  // namespace quorvix::testing
