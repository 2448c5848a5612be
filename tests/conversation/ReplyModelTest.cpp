#include <gtest/gtest.h>

#include <boost/json.hpp>

#include "quorvix/conversation/QXAction.h"
#include "quorvix/conversation/QXConversationPersistentOption.h"
#include "quorvix/conversation/QXConversationalResponse.h"

namespace quorvix {
namespace {

JsonObject object(std::string_view text) { return boost::json::parse(text).as_object(); }

TEST(ReplyModelTest, CaptionIsShownAndSetTextWritesTheTextKeyOnly) {
  auto reply = QXConversationalResponse::initWithJSON(R"({"answersCaption":"Fees","text":"Body","status":"200"})");
  ASSERT_TRUE(reply->isValid());
  EXPECT_EQ(reply->text(), "Fees");
  EXPECT_EQ(reply->status(), 200);
  reply->setText("Changed");
  EXPECT_EQ(reply->text(), "Fees");
  EXPECT_EQ(reply->params().at("text"), "Changed");

  auto plain = QXConversationalResponse::initWithJSON(R"({"text":"Hello"})");
  plain->setText("Bye");
  EXPECT_EQ(plain->text(), "Bye");
  plain->setText(std::nullopt);
  EXPECT_EQ(plain->text(), "Bye");
}

TEST(ReplyModelTest, TextThatIsNoJsonObjectStillMakesAValidEmptyReply) {
  for (const char* text : {"not json", "[1,2]", ""}) {
    auto reply = QXConversationalResponse::initWithJSON(text);
    EXPECT_TRUE(reply->isValid()) << text;
    EXPECT_TRUE(reply->params().empty()) << text;
    EXPECT_EQ(reply->status(), 0);
    EXPECT_FALSE(reply->text().has_value());
  }
  EXPECT_FALSE(QXConversationalResponse::initWithDictionary(object(R"({"text":"x"})"))->isValid());
  EXPECT_FALSE(QXConversationalResponse::initWithData(R"({"text":"x"})")->isValid());
  EXPECT_EQ(QXConversationalResponse::initWithData(R"({"text":"x"})")->text(), "x");
  // Text that holds an escape such as "%22" keeps its words.
  EXPECT_EQ(QXConversationalResponse::initWithJSON(R"({"text":"Say %22hi%22"})")->text(), "Say %22hi%22");
}

TEST(ReplyModelTest, ListsAreBuiltOnTheFirstReadThatFindsThemAndKept) {
  auto reply = QXConversationalResponse::initWithJSON(
      R"({"quickOptions":[{"text":"A","postback":"a","kind":"url"},{"text":"B","kind":"URL"},7],
          "entities":[{"type":"number","value":"5"}],"missingEntities":[{"type":"date"}]})");
  auto options = reply->quickOptions();
  ASSERT_TRUE(options.has_value());
  ASSERT_EQ(options->size(), 3u);
  EXPECT_EQ((*options)[0]->text(), "A");
  EXPECT_EQ((*options)[0]->postback(), Json("a"));
  EXPECT_EQ((*options)[0]->kind(), 10);
  EXPECT_EQ((*options)[1]->kind(), 0) << "kind names are case-sensitive";
  EXPECT_TRUE((*options)[2]->params().empty());

  ASSERT_TRUE(reply->missingEntities().has_value());
  reply->params()["quickOptions"] = boost::json::array{};
  reply->params()["missingEntities"] = nullptr;
  EXPECT_EQ(reply->quickOptions()->size(), 3u) << "kept from the first read";
  EXPECT_EQ(reply->missingEntities(), boost::json::parse(R"([{"type":"date"}])")) << "kept as it came";
  ASSERT_TRUE(reply->entities().has_value());
  EXPECT_EQ((*reply->entities())[0]->root(), object(R"({"type":"number","value":"5"})"));

  // A key that is missing on the first read is picked up when it appears.
  auto later = QXConversationalResponse::initWithJSON(R"({"text":"x"})");
  EXPECT_FALSE(later->persistentOptions().has_value());
  later->params()["persistentOptions"] = boost::json::array{boost::json::object{{"text", "P"}}};
  ASSERT_TRUE(later->persistentOptions().has_value());
  EXPECT_EQ((*later->persistentOptions())[0]->text(), "P");
}

TEST(ReplyModelTest, SettingPersistentOptionsRewritesTheDictionary) {
  auto reply = QXConversationalResponse::initWithJSON(R"({"quickOptions":[{"text":"Q"}]})");
  ASSERT_EQ(reply->quickOptions()->size(), 1u);
  auto first = std::make_shared<QXConversationPersistentOption>(object(R"({"text":"One","kind":"url"})"));
  auto second = QXConversationQuickOption::initWithParams(nullptr);
  EXPECT_EQ(second, nullptr);
  reply->setPersistentOptions({first, std::make_shared<QXConversationQuickOption>(object(R"({"text":"Two"})"))});
  EXPECT_EQ(reply->params().at("quickOptions"), "");
  EXPECT_EQ(reply->params().at("persistentOptions"),
            boost::json::parse(R"([{"text":"One","kind":"inlineChoice","type":"postback"},
                                   {"text":"Two","kind":"inlineChoice","type":"postback"}])"));
  EXPECT_EQ(reply->quickOptions()->size(), 1u) << "a list already read is kept";
  // A reply whose quick options were not read yet sees the empty string as no options.
  auto fresh = QXConversationalResponse::initWithJSON("{}");
  fresh->setPersistentOptions({first});
  EXPECT_FALSE(fresh->quickOptions().has_value());
  EXPECT_EQ((*fresh->persistentOptions())[0]->kind(), 9);
}

TEST(ReplyModelTest, OptionFieldsAndKindTable) {
  QXConversationQuickOption option(object(R"({"text":"Shown","external":{"a":1}})"));
  option.setText("ignored");
  option.setKind(3);
  option.setType(4);
  EXPECT_EQ(option.text(), "Shown") << "the shown text always comes from the dictionary";
  EXPECT_EQ(option.kind(), 0);
  EXPECT_EQ(option.type(), 4);
  EXPECT_EQ(option.external(), Json(boost::json::object{{"a", 1}}));
  EXPECT_FALSE(option.postback().has_value());
  const char* names[] = {"other",    "askAnAgent", "supportCenterLink", "channel", "clickToCall", "readMore",
                         "feedback", "location",   "inlineChoice",      "url",     "external"};
  for (int i = 0; i < 11; ++i) {
    option.params()["kind"] = names[i];
    EXPECT_EQ(option.kind(), i + 1) << names[i];
  }
  option.params()["kind"] = 6;
  EXPECT_EQ(option.kind(), 0);
}

TEST(ReplyModelTest, ActionsAndTheirDescription) {
  QXConversationalResponse reply;
  EXPECT_FALSE(reply.actions().has_value());
  reply.addAction(nullptr);
  EXPECT_FALSE(reply.actions().has_value());
  auto action = std::make_shared<QXAction>();
  EXPECT_EQ(action->description(), "");
  action->setActionId("accountBalance");
  action->setUserInfo(object(R"({"ButtonText":"Show"})"));
  reply.addAction(action);
  ASSERT_TRUE(reply.actions().has_value());
  EXPECT_EQ(reply.actions()->size(), 1u);
  EXPECT_EQ(action->description(), "\n actionId:accountBalance\n userInfo:{\"ButtonText\":\"Show\"}");
  action->setText("Show");
  EXPECT_EQ(action->description(), "\n actionId:accountBalance\n text:Show\n userInfo:{\"ButtonText\":\"Show\"}");
}

TEST(ReplyModelTest, ReadMoreFlagAndStatementLiveInTheDictionary) {
  auto reply = QXConversationalResponse::initWithJSON(R"({"isReadMore":1,"statement":"hi","articleId":12})");
  EXPECT_EQ(reply->isReadMore(), true);
  reply->setIsReadMore(false);
  EXPECT_EQ(reply->params().at("isReadMore"), false);
  EXPECT_EQ(reply->statement(), "hi");
  reply->setStatement("bye");
  EXPECT_EQ(reply->params().at("statement"), "bye");
  EXPECT_EQ(reply->articleId(), Json(12));
  EXPECT_EQ(reply->inJSON(), boost::json::serialize(reply->params()));
}

}  // namespace
}  // namespace quorvix
