#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

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

  std::mutex stopMutex_;  // serialises `stop`
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> tasks_;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace quorvix::detail
