// A whole bot conversation through the real transport against the sandbox service on loopback.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <boost/json.hpp>
#include <mutex>

#include "quorvix/conversation/QXConversationMissingEntity.h"
#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/conversation/QXPersonalInfo.h"
#include "quorvix/engine/Quorvix.h"
#include "quorvix/sandbox/SandboxService.h"
#include "support/Eventually.h"
#include "support/PlatformFixture.h"

namespace quorvix {
namespace {

using testing::eventually;

// Answers the bot like a banking app would: an amount and a date, and the balance.
class BankingHost : public QXChatEngineDelegate {
 public:
  void shouldHandleMissingEntities(std::shared_ptr<QXConversationalResponse> response,
                                   QXMissingEntitiesHandler handler) override {
    {
      std::lock_guard lock(mutex);
      asked.push_back(response->missingEntities().value_or(nullptr));
    }
    auto missing = QXConversationMissingEntity::initWithStatement(response->statement());
    for (const auto& [type, value] : {std::pair{EntityTypeNumber, "250"}, std::pair{EntityTypeDate, "2026-12-01"}}) {
      auto entity = std::make_shared<QXEntity>();
      entity->setType(type);
      entity->setValue(value);
      missing->addEntity(entity);
    }
    handler(missing);
  }
  bool shouldHandlePersonalInformation(std::shared_ptr<QXPersonalInfo> info) override {
    {
      std::lock_guard lock(mutex);
      personalInfoIds.push_back(info->personalInfoId());
    }
    info->personalInfoCallback()(std::nullopt, nullptr);
    return true;
  }
  std::mutex mutex;
  std::vector<Json> asked;
  std::vector<std::string> personalInfoIds;
};

struct Outcome {
  std::mutex mutex;
  bool done = false;
  std::shared_ptr<QXConversationalResponse> response;
  std::optional<QXError> error;
};

class ConversationIntegrationTest : public testing::PlatformFixture {
 protected:
  void SetUp() override {
    PlatformFixture::SetUp();
    ASSERT_NE(service.start(), 0);
    auto hosts = QXServiceHosts::fromServiceBase(service.baseURL());
    ASSERT_FALSE(platform::setServiceHosts(std::get<QXServiceHosts>(hosts)).has_value());
    params->setAccount(sandbox::SandboxService::kDemoAccount);
    params->setKnowledgeBase(sandbox::SandboxService::kDemoKnowledgeBase);
    engine->prepareWithAccountParams(params);
    engine->setChatDelegate(host);
  }
  void TearDown() override {
    engine->stop();
    service.stop();
    PlatformFixture::TearDown();
  }

  // Sends one statement (or postback) and waits for its reply.
  std::shared_ptr<Outcome> say(const std::string& text, bool postback = false) {
    auto outcome = std::make_shared<Outcome>();
    engine->conversationStatement(
        text, postback, std::nullopt,
        [outcome](std::shared_ptr<QXConversationalResponse> response, std::optional<QXError> error) {
          std::lock_guard lock(outcome->mutex);
          outcome->done = true;
          outcome->response = std::move(response);
          outcome->error = std::move(error);
        });
    EXPECT_TRUE(eventually([&] {
      std::lock_guard lock(outcome->mutex);
      return outcome->done;
    }));
    return outcome;
  }

  sandbox::SandboxService service;
  std::shared_ptr<AccountParams> params = std::make_shared<AccountParams>();
  std::shared_ptr<Quorvix> engine = Quorvix::create();
  std::shared_ptr<BankingHost> host = std::make_shared<BankingHost>();
};

TEST_F(ConversationIntegrationTest, AConversationWithEntitiesPersonalInformationAndMasking) {
  std::optional<std::string> id;
  std::atomic<bool> created{false};
  engine->createConversationWithCompletion(
      [&](std::optional<std::string> conversationId, std::optional<QXError> error) {
        EXPECT_FALSE(error.has_value());
        id = conversationId;
        created = true;
      });
  ASSERT_TRUE(eventually([&] { return created.load(); }));
  ASSERT_TRUE(id.has_value());
  EXPECT_EQ(engine->conversationId(), id);

  auto greeting = say(R"({"text":"hi"})");
  ASSERT_NE(greeting->response, nullptr);
  ASSERT_TRUE(greeting->response->quickOptions().has_value());
  std::vector<int64_t> kinds;
  for (const auto& option : *greeting->response->quickOptions()) kinds.push_back(option->kind());
  EXPECT_NE(std::find(kinds.begin(), kinds.end(), 6), kinds.end()) << "a read-more option";
  EXPECT_NE(std::find(kinds.begin(), kinds.end(), 10), kinds.end()) << "a link";
  EXPECT_TRUE(greeting->response->persistentOptions().has_value());

  // The transfer needs an amount and a date: one round with the host, then the answer, masked.
  auto transfer = say("transfer", true);
  ASSERT_NE(transfer->response, nullptr);
  EXPECT_EQ(host->asked.size(), 1u);
  const auto text = transfer->response->text().value_or("");
  EXPECT_NE(text.find("250 will be transferred on 2026-12-01"), std::string::npos) << text;
  EXPECT_EQ(text.find("48213377091"), std::string::npos) << "the reference number is masked: " << text;
  const auto statementRequests = service.requestsFor("/api/conversation/v1/statement");
  ASSERT_EQ(statementRequests.size(), 3u);
  EXPECT_EQ(statementRequests[2].queryValue("postback"), "transfer");
  EXPECT_EQ(statementRequests[2].queryValue("entities"),
            R"([{"type":"number","value":"250"},{"type":"date","value":"2026-12-01"}])");

  // The balance is personal information: the host gives no value, so it becomes a button.
  auto balance = say(R"({"text":"what is my balance"})");
  ASSERT_NE(balance->response, nullptr);
  EXPECT_EQ(host->personalInfoIds, std::vector<std::string>{"accountBalance"});
  EXPECT_EQ(balance->response->text(), "Your current balance is .");
  ASSERT_TRUE(balance->response->actions().has_value());
  EXPECT_EQ((*balance->response->actions())[0]->text(), "Show my balance");

  // An article comes back with its body; an unknown conversation is the service's error.
  auto article = std::make_shared<Outcome>();
  engine->conversationArticle("fees", std::nullopt, [article](auto response, auto error) {
    std::lock_guard lock(article->mutex);
    article->done = true;
    article->response = std::move(response);
    article->error = std::move(error);
  });
  ASSERT_TRUE(eventually([&] {
    std::lock_guard lock(article->mutex);
    return article->done;
  }));
  ASSERT_NE(article->response, nullptr);
  EXPECT_NE(article->response->text().value_or("").find("International transfers"), std::string::npos);

  engine->setConversationId("1");
  auto unknown = say("hi");
  ASSERT_TRUE(unknown->error.has_value());
  EXPECT_EQ(unknown->error->code, 404);
}

}  // namespace
}  // namespace quorvix
