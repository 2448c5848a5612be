/// @file
/// The default transport under load: completions that block, idle threads.

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <future>
#include <string>
#include <thread>

#include "platform/TransportTestSupport.h"
#include "platform/curl/CurlTransport.h"
#include "quorvix/platform/QXDefaultConnectionHandler.h"
#include "support/Eventually.h"

namespace quorvix {
namespace {

using testing::eventually;
using testing::getRequest;
using testing::kHangGuard;
using testing::LoopbackServer;
using testing::openAndWait;
using testing::Outcome;

/// Voluntary and involuntary context switches of one thread of this process.
long contextSwitches(long threadId) {
  std::ifstream status("/proc/self/task/" + std::to_string(threadId) + "/status");
  long total = 0;
  for (std::string line; std::getline(status, line);) {
    if (line.find("ctxt_switches:") != std::string::npos) total += std::stol(line.substr(line.find(':') + 1));
  }
  return total;
}

TEST(DefaultTransportLoad, CompletionsThatBlockLeaveOthersAThread) {
  LoopbackServer server;
  server.http().Get("/data", [](const httplib::Request&, httplib::Response& res) {
    res.set_content("payload", "text/plain");
  });
  ASSERT_TRUE(server.start());
  QXDefaultConnectionHandler handler;

  // More blocked completions than any fixed pool of this machine's size has
  // workers, as a configuration completion waiting on slow reads would be.
  constexpr int kBlockers = 8;
  std::promise<void> release;
  std::shared_future<void> released = release.get_future().share();
  std::atomic<int> blocked{0};
  std::atomic<int> unblocked{0};
  for (int i = 0; i < kBlockers; ++i) {
    handler.open(getRequest(server.url("/data")), [&, released](std::string, std::optional<QXHTTPURLResponse>,
                                                                 std::optional<QXError>) {
      ++blocked;
      released.wait_for(2 * kHangGuard);
      ++unblocked;
    });
  }
  const bool allBlocked = eventually([&] { return blocked == kBlockers; }, kHangGuard);

  // An unrelated request completes while every one of them still blocks.
  const std::optional<Outcome> other = openAndWait(handler, getRequest(server.url("/data")));
  const int stillBlocked = blocked - unblocked;
  release.set_value();
  EXPECT_TRUE(allBlocked) << blocked << " of " << kBlockers << " blocked completions ever ran";
  ASSERT_TRUE(other);
  EXPECT_EQ(other->body, "payload");
  EXPECT_EQ(stillBlocked, kBlockers);
  EXPECT_TRUE(eventually([&] { return unblocked == kBlockers; }, kHangGuard));
}

TEST(DefaultTransportLoad, AnIdleTransportKeepsNoWorkersAndSleeps) {
  LoopbackServer server;
  server.http().Get("/data", [](const httplib::Request&, httplib::Response& res) {
    res.set_content("payload", "text/plain");
  });
  ASSERT_TRUE(server.start());
  detail::CurlTransport::Options options;
  options.completions.idleTimeout = std::chrono::milliseconds(50);
  detail::CurlTransport transport(options);

  std::promise<std::string> answered;
  transport.submit(getRequest(server.url("/data")), [&](std::string body, std::optional<QXHTTPURLResponse>,
                                                        std::optional<QXError>) { answered.set_value(body); });
  auto body = answered.get_future();
  ASSERT_EQ(body.wait_for(kHangGuard), std::future_status::ready);
  EXPECT_EQ(body.get(), "payload");
  EXPECT_TRUE(eventually([&] { return transport.completionThreads() == 0; }, kHangGuard))
      << transport.completionThreads() << " idle workers stay";

  // With nothing to do the I/O thread is not woken at all (it used to poll every second).
  server.stop();  // the kept-alive connection closes; let that be seen first
  const long ioThread = transport.ioThreadSystemId();
  ASSERT_NE(ioThread, 0);
  // On a busy machine seeing the close can take a while: wait until the
  // thread has been still for 100 ms, then watch it for longer than a second.
  long before = contextSwitches(ioThread);
  for (int round = 0; round < 100; ++round) {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const long now = contextSwitches(ioThread);
    if (now == before) break;
    before = now;
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(1200));
  EXPECT_EQ(contextSwitches(ioThread), before);

  // And it still answers afterwards, starting a worker again.
  std::promise<std::optional<QXError>> failed;
  transport.submit(getRequest(server.url("/data")), [&](std::string, std::optional<QXHTTPURLResponse>,
                                                        std::optional<QXError> error) { failed.set_value(error); });
  auto error = failed.get_future();
  ASSERT_EQ(error.wait_for(kHangGuard), std::future_status::ready);
  EXPECT_TRUE(error.get().has_value()) << "the server is gone";
}

}  // namespace
}  // namespace quorvix
