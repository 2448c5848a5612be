#pragma once
/// @file
/// Waiting on the main thread for a completion that arrives on another thread,
/// with a time-out and a way to notice failures that never complete.

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "quorvix/core/QXError.h"

namespace quorvix::cli {

/// A one-shot slot a completion fills from any thread. Keep it in a
/// `std::shared_ptr` captured by the completion: the completion may run after
/// the waiter has given up.
template <class T>
class Handoff {
 public:
  /// Stores the value; only the first delivery counts.
  void deliver(T value) {
    {
      std::lock_guard lock(mutex_);
      if (value_) return;
      value_ = std::move(value);
    }
    ready_.notify_all();
  }

  /// Waits at most `slice` for the value and takes it when there is one.
  std::optional<T> take(std::chrono::steady_clock::duration slice) {
    std::unique_lock lock(mutex_);
    ready_.wait_for(lock, slice, [this] { return value_.has_value(); });
    return std::exchange(value_, std::nullopt);
  }

 private:
  std::mutex mutex_;
  std::condition_variable ready_;
  std::optional<T> value_;
};

/// How one wait ends: with the value, with a failure noticed by polling, or with neither in time.
template <class T>
struct WaitOutcome {
  std::optional<T> value;
  std::optional<QXError> failure;

  bool timedOut() const { return !value && !failure; }
};

/// How to wait.
struct WaitPolicy {
  std::chrono::steady_clock::duration timeout = std::chrono::seconds(30);
  /// Asked between slices; a failure it returns ends the wait (for operations
  /// whose completion is dropped on failure). May be empty.
  std::function<std::optional<QXError>()> failure;
  /// Called between slices with the time waited so far (the spinner). May be empty.
  std::function<void(std::chrono::steady_clock::duration)> tick;
  std::chrono::steady_clock::duration slice = std::chrono::milliseconds(20);
};

/// Waits until the value arrives, `policy.failure` reports something or the
/// time-out passes. A value that arrives wins over a failure seen in the same slice.
template <class T>
WaitOutcome<T> awaitCompletion(Handoff<T>& slot, const WaitPolicy& policy) {
  const auto start = std::chrono::steady_clock::now();
  const auto deadline = start + policy.timeout;
  for (;;) {
    const auto now = std::chrono::steady_clock::now();
    const auto slice = std::min(policy.slice, std::max(deadline - now, std::chrono::steady_clock::duration::zero()));
    if (auto value = slot.take(slice)) return {std::move(value), std::nullopt};
    if (policy.failure) {
      if (auto failure = policy.failure()) return {std::nullopt, std::move(failure)};
    }
    const auto after = std::chrono::steady_clock::now();
    if (after >= deadline) return {};
    if (policy.tick) policy.tick(after - start);
  }
}

/// A duration from seconds given on the command line, held to [0, ten years]
/// so that adding it to the clock's now cannot overflow.
inline std::chrono::steady_clock::duration secondsToDuration(double seconds) {
  constexpr double kLongest = 10.0 * 365 * 24 * 3600;
  if (!(seconds > 0)) return std::chrono::steady_clock::duration::zero();
  return std::chrono::duration_cast<std::chrono::steady_clock::duration>(
      std::chrono::duration<double>(std::min(seconds, kLongest)));
}

}  // namespace quorvix::cli
