#include <gtest/gtest.h>

#include <boost/json/parse.hpp>

#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/configuration/TextHelpers.h"
#include "quorvix/faq/QXFAQGroup.h"
#include "quorvix/faq/QXLabel.h"
#include "quorvix/search/QXQueryResult.h"

namespace quorvix {
namespace {

std::shared_ptr<QXConfiguration> inflated(std::string_view json) {
  const Json value = boost::json::parse(json);
  return QXConfiguration::initWithParams(value.if_object());
}

constexpr std::string_view kFull = R"({
  "kbId": "4711", "kbLanguageCode": "he",
  "titleTeaserText": "Acme Support", "titleBGColor": "#FF8000", "titleColor": "#1a2B3c",
  "initialText": "Ask away", "voiceEnabled": "YES", "autocompleteEnabled": 1, "hideBranding": false,
  "customNoAnswersText": "Nothing for '{QUERY}'",
  "customNoAnswersTextContext": "Nothing for '{CONTEXT}' or {CONTEXT} or '{CONTEXT}'",
  "feedbackCustomiseText": "Improve?", "feedbackType": "2", "feedbackPositiveButtonText": "Yes",
  "feedbackNegativeButtonText": "No", "feedbackSearchProblemText": "Inaccurate",
  "feedbackProblemWithAnswerText": "Irrelevant", "feedbackDialogType": 3, "feedbackBoxText": "Tell us",
  "feedbackSubmissionText": "Thanks", "feedbackDisclaimerText": "No personal data",
  "faqData": [
    {"title": "Start", "behavior": 1, "data": [{"data": [{"objectId": "1", "label": "One"}, {"objectId": "2", "label": "Two"}]}]},
    {"title": "More", "behavior": 2, "data": [{"data": []}]}
  ],
  "onLoadPageScript": "%5B%7B%22id%22%3A10%2C%22labelName%22%3A%22Billing%22%2C%22icon%22%3Anull%7D%2C%7B%22id%22%3A%2227%22%2C%22labelName%22%3A%22Security%22%2C%22icon%22%3A%22https%3A%2F%2Fcdn.example%2Fs.png%22%7D%5D",
  "conversationSettings": {"data": {"requireAPIKey": true, "feedbackEnabled": true, "feedbackTimeout": 2.5,
                                    "feedbackText": "Helpful?", "askAgent": false, "multiResultsHeader": "Found:"}}
})";

TEST(ConfigurationModelTest, FullConfigurationFillsEveryComponent) {
  auto config = inflated(kFull);
  ASSERT_TRUE(config);
  const QXColor orange{1.0, 128.0 / 255.0, 0.0, 1.0};
  EXPECT_EQ(config->navBar()->backgroundColor(), orange);
  EXPECT_EQ(config->searchBar()->backgroundColor(), orange);
  EXPECT_EQ(config->statusBarColor(), orange);
  EXPECT_EQ(config->navBar()->textColor(), (QXColor{0x1a / 255.0, 0x2b / 255.0, 0x3c / 255.0, 1.0}));
  EXPECT_EQ(config->navBar()->title(), "Acme Support");
  EXPECT_EQ(config->kbId(), "4711");
  EXPECT_EQ(config->languageCode(), "he");
  EXPECT_EQ(config->searchBar()->placeHolder(), "Ask away");
  EXPECT_TRUE(config->searchBar()->voiceEnabled()) << "a text starting with Y reads as true";
  EXPECT_TRUE(config->autoComplete()->autocompleteEnabled());
  EXPECT_FALSE(config->logo()->hideBranding());
  EXPECT_EQ(config->customNoAnswersText(), "Nothing for '{QUERY}'");
  // Only the quoted placeholder is replaced, every time it occurs.
  EXPECT_EQ(config->customNoAnswersTextContext(), "Nothing for '{QUERY}' or {CONTEXT} or '{QUERY}'");
  EXPECT_EQ(config->feedbackCustomiseText(), "Improve?");
  EXPECT_EQ(config->like()->feedbackCustomiseText(), "Improve?");
  EXPECT_EQ(config->like()->feedbackType(), 2) << "a numeric text gives its value";
  EXPECT_TRUE(config->like()->shouldPresentDislikeOptions());
  EXPECT_EQ(config->like()->feedbackPositiveButtonText(), "Yes");
  EXPECT_EQ(config->negativeFeedback()->inAccurateContent(), "Inaccurate");
  EXPECT_EQ(config->negativeFeedback()->notRelevantContent(), "Irrelevant");
  EXPECT_EQ(config->negativeFeedback()->type(), 3);
  EXPECT_EQ(config->negativeFeedback()->placeholder(), "Tell us");
  EXPECT_EQ(config->negativeFeedback()->submitButtonText(), "Submit");
  EXPECT_EQ(config->negativeFeedback()->title(), "Thanks");
  EXPECT_EQ(config->negativeFeedback()->disclaimer(), "No personal data");

  EXPECT_FALSE(config->isContextDependent());
  ASSERT_EQ(config->faqs().size(), 2u);
  EXPECT_EQ(config->faqs().at(0)->title(), "Start");
  ASSERT_EQ(config->faqs().at(0)->data().size(), 2u);
  EXPECT_EQ(config->faqs().at(0)->data()[1]->resultId(), "2");
  EXPECT_EQ(config->faqs().at(0)->data()[1]->title(), "Two");

  ASSERT_EQ(config->labels().size(), 2u);
  EXPECT_EQ(config->labels().at(0)->labelId(), "10") << "a numeric id reads as its decimal text";
  EXPECT_FALSE(config->labels().at(0)->iconUrl());
  EXPECT_EQ(config->labels().at(1)->labelName(), "Security");
  EXPECT_EQ(config->labels().at(1)->iconUrl(), "https://cdn.example/s.png");
  // A range-for over the call holds what it walks, even over a temporary configuration.
  std::vector<std::string> walked;
  for (const auto& group : inflated(kFull)->faqs()) walked.push_back(group->title().value_or("?"));
  for (const auto& label : inflated(kFull)->labels()) walked.push_back(label->labelName().value_or("?"));
  EXPECT_EQ(walked, (std::vector<std::string>{"Start", config->faqs().at(1)->title().value_or("?"), "Billing", "Security"}));

  auto settings = config->conversationSettings();
  EXPECT_TRUE(settings->requireAPIKey());
  EXPECT_TRUE(settings->channelsEnabled());
  EXPECT_TRUE(settings->feedbackEnabled());
  EXPECT_DOUBLE_EQ(settings->feedbackTimeout(), 2.5);
  EXPECT_EQ(settings->feedbackText(), "Helpful?");
  EXPECT_FALSE(settings->askAgent());
  EXPECT_EQ(settings->multiResultsHeader(), "Found:");
  EXPECT_FALSE(config->useLabels());
}

TEST(ConfigurationModelTest, EmptyConfigurationGivesTheDefaults) {
  auto config = inflated("{}");
  ASSERT_TRUE(config);
  EXPECT_EQ(config->customNoAnswersText(), "No answer found for '{QUERY}'. Contact us today and let us know");
  EXPECT_EQ(config->customNoAnswersTextContext(), "No answer found for '{QUERY}'. Contact us today and let us know.");
  EXPECT_EQ(config->feedbackCustomiseText(), "How can we improve article");
  EXPECT_FALSE(config->like()->feedbackCustomiseText()) << "the like settings get no default";
  EXPECT_EQ(config->negativeFeedback()->submitButtonText(), "Submit");
  EXPECT_FALSE(config->navBar()->backgroundColor());
  EXPECT_FALSE(config->statusBarColor());
  EXPECT_FALSE(config->logo()->hideBranding()) << "a missing switch reads as off";
  EXPECT_FALSE(config->isContextDependent());
  EXPECT_TRUE(config->faqs().empty());
  EXPECT_TRUE(config->labels().empty());
  EXPECT_FALSE(config->conversationSettings()->requireAPIKey());
  EXPECT_EQ(config->autoComplete()->font(), QXFont::systemFontOfSize(12.0));
  EXPECT_EQ(config->autoComplete()->boldedFont(), QXFont::boldSystemFontOfSize(12.0));
  EXPECT_EQ(config->searchBar()->searchBarStyle(), 0u);
  EXPECT_EQ(config->params(), JsonObject{});
  EXPECT_FALSE(QXConfiguration::initWithParams(nullptr));
}

TEST(ConfigurationModelTest, FaqDataAndLabelScriptShapes) {
  auto dependent = inflated(R"({"faqData": "context-dependent"})");
  EXPECT_TRUE(dependent->isContextDependent());
  EXPECT_TRUE(dependent->faqs().empty()) << "no groups come from the file";

  // Hostile shapes are read safely: groups that are not dictionaries are skipped.
  auto odd = inflated(R"({"faqData": [1, "x", {"title": "Only", "data": "no"}], "onLoadPageScript": "%ZZ[{"})");
  EXPECT_FALSE(odd->isContextDependent());
  ASSERT_EQ(odd->faqs().size(), 1u);
  EXPECT_TRUE(odd->faqs().at(0)->data().empty());
  EXPECT_TRUE(odd->labels().empty()) << "a script that does not parse leaves the labels unset";

  auto object = inflated(R"({"faqData": {"title": "x"}, "titleBGColor": 12, "conversationSettings": {"data": 5}})");
  EXPECT_TRUE(object->faqs().empty());
  EXPECT_FALSE(object->navBar()->backgroundColor());

  // Settings that name channels alone do not switch them on.
  auto channels = inflated(R"({"conversationSettings": {"data": {"channelsEnabled": true}}})");
  EXPECT_FALSE(channels->conversationSettings()->channelsEnabled());
  EXPECT_FALSE(channels->conversationSettings()->requireAPIKey());
}

TEST(TextHelpersTest, PhonePadStripAndBold) {
  EXPECT_EQ(strip("+1 (555) 010-99#*"), "+155501099#*");
  EXPECT_EQ(strip(""), "");
  EXPECT_EQ(strip("\xD9\xA3 ٣ 7"), "7") << "Arabic-Indic digits are not phone-pad digits";
  EXPECT_TRUE(canBeInputByPhonePad(U'#'));
  EXPECT_FALSE(canBeInputByPhonePad(U'-'));
  EXPECT_FALSE(canBeInputByPhonePad(U'\u0663'));
  const QXFont font{"Helvetica", 17.0, false};
  EXPECT_EQ(bolded(font), (QXFont{"Helvetica", 17.0, true}));
}

TEST(TextHelpersTest, RightToLeftMajority) {
  EXPECT_FALSE(isRTL(""));
  EXPECT_FALSE(isRTL("12345 !?"));
  EXPECT_TRUE(isRTL("שלום עולם"));
  EXPECT_TRUE(isRTL("مرحبا بالعالم"));
  EXPECT_TRUE(isRTL("Router X1 הוא הנתב שלנו החדש"));
  EXPECT_FALSE(isRTL("The word שלום means peace"));
  EXPECT_FALSE(isRTL("ab של")) << "a tie is not a majority";
  EXPECT_FALSE(isRTL("\xD7\xA9\xD7")) << "invalid UTF-8";
  EXPECT_FALSE(isRTL("Привет мир"));
}

}  // namespace
}  // namespace quorvix
