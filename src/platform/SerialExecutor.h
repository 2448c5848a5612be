#pragma once

#include <deque>
#include <functional>

#include "platform/WorkerThread.h"
#include "quorvix/platform/MainExecutor.h"

namespace quorvix::detail {

/// The default main executor: one dispatcher thread running tasks in order.
/// A task that throws is logged and the thread goes on. Tasks still queued
/// when it stops are dropped.
class SerialExecutor : public MainExecutor {
 public:
  SerialExecutor();
  ~SerialExecutor() override;
  /// Ends the thread: waits for a task under way, drops the others and every
  /// task handed over later. Idempotent; the destructor calls it.
  void stop();
  void post(std::function<void()> task) override;

 private:
  void run();

  WorkerThread worker_;
  std::deque<std::function<void()>> tasks_;  // guarded by `worker_.mutex`
};

}  // namespace quorvix::detail
