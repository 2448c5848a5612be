#include <gtest/gtest.h>

#include <boost/json.hpp>
#include <functional>
#include <pthread.h>
#include <thread>

#include "engine/Helpers.h"
#include "quorvix/conversation/QXChatEngineDelegate.h"
#include "quorvix/conversation/QXConversationMissingEntity.h"
#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/conversation/QXPersonalInfo.h"
#include "quorvix/conversation/QXTokenizer.h"
#include "support/ErrorMatchers.h"
#include "support/RecordedEngineFixture.h"

namespace quorvix {
namespace {

using testing::queryNames;
using testing::Reply;
using Items = std::vector<QueryItem>;

constexpr const char* kCreate = "/api/conversation/v1/create";
constexpr const char* kStatement = "/api/conversation/v1/statement";
constexpr const char* kFeedback = "/api/conversation/v1/createFeedbackResponse";

// A chat delegate that keeps what the engine asks.
class RecordingChatDelegate : public QXChatEngineDelegate {
 public:
  void shouldHandleMissingEntities(std::shared_ptr<QXConversationalResponse> response,
                                   QXMissingEntitiesHandler handler) override {
    missingReplies.push_back(std::move(response));
    handlers.push_back(std::move(handler));
  }
  bool shouldHandlePersonalInformation(std::shared_ptr<QXPersonalInfo> info) override {
    infos.push_back(info);
    return true;
  }
  std::vector<std::shared_ptr<QXConversationalResponse>> missingReplies;
  std::vector<QXMissingEntitiesHandler> handlers;
  std::vector<std::shared_ptr<QXPersonalInfo>> infos;
};

// What a completion received.
struct Outcome {
  int calls = 0;
  std::shared_ptr<QXConversationalResponse> response;
  std::optional<QXError> error;
};

class ConversationExchangeTest : public testing::RecordedEngineFixture {
 protected:
  void SetUp() override {
    RecordedEngineFixture::SetUp();
    // The configuration fetch that preparing starts goes to a handler of its own.
    engine->setConnectionHandler(std::make_shared<testing::RecordingConnectionHandler>());
    engine->prepareWithAccountParams(params);
    engine->setConnectionHandler(handler);
    engine->setChatDelegate(delegate);
    engine->tokenizer()->setToken(250000);
  }

  QXConversationCompletion record(Outcome& outcome) {
    return [&outcome](std::shared_ptr<QXConversationalResponse> response, std::optional<QXError> error) {
      ++outcome.calls;
      outcome.response = std::move(response);
      outcome.error = std::move(error);
    };
  }

  Items items(std::size_t index) const { return handler->components(index).queryItems(); }
  std::size_t last() const { return handler->requests().size() - 1; }

  std::shared_ptr<RecordingChatDelegate> delegate = std::make_shared<RecordingChatDelegate>();
};

TEST_F(ConversationExchangeTest, PlainCreateSendsItsItemsAndKeepsTheId) {
  std::optional<std::string> id;
  int calls = 0;
  engine->createConversationWithCompletion(
      [&](std::optional<std::string> conversationId, std::optional<QXError> error) {
        ++calls;
        id = conversationId;
        EXPECT_FALSE(error.has_value());
      });
  EXPECT_EQ(handler->components(0).path(), kCreate);
  EXPECT_EQ(items(0), (Items{{"kb", "support"}, {"textOnly", "false"}}));
  ASSERT_TRUE(handler->answer(kCreate, Reply::json(R"({"id":7001,"status":200})")));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(id, "7001");
  EXPECT_EQ(engine->conversationId(), "7001");

  // With an API key it comes last; a create answer without a body never completes.
  params->setApiKey("demo-key");
  engine->createConversationWithCompletion([&](std::optional<std::string>, std::optional<QXError>) { ++calls; });
  EXPECT_EQ(items(1), (Items{{"kb", "support"}, {"textOnly", "false"}, {"apiKey", "demo-key"}}));
  ASSERT_TRUE(handler->answer(kCreate, Reply::json("")));
  EXPECT_EQ(calls, 1);

  std::optional<QXError> failure;
  engine->createConversationWithCompletion(
      [&](std::optional<std::string> conversationId, std::optional<QXError> error) {
        EXPECT_FALSE(conversationId.has_value());
        failure = error;
      });
  ASSERT_TRUE(handler->answer(kCreate, Reply::json(R"({"status":403,"message":"no"})", 403)));
  ASSERT_TRUE(failure.has_value());
  EXPECT_EQ(failure->code, 403);
}

TEST_F(ConversationExchangeTest, CreateWithEntitiesFetchesTheConfigurationFirst) {
  engine->setConversationId("old");
  std::optional<Json> answer;
  int calls = 0;
  engine->createConversationWithEntities({EntityTypeDate, EntityTypeNumber}, true,
                                         [&](std::optional<Json> created, std::optional<QXError> error) {
                                           ++calls;
                                           answer = created;
                                           EXPECT_FALSE(error.has_value());
                                         });
  EXPECT_EQ(handler->components(0).path(), "/widget/scripts/cnf.json");
  EXPECT_FALSE(engine->isPrepared());
  ASSERT_TRUE(handler->answer("/widget/scripts/cnf.json", Reply::json(R"({"kbId":"4711"})")));
  // Prepared as soon as the create request is out, before its answer.
  EXPECT_TRUE(engine->isPrepared());
  EXPECT_FALSE(engine->conversationId().has_value());
  EXPECT_EQ(handler->components(1).path(), kCreate);
  EXPECT_EQ(items(1), (Items{{"apiKey", std::nullopt},
                             {"kb", "support"},
                             {"account", "acme"},
                             {"textOnly", "true"},
                             {"touchpoint", "iOS"},
                             {"sdk", engineVersion()},
                             {"supportedEntities", "date,number"}}));
  ASSERT_TRUE(handler->answer(kCreate, Reply::json(R"({"id":7002,"status":200})")));
  ASSERT_EQ(calls, 1);
  EXPECT_EQ(answer->at("id"), 7002);
  EXPECT_FALSE(engine->conversationId().has_value()) << "this road does not keep the id";

  // No entities: no "supportedEntities"; a context is appended in its wire form.
  params->setApiKey("demo-key");
  params->setQuorvixContext(JsonObject{{"Product", "Card"}});
  engine->createConversationWithEntities({}, false, [&](std::optional<Json>, std::optional<QXError>) { ++calls; });
  ASSERT_TRUE(handler->answer("/widget/scripts/cnf.json", Reply::json(R"({"kbId":"4711"})")));
  const auto sent = items(last());
  ASSERT_EQ(sent.size(), 7u);
  EXPECT_EQ(sent[0], (QueryItem{"apiKey", "demo-key"}));
  EXPECT_EQ(sent[3], (QueryItem{"textOnly", "false"}));
  EXPECT_EQ(sent[6], (QueryItem{"context", "Product:Card"}));

  // A failed configuration fetch ends the road with its error.
  std::optional<QXError> failure;
  engine->createConversationWithEntities({}, false,
                                         [&](std::optional<Json>, std::optional<QXError> error) { failure = error; });
  ASSERT_TRUE(handler->answer("/widget/scripts/cnf.json", Reply::failure(-1009)));
  EXPECT_THAT(failure, testing::IsLostConnection()) << "a lost connection reaches the caller as the connection layer reports it";
}

TEST_F(ConversationExchangeTest, StatementsAreRestoredPostbacksGoUntouchedAndTheHeldIdWins) {
  engine->tokenizer()->replaceValue("1234567");
  Outcome outcome;
  engine->conversationStatement(R"({"text":"pay 250000 now"})", false, "11", record(outcome));
  EXPECT_EQ(handler->components(0).path(), kStatement);
  EXPECT_EQ(items(0), (Items{{"statement", R"({"text":"pay 1234567 now"})"}, {"id", "11"}}));

  engine->conversationStatement(R"({"text":"pay 250000 now"})", true, "99", record(outcome));
  EXPECT_EQ(items(1), (Items{{"postback", R"({"text":"pay 250000 now"})"}, {"id", "11"}}));
  engine->conversationArticle("fees", "99", record(outcome));
  EXPECT_EQ(items(2), (Items{{"articleId", "fees"}, {"id", "11"}}));
  EXPECT_EQ(engine->conversationId(), "11");
  // The logged address shows the statement as the user wrote it, with the token.
  std::size_t withToken = 0;
  for (const auto& line : log->lines()) {
    EXPECT_EQ(line.find("1234567"), std::string::npos) << line;
    withToken += line.starts_with("URL :: ") && line.find("pay%20250000%20now") != std::string::npos;
  }
  EXPECT_EQ(withToken, 2u) << "the statement and the postback";
}

TEST_F(ConversationExchangeTest, AnswerPipelineOrder) {
  Outcome failed, empty, masked;
  engine->conversationStatement("hi", false, "1", record(failed));
  engine->conversationStatement("hi", false, "1", record(empty));
  engine->conversationStatement("hi", false, "1", record(masked));
  ASSERT_TRUE(handler->answer(kStatement, Reply::json("not json")));
  ASSERT_TRUE(handler->answer(kStatement, Reply::json("")));
  ASSERT_TRUE(handler->answer(kStatement, Reply::json(R"({"text":"{\"text\":\"card 1234567 ok\"}","status":200})")));

  EXPECT_EQ(failed.calls, 1);
  EXPECT_EQ(failed.response, nullptr);
  ASSERT_TRUE(failed.error.has_value());
  EXPECT_EQ(empty.calls, 0) << "an empty body ends the exchange silently";
  ASSERT_EQ(masked.calls, 1);
  EXPECT_FALSE(masked.error.has_value());
  EXPECT_EQ(boost::json::parse(*masked.response->text()), boost::json::parse(R"({"text":"card 250000 ok"})"));
  // Plain text is not masked: only a text that is itself a JSON object with "text" is.
  Outcome plain;
  engine->conversationArticle("a1", "1", record(plain));
  ASSERT_TRUE(handler->answer(kStatement, Reply::json(R"({"text":"card 7654321 ok","status":200})")));
  EXPECT_EQ(plain.response->text(), "card 7654321 ok");
}

TEST_F(ConversationExchangeTest, MissingEntitiesGoToTheDelegateAndResendsKeepThenDropThePostbackFlag) {
  Outcome outcome;
  engine->conversationStatement("transfer", true, "5", record(outcome));
  ASSERT_TRUE(
      handler->answer(kStatement, Reply::json(R"({"text":"Need details","missingEntities":[{"type":"number"}]})")));
  EXPECT_EQ(outcome.calls, 0);
  ASSERT_EQ(delegate->handlers.size(), 1u);
  EXPECT_EQ(delegate->missingReplies[0]->text(), "Need details");

  auto missing = QXConversationMissingEntity::initWithStatement("transfer");
  auto amount = std::make_shared<QXEntity>();
  amount->setType(EntityTypeNumber);
  amount->setValue("100");
  missing->addEntity(amount);
  delegate->handlers[0](missing);
  delegate->handlers[0](missing);  // the handler acts once
  ASSERT_EQ(handler->requests().size(), 2u);
  EXPECT_EQ(items(1),
            (Items{{"postback", "transfer"}, {"entities", R"([{"type":"number","value":"100"}])"}, {"id", "5"}}));

  // Still missing: the delegate is asked again, and this resend goes as a statement.
  ASSERT_TRUE(handler->answer(kStatement, Reply::json(R"({"missingEntities":[{"type":"date"}]})")));
  EXPECT_EQ(outcome.calls, 0);
  ASSERT_EQ(delegate->handlers.size(), 2u);
  delegate->handlers[1](QXConversationMissingEntity::initWithStatement("transfer"));
  EXPECT_EQ(items(2), (Items{{"statement", "transfer"}, {"entities", "[]"}, {"id", "5"}}));

  // The whole answer to a resend is masked.
  ASSERT_TRUE(handler->answer(kStatement, Reply::json(R"({"text":"Done, reference 48213377091.","status":200})")));
  ASSERT_EQ(outcome.calls, 1);
  EXPECT_EQ(outcome.response->text(), "Done, reference 250000.");
  EXPECT_EQ(engine->tokenizer()->extractValue("250000"), "48213377091");
}

TEST_F(ConversationExchangeTest, ArticleAnswersAndEntityAnswersWithoutABodyDoNotAskTheDelegate) {
  Outcome article;
  engine->conversationArticle("a1", "5", record(article));
  ASSERT_TRUE(handler->answer(kStatement, Reply::json(R"({"text":"Body","missingEntities":[]})")));
  EXPECT_EQ(article.calls, 1) << "an article answer lacking entities reaches the host as it is";
  EXPECT_TRUE(delegate->handlers.empty());

  Outcome silent;
  engine->sendMissingEntities("[]", false, "5", "x", record(silent));
  ASSERT_TRUE(handler->answer(kStatement, Reply::json("")));
  EXPECT_EQ(silent.calls, 0);
  engine->sendMissingEntities("[]", false, "5", "x", record(silent));
  ASSERT_TRUE(handler->answer(kStatement, Reply::failure(-1009)));
  EXPECT_EQ(silent.calls, 1);
  EXPECT_THAT(silent.error, testing::IsLostConnection());
}

TEST_F(ConversationExchangeTest, PlaceholdersAreResolvedOneAfterTheOtherWithOneCompletion) {
  Outcome outcome;
  engine->conversationStatement("balance", false, "5", record(outcome));
  ASSERT_TRUE(handler->answer(
      kStatement,
      Reply::json(
          R"({"text":"You have {{balance(account:main)}} on {{card(ButtonText:Show card,x:1:2)}}.","isReadMore":true})")));
  ASSERT_EQ(delegate->infos.size(), 1u);
  EXPECT_EQ(delegate->infos[0]->personalInfoId(), "balance");
  EXPECT_EQ(delegate->infos[0]->methodArgs(), std::vector<std::string>{"account:main"});
  // The host may answer later and from another thread.
  std::thread host([info = delegate->infos[0]] { info->personalInfoCallback()("120 EUR", nullptr); });
  host.join();
  EXPECT_EQ(outcome.calls, 0);
  ASSERT_EQ(delegate->infos.size(), 2u);
  EXPECT_EQ(delegate->infos[1]->signature(), "card(ButtonText:Show card,x:1:2)");
  delegate->infos[1]->personalInfoCallback()(std::nullopt, nullptr);
  delegate->infos[1]->personalInfoCallback()("again", nullptr);  // a second answer is ignored

  ASSERT_EQ(outcome.calls, 1);
  EXPECT_EQ(outcome.response->text(), "You have 120 EUR on .");
  EXPECT_EQ(outcome.response->isReadMore(), false);
  ASSERT_TRUE(outcome.response->actions().has_value());
  ASSERT_EQ(outcome.response->actions()->size(), 1u);
  const auto button = outcome.response->actions()->front();
  EXPECT_EQ(button->actionId(), "card");
  EXPECT_EQ(button->text(), "Show card");
  EXPECT_EQ(button->userInfo(), boost::json::parse(R"({"ButtonText":"Show card","x":"2"})").as_object());
}

// Runs `work` on a thread with a small stack: work that recurses per input item overflows it.
void onSmallStack(const std::function<void()>& work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 512 * 1024);
  pthread_t thread;
  auto run = [](void* argument) -> void* {
    (*static_cast<const std::function<void()>*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

// A host that answers every placeholder at once, on the thread that asks.
class AnsweringChatDelegate : public RecordingChatDelegate {
 public:
  bool shouldHandlePersonalInformation(std::shared_ptr<QXPersonalInfo> info) override {
    ++asked;
    info->personalInfoCallback()(info->personalInfoId().substr(1), nullptr);
    return true;
  }
  int asked = 0;
};

TEST_F(ConversationExchangeTest, ManyPlaceholdersAnsweredAtOnceAreResolvedWithoutRecursion) {
  auto answering = std::make_shared<AnsweringChatDelegate>();
  engine->setChatDelegate(answering);
  std::string text;
  std::string expected;
  for (int i = 0; i < 3000; ++i) {
    text += "{{p" + std::to_string(i) + "()}}.";
    expected += std::to_string(i) + ".";
  }
  Outcome outcome;
  engine->conversationStatement("all", false, "5", record(outcome));
  const std::string body = boost::json::serialize(JsonObject{{"text", text}});
  onSmallStack([&] { ASSERT_TRUE(handler->answer(kStatement, Reply::json(body))); });
  EXPECT_EQ(answering->asked, 3000);
  ASSERT_EQ(outcome.calls, 1);
  EXPECT_EQ(outcome.response->text(), expected);
}

TEST_F(ConversationExchangeTest, PlaceholdersWithoutAHelpingDelegateNeverComplete) {
  engine->setChatDelegate({});
  Outcome outcome;
  engine->conversationStatement("balance", false, "5", record(outcome));
  ASSERT_TRUE(handler->answer(kStatement, Reply::json(R"({"text":"{{balance()}}"})")));
  EXPECT_EQ(outcome.calls, 0);

  // A caption that holds the placeholder is resolved too, instead of being asked for forever.
  engine->setChatDelegate(delegate);
  engine->conversationStatement("balance", false, "5", record(outcome));
  ASSERT_TRUE(handler->answer(kStatement, Reply::json(R"({"answersCaption":"Now {{b()}}","text":"x"})")));
  ASSERT_EQ(delegate->infos.size(), 1u);
  delegate->infos[0]->personalInfoCallback()("3", nullptr);
  ASSERT_EQ(outcome.calls, 1);
  EXPECT_EQ(outcome.response->text(), "Now 3");
}

TEST_F(ConversationExchangeTest, FeedbackNeedsAnOpenConversation) {
  int calls = 0;
  std::shared_ptr<QXConversationalResponse> feedback;
  engine->sendConversationFeedbackWithCompletion([&](std::shared_ptr<QXConversationalResponse> response) {
    ++calls;
    feedback = std::move(response);
  });
  EXPECT_EQ(calls, 1);
  EXPECT_TRUE(handler->requests().empty());

  engine->setConversationId("42");
  engine->sendConversationFeedbackWithCompletion([&](std::shared_ptr<QXConversationalResponse> response) {
    ++calls;
    feedback = std::move(response);
  });
  EXPECT_EQ(handler->components(0).path(), kFeedback);
  EXPECT_EQ(items(0), (Items{{"id", "42"}}));
  ASSERT_TRUE(handler->answer(kFeedback, Reply::json(R"({"text":"How did we do?","status":200})")));
  EXPECT_EQ(calls, 2);
  ASSERT_NE(feedback, nullptr);
  EXPECT_EQ(feedback->text(), "How did we do?");
}

}  // namespace
}  // namespace quorvix
