// quorvix: the engine's command-line tool. See `quorvix --help`.

#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "tool/CliApp.h"

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
  const quorvix::cli::Streams streams{
      std::cin, std::cout, std::cerr,
      quorvix::cli::TerminalInfo{isatty(STDIN_FILENO) == 1, isatty(STDOUT_FILENO) == 1}};
  const int code = quorvix::cli::runTool(arguments, streams);
  std::cout.flush();
  return code;
}
