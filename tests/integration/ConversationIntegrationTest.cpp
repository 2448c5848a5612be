// A whole bot conversation through the real transport against the sandbox service on loopback.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <boost/json.hpp>
#include <mutex>

#include "quorvix/conversation/QXChatEngineDelegate.h"
#include "quorvix/conversation/QXConversationMissingEntity.h"
#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/conversation/QXPersonalInfo.h"
#include "support/SandboxFixture.h"

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

using Reply = std::pair<std::shared_ptr<QXConversationalResponse>, std::optional<QXError>>;

class ConversationIntegrationTest : public testing::SandboxFixture {
 protected:
  void SetUp() override {
    startService();
    engine->prepareWithAccountParams(params);
    engine->setChatDelegate(host);
  }

  // Sends one statement (or postback) and waits for its reply.
  Reply say(const std::string& text, bool postback = false) {
    auto delivery = std::make_shared<testing::Delivery<Reply>>();
    engine->conversationStatement(text, postback, std::nullopt,
                                  [delivery](auto response, auto error) { delivery->deliver({response, error}); });
    auto reply = delivery->take();
    EXPECT_TRUE(reply) << "no reply to " << text;
    return reply.value_or(Reply{});
  }

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
  ASSERT_NE(greeting.first, nullptr);
  ASSERT_TRUE(greeting.first->quickOptions().has_value());
  std::vector<int64_t> kinds;
  for (const auto& option : *greeting.first->quickOptions()) kinds.push_back(option->kind());
  EXPECT_NE(std::find(kinds.begin(), kinds.end(), 6), kinds.end()) << "a read-more option";
  EXPECT_NE(std::find(kinds.begin(), kinds.end(), 10), kinds.end()) << "a link";
  EXPECT_TRUE(greeting.first->persistentOptions().has_value());

  // The transfer needs an amount and a date: one round with the host, then the answer, masked.
  auto transfer = say("transfer", true);
  ASSERT_NE(transfer.first, nullptr);
  EXPECT_EQ(host->asked.size(), 1u);
  const auto text = transfer.first->text().value_or("");
  EXPECT_NE(text.find("250 will be transferred on 2026-12-01"), std::string::npos) << text;
  EXPECT_EQ(text.find("48213377091"), std::string::npos) << "the reference number is masked: " << text;
  const auto statementRequests = service.requestsFor("/api/conversation/v1/statement");
  ASSERT_EQ(statementRequests.size(), 3u);
  EXPECT_EQ(statementRequests[2].queryValue("postback"), "transfer");
  EXPECT_EQ(statementRequests[2].queryValue("entities"),
            R"([{"type":"number","value":"250"},{"type":"date","value":"2026-12-01"}])");

  // The balance is personal information: the host gives no value, so it becomes a button.
  auto balance = say(R"({"text":"what is my balance"})");
  ASSERT_NE(balance.first, nullptr);
  EXPECT_EQ(host->personalInfoIds, std::vector<std::string>{"accountBalance"});
  EXPECT_EQ(balance.first->text(), "Your current balance is .");
  ASSERT_TRUE(balance.first->actions().has_value());
  EXPECT_EQ((*balance.first->actions())[0]->text(), "Show my balance");

  // An article comes back with its body; an unknown conversation is the service's error.
  auto article = std::make_shared<testing::Delivery<Reply>>();
  engine->conversationArticle("fees", std::nullopt,
                              [article](auto response, auto error) { article->deliver({response, error}); });
  const auto fees = article->take().value_or(Reply{});
  ASSERT_NE(fees.first, nullptr);
  EXPECT_NE(fees.first->text().value_or("").find("International transfers"), std::string::npos);

  engine->setConversationId("1");
  auto unknown = say("hi");
  ASSERT_TRUE(unknown.second.has_value());
  EXPECT_EQ(unknown.second->code, 404);
}

}  // namespace
}  // namespace quorvix
