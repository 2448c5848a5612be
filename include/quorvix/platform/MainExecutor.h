#pragma once
/// @file
/// The host's "main queue": where the engine delivers host-facing notifications.

#include <functional>

namespace quorvix {

/// Runs tasks one after the other on the host's main thread. An iOS wrapper
/// posts to the main dispatch queue; the default runs one serial dispatcher
/// thread; tests install a `ManualExecutor` and drain it.
class MainExecutor {
 public:
  virtual ~MainExecutor() = default;
  /// Queues the task; never runs it inline on the caller's stack.
  virtual void post(std::function<void()> task) = 0;
};

}  // namespace quorvix
