// The sandbox's search, suggestion, context and channel endpoints, over HTTP.

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/json.hpp>
#include <string>
#include <vector>

#include "sandbox/SandboxTestSupport.h"

namespace quorvix::sandbox {
namespace {

namespace json = boost::json;
using testing::SandboxServiceTest;

class SandboxSearchTest : public SandboxServiceTest {
 protected:
  void SetUp() override {
    SandboxServiceTest::SetUp();
    sid_ = openSession();
  }

  json::object getJson(const std::string& target, int expectedStatus = 200) const {
    httplib::Result result = get("acme.localhost", target);
    if (!result) {
      ADD_FAILURE() << "no answer to " << target;
      return {};
    }
    EXPECT_EQ(result->status, expectedStatus) << target << ": " << result->body;
    return json::parse(result->body).as_object();
  }

  json::object search(const std::string& encodedText, const std::string& sid) const {
    return getJson("/api/widget/v1/q.js?text=" + encodedText + "&sid=" + sid);
  }

  static std::vector<std::string> ids(const json::object& reply) {
    std::vector<std::string> found;
    for (const json::value& answer : reply.at("answers").as_array()) found.emplace_back(answer.at("id").as_string());
    return found;
  }

  std::vector<std::string> phrases(const std::string& encodedText, const std::string& stemming = "true") const {
    std::vector<std::string> found;
    const json::object reply =
        getJson("/api/kb/v1/autoComplete?text=" + encodedText + "&stemming=" + stemming + "&sid=" + sid_);
    for (const json::value& phrase : reply.at("a").as_array()) found.emplace_back(phrase.as_string());
    return found;
  }

  std::vector<std::string> channelKinds(const std::string& query) const {
    std::vector<std::string> kinds;
    const json::object reply = getJson("/api/channeling/v1/get?account=acme&referer=x&" + query);
    for (const json::value& channel : reply.at("rechanneling").as_array()) {
      const json::object& description = channel.as_object();
      const json::value* code = description.if_contains("channel");
      kinds.push_back(json::serialize(description.at("actionEsc")) + "/" + (code ? json::serialize(*code) : "-"));
    }
    return kinds;
  }

  std::string sid_;
};

TEST_F(SandboxSearchTest, RankingFoldsCaseAndAccentsAndPrefersTitlesAndMoreWords) {
  const json::object plain = search("reset%20password", sid_);
  const std::vector<std::string> order = ids(plain);
  ASSERT_GE(order.size(), 3U);
  // Both words in the title, then both words (one in the body), then one word.
  EXPECT_EQ(order[0], "1017");
  EXPECT_EQ(order[1], "1002");
  EXPECT_EQ(order[2], "1004");
  // "resetting" is found by its beginning, and ranks last.
  EXPECT_EQ(order.back(), "1006");

  // "RÉSET Pässword" and "re" + combining acute + "set" read as the plain words.
  EXPECT_EQ(ids(search("R%C3%89SET%20P%C3%A4ssword", sid_)), order);
  EXPECT_EQ(ids(search("Re%CC%81set+PASSWORD", sid_)), order);

  // Small words are ignored beside others; alone they still search, at most ten hits.
  EXPECT_EQ(ids(search("how%20do%20I%20reset%20my%20password", sid_)), order);
  EXPECT_EQ(ids(search("how", sid_)).size(), 10U);
  // The extra data inside a body is not searched.
  EXPECT_TRUE(ids(search("videoUrl%20durationSeconds", sid_)).empty());
  // A text without words finds nothing.
  EXPECT_TRUE(ids(search("%3F%3F%20%26", sid_)).empty());
  EXPECT_TRUE(ids(search("", sid_)).empty());

  const json::object& first = plain.at("answers").at(0).as_object();
  EXPECT_EQ(first.at("title"), "I did not receive the password reset email");
  EXPECT_EQ(first.at("contextSelection"), json::array{103});
  EXPECT_EQ(first.at("contextSelectionOnly"), true) << "no context chosen yet";
  const json::object& lights = plain.at("answers").as_array().back().as_object();
  EXPECT_NE(std::string(lights.at("summary").as_string()).find("<quorvixextradata>{"), std::string::npos);
  EXPECT_EQ(plain.at("kbLanguageCode"), "en");
  EXPECT_NE(plain.at("requestId"), search("reset", sid_).at("requestId"));

  EXPECT_EQ(get("acme.localhost", "/api/widget/v1/q.js?text=reset")->status, 400) << "needs a session";
  EXPECT_EQ(get("acme.localhost", "/api/widget/v1/q.js?sid=" + sid_)->status, 400) << "needs a text";
}

TEST_F(SandboxSearchTest, SessionContextNarrowsSearchesAndSuggestions) {
  ASSERT_FALSE(phrases("pass").empty());
  const json::object before = search("reset", sid_);
  EXPECT_EQ(before.at("context").at("values").as_array().size(), 3U);

  // setParams replaces the session's context; later searches see only its articles.
  EXPECT_EQ(getJson("/api/widget/v1/setParams?cb=&context=product%3AMesh%20Node%20M2&sid=" + sid_).at("status"), 200);
  const json::object after = search("reset", sid_);
  EXPECT_EQ(ids(after), std::vector<std::string>{"1010"});
  EXPECT_FALSE(after.at("answers").at(0).as_object().contains("contextSelectionOnly"));
  for (const json::value& value : after.at("context").at("values").as_array()) {
    EXPECT_EQ(value.at("flags"), value.at("id") == "102" ? 1 : 0) << json::serialize(value);
  }
  EXPECT_TRUE(phrases("pass").empty()) << "the password articles are the app's";
  const json::object listed = getJson("/api/widget/v1/contextvalues.js?account=acme&contexts=product&cb=&sid=" + sid_);
  EXPECT_EQ(listed.at("values").at("product").at(1).at("selected"), true);

  // Without a context item the session keeps its context; a nameless entry is refused.
  getJson("/api/widget/v1/setParams?cb=&sid=" + sid_);
  EXPECT_EQ(ids(search("reset", sid_)), std::vector<std::string>{"1010"});
  getJson("/api/widget/v1/setParams?cb=&context=%3AX1&sid=" + sid_, 400);

  // A context given to hello.js narrows that session from the start, folded.
  httplib::Result hello = get("acme.localhost", "/api/widget/v1/hello.js?context=PRODUCT%3Arouter%20x1");
  const std::string routerSid(json::parse(hello->body).at("sessionId").as_string());
  const std::vector<std::string> router = ids(search("reset", routerSid));
  EXPECT_EQ(router.front(), "1002");
  EXPECT_EQ(std::count(router.begin(), router.end(), "1010"), 0);
  EXPECT_EQ(std::count(router.begin(), router.end(), "1017"), 0);
}

TEST_F(SandboxSearchTest, SuggestionsMarkTheCompletionsOfTheTypedWord) {
  const std::vector<std::string> pass = phrases("pass");
  ASSERT_FALSE(pass.empty());
  EXPECT_EQ(pass.front(), "password,2*");
  for (const std::string& phrase : pass) {
    EXPECT_TRUE(phrase == "password,2*" || phrase.find("|password,2*") != std::string::npos) << phrase;
    EXPECT_EQ(std::count(phrase.begin(), phrase.end(), '*'), 1) << phrase;
  }
  EXPECT_EQ(phrases("P%C3%84SS"), pass);

  // Earlier words must be in the phrase; only the last one is completed.
  const std::vector<std::string> resetting = phrases("how%20do%20i%20re");
  ASSERT_FALSE(resetting.empty());
  EXPECT_EQ(resetting.front(), "How|do|I|reset,2*|my|Router|X1|to|factory|settings");
  for (const std::string& phrase : resetting) EXPECT_EQ(phrase.rfind("How|do|I|", 0), 0U) << phrase;

  // After a blank the word is finished: it matches only itself, or what it begins with stemming.
  EXPECT_TRUE(phrases("pass%20", "false").empty());
  EXPECT_EQ(phrases("pass%20", "true"), pass);
  EXPECT_TRUE(phrases("").empty());
  EXPECT_EQ(get("acme.localhost", "/api/kb/v1/autoComplete?text=pass&stemming=true")->status, 400);
}

TEST_F(SandboxSearchTest, ContextValuesListTheNamedContexts) {
  const json::object all = getJson("/api/widget/v1/contextvalues.js?account=acme&contexts=&cb=&sid=" + sid_);
  ASSERT_EQ(all.at("values").as_object().size(), 2U);
  EXPECT_EQ(all.at("values").at("product").at(0), (json::object{{"id", "101"}, {"name", "Router X1"}, {"selected", false}}));
  const json::object both =
      getJson("/api/widget/v1/contextvalues.js?account=acme&contexts=platform%2C%20product&cb=&kb=support&sid=" + sid_);
  EXPECT_EQ(both.at("values").as_object().begin()->key(), "platform") << "in the order asked";
  getJson("/api/widget/v1/contextvalues.js?account=acme&contexts=colour&cb=&sid=" + sid_, 404);
  getJson("/api/widget/v1/contextvalues.js?account=globex&contexts=product&cb=&sid=" + sid_, 400);
  getJson("/api/widget/v1/contextvalues.js?account=acme&contexts=product&cb=&kb=other&sid=" + sid_, 400);
}

TEST_F(SandboxSearchTest, ChannelKindsFollowTheArticleLikeStateAndContext) {
  // Kinds as "actionEsc/channel": phone 0/5, chat 0/3, contact form 0/1, custom address 1, custom script 2.
  EXPECT_EQ(channelKinds("articleId=1002&clientState=negativeFeedback"),
            (std::vector<std::string>{"0/5", "0/3", "0/1", "1/-", "2/-"}));
  EXPECT_EQ(channelKinds("articleId=1002&clientState=none"), (std::vector<std::string>{"0/5", "1/-"}));
  EXPECT_EQ(channelKinds("articleId=1002"), channelKinds("articleId=1002&clientState=none"));
  EXPECT_EQ(channelKinds("articleId=1002&clientState=positiveFeedback"), std::vector<std::string>{"1/-"});
  // The diagnostics script is the router's.
  EXPECT_EQ(channelKinds("articleId=1002&clientState=negativeFeedback&context=product%3AMesh%20Node%20M2&kb=support"),
            (std::vector<std::string>{"0/5", "0/3", "0/1", "1/-"}));
  // Articles without channels of their own get the defaults.
  EXPECT_EQ(channelKinds("articleId=1014&clientState=negativeFeedback"), (std::vector<std::string>{"0/1", "1/-"}));

  const json::object chat = getJson("/api/channeling/v1/get?account=acme&articleId=1029&clientState=negativeFeedback");
  EXPECT_EQ(chat.at("rechanneling").at(1).at("accountNum"), "AC-4711");
  getJson("/api/channeling/v1/get?account=acme&articleId=9999&clientState=none", 404);
  getJson("/api/channeling/v1/get?account=acme&articleId=1002&clientState=angry", 400);
  getJson("/api/channeling/v1/get?account=globex&articleId=1002", 400);
  getJson("/api/channeling/v1/get?account=acme&articleId=1002&kb=nope", 404);

  // Each search hit carries its channels for the state "none".
  const json::object reply = search("factory", sid_);
  EXPECT_EQ(reply.at("answers").at(0).at("rechanneling").as_array().size(), 2U);
  EXPECT_EQ(reply.at("rechanneling").at(0).at("buttonText"), "Ask the community");
}

TEST_F(SandboxSearchTest, ReportsAndEventsCheckWhatTheyCarry) {
  const std::string escalate = "/api/channeling/v1/escalate?apiName=Call%20us&type=5&text=Reset";
  getJson(escalate + "&articleId=1002&sid=" + sid_);
  getJson(escalate + "&articleId=1002", 400);
  getJson(escalate + "&articleId=0&sid=" + sid_, 404);
  getJson("/api/channeling/v1/escalate?apiName=&articleId=1002&type=phone&text=&sid=" + sid_, 400);

  const std::string report = "/api/channeling/v1/report?apiName=Write%20to%20us&reportedEscalationType=1";
  getJson(report + "&articleId=1022&account=acme&kb=&trafficSource=FAQ");
  getJson(report + "&articleId=1022&account=acme&kb=support&trafficSource=FAQ");
  getJson(report + "&articleId=1022&account=globex&kb=&trafficSource=FAQ", 400);
  getJson(report + "&articleId=1022&account=acme&kb=&trafficSource=", 400);
  getJson(report + "&articleId=77&account=acme&kb=&trafficSource=FAQ", 404);

  getJson("/api/widget/v1/trackEvent?conversationId=&eventType=18&data=%7B%22a%22%3A1%7D&referer=x");
  getJson("/api/widget/v1/trackEvent?conversationId=c1&eventType=18&data=%7B%22a%22&referer=x", 400);
  getJson("/api/widget/v1/trackEvent?conversationId=c1&eventType=&data=%7B%7D&referer=x", 400);
}

}  // namespace
}  // namespace quorvix::sandbox
