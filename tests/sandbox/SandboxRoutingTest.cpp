// Addressing, query decoding and the request log of the sandbox service.

#include <boost/json.hpp>

#include "sandbox/SandboxTestSupport.h"

namespace quorvix::sandbox::testing {
namespace {

TEST_F(SandboxServiceTest, AccountHostAndAccountPrefixReachTheSameAccount) {
  const std::string query = "?kb=help";
  httplib::Result byHost = get("globex.localhost", kHelloEndpoint + query);
  httplib::Result byPrefix = get("server7.localhost", std::string("/~globex") + kHelloEndpoint + query);
  ASSERT_TRUE(byHost && byPrefix);
  EXPECT_EQ(byHost->status, 200);
  EXPECT_EQ(byPrefix->status, 200);
  EXPECT_EQ(byHost->get_header_value("Content-Type"), "application/json; charset=utf-8");

  const std::vector<RecordedRequest> recorded = sandbox_.requestsFor(kHelloEndpoint);
  ASSERT_EQ(recorded.size(), 2U);
  EXPECT_EQ(recorded[0].account, "globex");
  EXPECT_EQ(recorded[1].account, "globex");
  EXPECT_EQ(recorded[1].path, std::string("/~globex") + kHelloEndpoint);
  EXPECT_EQ(recorded[1].host, "server7.localhost:" + std::to_string(port_));
  EXPECT_EQ(recorded[0].headers.count("host"), 1U);

  // "help" is globex's knowledge base, not acme's.
  httplib::Result wrongKb = get("acme.localhost", kHelloEndpoint + query);
  ASSERT_TRUE(wrongKb);
  EXPECT_EQ(wrongKb->status, 404);
  EXPECT_EQ(boost::json::parse(wrongKb->body).at("message"), "Unknown knowledge base");
}

TEST_F(SandboxServiceTest, UnknownAccountsAndEndpointsAnswer404) {
  httplib::Result noAccount = get("localhost", kHelloEndpoint);
  httplib::Result unknownAccount = get("localhost", std::string("/~initech") + kHelloEndpoint);
  httplib::Result unknownEndpoint = get("acme.localhost", "/api/widget/v1/nothing.js");
  ASSERT_TRUE(noAccount && unknownAccount && unknownEndpoint);
  EXPECT_EQ(boost::json::parse(noAccount->body), boost::json::parse(R"({"status":404,"message":"Unknown account"})"));
  EXPECT_EQ(unknownAccount->status, 404);
  EXPECT_EQ(boost::json::parse(unknownAccount->body).at("message"), "Unknown account");
  EXPECT_EQ(unknownEndpoint->status, 404);
  EXPECT_EQ(boost::json::parse(unknownEndpoint->body).at("message"), "Unknown endpoint");
  EXPECT_EQ(sandbox_.requests().size(), 3U);
}

TEST_F(SandboxServiceTest, QueryItemsAreFormDecodedInOrder) {
  ASSERT_TRUE(get("acme.localhost", std::string(kHelloEndpoint) + "?z=a+b%20c%2B%26&a=1&flag&z=2"));
  const std::vector<RecordedRequest> recorded = sandbox_.requestsFor(kHelloEndpoint);
  ASSERT_EQ(recorded.size(), 1U);
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"z", "a b c+&"}, {"a", "1"}, {"flag", ""}, {"z", "2"}};
  EXPECT_EQ(recorded[0].query, expected);
  EXPECT_EQ(recorded[0].queryValue("z"), "a b c+&");
  EXPECT_EQ(recorded[0].queryValue("missing"), std::nullopt);
  EXPECT_EQ(recorded[0].target, std::string(kHelloEndpoint) + "?z=a+b%20c%2B%26&a=1&flag&z=2");

  sandbox_.clearRequests();
  EXPECT_TRUE(sandbox_.requests().empty());
}

}  // namespace
}  // namespace quorvix::sandbox::testing
