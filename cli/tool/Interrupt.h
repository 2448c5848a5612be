#pragma once
/// @file
/// Ending a long wait (the sandbox in the foreground, --linger) cleanly on
/// Ctrl-C or SIGTERM instead of being killed mid-way.

#include <chrono>

namespace quorvix::cli {

/// While one exists, SIGINT and SIGTERM only set a flag; the previous
/// handlers come back when it is destroyed. One at a time.
class InterruptCatcher {
 public:
  InterruptCatcher();
  ~InterruptCatcher();
  InterruptCatcher(const InterruptCatcher&) = delete;
  InterruptCatcher& operator=(const InterruptCatcher&) = delete;

  /// Whether a signal arrived since this catcher was made.
  bool caught() const;
  /// Sleeps `duration` in short slices; returns early (false) when a signal arrives.
  bool sleepFor(std::chrono::steady_clock::duration duration) const;
  /// Sleeps until a signal arrives.
  void waitForSignal() const;
};

}  // namespace quorvix::cli
