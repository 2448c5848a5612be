#pragma once
/// @file
/// Delayed calls registered on an owner and cancelled together.

#include <functional>

namespace quorvix {

/// Runs a task after a delay. Tasks are registered on an owner (any address
/// that identifies it) and `cancelAll(owner)` drops every task of that owner
/// that has not started yet. The default runs one timer thread; tests install
/// a `VirtualScheduler` whose clock they advance.
class Scheduler {
 public:
  virtual ~Scheduler() = default;
  /// Runs `task` once, `delaySeconds` from now (a negative delay counts as 0).
  virtual void schedule(const void* owner, double delaySeconds, std::function<void()> task) = 0;
  /// Drops every pending task of `owner`.
  virtual void cancelAll(const void* owner) = 0;
};

}  // namespace quorvix
