// The session under threads: one "hello.js" per engine however many requests
// race for it, and `stop` abandoning a start in flight.
#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <thread>
#include <vector>

#include "quorvix/engine/Quorvix.h"
#include "support/PlatformFixture.h"
#include "support/RecordingConnectionHandler.h"

namespace quorvix {
namespace {

using testing::Reply;

constexpr const char* kHello = "/api/widget/v1/hello.js";
constexpr const char* kSearch = "/api/widget/v1/q.js";

Reply hello(const std::string& id) { return Reply::json(R"({"sessionId":")" + id + R"(","timeout":600,"status":200})"); }

class SessionConcurrencyTest : public testing::PlatformFixture {
 protected:
  // An engine whose service answers "hello.js" and searches at once, on the calling thread.
  std::pair<std::shared_ptr<Quorvix>, std::shared_ptr<testing::RecordingConnectionHandler>> answeringEngine() {
    auto handler = std::make_shared<testing::RecordingConnectionHandler>();
    handler->autoReply(kHello, {hello("s1")});
    handler->autoReply(kSearch, {Reply::json("{}")});
    auto params = std::make_shared<AccountParams>();
    params->setAccount("acme");
    auto engine = Quorvix::create();
    engine->setConnectionHandler(handler);
    engine->setAccountParams(params);
    return {engine, handler};
  }

  static URLComponents search(const std::shared_ptr<Quorvix>& engine) {
    auto url = engine->accountParams()->baseUrlComp().value();
    url.appendPath(kSearch);
    return url;
  }

  // Runs `rounds` rounds on `threads` threads made once: `setup` on this
  // thread, then `work(thread index)` on every thread at once, then `check`.
  template <class Setup, class Work, class Check>
  static void inRounds(int rounds, int threads, Setup setup, Work work, Check check) {
    std::barrier sync(threads + 1);
    std::vector<std::jthread> workers;
    for (int t = 0; t < threads; ++t) {
      workers.emplace_back([&, t] {
        for (int round = 0; round < rounds; ++round) {
          sync.arrive_and_wait();
          work(t);
          sync.arrive_and_wait();
        }
      });
    }
    for (int round = 0; round < rounds; ++round) {
      setup(round);
      sync.arrive_and_wait();
      sync.arrive_and_wait();
      check(round);
    }
  }

  static std::size_t count(const testing::RecordingConnectionHandler& handler, std::string_view path) {
    std::size_t n = 0;
    for (const auto& request : handler.requests()) n += request.url.find(path) != std::string::npos ? 1 : 0;
    return n;
  }
};

TEST_F(SessionConcurrencyTest, RacingFirstRequestsSendOneHelloAndAllComplete) {
  constexpr int kTrials = 150;
  constexpr int kThreads = 8;
  int extraHellos = 0;
  std::shared_ptr<Quorvix> engine;
  std::atomic<int> completions = 0;
  // The same threads race in every trial: a fresh engine each time.
  inRounds(kTrials, kThreads,
           [&](int) {
             engine = answeringEngine().first;
             completions = 0;
           },
           [&](int) { engine->executeRequest(search(engine), [&completions](QXResponse) { ++completions; }); },
           [&](int trial) {
             auto handler = std::static_pointer_cast<testing::RecordingConnectionHandler>(engine->connectionHandler());
             extraHellos += static_cast<int>(count(*handler, kHello)) - 1;
             EXPECT_EQ(completions.load(), kThreads) << "trial " << trial;
             EXPECT_EQ(clock->pending(), 1u) << "one keep-alive chain per engine, trial " << trial;
             engine->stop();
           });
  EXPECT_EQ(extraHellos, 0) << "a second hello.js was sent while a session was open or opening";
}

TEST_F(SessionConcurrencyTest, StopAbandonsTheStartInFlight) {
  auto handler = std::make_shared<testing::RecordingConnectionHandler>();
  auto params = std::make_shared<AccountParams>();
  params->setAccount("acme");
  auto engine = Quorvix::create();
  engine->setConnectionHandler(handler);
  engine->setAccountParams(params);

  int completions = 0;
  engine->executeRequest(search(engine), [&completions](QXResponse) { ++completions; });
  engine->stop();
  // The request after stop opens its own session; the abandoned answer arrives first.
  engine->executeRequest(search(engine), [&completions](QXResponse) { ++completions; });
  EXPECT_EQ(count(*handler, kHello), 2u);

  ASSERT_TRUE(handler->answer(kHello, hello("old")));
  EXPECT_FALSE(engine->sessionId()) << "an abandoned start sets no session";
  EXPECT_EQ(clock->pending(), 0u) << "an abandoned start schedules no keep-alive";
  EXPECT_EQ(count(*handler, kSearch), 0u) << "the request that waited for it is dropped";

  ASSERT_TRUE(handler->answer(kHello, hello("new")));
  EXPECT_EQ(engine->sessionId(), "new");
  EXPECT_EQ(clock->pending(), 1u);
  ASSERT_EQ(count(*handler, kSearch), 1u);
  EXPECT_NE(handler->requests().back().url.find("sid=new"), std::string::npos);
  ASSERT_TRUE(handler->answer(kSearch, Reply::json("{}")));
  EXPECT_EQ(completions, 1);

  // A failed answer of an abandoned start does not overwrite the error either.
  engine->stop();
  engine->startSession(nullptr);
  engine->stop();
  ASSERT_TRUE(handler->answer(kHello, Reply::json(R"({"status":503})")));
  EXPECT_FALSE(engine->sessionError());
}

TEST_F(SessionConcurrencyTest, NoKeepAliveOutlivesAStopThatRacesTheSessionStart) {
  constexpr int kTrials = 120;
  std::shared_ptr<Quorvix> engine;
  inRounds(kTrials, 2, [&](int) { engine = answeringEngine().first; },
           [&](int thread) {
             if (thread == 0) {
               // A continuation that takes a moment, as a request sent in the new session does.
               engine->startSession([] { std::this_thread::sleep_for(std::chrono::microseconds(50)); });
             } else {
               engine->stop();
             }
           },
           [&](int trial) {
             // Either the stop came first and the session is open with its
             // chain, or the stop ended both.
             const std::size_t chains = engine->sessionId() ? 1 : 0;
             EXPECT_EQ(clock->pending(), chains) << "trial " << trial;
             engine->stop();
             EXPECT_EQ(clock->pending(), 0u);
           });
}

TEST_F(SessionConcurrencyTest, RequestsRejectedTogetherReopenOneSession) {
  auto handler = std::make_shared<testing::RecordingConnectionHandler>();
  auto params = std::make_shared<AccountParams>();
  params->setAccount("acme");
  auto engine = Quorvix::create();
  engine->setConnectionHandler(handler);
  engine->setAccountParams(params);
  engine->startSession(nullptr);
  ASSERT_TRUE(handler->answer(kHello, hello("s1")));

  int completions = 0;
  for (int i = 0; i < 3; ++i) engine->executeRequest(search(engine), [&completions](QXResponse) { ++completions; });
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(handler->answer(kSearch, Reply::json(R"({"status":400})")));
  // Every probe says the session is gone. The first reopens it; the later
  // probes answer once the new session is open, and their requests use it.
  ASSERT_TRUE(handler->answer("/keepAlive.js", Reply::json(R"({"status":400})", 400)));
  ASSERT_TRUE(handler->answer(kHello, hello("s2")));
  for (int i = 0; i < 2; ++i) ASSERT_TRUE(handler->answer("/keepAlive.js", Reply::json(R"({"status":400})", 400)));
  EXPECT_EQ(count(*handler, kHello), 2u);
  while (handler->answer(kSearch, Reply::json("{}"))) {
  }
  EXPECT_EQ(completions, 3);
  EXPECT_EQ(count(*handler, kSearch), 6u);
}

}  // namespace
}  // namespace quorvix
