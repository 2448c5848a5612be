// The session road through the real transport against the sandbox service on loopback.
#include <gtest/gtest.h>

#include <atomic>

#include "quorvix/engine/QXErrorHandler.h"
#include "support/ErrorMatchers.h"
#include "support/SandboxFixture.h"

namespace quorvix {
namespace {

using sandbox::FaultKind;
using testing::eventually;

constexpr const char* kHello = "/api/widget/v1/hello.js";
constexpr const char* kKeepAlive = "/api/widget/v1/keepAlive.js";

class SessionIntegrationTest : public testing::SandboxFixture {
 protected:
  SessionIntegrationTest() : SandboxFixture(sandbox::SandboxOptions{.sessionTimeoutSeconds = 40}) {}
  void SetUp() override {
    startService();
    engine->prepareWithAccountParams(params);
    // Preparing fetches the configuration; its answer must not land inside a test.
    ASSERT_TRUE(eventually([&] { return engine->isPrepared(); }));
    QXErrorHandler::shared()->setErrorState(false);
    QXErrorHandler::shared()->setDelegate({});
    mainQueue->drain();
  }

  // Opens a session and waits for it.
  std::string openSession() {
    std::atomic<bool> opened{false};
    engine->startSession([&] { opened = true; });
    EXPECT_TRUE(eventually([&] { return opened.load(); }));
    return engine->sessionId().value_or("");
  }
};

TEST_F(SessionIntegrationTest, SessionIsOpenedKeptAliveAndRecoveredAfterExpiry) {
  const std::string first = openSession();
  ASSERT_FALSE(first.empty());
  EXPECT_EQ(engine->delay(), 20.0);

  const auto hello = service.requestsFor(kHello).at(0);
  EXPECT_EQ(hello.host, "acme.localhost:" + std::to_string(service.port()));
  EXPECT_EQ(hello.target, "/api/widget/v1/hello.js?nostats=false&url=mobile&kb=support");
  EXPECT_EQ(hello.headers.at("referer"), "app/com.example.host/iOS/42/iOS");

  // The keep-alive fires at half the announced time-out and schedules the next one.
  clock->advance(20);
  ASSERT_TRUE(eventually([&] { return clock->pending() == 1; }));
  ASSERT_EQ(service.requestsFor(kKeepAlive).size(), 1u);
  EXPECT_EQ(service.requestsFor(kKeepAlive)[0].queryValue("sid"), first);

  // The service forgets the session: the next keep-alive is rejected, probed,
  // and sent again in a new session.
  service.expireAllSessions();
  clock->advance(20);
  ASSERT_TRUE(eventually([&] { return clock->pending() == 1 && service.requestsFor(kKeepAlive).size() == 4; }));
  const std::string second = engine->sessionId().value_or("");
  EXPECT_NE(second, first);
  EXPECT_FALSE(second.empty());
  const auto keepAlives = service.requestsFor(kKeepAlive);
  EXPECT_EQ(keepAlives[1].queryValue("sid"), first);
  EXPECT_FALSE(keepAlives[2].queryValue("sid").has_value()) << "the probe carries no session id";
  EXPECT_EQ(keepAlives[3].queryValue("sid"), second);
  EXPECT_EQ(service.requestsFor(kHello).size(), 2u);
  EXPECT_EQ(service.activeSessions(), 1u);
}

TEST_F(SessionIntegrationTest, ServerAddressFormReachesTheSameAccount) {
  params->setServer("eu1");
  ASSERT_FALSE(openSession().empty());
  const auto hello = service.requestsFor(kHello).at(0);
  EXPECT_EQ(hello.path, "/~acme/api/widget/v1/hello.js");
  EXPECT_EQ(hello.account, "acme");
}

class NetworkDelegate : public QXErrorHandlerDelegate {
 public:
  void didFailWithSource(const void*) override { ++failures; }
  void didRecover() override { ++recoveries; }
  int failures = 0;
  int recoveries = 0;
};

TEST_F(SessionIntegrationTest, DroppedConnectionIsReportedAndTheNextAnswerRecovers) {
  auto delegate = std::make_shared<NetworkDelegate>();
  QXErrorHandler::shared()->setDelegate(delegate);
  service.injectFault(kHello, sandbox::Fault{FaultKind::DropConnection});

  engine->startSession(nullptr);
  ASSERT_TRUE(eventually([&] { return engine->sessionError().has_value(); }));
  EXPECT_THAT(engine->sessionError(), testing::IsLostConnection());
  EXPECT_FALSE(engine->sessionId());
  mainQueue->drain();
  EXPECT_EQ(delegate->failures, 1);

  // Answers to other engines' requests still in flight may clear the state
  // too (the transport and the error handler are process-wide), so only the
  // end state is certain: recovered, and no further failure.
  ASSERT_FALSE(openSession().empty());
  mainQueue->drain();
  EXPECT_EQ(delegate->failures, 1);
  EXPECT_GE(delegate->recoveries, 1);
  EXPECT_FALSE(QXErrorHandler::shared()->errorState());
}

TEST_F(SessionIntegrationTest, ServiceFaultsSurfaceAsErrors) {
  service.injectFault(kHello, sandbox::Fault{FaultKind::Http500});
  engine->startSession(nullptr);
  ASSERT_TRUE(eventually([&] { return engine->sessionError().has_value(); }));
  EXPECT_EQ(engine->sessionError(), errors::service(500));

  params->setKnowledgeBase("no-such-kb");
  engine->startSession(nullptr);
  ASSERT_TRUE(eventually([&] { return engine->sessionError() == errors::service(404); }));
}

}  // namespace
}  // namespace quorvix
