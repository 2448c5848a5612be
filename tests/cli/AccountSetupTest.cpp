#include <gtest/gtest.h>

#include <quorvix/sandbox/SandboxService.h>

#include <boost/json/serialize.hpp>

#include "tool/AccountSetup.h"

namespace quorvix::cli {
namespace {

AccountPlan planOf(const GlobalOptions& options) {
  auto plan = planAccount(options);
  if (auto* error = std::get_if<UsageError>(&plan)) {
    ADD_FAILURE() << "refused: " << error->message;
    return {};
  }
  return std::get<AccountPlan>(std::move(plan));
}

std::vector<std::string> keysOf(const JsonObject& object) {
  std::vector<std::string> keys;
  for (const auto& entry : object) keys.emplace_back(entry.key());
  return keys;
}

TEST(AccountSetupTest, ContextEntriesSplitAtTheFirstColon) {
  auto entry = std::get<ContextEntry>(parseContextOption("url:https://x.test:8/p"));
  EXPECT_EQ(entry.name, "url");
  EXPECT_EQ(entry.value, "https://x.test:8/p");
  auto empty = std::get<ContextEntry>(parseContextOption("lang:"));
  EXPECT_EQ(empty.name, "lang");
  EXPECT_EQ(empty.value, "");

  for (const char* bad : {"lang", ":en", ""}) {
    auto parsed = parseContextOption(bad);
    ASSERT_TRUE(std::holds_alternative<UsageError>(parsed)) << bad;
    EXPECT_NE(std::get<UsageError>(parsed).message.find("--context"), std::string::npos) << bad;
  }
}

TEST(AccountSetupTest, ContextOptionsKeepTheirOrderAndReachTheAccount) {
  GlobalOptions options;
  options.contexts = {"zone:eu", "app:web", "lang:en", "app:ios"};
  const auto plan = planOf(options);
  ASSERT_TRUE(plan.params);
  const auto context = plan.params->quorvixContext();
  ASSERT_TRUE(context.has_value());
  // Insertion order, not sorted; a repeated name keeps its place and takes the later value.
  EXPECT_EQ(keysOf(*context), (std::vector<std::string>{"zone", "app", "lang"}));
  EXPECT_EQ(boost::json::serialize(*context), R"({"zone":"eu","app":"ios","lang":"en"})");

  // No --context: no context dictionary at all (an empty one would still be sent).
  EXPECT_FALSE(planOf(GlobalOptions{}).params->quorvixContext().has_value());

  options.contexts.push_back("broken");
  auto refused = planAccount(options);
  ASSERT_TRUE(std::holds_alternative<UsageError>(refused));
  EXPECT_NE(std::get<UsageError>(refused).message.find("broken"), std::string::npos);
}

TEST(AccountSetupTest, WithoutServiceOrAccountTheEmbeddedDemoAccountIsUsed) {
  GlobalOptions options;
  auto plan = planOf(options);
  EXPECT_EQ(plan.service, ServiceKind::Embedded);
  EXPECT_FALSE(plan.hosts.has_value());
  EXPECT_EQ(plan.params->account(), sandbox::SandboxService::kDemoAccount);
  EXPECT_EQ(plan.params->knowledgeBase(), sandbox::SandboxService::kDemoKnowledgeBase);
  EXPECT_EQ(plan.params->apiKey(), sandbox::SandboxService::kDemoApiKey);
  EXPECT_EQ(plan.params->referrer(), "mobile");

  // A given knowledge base or key replaces only that part of the demo account.
  options.apiKey = "wrong-key";
  plan = planOf(options);
  EXPECT_EQ(plan.params->account(), sandbox::SandboxService::kDemoAccount);
  EXPECT_EQ(plan.params->knowledgeBase(), sandbox::SandboxService::kDemoKnowledgeBase);
  EXPECT_EQ(plan.params->apiKey(), "wrong-key");
}

TEST(AccountSetupTest, NamedAccountTakesOnlyWhatWasGivenAndUsesProductionHosts) {
  GlobalOptions options;
  options.account = "globex";
  options.server = "eu1";
  options.labelId = "12";
  options.referrer = "kiosk";
  options.allContextsMandatory = true;
  options.bundleId = "com.example.tool";
  options.build = "77";
  const auto plan = planOf(options);
  EXPECT_EQ(plan.service, ServiceKind::Production);
  EXPECT_FALSE(plan.hosts.has_value());
  EXPECT_EQ(plan.params->account(), "globex");
  EXPECT_FALSE(plan.params->knowledgeBase().has_value());
  EXPECT_FALSE(plan.params->apiKey().has_value());
  EXPECT_EQ(plan.params->server(), "eu1");
  EXPECT_EQ(plan.params->labelId(), "12");
  EXPECT_EQ(plan.params->referrer(), "kiosk");
  EXPECT_TRUE(plan.params->allContextsMandatory());
  EXPECT_EQ(plan.hostInfo.bundleIdentifier, "com.example.tool");
  EXPECT_EQ(plan.hostInfo.buildNumber, "77");
}

TEST(AccountSetupTest, ServiceBaseIsMappedOrRefused) {
  GlobalOptions options;
  options.service = "http://localhost:8123";
  options.account = "globex";
  const auto plan = planOf(options);
  EXPECT_EQ(plan.service, ServiceKind::Given);
  ASSERT_TRUE(plan.hosts.has_value());
  auto expected = QXServiceHosts::fromServiceBase("http://localhost:8123");
  ASSERT_TRUE(std::holds_alternative<QXServiceHosts>(expected));
  EXPECT_EQ(*plan.hosts, std::get<QXServiceHosts>(expected));

  for (const char* refused : {"ftp://example.com", "http://example.com:80", "not a url"}) {
    options.service = refused;
    auto result = planAccount(options);
    ASSERT_TRUE(std::holds_alternative<UsageError>(result)) << refused;
    EXPECT_NE(std::get<UsageError>(result).message.find(refused), std::string::npos)
        << std::get<UsageError>(result).message;
  }
}

}  // namespace
}  // namespace quorvix::cli
