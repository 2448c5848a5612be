#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/faq/FAQAnswer.h"
#include "quorvix/faq/QXFAQGroup.h"
#include "quorvix/faq/QXLabel.h"
#include "quorvix/faq/QXLikeStateHandler.h"

namespace quorvix {
namespace {

std::shared_ptr<QXFAQGroup> group(std::string_view json) {
  const Json value = boost::json::parse(json);
  return QXFAQGroup::initWithParams(value.if_object());
}

TEST(FaqModelTest, GroupReadsTheFirstDataElementAndPresentsItselfAsAReply) {
  auto faq = group(R"({"title":"Start","behavior":2,"data":[
      {"data":[{"objectId":"1","label":"One"},{"objectId":"2","title":"Two","label":"ignored"},7,{"label":"Three"}]},
      {"data":[{"objectId":"99"}]}]})");
  ASSERT_TRUE(faq);
  EXPECT_EQ(faq->title(), "Start");
  EXPECT_EQ(faq->behavior(), Json(2));
  const auto answers = faq->data();
  ASSERT_EQ(answers.size(), 3u) << "only the first element counts, and non-dictionaries are skipped";
  EXPECT_EQ(answers[0]->title(), "One");
  EXPECT_EQ(answers[1]->title(), "Two") << "the label is only a fallback";
  EXPECT_FALSE(answers[2]->resultId());
  EXPECT_TRUE(std::dynamic_pointer_cast<FAQAnswer>(answers[0]));

  auto reply = faq->parse();
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->text(), "Start");
  const auto options = reply->persistentOptions();
  ASSERT_TRUE(options);
  ASSERT_EQ(options->size(), 3u);
  EXPECT_EQ(options->at(1)->text(), "Two");
  EXPECT_EQ(options->at(2)->params().at("kind"), "inlineChoice");
  EXPECT_EQ(options->at(2)->params().at("type"), "url");
  EXPECT_EQ(faq->parse(), reply) << "built once";

  // Answers already built are kept as they are.
  std::vector<std::shared_ptr<QXQueryResult>> kept{answers[2], answers[0]};
  faq->setData(kept);
  EXPECT_EQ(faq->data(), kept);
}

TEST(FaqModelTest, GroupShapesWithoutAnswers) {
  EXPECT_TRUE(group(R"({"title":"x","data":[{"nodata":1}]})")->data().empty());
  EXPECT_TRUE(group(R"({"title":"x","data":[]})")->data().empty());
  EXPECT_TRUE(group(R"({"title":"x","data":{"data":[]}})")->data().empty());
  EXPECT_TRUE(group(R"({"title":"x"})")->data().empty());
  auto untitled = group(R"({"data":[{"data":[{"objectId":"1"}]}]})");
  ASSERT_EQ(untitled->parse()->persistentOptions()->size(), 1u);
  EXPECT_FALSE(untitled->parse()->text());
}

TEST(FaqModelTest, LabelReadsItsFieldsAndCopiesOnlyThem) {
  const Json value = boost::json::parse(
      R"({"id":"27","labelName":"Security","context":"security","icon":"https://cdn.example/s.png",
          "title":"Group title","data":[{"data":[{"objectId":"5","label":"Five"}]}]})");
  auto label = QXLabel::initWithParams(value.if_object());
  ASSERT_TRUE(label);
  EXPECT_EQ(label->labelId(), "27");
  EXPECT_EQ(label->labelName(), "Security");
  EXPECT_EQ(label->context(), "security");
  EXPECT_EQ(label->iconUrl(), "https://cdn.example/s.png");
  EXPECT_EQ(label->title(), "Group title");
  EXPECT_EQ(label->data().size(), 1u);
  label->setIconData(std::string("\x89PNG", 4));

  auto copy = label->copy();
  EXPECT_NE(copy, label);
  EXPECT_EQ(copy->labelId(), "27");
  EXPECT_EQ(copy->labelName(), "Security");
  EXPECT_EQ(copy->context(), "security");
  EXPECT_EQ(copy->iconUrl(), label->iconUrl());
  EXPECT_EQ(copy->iconData(), label->iconData());
  EXPECT_FALSE(copy->title());
  EXPECT_TRUE(copy->data().empty());

  for (const char* icon : {R"({"icon":null})", R"({"icon":42})"}) {
    const Json other = boost::json::parse(icon);
    EXPECT_FALSE(QXLabel::initWithParams(other.if_object())->iconUrl()) << icon;
  }
  // An icon that is no absolute URL is kept as it was sent: a relative path
  // stays a path, and an odd address is data, not a reason to fail.
  for (const char* icon : {"icons/s.png", "a://b?#c", "not a url"}) {
    const Json other = JsonObject{{"icon", icon}};
    EXPECT_EQ(QXLabel::initWithParams(other.if_object())->iconUrl(), icon);
  }
}

TEST(FaqModelTest, AnswerTakesItsIdentifierFromObjectId) {
  const Json value = boost::json::parse(R"({"resultId":"from-url","objectId":"1003","label":"Slow internet",
                                           "body":"Move the router<quorvixextradata>{\"a\":1}</quorvixextradata>"})");
  auto answer = FAQAnswer::initWithParams(value.if_object());
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->resultId(), "1003");
  EXPECT_EQ(answer->title(), "Slow internet");
  ASSERT_TRUE(answer->body());
  EXPECT_EQ(answer->body()->articleBody(), "Move the router");

  const Json noObjectId = boost::json::parse(R"({"resultId":"from-url","title":"T"})");
  EXPECT_FALSE(FAQAnswer::initWithParams(noObjectId.if_object())->resultId()) << "objectId always wins, even absent";
}

TEST(FaqModelTest, LikeStatesAreKeptPerResultAndCleared) {
  QXLikeStateHandler handler;
  EXPECT_FALSE(handler.likeStateWithId("1"));
  handler.updateLikeState(true, "1");
  handler.updateLikeState(false, "2");
  handler.updateLikeState(false, "1");
  EXPECT_EQ(handler.likeStateWithId("1"), false);
  EXPECT_EQ(handler.likeStates().size(), 2u);
  handler.clear();
  EXPECT_FALSE(handler.likeStateWithId("2"));
  handler.updateLikeState(true, "3");
  EXPECT_EQ(handler.likeStates(), (std::map<std::string, bool>{{"3", true}}));
}

}  // namespace
}  // namespace quorvix
