#pragma once
/// @file
/// The process exit codes of the `quorvix` tool.

namespace quorvix::cli {

/// How a command (and the whole run) ended. The numbers are the process exit codes.
enum class ExitCode : int {
  Success = 0,
  EngineError = 1,  ///< the engine (or the service through it) reported an error
  Usage = 2,        ///< the command line or a shell line could not be used
  TimedOut = 3,     ///< an exchange did not complete within --timeout
};

/// The worse of two outcomes: the higher exit code wins, so a run that timed
/// out anywhere ends with 3, else a usage error with 2, else an engine error with 1.
constexpr ExitCode worse(ExitCode a, ExitCode b) {
  return static_cast<int>(a) >= static_cast<int>(b) ? a : b;
}

constexpr int toInt(ExitCode code) { return static_cast<int>(code); }

}  // namespace quorvix::cli
