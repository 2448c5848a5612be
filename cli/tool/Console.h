#pragma once
/// @file
/// The terminal the tool writes to: stdout, stderr, the spinner and the
/// engine's log lines, serialised so that lines from other threads never tear.

#include <chrono>
#include <iosfwd>
#include <mutex>
#include <string_view>

namespace quorvix::cli {

/// What the tool knows about the streams it was given.
struct TerminalInfo {
  bool stdinIsTerminal = false;
  bool stdoutIsTerminal = false;
};

/// Thread-safe writer over the tool's output and error streams. Engine log
/// lines may arrive on any thread; `detach()` makes later ones go nowhere, so
/// a log line that arrives after the tool is done touches no stream.
class Console {
 public:
  Console(std::ostream& out, std::ostream& err, TerminalInfo terminal);
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  /// Writes to stdout and flushes.
  void out(std::string_view text);
  /// Writes to stderr and flushes.
  void err(std::string_view text);
  /// One engine log line (a newline is added) on stderr; dropped once detached.
  void logLine(std::string_view line);

  /// Advances the spinner; it shows only on a terminal and only once a wait
  /// has lasted `kSpinnerAfter`. `waited` is how long the current wait has run.
  void spinnerTick(std::chrono::steady_clock::duration waited);
  /// Removes the spinner, if it shows.
  void spinnerClear();

  /// No stream is written after this returns.
  void detach();

  const TerminalInfo& terminal() const { return terminal_; }

  static constexpr std::chrono::milliseconds kSpinnerAfter{250};

 private:
  void clearSpinnerLocked();

  std::mutex mutex_;
  std::ostream* out_;
  std::ostream* err_;
  TerminalInfo terminal_;
  bool spinnerShown_ = false;
  unsigned spinnerFrame_ = 0;
  std::chrono::steady_clock::time_point lastFrame_{};
};

}  // namespace quorvix::cli
