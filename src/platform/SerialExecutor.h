#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "quorvix/platform/MainExecutor.h"

namespace quorvix::detail {

/// The default main executor: one dispatcher thread running tasks in order.
/// Tasks still queued when it is destroyed are dropped.
class SerialExecutor : public MainExecutor {
 public:
  SerialExecutor();
  ~SerialExecutor() override;
  void post(std::function<void()> task) override;

 private:
  void run();

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> tasks_;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace quorvix::detail
