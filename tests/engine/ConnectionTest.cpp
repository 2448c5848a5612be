#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <optional>

#include "quorvix/engine/QXConnection.h"
#include "quorvix/engine/QXErrorHandler.h"
#include "quorvix/engine/QXSessionResponse.h"
#include "support/ErrorMatchers.h"
#include "support/PlatformFixture.h"
#include "support/RecordingConnectionHandler.h"

namespace quorvix {
namespace {

using testing::Reply;

class ConnectionTest : public testing::PlatformFixture {
 protected:
  void SetUp() override {
    PlatformFixture::SetUp();
    QXErrorHandler::shared()->setDelegate({});
    QXErrorHandler::shared()->setErrorState(false);
    mainQueue->drain();
  }

  // Sends one request to `endpoint` and answers it with `reply`.
  QXResponse roundTrip(const std::string& endpoint, const Reply& reply, const std::string& query = "") {
    auto url = URLComponents::parse("https://acme.quorvix.net" + endpoint + query).value();
    std::optional<QXResponse> result;
    int calls = 0;
    QXConnection::openConnection(handler, url, [&](QXResponse response) {
      ++calls;
      result = std::move(response);
    });
    EXPECT_TRUE(handler->answer(endpoint, reply));
    EXPECT_EQ(calls, 1);
    return result.value_or(QXResponse());
  }

  std::shared_ptr<testing::RecordingConnectionHandler> handler = std::make_shared<testing::RecordingConnectionHandler>();
};

TEST_F(ConnectionTest, RequestIsAnIdentifiedGetWithATimeOut) {
  roundTrip("/api/widget/v1/q.js", Reply::json("{}"), "?text=x&sid=secret&apiKey=k1");
  const auto request = handler->requests().at(0);
  EXPECT_EQ(request.method, "GET");
  EXPECT_DOUBLE_EQ(request.timeoutInterval, 15.0);
  EXPECT_EQ(request.valueForHTTPHeaderField("Referer"), "app/com.example.host/iOS/42/iOS");
  EXPECT_EQ(request.url, "https://acme.quorvix.net/api/widget/v1/q.js?text=x&sid=secret&apiKey=k1");
  // Secrets never reach the log.
  EXPECT_EQ(log->lines(), std::vector<std::string>{"URL :: https://acme.quorvix.net/api/widget/v1/q.js?text=x&sid=***&apiKey=***"});
}

TEST_F(ConnectionTest, AnswerTable) {
  auto empty = roundTrip("/api/widget/v1/hello.js", Reply::json(""));
  EXPECT_FALSE(empty.error());
  EXPECT_TRUE(std::holds_alternative<std::monostate>(empty.type()));

  auto refused = roundTrip("/api/widget/v1/hello.js", Reply::json(R"({"status":400,"sessionId":"s"})"));
  EXPECT_EQ(refused.error(), errors::service(400));
  EXPECT_TRUE(std::holds_alternative<std::monostate>(refused.type()));

  auto textStatus = roundTrip("/api/widget/v1/hello.js", Reply::json(R"({"status":"200","sessionId":"s1","timeout":600})"));
  EXPECT_FALSE(textStatus.error());
  auto session = textStatus.typeAs<QXSessionResponse>();
  ASSERT_TRUE(session);
  EXPECT_EQ(session->sessionId(), "s1");
  EXPECT_EQ(session->timeout(), 300.0);

  auto serverError = roundTrip("/api/widget/v1/hello.js", Reply::json(R"({"sessionId":"s2"})", 500));
  EXPECT_EQ(serverError.error(), errors::service(500));
  ASSERT_TRUE(serverError.typeAs<QXSessionResponse>());  // built AND failed
  EXPECT_EQ(serverError.status(), 500);
  EXPECT_EQ(serverError.cacheParams(), R"({"sessionId":"s2"})");

  auto list = roundTrip("/api/faq/v1/list.json", Reply::json(R"([{"id":1},{"id":2}])"));
  ASSERT_TRUE(list.typeJson());
  EXPECT_EQ(*list.typeJson(), boost::json::parse(R"([{"id":1},{"id":2}])"));

  auto status = roundTrip("/api/widget/v1/setParams", Reply::json(R"({"status":200,"x":1})"));
  EXPECT_EQ(*status.typeJson(), Json(200));
  auto channels = roundTrip("/api/channeling/v1/get", Reply::json(R"({"rechanneling":[1]})"));
  EXPECT_EQ(*channels.typeJson(), boost::json::parse("[1]"));
  auto unknown = roundTrip("/api/widget/v1/other", Reply::json(R"({"a":1})"));
  EXPECT_TRUE(std::holds_alternative<std::monostate>(unknown.type()));
  auto scalar = roundTrip("/api/faq/v1/list.json", Reply::json("7"));
  EXPECT_TRUE(std::holds_alternative<std::monostate>(scalar.type()));
  EXPECT_FALSE(scalar.error());
}

TEST_F(ConnectionTest, ParseAndTransportFailures) {
  auto garbage = roundTrip("/api/widget/v1/q.js", Reply::json("<html>"));
  EXPECT_EQ(garbage.error()->domain, "NSCocoaErrorDomain");
  EXPECT_EQ(garbage.error()->code, 3840);
  EXPECT_TRUE(QXErrorHandler::shared()->errorState());

  // A later non-200 status replaces the parse error.
  auto garbage500 = roundTrip("/api/widget/v1/q.js", Reply::json("<html>", 502));
  EXPECT_EQ(garbage500.error(), errors::service(502));

  std::string deep(100, '[');
  deep += std::string(100, ']');
  EXPECT_EQ(roundTrip("/api/faq/v1/list.json", Reply::json(deep)).error()->code, 3840);

  auto lost = roundTrip("/api/widget/v1/q.js", Reply::failure(-1009));
  EXPECT_THAT(lost.error(), testing::IsLostConnection());
  EXPECT_EQ(lost.status(), 0);
  EXPECT_FALSE(lost.url().has_value());
}

TEST_F(ConnectionTest, ParseGivesNothingForAnEmptyBody) {
  EXPECT_TRUE(std::holds_alternative<std::monostate>(QXConnection::parse("")));
  EXPECT_TRUE(std::holds_alternative<Json>(QXConnection::parse("\"text\"")));
  EXPECT_TRUE(std::holds_alternative<QXError>(QXConnection::parse("{\"a\":")));
  EXPECT_FALSE(QXSessionResponse::initWithParams(nullptr));
}

// The error handler hears about every failure but tells its delegate only of
// network loss, and of recovery after any failure.
class RecordingDelegate : public QXErrorHandlerDelegate {
 public:
  void didFailWithSource(const void* source) override {
    ++failures;
    EXPECT_EQ(source, nullptr);
  }
  void didRecover() override { ++recoveries; }
  int failures = 0;
  int recoveries = 0;
};

TEST_F(ConnectionTest, ErrorHandlerNotifiesLossAndRecoveryOnTheMainQueue) {
  auto delegate = std::make_shared<RecordingDelegate>();
  QXErrorHandler::shared()->setDelegate(delegate);

  roundTrip("/api/widget/v1/q.js", Reply::failure(-1009));
  EXPECT_EQ(delegate->failures, 0) << "must wait for the main queue";
  mainQueue->drain();
  EXPECT_EQ(delegate->failures, 1);
  EXPECT_EQ(log->countStartingWith("error Error Domain=NSURLErrorDomain Code=-1009"), 1u);
  EXPECT_FALSE(QXErrorHandler::shared()->error().has_value());

  roundTrip("/api/widget/v1/q.js", Reply::json("{}"));
  roundTrip("/api/widget/v1/q.js", Reply::json("{}"));  // already recovered: no second call
  mainQueue->drain();
  EXPECT_EQ(delegate->recoveries, 1);

  for (const auto& silent : {Reply::failure(-1001), Reply::json("not json")}) {
    roundTrip("/api/widget/v1/q.js", silent);
    mainQueue->drain();
    EXPECT_TRUE(QXErrorHandler::shared()->errorState());
    EXPECT_EQ(delegate->failures, 1);
    roundTrip("/api/widget/v1/q.js", Reply::json("{}"));
    mainQueue->drain();
  }
  EXPECT_EQ(delegate->recoveries, 3);
  EXPECT_EQ(log->countStartingWith("error "), 1u);
}

TEST_F(ConnectionTest, DelegateGoneBeforeTheMainQueueRunsHearsNothing) {
  auto delegate = std::make_shared<RecordingDelegate>();
  QXErrorHandler::shared()->setDelegate(delegate);
  roundTrip("/api/widget/v1/q.js", Reply::failure(-1005));
  QXErrorHandler::shared()->setDelegate({});
  mainQueue->drain();
  EXPECT_EQ(delegate->failures, 0);
}

}  // namespace
}  // namespace quorvix
