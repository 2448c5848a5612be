#include "quorvix/platform/VirtualScheduler.h"

#include <algorithm>
#include <cmath>

namespace quorvix {

void VirtualScheduler::schedule(const void* owner, double delaySeconds, std::function<void()> task) {
  std::lock_guard lock(mutex_);
  const double delay = std::isfinite(delaySeconds) ? std::max(0.0, delaySeconds) : 0.0;
  tasks_.emplace(std::make_pair(now_ + delay, sequence_++), Entry{owner, std::move(task)});
}

void VirtualScheduler::cancelAll(const void* owner) {
  std::lock_guard lock(mutex_);
  std::erase_if(tasks_, [owner](const auto& item) { return item.second.owner == owner; });
}

void VirtualScheduler::advance(double seconds) {
  double target;
  {
    std::lock_guard lock(mutex_);
    target = now_ + seconds;
  }
  for (;;) {
    std::function<void()> task;
    {
      std::lock_guard lock(mutex_);
      auto first = tasks_.begin();
      if (first == tasks_.end() || first->first.first > target) {
        now_ = target;
        return;
      }
      now_ = first->first.first;
      task = std::move(first->second.task);
      tasks_.erase(first);
    }
    task();
  }
}

double VirtualScheduler::now() const {
  std::lock_guard lock(mutex_);
  return now_;
}

std::size_t VirtualScheduler::pending() const {
  std::lock_guard lock(mutex_);
  return tasks_.size();
}

std::optional<double> VirtualScheduler::nextDelay() const {
  std::lock_guard lock(mutex_);
  if (tasks_.empty()) return std::nullopt;
  return tasks_.begin()->first.first - now_;
}

}  // namespace quorvix
