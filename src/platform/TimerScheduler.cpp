#include "platform/TimerScheduler.h"

#include <algorithm>
#include <cmath>

#include "platform/Log.h"

namespace quorvix::detail {

TimerScheduler::TimerScheduler() { worker_.start([this] { run(); }); }

TimerScheduler::~TimerScheduler() { stop(); }

void TimerScheduler::stop() { worker_.stop(); }

void TimerScheduler::schedule(const void* owner, double delaySeconds, std::function<void()> task) {
  // Clamp to a day so an absurd delay cannot overflow the clock.
  const double seconds = std::isfinite(delaySeconds) ? std::clamp(delaySeconds, 0.0, 86400.0) : 0.0;
  const auto due = Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
  {
    std::lock_guard lock(worker_.mutex);
    if (worker_.stopping) return;  // nothing runs any more
    tasks_.emplace(std::make_pair(due, sequence_++), Entry{owner, std::move(task)});
  }
  worker_.wake.notify_one();
}

void TimerScheduler::cancelAll(const void* owner) {
  std::lock_guard lock(worker_.mutex);
  std::erase_if(tasks_, [owner](const auto& item) { return item.second.owner == owner; });
}

void TimerScheduler::run() {
  std::unique_lock lock(worker_.mutex);
  while (!worker_.stopping) {
    if (tasks_.empty()) {
      worker_.wake.wait(lock);
      continue;
    }
    auto first = tasks_.begin();
    // A copy: cancelAll may erase the entry while this thread waits.
    const auto due = first->first.first;
    if (due > Clock::now()) {
      worker_.wake.wait_until(lock, due);
      continue;
    }
    auto task = std::move(first->second.task);
    tasks_.erase(first);
    lock.unlock();
    runCatching("A delayed call", task);
    task = nullptr;  // its captures are released outside the lock
    lock.lock();
  }
}

}  // namespace quorvix::detail
