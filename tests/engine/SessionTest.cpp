#include <gtest/gtest.h>

#include "quorvix/engine/QXErrorHandler.h"
#include "quorvix/engine/Quorvix.h"
#include "support/RecordedEngineFixture.h"

namespace quorvix {
namespace {

using testing::queryNames;
using testing::Reply;
using testing::helloReply;
using Names = std::vector<std::string>;

using namespace testing::paths;

class SessionTest : public testing::RecordedEngineFixture {
 protected:
  void SetUp() override {
    RecordedEngineFixture::SetUp();
    // Sessions and searches need only the account: preparing would also fetch the configuration.
    engine->setAccountParams(params);
  }

  // A search request as the search operation builds it.
  URLComponents search(const std::string& text) {
    auto url = engine->accountParams()->baseUrlComp().value();
    url.appendPath(kSearch);
    url.setQueryItems({{"text", text}});
    return url;
  }

  // Sends a search and counts its completions.
  void send(const std::string& text, int* completions) {
    engine->executeRequest(search(text), [completions](QXResponse) { ++*completions; });
  }
};

TEST_F(SessionTest, FirstRequestOpensTheSessionAndCarriesSidLast) {
  params->setQuorvixContext(JsonObject{{"brand", "x"}, {"line", "pro"}});
  int completions = 0;
  send("reset password", &completions);

  ASSERT_EQ(handler->sentTo(kHello).size(), 1u);
  const auto start = handler->sentTo(kHello)[0];
  EXPECT_EQ(start.host(), "acme.quorvix.net");
  EXPECT_EQ(queryNames(start), (Names{"nostats", "url", "kb", "context"}));
  EXPECT_EQ(start.percentEncodedQuery(), "nostats=false&url=mobile&kb=support&context=brand%3Ax%2Cline%3Apro");
  EXPECT_TRUE(handler->sentTo(kSearch).empty()) << "the request waits for the session";

  ASSERT_TRUE(handler->answer(kHello, helloReply("s1")));
  EXPECT_EQ(engine->sessionId(), "s1");
  EXPECT_EQ(engine->delay(), 300.0);
  ASSERT_EQ(handler->sentTo(kSearch).size(), 1u);
  EXPECT_EQ(queryNames(handler->sentTo(kSearch)[0]), (Names{"text", "sid"}));
  EXPECT_EQ(handler->sentTo(kSearch)[0].queryValue("sid"), "s1");

  ASSERT_TRUE(handler->answer(kSearch, Reply::json("{}")));
  EXPECT_EQ(completions, 1);
  // Inside the session no further "hello.js" is sent.
  send("again", &completions);
  EXPECT_EQ(handler->sentTo(kHello).size(), 1u);
  EXPECT_EQ(handler->sentTo(kSearch).back().queryValue("sid"), "s1");
}

TEST_F(SessionTest, NoContextNoKnowledgeBaseMeansNoSuchItems) {
  auto bare = std::make_shared<AccountParams>();
  bare->setAccount("acme");
  engine->setAccountParams(bare);
  engine->startSession(nullptr);
  EXPECT_EQ(queryNames(handler->sentTo(kHello).at(0)), (Names{"nostats", "url"}));
}

TEST_F(SessionTest, ConcurrentRequestsShareOneSessionStart) {
  int completions = 0;
  for (int i = 0; i < 5; ++i) send("q" + std::to_string(i), &completions);
  EXPECT_EQ(handler->sentTo(kHello).size(), 1u);
  ASSERT_TRUE(handler->answer(kHello, helloReply("s1")));
  ASSERT_EQ(handler->sentTo(kSearch).size(), 5u);
  for (const auto& request : handler->sentTo(kSearch)) EXPECT_EQ(request.queryValue("sid"), "s1");
  while (handler->answer(kSearch, Reply::json("{}"))) {
  }
  EXPECT_EQ(completions, 5);
  EXPECT_EQ(clock->pending(), 1u) << "one session, one keep-alive chain";
}

TEST_F(SessionTest, FailedStartKeepsTheErrorAndDropsTheWaitingRequests) {
  int completions = 0;
  send("a", &completions);
  send("b", &completions);
  ASSERT_TRUE(handler->answer(kHello, Reply::json(R"({"status":503})")));
  EXPECT_EQ(engine->sessionError(), errors::service(503));
  EXPECT_FALSE(engine->sessionId());
  EXPECT_TRUE(handler->sentTo(kSearch).empty());
  EXPECT_EQ(clock->pending(), 0u);

  // The next request starts afresh; a success does not clear the old error.
  send("c", &completions);
  ASSERT_TRUE(handler->answer(kHello, helloReply("s2")));
  ASSERT_TRUE(handler->answer(kSearch, Reply::json("{}")));
  EXPECT_EQ(completions, 1);
  EXPECT_EQ(engine->sessionError(), errors::service(503));
}

TEST_F(SessionTest, KeepAliveRunsAtHalfTheAnnouncedTimeOut) {
  engine->startSession(nullptr);
  ASSERT_TRUE(handler->answer(kHello, helloReply("s1", 600)));
  EXPECT_EQ(clock->nextDelay(), 300.0);

  clock->advance(299);
  EXPECT_TRUE(handler->sentTo(kKeepAlive).empty());
  clock->advance(1);
  ASSERT_EQ(handler->sentTo(kKeepAlive).size(), 1u);
  const auto probe = handler->sentTo(kKeepAlive)[0];
  EXPECT_EQ(queryNames(probe), (Names{"Referer", "sid"}));
  EXPECT_EQ(probe.queryValue("sid"), "s1");

  ASSERT_TRUE(handler->answer(kKeepAlive, Reply::json(R"({"status":200})")));
  EXPECT_EQ(clock->nextDelay(), 300.0);

  // A failed keep-alive is tried again after 10 seconds and keeps the session.
  clock->advance(300);
  ASSERT_TRUE(handler->answer(kKeepAlive, Reply::failure(-1001)));
  EXPECT_EQ(clock->nextDelay(), 10.0);
  EXPECT_EQ(engine->sessionId(), "s1");
  EXPECT_EQ(log->countStartingWith("Quorvix failed to keep alive "), 1u);
  clock->advance(10);
  EXPECT_EQ(handler->sentTo(kKeepAlive).size(), 3u);

  // A body "status" other than 200 arrives as an error, so it is retried too.
  ASSERT_TRUE(handler->answer(kKeepAlive, Reply::json(R"({"status":500})")));
  EXPECT_EQ(clock->nextDelay(), 10.0);
  clock->advance(10);

  // A 200 answer without "status" ends the session and the chain.
  ASSERT_TRUE(handler->answer(kKeepAlive, Reply::json("{}")));
  EXPECT_FALSE(engine->sessionId());
  EXPECT_EQ(clock->pending(), 0u);
}

TEST_F(SessionTest, ServiceWithoutTimeOutDoesNotMakeTheKeepAliveSpin) {
  engine->startSession(nullptr);
  ASSERT_TRUE(handler->answer(kHello, Reply::json(R"({"sessionId":"s1","status":200})")));
  EXPECT_EQ(engine->delay(), 0.0);
  EXPECT_GE(clock->nextDelay().value_or(0), 1.0);
}

TEST_F(SessionTest, RejectedRequestIsResentOnceInANewSession) {
  int completions = 0;
  engine->startSession(nullptr);
  ASSERT_TRUE(handler->answer(kHello, helloReply("s1")));
  send("x", &completions);
  ASSERT_TRUE(handler->answer(kSearch, Reply::json(R"({"status":400})")));
  EXPECT_EQ(completions, 0);

  // The probe has only its own items: no "sid".
  ASSERT_EQ(handler->sentTo(kKeepAlive).size(), 1u);
  EXPECT_EQ(queryNames(handler->sentTo(kKeepAlive)[0]), (Names{"Referer"}));
  ASSERT_TRUE(handler->answer(kKeepAlive, Reply::json(R"({"status":400})", 400)));
  ASSERT_TRUE(handler->answer(kHello, helloReply("s2")));
  EXPECT_EQ(engine->sessionId(), "s2");

  const auto resent = handler->sentTo(kSearch).back();
  EXPECT_EQ(handler->sentTo(kSearch).size(), 2u);
  EXPECT_EQ(queryNames(resent), (Names{"text", "sid"}));
  EXPECT_EQ(resent.queryValue("sid"), "s2");

  // A second 400 reaches the caller as it is.
  ASSERT_TRUE(handler->answer(kSearch, Reply::json(R"({"status":400})")));
  EXPECT_EQ(completions, 1);
  EXPECT_EQ(handler->sentTo(kKeepAlive).size(), 1u);
  EXPECT_EQ(handler->sentTo(kHello).size(), 2u);
}

TEST_F(SessionTest, SuccessfulProbeDropsTheRejectedRequest) {
  int completions = 0;
  engine->startSession(nullptr);
  ASSERT_TRUE(handler->answer(kHello, helloReply("s1")));
  send("x", &completions);
  ASSERT_TRUE(handler->answer(kSearch, Reply::json("{}", 400)));
  ASSERT_TRUE(handler->answer(kKeepAlive, Reply::json(R"({"status":200})")));
  EXPECT_EQ(handler->pendingCount(), 0u);
  EXPECT_EQ(handler->sentTo(kHello).size(), 1u);
  EXPECT_EQ(completions, 0);
  EXPECT_EQ(engine->sessionId(), "s1");
}

TEST_F(SessionTest, RequestThatWaitedForTheSessionHearsA400Directly) {
  int completions = 0;
  send("x", &completions);
  ASSERT_TRUE(handler->answer(kHello, helloReply("s1")));
  ASSERT_TRUE(handler->answer(kSearch, Reply::json(R"({"status":400})")));
  // Only a request sent inside an existing session is probed and re-sent.
  EXPECT_EQ(completions, 1);
  EXPECT_TRUE(handler->sentTo(kKeepAlive).empty());
}

TEST_F(SessionTest, StopCancelsTheKeepAliveAndTheNextRequestOpensANewSession) {
  engine->startSession(nullptr);
  ASSERT_TRUE(handler->answer(kHello, helloReply("s1")));
  clock->advance(300);
  ASSERT_EQ(handler->sentTo(kKeepAlive).size(), 1u);

  engine->stop();
  EXPECT_FALSE(engine->sessionId());
  EXPECT_FALSE(engine->delay());
  EXPECT_EQ(clock->pending(), 0u);
  // The keep-alive that was in flight answers after stop: the chain stays ended.
  ASSERT_TRUE(handler->answer(kKeepAlive, Reply::json(R"({"status":200})")));
  EXPECT_EQ(clock->pending(), 0u);
  clock->advance(3600);
  EXPECT_EQ(handler->sentTo(kKeepAlive).size(), 1u);

  int completions = 0;
  send("after", &completions);
  EXPECT_EQ(handler->sentTo(kHello).size(), 2u);
}

TEST_F(SessionTest, EngineGoneBeforeTheAnswerDoesNothing) {
  int completions = 0;
  send("x", &completions);
  engine.reset();
  EXPECT_TRUE(handler->answer(kHello, helloReply("s1")));
  EXPECT_TRUE(handler->sentTo(kSearch).empty());
  EXPECT_EQ(clock->pending(), 0u);
}

TEST(FacadeTest, MembersBehaveAsDocumented) {
  auto engine = Quorvix::create();
  EXPECT_NE(engine->connectionHandler(), engine->connectionHandler()) << "a new default handler on every read";
  EXPECT_EQ(engine->errorHandler(), engine->errorHandler());
  EXPECT_NE(engine->errorHandler(), QXErrorHandler::shared());
  EXPECT_EQ(Quorvix::shared(), Quorvix::shared());
  EXPECT_FALSE(engine->isPrepared());
  EXPECT_TRUE(engine->waitingAPICalls().empty());
  engine->stop();  // harmless before any session
  EXPECT_FALSE(engine->sessionId());
}

}  // namespace
}  // namespace quorvix
