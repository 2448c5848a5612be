// Every request family against every fault the sandbox can inject, through the
// real transport on loopback: the engine never crashes, the caller hears the
// error (or the reply ends where the family documents that it never
// completes), and the next request of the same family succeeds.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <unistd.h>

#include "quorvix/channeling/QXChanneling.h"
#include "quorvix/engine/QXConnection.h"
#include "quorvix/faq/FAQAnswer.h"
#include "quorvix/platform/QXDefaultConnectionHandler.h"
#include "quorvix/search/QXAutoCompleteResponse.h"
#include "quorvix/search/QXQueryResult.h"
#include "quorvix/search/QXSearchResponse.h"
#include "support/SandboxFixture.h"

namespace quorvix {
namespace {

using sandbox::FaultKind;
using namespace std::chrono_literals;

/// How a request of a family ended.
enum class Outcome {
  Error,    ///< the completion ran with an error (or, for a vote, "not taken")
  Result,   ///< the completion ran with a result
  Nothing,  ///< the completion ran with neither
  Silent,   ///< the completion did not run
};

const char* name(Outcome outcome) {
  switch (outcome) {
    case Outcome::Error: return "Error";
    case Outcome::Result: return "Result";
    case Outcome::Nothing: return "Nothing";
    case Outcome::Silent: return "Silent";
  }
  return "?";
}

/// Records the completions of one request; more than one is a failure of its own.
class Recorder {
 public:
  void record(Outcome outcome) {
    std::lock_guard lock(mutex_);
    if (++calls_ == 1) outcome_ = outcome;
  }
  int calls() const {
    std::lock_guard lock(mutex_);
    return calls_;
  }
  Outcome outcome() const {
    std::lock_guard lock(mutex_);
    return calls_ == 0 ? Outcome::Silent : outcome_;
  }

 private:
  mutable std::mutex mutex_;
  int calls_ = 0;
  Outcome outcome_ = Outcome::Silent;
};

/// The engine's transport with a time-out the test chooses: the seam that lets
/// a stalled reply fail in about a second instead of the default fifteen.
class ShortTimeoutHandler : public QXConnectionHandler {
 public:
  std::atomic<double> timeoutSeconds{15.0};

  void open(const QXURLRequest& request, QXOpenCompletion completion) override {
    transport_.open(withTimeout(request), std::move(completion));
  }
  std::optional<std::string> fetchDataAtRequest(const QXURLRequest& request, std::optional<QXError>* error) override {
    return transport_.fetchDataAtRequest(withTimeout(request), error);
  }

 private:
  QXURLRequest withTimeout(QXURLRequest request) const {
    request.timeoutInterval = timeoutSeconds;
    return request;
  }
  QXDefaultConnectionHandler transport_;
};

/// A request family: the endpoint its faults go to and how one request of it
/// is sent; `attempt` counts the requests, so texts need not repeat.
struct Family {
  const char* label;
  const char* endpoint;
  std::function<void(Quorvix& engine, const std::shared_ptr<Recorder>& recorder, int attempt)> send;
  /// A family without a completion: the request is only seen at the service.
  bool fireAndForget = false;
};

template <class Value>
Outcome outcomeOf(const Value& value, const std::optional<QXError>& error) {
  if (error) return Outcome::Error;
  return value ? Outcome::Result : Outcome::Nothing;
}

std::shared_ptr<QXQueryResult> article(const char* id) {
  auto result = std::make_shared<QXQueryResult>();
  result->setResultId(id);
  return result;
}

/// The configuration's stored callback outlives one request, so it forwards
/// to whichever recorder is current.
struct ConfigurationSlot {
  std::mutex mutex;
  std::shared_ptr<Recorder> current;
};

const std::vector<Family>& families() {
  static const std::vector<Family> all = {
      {"Configuration", "/widget/scripts/cnf.json",
       [](Quorvix& engine, const std::shared_ptr<Recorder>& recorder, int) {
         static ConfigurationSlot slot;
         {
           std::lock_guard lock(slot.mutex);
           slot.current = recorder;
         }
         // A callback given while one is stored would start a fetch of its own.
         if (!engine.fetchConfiguration()) {
           engine.setFetchConfiguration([](auto configuration, auto error) {
             std::lock_guard lock(slot.mutex);
             if (slot.current) slot.current->record(outcomeOf(configuration, error));
           });
         }
         engine.fetchCNF(nullptr);
       }},
      {"FaqList", "/api/faq/v1/list.json",
       [](Quorvix& engine, const std::shared_ptr<Recorder>& recorder, int) {
         engine.fetchFAQList(
             [recorder](QXResponse response) { recorder->record(outcomeOf(response.typeJson(), response.error())); });
       }},
      {"Answer", "/api/faq/v1/answer.js",
       [](Quorvix& engine, const std::shared_ptr<Recorder>& recorder, int) {
         engine.fetchFAQAnswer("1003", std::nullopt,
                               [recorder](auto answer, auto error) { recorder->record(outcomeOf(answer, error)); });
       }},
      {"Like", "/api/analytics/v1/addFeedback",
       [](Quorvix& engine, const std::shared_ptr<Recorder>& recorder, int) {
         engine.like(1, article("1003"), [recorder](auto, auto, bool success) {
           recorder->record(success ? Outcome::Result : Outcome::Error);
         });
       }},
      {"Search", "/api/widget/v1/q.js",
       [](Quorvix& engine, const std::shared_ptr<Recorder>& recorder, int attempt) {
         engine.searchText("router " + std::to_string(attempt),
                           [recorder](auto result, auto error) { recorder->record(outcomeOf(result, error)); });
       }},
      {"Suggestions", "/api/kb/v1/autoComplete",
       [](Quorvix& engine, const std::shared_ptr<Recorder>& recorder, int attempt) {
         engine.suggestionsForText("pass" + std::string(attempt, 'w'),
                                   [recorder](auto result, auto error) { recorder->record(outcomeOf(result, error)); });
       }},
      {"Contexts", "/api/widget/v1/contextvalues.js",
       [](Quorvix& engine, const std::shared_ptr<Recorder>& recorder, int) {
         engine.contextValue("product",
                             [recorder](auto values, auto error) { recorder->record(outcomeOf(values, error)); });
       }},
      {"Channels", "/api/channeling/v1/get",
       [](Quorvix& engine, const std::shared_ptr<Recorder>& recorder, int) {
         engine.channels(article("1002"), std::nullopt,
                         [recorder](auto list, auto error) { recorder->record(outcomeOf(list, error)); });
       }},
      {"Report", "/api/channeling/v1/report",
       [](Quorvix& engine, const std::shared_ptr<Recorder>&, int) {
         JsonObject phone{{"channel", 5}, {"buttonText", "Call us"}, {"phoneNumber", "+44 800 555 0199"}};
         engine.reportChanneling(QXChanneling::initWithParams(&phone), article("1002"));
       },
       true},
      {"Conversation", "/api/conversation/v1/create",
       [](Quorvix& engine, const std::shared_ptr<Recorder>& recorder, int) {
         engine.createConversationWithCompletion(
             [recorder](auto id, auto error) { recorder->record(outcomeOf(id, error)); });
       }},
  };
  return all;
}

struct FaultCase {
  const char* label;
  FaultKind kind;
};

const FaultCase kFaults[] = {
    {"Http500", FaultKind::Http500},         {"BodyStatus400", FaultKind::BodyStatus400},
    {"Garbage", FaultKind::GarbageBody},     {"EmptyBody", FaultKind::EmptyBody},
    {"Reset", FaultKind::Reset},             {"Truncated", FaultKind::TruncatedBody},
    {"Stall", FaultKind::Stall},             {"Oversized", FaultKind::Oversized},
    {"DeepNesting", FaultKind::DeepNesting},
};

/// What the caller hears. Every fault is an error, with three exceptions.
/// A reset of a reused connection before any answer (every reset here: the
/// earlier faults leave a connection open) is retried once by the transport
/// on a new connection, so the caller gets the answer to the second attempt.
/// A vote succeeds whenever the service answered HTTP 200, whatever the body.
/// An empty body reads as a reply holding neither result nor error: the FAQ
/// list and the answer then complete with nothing, and every other family
/// ends silently, as each documents (search, suggestions, contexts, channels,
/// the conversation and the configuration only ever report a result or an
/// error).
Outcome expected(const Family& family, FaultKind fault) {
  const std::string label = family.label;
  if (family.fireAndForget) return Outcome::Silent;
  if (fault == FaultKind::Reset) return Outcome::Result;
  const bool http200 = fault == FaultKind::BodyStatus400 || fault == FaultKind::GarbageBody ||
                       fault == FaultKind::EmptyBody || fault == FaultKind::DeepNesting;
  if (label == "Like") return http200 ? Outcome::Result : Outcome::Error;
  if (fault == FaultKind::EmptyBody) {
    return label == "FaqList" || label == "Answer" ? Outcome::Nothing : Outcome::Silent;
  }
  return Outcome::Error;
}

class FaultMatrixTest : public testing::SandboxFixture, public ::testing::WithParamInterface<std::size_t> {
 protected:
  void SetUp() override {
    SandboxFixture::SetUp();
    root_ = std::filesystem::temp_directory_path() / ("quorvix-fault-matrix-" + std::to_string(::getpid()));
    platform::setStorageRoot(root_.string());
  }
  void TearDown() override {
    SandboxFixture::TearDown();
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }

  /// Sends one request and waits until its completion ran, or, when it is
  /// expected to stay silent, until the reply has surely been read.
  std::shared_ptr<Recorder> request(Quorvix& client, const Family& family, int attempt, Outcome expectedOutcome,
                                    std::chrono::milliseconds settle) {
    auto recorder = std::make_shared<Recorder>();
    const std::size_t before = service.requestsFor(family.endpoint).size();
    family.send(client, recorder, attempt);
    EXPECT_TRUE(testing::eventually([&] { return service.requestsFor(family.endpoint).size() > before; }))
        << family.label << " never reached the service";
    if (expectedOutcome == Outcome::Silent) {
      const auto until = std::chrono::steady_clock::now() + settle;
      while (std::chrono::steady_clock::now() < until) {
        mainQueue->drain();
        std::this_thread::sleep_for(5ms);
      }
    } else {
      testing::eventually([&] {
        mainQueue->drain();
        return recorder->calls() > 0;
      });
    }
    return recorder;
  }

  std::shared_ptr<ShortTimeoutHandler> transport = std::make_shared<ShortTimeoutHandler>();
  std::filesystem::path root_;
};

TEST_P(FaultMatrixTest, ErrorReachesTheCallerAndTheNextRequestSucceeds) {
  const Family& family = families()[GetParam()];
  for (const FaultCase& fault : kFaults) {
    SCOPED_TRACE(std::string(family.label) + " under " + fault.label);
    // A new engine for each fault: its first request opens its session.
    const std::shared_ptr<Quorvix> client = Quorvix::create();
    client->setAccountParams(params);
    client->setConnectionHandler(transport);
    const Outcome wanted = expected(family, fault.kind);

    std::chrono::milliseconds settle = 400ms;
    sandbox::Fault injected{fault.kind, 1, 0ms};
    if (fault.kind == FaultKind::Stall) {
      transport->timeoutSeconds = 1.0;
      injected.delay = 10s;  // far past the time-out: only the client's giving up ends it
      settle += 1500ms;
    } else if (fault.kind == FaultKind::Oversized) {
      settle += 1500ms;
    }
    service.injectFault(family.endpoint, injected);

    const std::size_t before = service.requestsFor(family.endpoint).size();
    const auto faulty = request(*client, family, 1, wanted, settle);
    EXPECT_EQ(name(faulty->outcome()), std::string(name(wanted)));
    EXPECT_LE(faulty->calls(), 1) << "a completion ran twice";
    if (fault.kind == FaultKind::Reset) {
      // A fire-and-forget request has no completion to wait for: wait for the retry itself.
      EXPECT_TRUE(testing::eventually([&] { return service.requestsFor(family.endpoint).size() >= before + 2; }))
          << "the reset request was not sent again";
      EXPECT_EQ(service.requestsFor(family.endpoint).size(), before + 2) << "the reset request was sent too often";
    }

    transport->timeoutSeconds = 15.0;
    service.clearFaults();
    const auto next = request(*client, family, 2, family.fireAndForget ? Outcome::Silent : Outcome::Result, 0ms);
    if (!family.fireAndForget) {
      EXPECT_EQ(name(next->outcome()), std::string(name(Outcome::Result))) << "the next request failed";
    }
    client->stop();
  }
}

INSTANTIATE_TEST_SUITE_P(EveryFamilyEveryFault, FaultMatrixTest, ::testing::Range<std::size_t>(0, 10),
                         [](const ::testing::TestParamInfo<std::size_t>& info) {
                           return std::string(families()[info.param].label);
                         });

}  // namespace
}  // namespace quorvix
