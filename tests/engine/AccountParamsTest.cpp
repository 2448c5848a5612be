#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>

#include "quorvix/core/URLComponents.h"
#include "quorvix/engine/AccountParams.h"
#include "support/PlatformFixture.h"

namespace quorvix {
namespace {

using AccountParamsTest = testing::PlatformFixture;

TEST_F(AccountParamsTest, BaseAddressWithAndWithoutServer) {
  AccountParams params;
  EXPECT_FALSE(params.baseUrlComp().has_value());

  params.setAccount("acme");
  auto base = params.baseUrlComp().value();
  EXPECT_EQ(base.string(), "https://acme.quorvix.net?Referer=app%2Fcom.example.host%2FiOS%2F42%2Fapp");

  params.setServer("eu1");
  base = params.baseUrlComp().value();
  base.appendPath("/api/widget/v1/q.js");
  EXPECT_EQ(base.host(), "eu1.quorvix.com");
  EXPECT_EQ(base.path(), "/~acme/api/widget/v1/q.js");

  params.setServer("");  // an empty server counts as none
  EXPECT_EQ(params.baseUrlComp()->host(), "acme.quorvix.net");
}

TEST_F(AccountParamsTest, LoopbackServiceHostsCarryTheirPort) {
  auto hosts = QXServiceHosts::fromServiceBase("http://localhost:8123");
  ASSERT_TRUE(std::holds_alternative<QXServiceHosts>(hosts));
  ASSERT_FALSE(platform::setServiceHosts(std::get<QXServiceHosts>(hosts)).has_value());
  AccountParams params;
  params.setAccount("acme");
  EXPECT_EQ(params.baseUrlComp()->string().substr(0, 29), "http://acme.localhost:8123?Re");

  for (const char* refused : {"http://example.com:80", "ftp://localhost:21", "https://host/path", "localhost:80", "http://127.0.0.1.example.com"}) {
    EXPECT_TRUE(std::holds_alternative<QXError>(QXServiceHosts::fromServiceBase(refused))) << refused;
  }
  EXPECT_TRUE(std::holds_alternative<QXServiceHosts>(QXServiceHosts::fromServiceBase("https://service.example:8443/")));
  QXServiceHosts plain;
  plain.scheme = "http";
  EXPECT_TRUE(platform::setServiceHosts(plain).has_value());
}

TEST_F(AccountParamsTest, EffectiveContextLetsStaticEntriesWin) {
  AccountParams params;
  EXPECT_FALSE(params.quorvixContext().has_value());
  params.appendDynamicContext(DynamicContext::initWithContext("brand:x"));
  params.appendDynamicContext(DynamicContext::initWithContext("brand:y"));
  params.appendDynamicContext(DynamicContext::initWithContext("line:pro"));
  EXPECT_EQ(params.quorvixContext(), (JsonObject{{"brand", "y"}, {"line", "pro"}}));
  EXPECT_EQ(params.dynamicContextDescription(), "x-y-pro");

  params.setQuorvixContext(JsonObject{{"brand", "z"}});
  EXPECT_EQ(params.quorvixContext(), (JsonObject{{"brand", "z"}, {"line", "pro"}}));

  params.resetDynamicContext();
  EXPECT_EQ(params.quorvixContext(), (JsonObject{{"brand", "z"}}));
  EXPECT_FALSE(params.dynamicContextDescription().has_value());
  EXPECT_EQ(params.referrer(), "mobile");
  params.setReferrer("kiosk");
  EXPECT_EQ(params.referrer(), "kiosk");
}

TEST_F(AccountParamsTest, DynamicContextNeedsFourCharactersAndAColon) {
  auto short3 = DynamicContext::initWithContext("a:b");
  EXPECT_EQ(short3->name(), "");
  EXPECT_EQ(short3->context(), "");
  auto pair = DynamicContext::initWithContext("ab:c");
  EXPECT_EQ(pair->name(), "ab");
  EXPECT_EQ(pair->context(), "c");
  auto triple = DynamicContext::initWithContext("a:b:c");
  EXPECT_EQ(triple->name(), "a");
  EXPECT_EQ(triple->context(), "c");
  EXPECT_EQ(DynamicContext::initWithContext("abcd")->name(), "");
}

// The host hands one parameters object to the engine and keeps changing its
// contexts while the engine reads it on other threads.
TEST_F(AccountParamsTest, SharedParamsSurviveConcurrentChangesAndReads) {
  auto params = std::make_shared<AccountParams>();
  params->setAccount("acme");
  params->setQuorvixContext(JsonObject{{"line", "start"}});
  constexpr int kRounds = 400;
  std::latch start(4);
  std::atomic<bool> sawBrokenContext = false;
  {
    std::jthread writer([&] {
      start.arrive_and_wait();
      for (int i = 0; i < kRounds; ++i) {
        params->appendDynamicContext(DynamicContext::initWithContext("brand:b" + std::to_string(i)));
        params->setQuorvixContext(JsonObject{{"line", std::to_string(i)}});
        params->setServer(i % 2 ? std::optional<std::string>("eu1") : std::nullopt);
        if (i % 50 == 49) params->resetDynamicContext();
      }
    });
    std::jthread contexts([&] {
      start.arrive_and_wait();
      for (int i = 0; i < kRounds; ++i) {
        auto context = params->quorvixContext();
        if (!context || !context->contains("line")) sawBrokenContext = true;
        (void)params->dynamicContextDescription();
        (void)params->dynamicContexts();
      }
    });
    std::jthread addresses([&] {
      start.arrive_and_wait();
      for (int i = 0; i < kRounds; ++i) {
        auto base = params->baseUrlComp();
        if (!base) sawBrokenContext = true;
        (void)params->accountId();
      }
    });
    start.arrive_and_wait();
  }
  EXPECT_FALSE(sawBrokenContext.load());
  EXPECT_EQ(params->quorvixContext()->at("line"), Json(std::to_string(kRounds - 1)));
}

TEST(URLComponentsTest, QueryTextReachesTheServerExactly) {
  URLComponents url;
  url.setScheme("https");
  url.setHost("acme.quorvix.net");
  url.setPath("/api/widget/v1/q.js");
  url.appendQueryItem("text", "a b+c&d=e#f%g/é");
  url.appendQueryItem("flag", std::nullopt);
  url.appendQueryItem("empty", "");
  EXPECT_EQ(url.string(), "https://acme.quorvix.net/api/widget/v1/q.js?text=a%20b%2Bc%26d%3De%23f%25g%2F%C3%A9&flag&empty=");

  auto parsed = URLComponents::parse(url.string()).value();
  EXPECT_EQ(parsed.queryValue("text"), "a b+c&d=e#f%g/é");
  EXPECT_EQ(parsed.queryItems()[1], (QueryItem{"flag", std::nullopt}));
  EXPECT_EQ(parsed.path(), "/api/widget/v1/q.js");

  parsed.appendQueryItem("sid", "s1");
  parsed.appendQueryItem("sid", "s2");
  parsed.removeQueryItems("sid");
  EXPECT_FALSE(parsed.queryValue("sid").has_value());
  EXPECT_EQ(parsed.queryItems().size(), 3u);
}

}  // namespace
}  // namespace quorvix
