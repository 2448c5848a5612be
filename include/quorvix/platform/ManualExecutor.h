#pragma once
/// @file
/// A main executor that runs tasks only when asked: for tests and for hosts
/// with their own run loop.

#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

#include "quorvix/platform/MainExecutor.h"

namespace quorvix {

/// Queues posted tasks until `drain()` runs them on the calling thread.
class ManualExecutor : public MainExecutor {
 public:
  void post(std::function<void()> task) override;
  /// Runs queued tasks (and tasks they post) until the queue is empty; returns how many ran.
  std::size_t drain();
  /// Tasks waiting.
  std::size_t pending() const;

 private:
  mutable std::mutex mutex_;
  std::deque<std::function<void()>> tasks_;
};

}  // namespace quorvix
