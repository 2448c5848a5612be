// Sessions of the sandbox service: hello.js, keepAlive.js and expiry.

#include <boost/json.hpp>
#include <chrono>
#include <thread>

#include "sandbox/SandboxTestSupport.h"

namespace quorvix::sandbox::testing {
namespace {

TEST_F(SandboxServiceTest, HelloOpensASessionThatKeepAliveAccepts) {
  httplib::Result hello = get("acme.localhost", std::string(kHelloEndpoint) + "?nostats=false&kb=support");
  ASSERT_TRUE(hello);
  ASSERT_EQ(hello->status, 200);
  const boost::json::object answer = boost::json::parse(hello->body).as_object();
  EXPECT_EQ(answer.at("timeout"), 600);
  EXPECT_EQ(answer.at("status"), 200);
  const std::string sid(answer.at("sessionId").as_string());
  EXPECT_EQ(sid.size(), 24U);
  EXPECT_NE(sid, openSession());
  EXPECT_EQ(sandbox_.activeSessions(), 2U);

  EXPECT_EQ(keepAliveStatus(sid), 200);
  EXPECT_EQ(keepAliveStatus("0123456789abcdef01234567"), 400);
  httplib::Result withoutSid = get("acme.localhost", kKeepAliveEndpoint);
  ASSERT_TRUE(withoutSid);
  EXPECT_EQ(boost::json::parse(withoutSid->body), boost::json::parse(R"({"status":400,"message":"Invalid session"})"));

  // A session belongs to the account that opened it.
  httplib::Result otherAccount = get("globex.localhost", std::string(kKeepAliveEndpoint) + "?sid=" + sid);
  ASSERT_TRUE(otherAccount);
  EXPECT_EQ(otherAccount->status, 400);

  sandbox_.expireAllSessions();
  EXPECT_EQ(sandbox_.activeSessions(), 0U);
  EXPECT_EQ(keepAliveStatus(sid), 400);
}

TEST_F(SandboxServiceTest, IdleSessionsExpireAfterTheirTimeout) {
  sandbox_.setSessionTimeout(0.05);
  httplib::Result hello = get("acme.localhost", kHelloEndpoint);
  ASSERT_TRUE(hello);
  const boost::json::object answer = boost::json::parse(hello->body).as_object();
  EXPECT_DOUBLE_EQ(answer.at("timeout").to_number<double>(), 0.05);
  const std::string sid(answer.at("sessionId").as_string());

  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_EQ(sandbox_.activeSessions(), 0U);
  EXPECT_EQ(keepAliveStatus(sid), 400);
}

}  // namespace
}  // namespace quorvix::sandbox::testing
