#pragma once
/// @file
/// A scheduler driven by a virtual clock: delayed calls fire when the clock is advanced.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "quorvix/platform/Scheduler.h"

namespace quorvix {

/// Keeps delayed calls until `advance` moves its clock past their time; they
/// then run on the thread that advances, in time order (ties in the order
/// they were scheduled). Lets a test run a 300-second keep-alive in microseconds.
class VirtualScheduler : public Scheduler {
 public:
  void schedule(const void* owner, double delaySeconds, std::function<void()> task) override;
  void cancelAll(const void* owner) override;

  /// Moves the clock forward and runs every task that falls due, including
  /// tasks scheduled by those tasks within the same span.
  void advance(double seconds);
  /// The virtual time in seconds since creation.
  double now() const;
  /// Tasks waiting.
  std::size_t pending() const;
  /// The delay from now to the earliest waiting task, if any.
  std::optional<double> nextDelay() const;

 private:
  struct Entry {
    const void* owner;
    std::function<void()> task;
  };
  mutable std::mutex mutex_;
  double now_ = 0;
  uint64_t sequence_ = 0;
  std::multimap<std::pair<double, uint64_t>, Entry> tasks_;
};

}  // namespace quorvix
