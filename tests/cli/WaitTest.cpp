#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tool/Wait.h"

namespace quorvix::cli {
namespace {

WaitPolicy policyWithin(std::chrono::steady_clock::duration timeout) {
  WaitPolicy policy;
  policy.timeout = timeout;
  policy.slice = std::chrono::milliseconds(1);
  return policy;
}

TEST(WaitTest, DeliveredValueEndsTheWaitAndOnlyTheFirstDeliveryCounts) {
  Handoff<std::string> slot;
  slot.deliver("first");
  slot.deliver("second");
  auto outcome = awaitCompletion(slot, policyWithin(std::chrono::hours(1)));
  ASSERT_TRUE(outcome.value.has_value());
  EXPECT_EQ(*outcome.value, "first");
  EXPECT_FALSE(outcome.failure.has_value());
  EXPECT_FALSE(outcome.timedOut());

  // A value from another thread reaches a waiter that is already waiting.
  auto shared = std::make_shared<Handoff<int>>();
  std::thread deliverer([shared] { shared->deliver(42); });
  auto fromThread = awaitCompletion(*shared, policyWithin(std::chrono::hours(1)));
  deliverer.join();
  ASSERT_TRUE(fromThread.value.has_value());
  EXPECT_EQ(*fromThread.value, 42);
}

TEST(WaitTest, PolledFailureEndsAWaitWhoseCompletionNeverComes) {
  Handoff<int> slot;
  int polls = 0;
  auto policy = policyWithin(std::chrono::hours(1));
  policy.failure = [&polls]() -> std::optional<QXError> {
    if (++polls < 3) return std::nullopt;
    return QXError{"NSURLErrorDomain", -1004, {}};
  };
  auto outcome = awaitCompletion(slot, policy);
  ASSERT_TRUE(outcome.failure.has_value());
  EXPECT_EQ(outcome.failure->code, -1004);
  EXPECT_EQ(polls, 3);
  EXPECT_FALSE(outcome.value.has_value());
  EXPECT_FALSE(outcome.timedOut());

  // A value that is there wins over a failure reported at the same time.
  Handoff<int> both;
  both.deliver(7);
  policy.failure = [] { return std::optional<QXError>(QXError{"com.quorvix", 500, {}}); };
  auto won = awaitCompletion(both, policy);
  ASSERT_TRUE(won.value.has_value());
  EXPECT_FALSE(won.failure.has_value());
}

TEST(WaitTest, NothingWithinTheTimeOutIsATimeOut) {
  Handoff<int> slot;
  auto policy = policyWithin(std::chrono::milliseconds(30));
  policy.failure = [] { return std::optional<QXError>{}; };
  auto outcome = awaitCompletion(slot, policy);
  EXPECT_TRUE(outcome.timedOut());
  EXPECT_FALSE(outcome.value.has_value());

  // A zero time-out still takes a value that is already there.
  Handoff<int> ready;
  ready.deliver(1);
  EXPECT_TRUE(awaitCompletion(ready, policyWithin(std::chrono::steady_clock::duration::zero())).value.has_value());
  Handoff<int> empty;
  EXPECT_TRUE(awaitCompletion(empty, policyWithin(std::chrono::steady_clock::duration::zero())).timedOut());
}

TEST(WaitTest, TicksRunBetweenSlicesWithTheTimeWaitedSoFar) {
  Handoff<int> slot;
  auto policy = policyWithin(std::chrono::hours(1));
  std::vector<std::chrono::steady_clock::duration> waited;
  // The third tick delivers, so the wait ends with that value and no further tick.
  policy.tick = [&](std::chrono::steady_clock::duration soFar) {
    waited.push_back(soFar);
    if (waited.size() == 3) slot.deliver(99);
  };
  auto outcome = awaitCompletion(slot, policy);
  ASSERT_TRUE(outcome.value.has_value());
  EXPECT_EQ(*outcome.value, 99);
  ASSERT_EQ(waited.size(), 3u);
  EXPECT_LE(waited[0], waited[1]);
  EXPECT_LE(waited[1], waited[2]);
  EXPECT_GT(waited[0], std::chrono::steady_clock::duration::zero());
}

TEST(WaitTest, CommandLineSecondsBecomeBoundedDurations) {
  EXPECT_EQ(secondsToDuration(1.5), std::chrono::milliseconds(1500));
  EXPECT_EQ(secondsToDuration(0), std::chrono::steady_clock::duration::zero());
  EXPECT_EQ(secondsToDuration(-4), std::chrono::steady_clock::duration::zero());
  // Absurd values are held short of overflowing the clock.
  const auto huge = secondsToDuration(1e300);
  EXPECT_GT(huge, std::chrono::hours(24 * 365));
  EXPECT_GT(std::chrono::steady_clock::now() + huge, std::chrono::steady_clock::now());
}

}  // namespace
}  // namespace quorvix::cli
