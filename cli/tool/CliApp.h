#pragma once
/// @file
/// The whole tool as a function of its arguments and streams.

#include <iosfwd>
#include <string>
#include <vector>

#include "tool/Console.h"

namespace quorvix::cli {

/// The streams a run reads and writes, and whether they are terminals.
struct Streams {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
  TerminalInfo terminal;
};

/// Runs `quorvix` with `arguments` (without the program name) and returns the
/// process exit code. Options are checked before any process-wide state
/// (log sink, host information, service hosts) changes, so a run refused
/// with a usage error leaves the process as it was.
int runTool(const std::vector<std::string>& arguments, const Streams& streams);

}  // namespace quorvix::cli
