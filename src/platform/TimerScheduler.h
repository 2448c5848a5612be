#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "platform/WorkerThread.h"
#include "quorvix/platform/Scheduler.h"

namespace quorvix::detail {

/// The default scheduler: one timer thread that runs due tasks in time order.
/// A task that throws is logged and the thread goes on. Tasks still waiting
/// when it stops are dropped.
class TimerScheduler : public Scheduler {
 public:
  TimerScheduler();
  ~TimerScheduler() override;
  /// Ends the thread: waits for a task under way, drops the others and every
  /// task handed over later. Idempotent; the destructor calls it.
  void stop();
  void schedule(const void* owner, double delaySeconds, std::function<void()> task) override;
  void cancelAll(const void* owner) override;

 private:
  using Clock = std::chrono::steady_clock;
  struct Entry {
    const void* owner;
    std::function<void()> task;
  };
  void run();

  WorkerThread worker_;
  // Both guarded by `worker_.mutex`.
  std::multimap<std::pair<Clock::time_point, uint64_t>, Entry> tasks_;
  uint64_t sequence_ = 0;
};

}  // namespace quorvix::detail
