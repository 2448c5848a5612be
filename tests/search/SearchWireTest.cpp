// What the search, suggestion, context and channel operations send, and what
// their completions hear, through a recording transport.
#include <gtest/gtest.h>

#include <algorithm>
#include <boost/json/parse.hpp>

#include "quorvix/channeling/QXWebRequest.h"
#include "quorvix/search/QXAutoCompleteResponse.h"
#include "quorvix/search/QXSearchResponse.h"
#include "support/RecordedEngineFixture.h"

namespace quorvix {
namespace {

using testing::queryNames;
using testing::Reply;
using Names = std::vector<std::string>;

using namespace testing::paths;
constexpr const char* kSuggest = "/api/kb/v1/autoComplete";
constexpr const char* kContextValues = "/api/widget/v1/contextvalues.js";
constexpr const char* kSetParams = "/api/widget/v1/setParams";
constexpr const char* kChannels = "/api/channeling/v1/get";

class SearchWireTest : public testing::RecordedEngineFixture {
 protected:
  void SetUp() override {
    RecordedEngineFixture::SetUp();
    // Sessions and searches need only the account: preparing would also fetch the configuration.
    engine->setAccountParams(params);
    handler->autoReply("/hello.js", {testing::helloReply("s1")});
  }

};

TEST_F(SearchWireTest, SearchSendsTheTextExactlyAndCachesOnlyOnceTheHostLooked) {
  int answered = 0;
  auto search = [&](std::optional<std::string> text) {
    engine->searchText(std::move(text), [&](std::shared_ptr<QXSearchResponse> result, std::optional<QXError> error) {
      EXPECT_TRUE(result);
      EXPECT_FALSE(error);
      ++answered;
    });
  };
  handler->autoReply("/q.js", {Reply::json(R"({"answers":[]})")});
  const std::string text = "a b+c&d=e#f%g é";
  search(text);
  EXPECT_EQ(queryNames(last(kSearch)), (Names{"text", "sid"}));
  EXPECT_EQ(last(kSearch).queryValue("text"), text);
  search(text);
  EXPECT_EQ(count(kSearch), 2u) << "the cache is not used before the host reads it";

  EXPECT_TRUE(engine->cachedSearches().empty());
  search(text);
  search(text);
  EXPECT_EQ(count(kSearch), 3u);
  search(text + " ");
  EXPECT_EQ(count(kSearch), 4u);
  EXPECT_EQ(answered, 5);

  search(std::nullopt);
  EXPECT_EQ(last(kSearch).queryValue("text"), "");
}

TEST_F(SearchWireTest, SearchWithoutResultOrWithErrorReportsAsDescribed) {
  std::vector<std::optional<QXError>> errors;
  auto completion = [&](std::shared_ptr<QXSearchResponse> result, std::optional<QXError> error) {
    EXPECT_FALSE(result);
    errors.push_back(error);
  };
  handler->autoReply("/q.js", {Reply::json(R"({"status":503})"), Reply::json("")});
  engine->searchText("x", completion);
  engine->searchText("y", completion);  // empty body: neither result nor error
  EXPECT_EQ(errors, (std::vector<std::optional<QXError>>{errors::service(503)}));
}

TEST_F(SearchWireTest, AReplyWithBothAnHttpErrorAndAResultGoesAsEachCallOrdersIt) {
  // The search tests the error first; suggestions test the result first.
  handler->autoReply("/q.js", {Reply::json(R"({"answers":[{"id":"1","title":"T"}]})", 500)});
  handler->autoReply("/autoComplete", {Reply::json(R"({"a":["reset|password*"]})", 500)});
  int searches = 0;
  engine->searchText("x", [&](std::shared_ptr<QXSearchResponse> result, std::optional<QXError> error) {
    ++searches;
    EXPECT_FALSE(result);
    EXPECT_EQ(error, errors::service(500));
  });
  int suggestions = 0;
  engine->suggestionsForText("pass", [&](std::shared_ptr<QXAutoCompleteResponse> result, std::optional<QXError> error) {
    ++suggestions;
    ASSERT_TRUE(result);
    EXPECT_EQ(result->a(), std::vector<std::string>{"reset|password*"});
    EXPECT_FALSE(error);
  });
  EXPECT_EQ(searches, 1);
  EXPECT_EQ(suggestions, 1);
  EXPECT_EQ(engine->cachedSuggestions().count("pass"), 1u);
}

TEST_F(SearchWireTest, SuggestionsAreCachedByTextUntilStop) {
  handler->autoReply("/autoComplete", {Reply::json(R"({"a":["reset|password*"]})")});
  std::vector<std::string> queries;
  auto suggest = [&] {
    engine->suggestionsForText("pass word", [&](std::shared_ptr<QXAutoCompleteResponse> result, std::optional<QXError>) {
      ASSERT_TRUE(result);
      queries.push_back(result->query().value_or("?"));
    });
  };
  suggest();
  EXPECT_EQ(queryNames(last(kSuggest)), (Names{"text", "stemming", "sid"}));
  EXPECT_EQ(last(kSuggest).queryValue("stemming"), "true");
  suggest();
  EXPECT_EQ(count(kSuggest), 1u);
  engine->stop();
  suggest();
  EXPECT_EQ(count(kSuggest), 2u);
  EXPECT_EQ(queries, (Names{"pass%20word", "pass%20word", "pass%20word"}));
  EXPECT_EQ(log->countStartingWith("Auto Complete "), 2u);
}

TEST_F(SearchWireTest, ContextsAreListedAndChanged) {
  handler->autoReply("/contextvalues.js", {Reply::json(R"({"values":[1]})")});
  std::optional<Json> listed;
  engine->contextValue("brand,line", [&](std::optional<Json> result, std::optional<QXError>) { listed = result; });
  EXPECT_EQ(queryNames(last(kContextValues)), (Names{"account", "contexts", "cb", "kb", "sid"}));
  EXPECT_EQ(last(kContextValues).queryValue("contexts"), "brand,line");
  ASSERT_TRUE(listed);
  EXPECT_TRUE(listed->as_object().contains("values")) << "the whole reply, not its values";

  std::vector<bool> outcomes;
  auto record = [&](bool ok, std::optional<QXError>) { outcomes.push_back(ok); };
  handler->autoReply("/setParams", {Reply::json(R"({"status":200})"), Reply::json(R"({"x":1})", 500)});
  engine->changeContext(std::nullopt, record);
  EXPECT_EQ(queryNames(last(kSetParams)), (Names{"cb", "sid"}));

  params->setQuorvixContext(JsonObject{{"region", "eu"}});
  engine->changeContext(JsonObject{{"brand", "pro"}}, record);
  EXPECT_EQ(last(kSetParams).queryValue("context"), "brand:pro,region:eu");
  EXPECT_EQ(outcomes, (std::vector<bool>{true, false}));
  ASSERT_EQ(params->dynamicContexts().size(), 1u);
  EXPECT_EQ(params->dynamicContexts()[0]->name(), "brand");
}

TEST_F(SearchWireTest, ChannelsAreFetchedWithoutASession) {
  auto article = std::make_shared<QXQueryResult>();
  article->setResultId("42");
  article->setLikeState(2);
  handler->autoReply("/get", {Reply::json(R"({"rechanneling":[{"actionEsc":0,"channel":5,"buttonText":"Call"},{"actionEsc":2}]})")});
  std::optional<std::vector<std::shared_ptr<QXChanneling>>> channels;
  engine->channels(article, std::nullopt, [&](auto list, std::optional<QXError>) { channels = std::move(list); });
  const auto sent = last(kChannels);
  EXPECT_EQ(queryNames(sent), (Names{"account", "referer", "articleId", "clientState", "kb"}));
  EXPECT_EQ(sent.queryValue("referer"), "app/com.example.host/iOS/42/iOS");
  EXPECT_EQ(sent.queryValue("clientState"), "negativeFeedback");
  EXPECT_EQ(count(kHello), 0u);
  ASSERT_TRUE(channels);
  ASSERT_EQ(channels->size(), 2u);
  EXPECT_EQ((*channels)[0]->type(), 5);

  article->setLikeState(7);  // out of range: sent as no feedback
  engine->channels(article, "pro", nullptr);
  EXPECT_EQ(queryNames(last(kChannels)), (Names{"account", "referer", "articleId", "clientState", "context", "kb"}));
  EXPECT_EQ(last(kChannels).queryValue("clientState"), "none");
}

TEST_F(SearchWireTest, ChannelUseIsEscalatedForHitsAndReportedOtherwise) {
  const auto description = boost::json::parse(R"({"actionEsc":0,"channel":5,"buttonText":"Call us"})");
  auto channel = QXChanneling::initWithParams(description.if_object());
  JsonObject hitJson{{"id", "7"}, {"title", "Reset"}};
  engine->reportChanneling(channel, SearchAnswer::initWithParams(&hitJson));
  const auto escalation = last("/api/channeling/v1/escalate");
  EXPECT_EQ(queryNames(escalation), (Names{"apiName", "articleId", "type", "text", "sid"}));
  EXPECT_EQ(escalation.queryValue("type"), "5");
  EXPECT_EQ(escalation.queryValue("text"), "Reset");

  engine->reportChanneling(channel, std::make_shared<QXQueryResult>());
  const auto report = last("/api/channeling/v1/report");
  EXPECT_EQ(queryNames(report), (Names{"apiName", "articleId", "reportedEscalationType", "account", "kb", "trafficSource"}));
  EXPECT_EQ(report.queryValue("articleId"), "0");
  EXPECT_EQ(report.queryValue("trafficSource"), "FAQ");
  EXPECT_EQ(log->countStartingWith("Report Channel URL:: "), 2u);
  // The escalation is logged as it went out: with "sid" appended, its value hidden.
  const auto lines = log->lines();
  const auto escalated = std::find_if(lines.begin(), lines.end(),
                                      [](const std::string& line) { return line.starts_with("Report Channel URL:: "); });
  ASSERT_NE(escalated, lines.end());
  EXPECT_TRUE(escalated->ends_with("&sid=***")) << *escalated;

  engine->trackEvent(JsonObject{{"event", "open"}});
  const auto event = last("/api/widget/v1/trackEvent");
  EXPECT_EQ(queryNames(event), (Names{"conversationId", "eventType", "data", "referer"}));
  EXPECT_EQ(event.queryValue("conversationId"), "");
  EXPECT_EQ(event.queryValue("eventType"), "18");
  EXPECT_EQ(event.queryValue("data"), R"({"event":"open"})");
  EXPECT_EQ(event.queryValue("referer"), "mobile");
}

TEST(ChannelFactoryTest, KindsFollowTheServiceCodes) {
  auto make = [](std::string_view json) {
    const auto description = boost::json::parse(json);
    return QXChanneling::initWithParams(description.if_object());
  };
  EXPECT_TRUE(std::dynamic_pointer_cast<QXChannelingContactForm>(make(R"({"channel":1})")));
  EXPECT_TRUE(std::dynamic_pointer_cast<QXChannelingChatForm>(make(R"({"actionEsc":"0","channel":3})")));
  auto phone = make(R"({"channel":5,"buttonText":"Call","description":"Mon-Fri","phoneNumber":"555"})");
  ASSERT_TRUE(std::dynamic_pointer_cast<QXChannelingPhoneNumber>(phone));
  EXPECT_EQ(phone->channelDescription(), "Mon-Fri");
  EXPECT_EQ(make(R"({"actionEsc":1})")->type(), 2);
  auto script = make(R"j({"actionEsc":2,"scriptContent":"go()"})j");
  EXPECT_EQ(script->type(), 0);
  EXPECT_EQ(std::dynamic_pointer_cast<QXChannelingCustomScript>(script)->scriptContent(), "go()");
  for (auto plain : {R"({"actionEsc":3,"buttonText":"b"})", R"({"channel":4})", R"({})"}) {
    auto channel = make(plain);
    EXPECT_EQ(typeid(*channel), typeid(QXChanneling)) << plain;
    EXPECT_EQ(channel->type(), 0);
  }

  auto chat = std::dynamic_pointer_cast<QXChannelingChatForm>(make(R"({"channel":3,"accontNum":"a","accountNum":"b","isPopup":"yes"})"));
  EXPECT_EQ(chat->accontNum(), Json("b"));
  EXPECT_FALSE(chat->accountNum());
  EXPECT_TRUE(chat->isPopup());
  auto onlyOld = std::dynamic_pointer_cast<QXChannelingChatForm>(make(R"({"channel":3,"accontNum":"a"})"));
  EXPECT_FALSE(onlyOld->accontNum());
  auto form = std::dynamic_pointer_cast<QXChannelingContactForm>(make(R"({"channel":1,"thankYouMessage":"x","showInArticle":1})"));
  EXPECT_FALSE(form->thankYouMessage());
  EXPECT_EQ(form->showInArticle(), Json(1));
}

QXWebRequest page(std::string url) {
  QXWebRequest request;
  request.url = std::move(url);
  return request;
}

TEST(ChannelPageTest, PrivateSchemeRequestsAreClassified) {
  auto kind = [](std::string url) { return type(page(std::move(url))); };
  EXPECT_TRUE(isQuorvix(page("quorvix://page.cancel")));
  EXPECT_FALSE(isQuorvix(page("https://page.cancel")));
  EXPECT_EQ(kind("quorvix://form.cancel"), 1);
  EXPECT_EQ(kind("quorvix://form.send?result=3"), 3);
  EXPECT_EQ(kind("quorvix://form.send?other=3"), 0);
  EXPECT_EQ(kind("quorvix://form.send?result=3&x=1"), 0);
  EXPECT_EQ(kind("quorvix://exit"), 6);
  EXPECT_EQ(kind("quorvix://a.contactForm/files/removeFile"), 9);
  EXPECT_EQ(kind("quorvix://a.contactForm/upload"), 8);
  EXPECT_EQ(kind("quorvix://a.unknown"), 0);
  EXPECT_EQ(result(page("quorvix://x.send?result=ok&b=2")), "ok");
  EXPECT_EQ(formData(page(R"(quorvix://formData/{"name":"Ann"})")), boost::json::parse(R"({"name":"Ann"})"));
  EXPECT_EQ(formData(page("quorvix://formData/")), std::nullopt);
}

TEST(ChannelPageTest, RawPageAddressesAreReadLeniently) {
  // What a page hands over is often no strict URL; it is read as formData reads it.
  const auto raw = page(R"(quorvix://formData/{"name":"Ann Lee","note":"a|b"})");
  EXPECT_TRUE(isQuorvix(raw));
  EXPECT_EQ(type(raw), 0);
  EXPECT_TRUE(formData(raw));
  EXPECT_TRUE(isQuorvix(page("quorvix:")));
  EXPECT_FALSE(isQuorvix(page("QUORVIX://page.cancel"))) << "the scheme is compared exactly";
  EXPECT_FALSE(isQuorvix(page("https://quorvix:1/")));
  EXPECT_FALSE(isQuorvix(page("")));
  EXPECT_EQ(type(page("quorvix://form.send?result=4 {x}")), 4);
  EXPECT_EQ(type(page("quorvix://a b.cancel")), 1);
  EXPECT_EQ(type(page("quorvix://a.contactForm/files/removeFile?x=\"y\"#top")), 9);
  EXPECT_EQ(result(page("quorvix://x.send?result=a%20b c")), "a b c");
  // An empty query before a fragment: one empty item at most, never a crash.
  EXPECT_EQ(type(page("quorvix://form.send?#c")), 0);
  EXPECT_EQ(result(page("quorvix://form.send?#c")), std::nullopt);
  EXPECT_EQ(type(page("a://b?#c")), 0);
}

}  // namespace
}  // namespace quorvix
