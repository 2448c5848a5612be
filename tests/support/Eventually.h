#pragma once
// Waits for work that finishes on another thread.

#include <chrono>
#include <thread>

namespace quorvix::testing {

/// Polls `condition` until it holds or `limit` passes; the limit only keeps a
/// broken test from hanging, it is not a timing expectation.
template <class Condition>
bool eventually(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

}  // namespace quorvix::testing
