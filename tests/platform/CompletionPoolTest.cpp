/// @file
/// The completion pool on its own: growth, retirement and shutdown racing posts.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "platform/curl/CompletionPool.h"

namespace quorvix {
namespace {

using detail::CompletionPool;

TEST(CompletionPoolStress, EveryTaskRunsOnceWhileWorkersComeGoAndThePoolShutsDown) {
  constexpr int kPosters = 6;
  constexpr int kRounds = 4;
  constexpr int kPerPoster = 150;
  for (int round = 0; round < kRounds; ++round) {
    // Workers retire after a millisecond idle, so posts keep meeting workers
    // that are just leaving; the shutdown lands while posting goes on.
    auto pool = std::make_unique<CompletionPool>(CompletionPool::Limits{4, std::chrono::milliseconds(1)});
    std::vector<std::atomic<int>> runs(kPosters * kPerPoster);
    std::atomic<int> posted{0};
    std::vector<std::thread> posters;
    for (int p = 0; p < kPosters; ++p) {
      posters.emplace_back([&, p] {
        for (int i = 0; i < kPerPoster; ++i) {
          const int slot = p * kPerPoster + i;
          pool->post([&runs, slot, i] {
            if (i % 50 == 0) std::this_thread::sleep_for(std::chrono::microseconds(300));  // a blocking one
            ++runs[slot];
          });
          ++posted;
          if (i % 40 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(2));  // let workers retire
        }
      });
    }
    while (posted < kPosters * kPerPoster / 2) std::this_thread::yield();
    EXPECT_LE(pool->threadCount(), 4u);
    pool->shutdown();  // posts after this run on the posting thread
    for (auto& poster : posters) poster.join();
    pool.reset();
    for (int slot = 0; slot < kPosters * kPerPoster; ++slot) ASSERT_EQ(runs[slot], 1) << "task " << slot;
  }
}

}  // namespace
}  // namespace quorvix
