// Many threads and several engines at once: searches, context changes,
// preparations, session starts and stops overlapping, first against a service
// that answers on threads of its own, then against the sandbox.
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <latch>
#include <random>
#include <thread>
#include <vector>

#include "quorvix/engine/Quorvix.h"
#include "quorvix/search/QXSearchResponse.h"
#include "support/Eventually.h"
#include "support/PlatformFixture.h"
#include "support/SandboxFixture.h"

namespace quorvix {
namespace {

// A service that answers every request after a short pause on one of its own
// threads, as a real transport does; blocking reads answer at once.
class ThreadedService : public QXConnectionHandler {
 public:
  ThreadedService() {
    for (int i = 0; i < 2; ++i) workers_.emplace_back([this] { serve(); });
  }
  ~ThreadedService() override {
    {
      std::lock_guard lock(mutex_);
      stopping_ = true;
    }
    wake_.notify_all();
    workers_.clear();
  }

  void open(const QXURLRequest& request, QXOpenCompletion completion) override {
    {
      std::lock_guard lock(mutex_);
      queue_.push_back({request.url, std::move(completion)});
      ++outstanding_;
    }
    wake_.notify_one();
  }

  std::optional<std::string> fetchDataAtRequest(const QXURLRequest&, std::optional<QXError>*) override { return "[]"; }

  /// Nothing queued and nothing being answered.
  bool idle() const {
    std::lock_guard lock(mutex_);
    return outstanding_ == 0;
  }
  int hellos() const { return hellos_.load(); }

 private:
  struct Job {
    std::string url;
    QXOpenCompletion completion;
  };

  std::string replyFor(const std::string& url) {
    if (url.find("/hello.js") != std::string::npos) {
      return R"({"sessionId":"s)" + std::to_string(++hellos_) + R"(","timeout":600,"status":200})";
    }
    if (url.find("/q.js") != std::string::npos) return R"({"status":200,"answerList":[]})";
    return R"({"status":200})";
  }

  void serve() {
    std::minstd_rand pause(std::random_device{}());
    std::unique_lock lock(mutex_);
    for (;;) {
      wake_.wait(lock, [this] { return stopping_ || !queue_.empty(); });
      if (stopping_) return;
      Job job = std::move(queue_.front());
      queue_.pop_front();
      lock.unlock();
      std::this_thread::sleep_for(std::chrono::microseconds(pause() % 200));
      const std::string body = replyFor(job.url);
      if (job.completion) job.completion(body, QXHTTPURLResponse{job.url, 200}, std::nullopt);
      job = {};
      lock.lock();
      --outstanding_;
    }
  }

  mutable std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Job> queue_;
  int outstanding_ = 0;
  bool stopping_ = false;
  std::atomic<int> hellos_ = 0;
  std::vector<std::jthread> workers_;
};

// Notices a completion that is called twice.
struct Tally {
  std::atomic<int> twice = 0;
  template <class... Args>
  std::function<void(Args...)> once() {
    auto called = std::make_shared<std::atomic<bool>>(false);
    return [this, called](Args...) {
      if (called->exchange(true)) ++twice;
    };
  }
};

// Runs `operation(random, i)` `operations` times on each of `threads` threads,
// all let go at once; returns when every thread is done.
template <class Operation>
void overlap(int threads, int operations, unsigned seed, Operation operation) {
  std::latch start(threads);
  std::vector<std::jthread> workers;
  for (int t = 0; t < threads; ++t) {
    workers.emplace_back([&, t] {
      std::minstd_rand random(static_cast<unsigned>(t) * 7919u + seed);
      start.arrive_and_wait();
      for (int i = 0; i < operations; ++i) operation(random, i);
    });
  }
}

class EngineStressTest : public testing::PlatformFixture {};

TEST_F(EngineStressTest, OverlappingOperationsOnSeveralEnginesWithStops) {
  constexpr int kEngines = 4;
  constexpr int kThreads = 8;
  constexpr int kOperations = 120;
  auto service = std::make_shared<ThreadedService>();
  // Two engines share one parameters object, as a host that reuses it would.
  auto shared = std::make_shared<AccountParams>();
  shared->setAccount("shared");
  std::vector<std::shared_ptr<Quorvix>> engines;
  for (int e = 0; e < kEngines; ++e) {
    auto engine = Quorvix::create();
    engine->setConnectionHandler(service);
    auto params = e < 2 ? shared : std::make_shared<AccountParams>();
    if (e >= 2) params->setAccount("acme" + std::to_string(e));
    engine->setAccountParams(params);
    engines.push_back(engine);
  }

  Tally tally;
  overlap(kThreads, kOperations, 1u, [&](std::minstd_rand& random, int i) {
    auto& engine = engines[random() % kEngines];
    switch (random() % 9) {
      case 0:
      case 1:
        engine->searchText("q" + std::to_string(random() % 50),
                           tally.once<std::shared_ptr<QXSearchResponse>, std::optional<QXError>>());
        break;
      case 2:
        engine->changeContext(JsonObject{{"brand", "b" + std::to_string(i)}}, tally.once<bool, std::optional<QXError>>());
        break;
      case 3:
        engine->prepareWithAccountParams(engine->accountParams());
        break;
      case 4:
        engine->startSession(nullptr);
        break;
      case 5:
        engine->stop();
        break;
      case 6:
        engine->contextValue("brand", tally.once<std::optional<Json>, std::optional<QXError>>());
        break;
      case 7:
        clock->advance(301);  // runs due keep-alives on this thread
        break;
      default:
        mainQueue->drain();
        (void)engine->accountParams()->quorvixContext();
        break;
    }
  });

  // Let every answer land; answers to abandoned starts change nothing.
  for (int round = 0; round < 2; ++round) {
    for (auto& engine : engines) engine->stop();
    ASSERT_TRUE(testing::eventually([&] { return service->idle(); }));
  }
  mainQueue->drain();
  EXPECT_EQ(tally.twice.load(), 0) << "a completion ran twice";
  EXPECT_GT(service->hellos(), 0);
  for (auto& engine : engines) EXPECT_FALSE(engine->sessionId()) << "a session outlived stop";
  EXPECT_EQ(clock->pending(), 0u) << "a keep-alive outlived stop";

  // `stop` abandons requests that wait for a session, so how many completed
  // above depends on timing; what must hold is that every engine still works.
  std::atomic<int> answered = 0;
  for (auto& engine : engines) {
    engine->searchText("after", [&](std::shared_ptr<QXSearchResponse> result, std::optional<QXError> error) {
      if (result && !error) ++answered;
    });
  }
  EXPECT_TRUE(testing::eventually([&] {
    mainQueue->drain();
    return answered.load() == kEngines;
  })) << answered.load() << " of " << kEngines << " engines answered after the stops";
  for (auto& engine : engines) engine->stop();
  ASSERT_TRUE(testing::eventually([&] { return service->idle(); }));
}

class SandboxStressTest : public testing::SandboxFixture {};

TEST_F(SandboxStressTest, EnginesStayUsableAfterOverlappingWorkAndStops) {
  constexpr int kThreads = 4;
  constexpr int kOperations = 25;
  std::vector<std::shared_ptr<Quorvix>> engines{engine};
  for (int e = 0; e < 2; ++e) {
    auto other = Quorvix::create();
    other->setAccountParams(params);  // one parameters object for all three
    engines.push_back(other);
  }
  Tally tally;
  overlap(kThreads, kOperations, 11u, [&](std::minstd_rand& random, int i) {
    auto& target = engines[random() % engines.size()];
    switch (random() % 5) {
      case 0:
      case 1:
        target->searchText("password " + std::to_string(i),
                           tally.once<std::shared_ptr<QXSearchResponse>, std::optional<QXError>>());
        break;
      case 2:
        target->changeContext(JsonObject{{"device", "router"}}, tally.once<bool, std::optional<QXError>>());
        break;
      case 3:
        target->startSession(nullptr);
        break;
      default:
        target->stop();
        break;
    }
  });
  for (auto& each : engines) each->stop();
  // Each engine still opens a session and answers a search.
  for (auto& each : engines) {
    testing::Delivery<std::optional<QXError>> delivery;
    each->searchText("reset password", [&](auto result, auto error) { delivery.deliver(result ? error : errors::notValidResponse()); });
    auto outcome = delivery.take();
    ASSERT_TRUE(outcome.has_value());
    EXPECT_FALSE(outcome->has_value()) << describe(**outcome);
  }
  EXPECT_EQ(tally.twice.load(), 0);
  for (auto& each : engines) each->stop();
}

}  // namespace
}  // namespace quorvix
