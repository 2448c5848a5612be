// The session under threads: one "hello.js" per engine however many requests
// race for it, and `stop` abandoning a start in flight.
#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <thread>
#include <vector>

#include "quorvix/engine/Quorvix.h"
#include "support/RecordedEngineFixture.h"

namespace quorvix {
namespace {

using testing::Reply;

using testing::helloReply;
using namespace testing::paths;

class SessionConcurrencyTest : public testing::RecordedEngineFixture {
 protected:
  void SetUp() override {
    RecordedEngineFixture::SetUp();
    engine->setAccountParams(params);
  }

  // An engine whose service answers "hello.js" and searches at once, on the calling thread.
  static std::shared_ptr<Quorvix> answeringEngine() {
    auto service = std::make_shared<testing::RecordingConnectionHandler>();
    service->autoReply(kHello, {helloReply("s1")});
    service->autoReply(kSearch, {Reply::json("{}")});
    auto account = std::make_shared<AccountParams>();
    account->setAccount("acme");
    auto answering = Quorvix::create();
    answering->setConnectionHandler(service);
    answering->setAccountParams(account);
    return answering;
  }

  static URLComponents search(const std::shared_ptr<Quorvix>& target) {
    auto url = target->accountParams()->baseUrlComp().value();
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
};

TEST_F(SessionConcurrencyTest, RacingFirstRequestsSendOneHelloAndAllComplete) {
  constexpr int kTrials = 150;
  constexpr int kThreads = 8;
  int extraHellos = 0;
  std::shared_ptr<Quorvix> fresh;
  std::atomic<int> completions = 0;
  // The same threads race in every trial: a fresh engine each time.
  inRounds(kTrials, kThreads,
           [&](int) {
             fresh = answeringEngine();
             completions = 0;
           },
           [&](int) { fresh->executeRequest(search(fresh), [&completions](QXResponse) { ++completions; }); },
           [&](int trial) {
             auto service = std::static_pointer_cast<testing::RecordingConnectionHandler>(fresh->connectionHandler());
             extraHellos += static_cast<int>(service->sentTo(kHello).size()) - 1;
             EXPECT_EQ(completions.load(), kThreads) << "trial " << trial;
             EXPECT_EQ(clock->pending(), 1u) << "one keep-alive chain per engine, trial " << trial;
             fresh->stop();
           });
  EXPECT_EQ(extraHellos, 0) << "a second hello.js was sent while a session was open or opening";
}

TEST_F(SessionConcurrencyTest, StopAbandonsTheStartInFlight) {
  int completions = 0;
  engine->executeRequest(search(engine), [&completions](QXResponse) { ++completions; });
  engine->stop();
  // The request after stop opens its own session; the abandoned answer arrives first.
  engine->executeRequest(search(engine), [&completions](QXResponse) { ++completions; });
  EXPECT_EQ(count(kHello), 2u);

  ASSERT_TRUE(handler->answer(kHello, helloReply("old")));
  EXPECT_FALSE(engine->sessionId()) << "an abandoned start sets no session";
  EXPECT_EQ(clock->pending(), 0u) << "an abandoned start schedules no keep-alive";
  EXPECT_EQ(count(kSearch), 0u) << "the request that waited for it is dropped";

  ASSERT_TRUE(handler->answer(kHello, helloReply("new")));
  EXPECT_EQ(engine->sessionId(), "new");
  EXPECT_EQ(clock->pending(), 1u);
  ASSERT_EQ(count(kSearch), 1u);
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
  std::shared_ptr<Quorvix> fresh;
  inRounds(kTrials, 2, [&](int) { fresh = answeringEngine(); },
           [&](int thread) {
             if (thread == 0) {
               // A continuation that takes a moment, as a request sent in the new session does.
               fresh->startSession([] { std::this_thread::sleep_for(std::chrono::microseconds(50)); });
             } else {
               fresh->stop();
             }
           },
           [&](int trial) {
             // Either the stop came first and the session is open with its
             // chain, or the stop ended both.
             const std::size_t chains = fresh->sessionId() ? 1 : 0;
             EXPECT_EQ(clock->pending(), chains) << "trial " << trial;
             fresh->stop();
             EXPECT_EQ(clock->pending(), 0u);
           });
}

TEST_F(SessionConcurrencyTest, RequestsRejectedTogetherReopenOneSession) {
  engine->startSession(nullptr);
  ASSERT_TRUE(handler->answer(kHello, helloReply("s1")));

  int completions = 0;
  for (int i = 0; i < 3; ++i) engine->executeRequest(search(engine), [&completions](QXResponse) { ++completions; });
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(handler->answer(kSearch, Reply::json(R"({"status":400})")));
  // Every probe says the session is gone. The first reopens it; the later
  // probes answer once the new session is open, and their requests use it.
  ASSERT_TRUE(handler->answer("/keepAlive.js", Reply::json(R"({"status":400})", 400)));
  ASSERT_TRUE(handler->answer(kHello, helloReply("s2")));
  for (int i = 0; i < 2; ++i) ASSERT_TRUE(handler->answer("/keepAlive.js", Reply::json(R"({"status":400})", 400)));
  EXPECT_EQ(count(kHello), 2u);
  while (handler->answer(kSearch, Reply::json("{}"))) {
  }
  EXPECT_EQ(completions, 3);
  EXPECT_EQ(count(kSearch), 6u);
}

}  // namespace
}  // namespace quorvix
