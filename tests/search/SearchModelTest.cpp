#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

#include "conversation/ExtraData.h"
#include "quorvix/configuration/QXComponentConfiguration.h"
#include "quorvix/search/QXAutoCompleteResponse.h"
#include "quorvix/search/QXSearchResponse.h"

namespace quorvix {
namespace {

JsonObject object(std::string_view json) { return boost::json::parse(json).as_object(); }

template <class T>
std::shared_ptr<T> read(std::string_view json) {
  const JsonObject params = object(json);
  return T::initWithParams(&params);
}

TEST(ExtraDataTest, BlocksAreCutOutOnlyWhenTheyParse) {
  auto split = extractExtraData(R"(Hello<quorvixextradata>{"a":1}</quorvixextradata>)");
  ASSERT_EQ(split.size(), 2u);
  EXPECT_EQ(split[0], Json("Hello"));
  EXPECT_EQ(split[1], boost::json::parse(R"({"a":1})"));

  const std::string broken = R"(x<quorvixextradata>{"a":</quorvixextradata>)";
  EXPECT_EQ(extractExtraData(broken), JsonArray{Json(broken)});

  // Every copy of the exact block goes; a different second block stays.
  const std::string block = R"(<quorvixextradata>{"a":1}</quorvixextradata>)";
  EXPECT_EQ(extractExtraData("a" + block + "b" + block)[0], Json("ab"));
  const std::string other = R"(<quorvixextradata>{"b":2}</quorvixextradata>)";
  EXPECT_EQ(extractExtraData("a" + block + "b" + other)[0], Json("ab" + other));

  // A missing end marker, or one only before the start, is no block (and no crash).
  const std::string open = R"(body <quorvixextradata>{"a":1})";
  EXPECT_EQ(extractExtraData(open), JsonArray{Json(open)});
  EXPECT_EQ(extractBetween("</e> x <s> y", "<s>", "</e>"), std::nullopt);
  EXPECT_EQ(extractBetween("a {{b}} c", "{{", "}}"), "{{b");
}

TEST(SearchResponseTest, HitsReadTheirIdSummaryAndContextNames) {
  auto response = read<QXSearchResponse>(R"({
    "context": {"v": "3", "order": [1], "values": [{"id": 7, "name": "Pro"}, {"id": "9", "name": "Home"}]},
    "answers": [
      {"id": "101", "resultId": "ignored", "title": "Reset", "body": "long", "summary": "Short<quorvixextradata>{\"k\":1}</quorvixextradata>",
       "contextSelectionOnly": "true", "contextSelection": ["9", 7, 4], "titleAndBodyHash": "h1",
       "rechanneling": [{"actionEsc": 0, "channel": 5, "buttonText": "Call", "phoneNumber": "555"}]},
      {"id": 102, "title": "Other", "contextSelection": [7]},
      "not a hit"
    ],
    "requestId": 55, "kbLanguageCode": "en"})");
  ASSERT_TRUE(response);
  ASSERT_EQ(response->answerList().size(), 2u);
  const auto& hit = response->answerList()[0];
  EXPECT_EQ(hit->resultId(), "101");
  EXPECT_EQ(hit->body()->articleBody(), "Short");
  EXPECT_EQ(hit->body()->extraData(), boost::json::parse(R"({"k":1})"));
  EXPECT_EQ(hit->hash(), "h1");
  ASSERT_EQ(hit->channeling().size(), 1u);
  EXPECT_EQ(hit->channeling()[0]->type(), 5);
  EXPECT_EQ(hit->contextValue(), "Home,Pro,(null)");
  EXPECT_EQ(response->answerList()[1]->resultId(), "102");
  EXPECT_EQ(response->answerList()[1]->contextValue(), "(null)") << "only context-selection-only hits resolve";
  EXPECT_TRUE(response->answerList()[1]->channeling().empty());

  EXPECT_EQ(response->context()->v(), 3);
  EXPECT_EQ(response->multipleContext(), "");
  EXPECT_EQ(response->contextForId(Json("7"))->name(), "Pro");
  EXPECT_EQ(response->contextForId(Json(8)), nullptr);
  EXPECT_FALSE(response->channels().has_value());
  EXPECT_EQ(response->requestId(), Json(55));

  auto single = read<SearchContext>(R"({"values":[{"id":1}]})");
  EXPECT_FALSE(single->multipleContext().has_value());
  auto plain = QXQueryResultBody::initWithBody("no mark-up");
  EXPECT_EQ(plain->articleBody(), "no mark-up");
  EXPECT_FALSE(plain->extraData());
}

TEST(SearchResponseTest, HitsAlwaysHaveAHandlerAndValuesWithoutIdAreIdentifierZero) {
  // No "context" in the reply: the hit still resolves, through an empty context.
  auto bare = read<QXSearchResponse>(R"({"answers":[{"id":"1","contextSelectionOnly":true,"contextSelection":[3]}]})");
  ASSERT_EQ(bare->answerList().size(), 1u);
  const auto handler = bare->answerList()[0]->contextValueHandler();
  ASSERT_TRUE(handler);
  EXPECT_EQ(handler->contextForId(Json(3)), nullptr);
  EXPECT_EQ(handler->multipleContext(), std::nullopt);
  EXPECT_EQ(bare->answerList()[0]->contextValue(), "(null)");

  // A value without "id" reads as identifier 0, as a missing number reads.
  auto noId = read<QXSearchResponse>(R"({"context":{"values":[{"name":"Anonymous"},{"id":"2","name":"Two"}]}})");
  const auto anonymous = noId->contextForId(Json(0));
  ASSERT_TRUE(anonymous);
  EXPECT_EQ(anonymous->name(), "Anonymous");
  EXPECT_EQ(noId->contextForId(Json(2))->name(), "Two");
  EXPECT_EQ(noId->contextForId(Json(5)), nullptr);
}

TEST(SearchResponseTest, ReplyChannelsAreBuiltOnFirstRead) {
  auto response = read<QXSearchResponse>(R"({"rechanneling":[{"actionEsc":1,"linkUrl":"https://x"}]})");
  auto channels = response->channels();
  ASSERT_TRUE(channels);
  ASSERT_EQ(channels->size(), 1u);
  EXPECT_EQ(channels->front(), response->channels()->front()) << "built once";
  EXPECT_EQ(std::dynamic_pointer_cast<QXChannelingOpenCustomURL>(channels->front())->linkUrl(), "https://x");
}

// Styled suggestions: regular font over all but the trailing blank, marked
// words bold at their first occurrence, ranges in UTF-16 units.
class SuggestionStylingTest : public ::testing::Test {
 protected:
  static std::shared_ptr<QXAutoCompleteResponse> reply(std::string_view phrases, std::string_view query) {
    auto params = object(phrases);
    params["query"] = query;
    return QXAutoCompleteResponse::initWithParams(&params);
  }
  QXAutoCompleteConfiguration configuration;
  QXFont regular{"system", 12, false};
  QXFont bold = QXFont::boldSystemFontOfSize(12);
};

TEST_F(SuggestionStylingTest, MarkedWordsAreEmphasisedUnlessTheyAreTheTypedText) {
  auto typedB = reply(R"({"a":["a|b*"]})", "text=b&stemming=true");
  EXPECT_EQ(typedB->query(), "b");
  EXPECT_EQ(typedB->suggestions(configuration)[0], (QXStyledText{"a b ", {{0, 3, regular}}}));
  EXPECT_EQ(typedB->font(), configuration.font());

  auto typedX = reply(R"({"a":["a|b*", "reset,123*|password"]})", "text=x&stemming=true");
  auto styled = typedX->suggestions(configuration);
  EXPECT_EQ(styled[0], (QXStyledText{"a b ", {{0, 2, regular}, {2, 1, bold}}}));
  EXPECT_EQ(styled[1].text, "reset password ");
  EXPECT_EQ(styled[1].runs.front(), (QXFontRun{0, 5, bold}));

  // A marked word found first inside another word is emphasised there.
  auto inside = reply(R"({"a":["password|pass*"]})", "text=x");
  EXPECT_EQ(inside->suggestions(configuration)[0].runs.front(), (QXFontRun{0, 4, bold}));

  // A typed text with a blank arrives percent-encoded and never equals a word.
  auto blank = reply(R"({"a":["re|set*"]})", "text=re%20set");
  EXPECT_EQ(blank->query(), "re%20set");
  EXPECT_EQ(blank->suggestions(configuration)[0].runs.back(), (QXFontRun{3, 3, bold}));

  // The typed text is compared decoded: "don't" arrives as "don%27t" and is still the typed word.
  auto apostrophe = reply(R"({"a":["don't*|stop*"]})", "text=don%27t&stemming=true");
  EXPECT_EQ(apostrophe->query(), "don%27t");
  EXPECT_EQ(apostrophe->suggestions(configuration)[0], (QXStyledText{"don't stop ", {{0, 6, regular}, {6, 4, bold}}}));
}

TEST_F(SuggestionStylingTest, RangesCountUtf16Units) {
  auto accented = reply(R"({"a":["café|crème*|🙂|x*"]})", "text=q");
  auto styled = accented->suggestions(configuration)[0];
  EXPECT_EQ(styled.text, "café crème 🙂 x ");
  // "café " is 5 units, "crème" 5 more; the emoji takes two units.
  EXPECT_EQ(styled.runs, (std::vector<QXFontRun>{{0, 5, regular}, {5, 5, bold}, {10, 4, regular}, {14, 1, bold}}));
}

TEST(SuggestionHelpersTest, DictionaryHelpersDropTheTrailingBlank) {
  auto params = object(R"({"a":["a|b*", "*|c"]})");
  auto eight = fetchSuggestion(params);
  EXPECT_EQ(eight[0], (QXStyledText{"a b", {{2, 1, QXFont::boldSystemFontOfSize(8.0)}}}));
  EXPECT_EQ(eight[1], (QXStyledText{" c", {}})) << "an empty marked word is skipped";
  const QXFont font{"Avenir", 14, true};
  const QXFont family{"Avenir", 14, false};
  EXPECT_EQ(parseAutoComplete(params, font)[0], (QXStyledText{"a b", {{0, 2, family}, {2, 1, font}}}));
  EXPECT_TRUE(answers(object(R"({"x":1})")).empty());
}

}  // namespace
}  // namespace quorvix
