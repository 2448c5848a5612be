#include <gtest/gtest.h>

#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/faq/QXFAQGroup.h"
#include "support/RecordedEngineFixture.h"

namespace quorvix {
namespace {

using testing::queryNames;
using testing::Reply;
using Names = std::vector<std::string>;

using namespace testing::paths;

constexpr const char* kGroupReply =
    R"({"title":"Billing","behavior":1,"data":[{"data":[{"objectId":"7","label":"Refunds"}]}]})";

class ConfigurationFetchTest : public testing::RecordedEngineFixture {};

TEST_F(ConfigurationFetchTest, PrepareFetchesTheConfigurationAndMarksTheEnginePrepared) {
  params->setQuorvixContext(JsonObject{{"product", "Router X1"}});
  params->setApiKey("key");  // with an API key the groups of the file stay
  engine->prepareWithAccountParams(params);
  ASSERT_EQ(handler->sentTo(kCnf).size(), 1u);
  const auto cnf = handler->sentTo(kCnf)[0];
  EXPECT_EQ(queryNames(cnf), (Names{"Referer", "kb", "isFloat", "context"}));
  EXPECT_EQ(cnf.queryValue("kb"), "support");
  EXPECT_EQ(cnf.queryValue("isFloat"), "true");
  EXPECT_EQ(cnf.queryValue("context"), "product:Router X1");
  EXPECT_FALSE(engine->isPrepared());

  std::shared_ptr<QXConfiguration> received;
  engine->setFetchConfiguration([&](auto configuration, auto error) {
    EXPECT_FALSE(error);
    received = configuration;
  });
  EXPECT_EQ(handler->sentTo(kCnf).size(), 1u) << "a stored callback waits for the fetch under way";

  ASSERT_TRUE(handler->answer(kCnf, Reply::json(R"({"kbId":"4711","faqData":[{"title":"Start","data":[]}]})")));
  ASSERT_TRUE(received);
  EXPECT_TRUE(engine->isPrepared());
  EXPECT_EQ(received->kbId(), "4711");
  EXPECT_EQ(received->faqs().size(), 1u);
  EXPECT_EQ(handler->requests().size(), 1u) << "no FAQ read was needed";

  // Once the configuration is held it is handed over at once, synchronously.
  std::shared_ptr<QXConfiguration> again;
  engine->setFetchConfiguration([&](auto configuration, auto) { again = configuration; });
  EXPECT_EQ(again, received);
  EXPECT_EQ(handler->requests().size(), 1u);
}

TEST_F(ConfigurationFetchTest, SecondCallbackBeforeTheFetchEndsIsDroppedAndStartsAnotherFetch) {
  engine->prepareWithAccountParams(params);
  int first = 0, second = 0;
  engine->setFetchConfiguration([&](auto, auto) { ++first; });
  engine->setFetchConfiguration([&](auto, auto) { ++second; });
  EXPECT_EQ(handler->sentTo(kCnf).size(), 2u);
  ASSERT_TRUE(handler->answer(kCnf, Reply::json("{}")));
  ASSERT_TRUE(handler->answer(kCnf, Reply::json("{}")));
  EXPECT_GE(first, 1);
  EXPECT_EQ(second, 0);
}

TEST_F(ConfigurationFetchTest, FailedFetchReportsTheErrorAndLeavesTheEngineUnprepared) {
  engine->prepareWithAccountParams(params);
  std::optional<QXError> error;
  bool called = false;
  engine->setFetchConfiguration([&](auto configuration, auto e) {
    called = true;
    EXPECT_FALSE(configuration);
    error = e;
  });
  ASSERT_TRUE(handler->answer(kCnf, Reply::json(R"({"status":404,"message":"Unknown"})", 404)));
  ASSERT_TRUE(called);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain, "com.quorvix");
  EXPECT_FALSE(engine->isPrepared());
}

// Counts the calls of one `whenConfigured` completion and keeps what it got.
struct ConfiguredCall {
  int calls = 0;
  std::shared_ptr<QXConfiguration> configuration;
  std::optional<QXError> error;
  QXConfigurationCompletion completion() {
    return [this](std::shared_ptr<QXConfiguration> received, std::optional<QXError> failure) {
      ++calls;
      configuration = std::move(received);
      error = std::move(failure);
    };
  }
};

TEST_F(ConfigurationFetchTest, WhenConfiguredSharesOneFetchAndStartsAnotherAfterAFailure) {
  // The preparation's fetch fails before anyone asked: a callback given to
  // `setFetchConfiguration` now would wait for a fetch that is over.
  engine->prepareWithAccountParams(params);
  ASSERT_TRUE(handler->answer(kCnf, Reply::failure(-1004)));

  ConfiguredCall first, second;
  engine->whenConfigured(first.completion());
  engine->whenConfigured(second.completion());
  EXPECT_EQ(handler->sentTo(kCnf).size(), 2u) << "the two calls share one new fetch";
  ASSERT_TRUE(handler->answer(kCnf, Reply::json("", 200)));
  EXPECT_EQ(first.calls, 1);
  ASSERT_TRUE(first.error) << "a reply that is not a configuration still ends the wait";
  EXPECT_EQ(first.error->code, errors::notValidResponse().code);

  // Waiting across a new preparation: the earlier account's answer is not it.
  engine->whenConfigured(first.completion());
  engine->whenConfigured(second.completion());
  auto other = std::make_shared<AccountParams>();
  other->setAccount("globex");
  engine->prepareWithAccountParams(other);
  EXPECT_EQ(handler->sentTo(kCnf).size(), 4u);
  ASSERT_TRUE(handler->answer(kCnf, Reply::json(R"({"kbId":"old"})")));
  EXPECT_EQ(first.calls, 1);
  ASSERT_TRUE(handler->answer(kCnf, Reply::json(R"({"kbId":"new"})")));
  EXPECT_EQ(first.calls, 2);
  EXPECT_EQ(second.calls, 2);
  ASSERT_TRUE(second.configuration);
  EXPECT_EQ(second.configuration->kbId(), "new");
  EXPECT_TRUE(engine->isPrepared());

  // Once prepared the configuration is handed over at once, with no request.
  ConfiguredCall later;
  engine->whenConfigured(later.completion());
  EXPECT_EQ(later.calls, 1);
  EXPECT_EQ(later.configuration, second.configuration);
  EXPECT_EQ(handler->sentTo(kCnf).size(), 4u);

  // Without an account nothing can be fetched: the address error, at once.
  auto bare = Quorvix::create();
  ConfiguredCall refused;
  bare->whenConfigured(refused.completion());
  EXPECT_EQ(refused.calls, 1);
  ASSERT_TRUE(refused.error);
  EXPECT_EQ(refused.error->domain, "com.quorvix.engine");
}

TEST_F(ConfigurationFetchTest, AnswerForAnEarlierPreparationIsDropped) {
  engine->prepareWithAccountParams(params);
  auto other = std::make_shared<AccountParams>();
  other->setAccount("globex");
  engine->prepareWithAccountParams(other);
  ASSERT_TRUE(handler->answer(kCnf, Reply::json(R"({"kbId":"old"})")));
  EXPECT_FALSE(engine->isPrepared());
  ASSERT_TRUE(handler->answer(kCnf, Reply::json(R"({"kbId":"new"})")));
  EXPECT_TRUE(engine->isPrepared());
  EXPECT_EQ(engine->configuration()->kbId(), "new");
}

TEST_F(ConfigurationFetchTest, LabelIdReplacesTheGroupsOfTheFile) {
  params->setLabelId("27");
  params->setAllContextsMandatory(true);
  handler->autoReply(kGroup, {Reply::json(kGroupReply)});
  handler->autoReply(kCnf, {Reply::json(R"({"faqData":[{"title":"A"},{"title":"B"}]})")});
  engine->prepareWithAccountParams(params);

  ASSERT_TRUE(engine->isPrepared());
  ASSERT_EQ(handler->sentTo(kGroup).size(), 1u);
  const auto group = handler->sentTo(kGroup)[0];
  EXPECT_EQ(queryNames(group), (Names{"account", "labelId", "kb", "allContextsMandatory", "items"}));
  EXPECT_EQ(group.queryValue("labelId"), "1B");
  EXPECT_EQ(group.queryValue("allContextsMandatory"), "true");
  EXPECT_EQ(group.queryValue("items"), "1000");
  const auto faqs = engine->configuration()->faqs();
  ASSERT_EQ(faqs.size(), 1u);
  EXPECT_EQ(faqs.at(0)->title(), "Billing");
  EXPECT_EQ(faqs.at(0)->data().size(), 1u);
}

TEST_F(ConfigurationFetchTest, ContextDependentListIsReadAndItsFailureLeavesNoGroups) {
  params->setQuorvixContext(JsonObject{{"product", "M2"}});
  handler->autoReply(kCnf, {Reply::json(R"({"faqData":"context-dependent"})")});
  handler->autoReply(kList, {Reply::json(std::string("[") + kGroupReply + "," + kGroupReply + "]")});
  engine->prepareWithAccountParams(params);
  ASSERT_EQ(handler->sentTo(kList).size(), 1u);
  EXPECT_EQ(queryNames(handler->sentTo(kList)[0]), (Names{"account", "isFloat", "context", "kb"}));
  EXPECT_EQ(handler->sentTo(kList)[0].queryValue("context"), "cHJvZHVjdDpNMg==");
  EXPECT_EQ(engine->configuration()->faqs().size(), 2u);

  handler->autoReply(kList, {Reply::failure(-1009)});
  engine->prepareWithAccountParams(params);
  EXPECT_TRUE(engine->isPrepared());
  EXPECT_TRUE(engine->configuration()->faqs().empty());
  EXPECT_EQ(log->countStartingWith("com.quorvix Error:"), 1u);
}

TEST_F(ConfigurationFetchTest, ContextGroupIsReadWithoutApiKeyAndSkipsMissingValues) {
  params->setKnowledgeBase(std::nullopt);
  params->setQuorvixContext(JsonObject{{"product", "M2"}});
  handler->autoReply(kCnf, {Reply::json(R"({"faqData":[{"title":"From file"}]})")});
  handler->autoReply(kGroup, {Reply::json(kGroupReply), Reply::json(R"({"status":500,"message":"down"})")});
  engine->prepareWithAccountParams(params);
  ASSERT_EQ(handler->sentTo(kGroup).size(), 1u);
  EXPECT_EQ(queryNames(handler->sentTo(kGroup)[0]), (Names{"account", "allContextsMandatory", "items", "context"}));
  ASSERT_EQ(engine->configuration()->faqs().size(), 1u);
  EXPECT_EQ(engine->configuration()->faqs().at(0)->title(), "Billing");

  // A blocking read takes whatever parses, whatever "status" the body gives.
  engine->prepareWithAccountParams(params);
  ASSERT_EQ(engine->configuration()->faqs().size(), 1u);
  EXPECT_EQ(engine->configuration()->faqs().at(0)->title(), std::nullopt);
  EXPECT_EQ(log->countStartingWith("com.quorvix Error:"), 0u);
}

}  // namespace
}  // namespace quorvix
