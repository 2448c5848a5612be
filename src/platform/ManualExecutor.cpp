#include "quorvix/platform/ManualExecutor.h"

namespace quorvix {

void ManualExecutor::post(std::function<void()> task) {
  std::lock_guard lock(mutex_);
  tasks_.push_back(std::move(task));
}

std::size_t ManualExecutor::drain() {
  std::size_t ran = 0;
  for (;;) {
    std::function<void()> task;
    {
      std::lock_guard lock(mutex_);
      if (tasks_.empty()) return ran;
      task = std::move(tasks_.front());
      tasks_.pop_front();
    }
    task();
    ++ran;
  }
}

std::size_t ManualExecutor::pending() const {
  std::lock_guard lock(mutex_);
  return tasks_.size();
}

}  // namespace quorvix
