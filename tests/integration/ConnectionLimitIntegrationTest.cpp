// Many session-bound requests at once on a fresh engine: one session start,
// a handful of connections, every request answered.
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "quorvix/search/QXSearchResponse.h"
#include "support/SandboxFixture.h"

namespace quorvix {
namespace {

#if defined(__SANITIZE_THREAD__)
constexpr int kSearches = 200;  // the thread sanitizer makes each one far slower
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
constexpr int kSearches = 200;
#else
constexpr int kSearches = 1000;
#endif
#else
constexpr int kSearches = 1000;
#endif
constexpr int kCallers = 4;

class ConnectionLimitIntegrationTest : public testing::SandboxFixture {};

TEST_F(ConnectionLimitIntegrationTest, ConcurrentSearchesShareAFewConnectionsAndAllSucceed) {
  std::atomic<int> answered{0};
  std::atomic<int> failed{0};
  std::vector<std::thread> callers;
  for (int c = 0; c < kCallers; ++c) {
    callers.emplace_back([&] {
      for (int i = 0; i < kSearches / kCallers; ++i) {
        engine->searchText("reset password", [&](std::shared_ptr<QXSearchResponse> response, std::optional<QXError> error) {
          if (error || !response) ++failed;
          ++answered;
        });
      }
    });
  }
  for (auto& caller : callers) caller.join();
  ASSERT_TRUE(testing::eventually([&] { return answered == kSearches; }, std::chrono::seconds(60)))
      << answered << " of " << kSearches << " answered";
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(service.requestsFor("/api/widget/v1/hello.js").size(), 1u);

  const auto searches = service.requestsFor("/api/widget/v1/q.js");
  EXPECT_EQ(searches.size(), static_cast<std::size_t>(kSearches));
  std::set<int> connections;
  for (const auto& request : searches) connections.insert(request.remotePort);
  EXPECT_LE(connections.size(), 8u);
}

}  // namespace
}  // namespace quorvix
