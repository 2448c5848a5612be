// The search, suggestion, context and channel commands: their printing of
// styled text, and a shell session against the embedded sandbox.

#include <gtest/gtest.h>

#include <boost/json.hpp>
#include <string>
#include <vector>

#include "commands/DeliveryWatch.h"
#include "commands/SearchOutput.h"
#include "quorvix/search/QXStyledText.h"
#include "support/LoopbackPorts.h"
#include "support/ToolRun.h"

namespace quorvix::cli {
namespace {

const QXFont kRegular{"Avenir", 14, false};
const QXFont kBold{"Avenir", 14, true};

TEST(SearchOutputTest, EmphasisedRunsAreMarkedAtTheirUtf16Places) {
  // "é" is one UTF-16 unit in two bytes; the emoji is two units in four bytes.
  QXStyledText accented{"Café crème pass ", {{0, 15, kRegular}, {5, 5, kBold}}};
  EXPECT_EQ(markedText(accented, kRegular), "Café *crème* pass");
  QXStyledText emoji{"\xF0\x9F\x98\x80 reset now ", {{0, 13, kRegular}, {3, 5, kBold}}};
  EXPECT_EQ(markedText(emoji, kRegular), "\xF0\x9F\x98\x80 *reset* now");

  // A run in another font counts as emphasised when the regular font is known;
  // without it only bold runs do.
  QXStyledText italic{"reset password ", {{0, 5, QXFont{"Georgia", 14, false}}, {6, 8, kRegular}}};
  EXPECT_EQ(markedText(italic, kRegular), "*reset* password");
  EXPECT_EQ(markedText(italic, std::nullopt), "reset password");

  // Runs past the end, inside a character or empty do not break the text.
  QXStyledText hostile{"ab\xF0\x9F\x98\x80", {{1, 0, kBold}, {3, 9, kBold}, {40, 2, kBold}}};
  EXPECT_EQ(markedText(hostile, kRegular), "ab\xF0\x9F\x98\x80");
  EXPECT_EQ(utf8Offset("\xF0\x9F\x98\x80x", 1), 4U) << "a position inside a pair moves past it";
  EXPECT_EQ(utf8Offset("abc", 99), 3U);

  const auto json = styledTextJson(accented);
  EXPECT_EQ(json.at("runs").at(1).at("location"), 5);
  EXPECT_EQ(json.at("runs").at(1).at("font").at("bold"), true);
}

TEST(SearchOutputTest, DeliveryWatchMatchesThePathOnly) {
  EXPECT_TRUE(DeliveryWatch::pathEndsWith("http://acme.localhost:1/api/channeling/v1/escalate?sid=1", "/escalate"));
  EXPECT_FALSE(DeliveryWatch::pathEndsWith("http://acme.localhost:1/api/x?next=/escalate", "/escalate"));
  EXPECT_FALSE(DeliveryWatch::pathEndsWith("http://acme.localhost:1/api/channeling/v1/reports", "/report"));
}

testing::ToolRun shell(const std::string& input) {
  return testing::runTool({"--json", "--timeout", "20", "shell"}, input);
}

std::vector<std::string> hitIds(const boost::json::value& reply) {
  std::vector<std::string> ids;
  for (const auto& answer : reply.at("answerList").as_array()) ids.emplace_back(answer.at("resultId").as_string());
  return ids;
}

TEST(SearchCommandTest, ShellSearchesNarrowsReportsAndSuggests) {
  const auto run = shell(
      "search reset\n"
      "report 1002 0\n"
      "set-context \"product:Mesh Node M2\"\n"
      "search reset\n"
      "channels 1002 --like-state 2\n"
      "track '{\"action\":\"opened\"}'\n"
      "suggest pass\n");
  ASSERT_EQ(run.code, 0) << run.err;
  ASSERT_EQ(run.lines.size(), 7U) << run.err;

  const auto& first = run.lines[0];
  EXPECT_EQ(hitIds(first).front(), "1002");
  EXPECT_GT(hitIds(first).size(), 1U);
  const auto& lights = first.at("answerList").as_array().back();
  EXPECT_EQ(lights.at("resultId"), "1006");
  EXPECT_TRUE(lights.at("body").at("extraData").is_object()) << "the body's extra data is split off";
  EXPECT_EQ(lights.at("contextValue"), "Router X1");

  // The hit of the search is reported as an escalation, and the service took it.
  EXPECT_EQ(run.lines[1].at("form"), "escalate");
  EXPECT_EQ(run.lines[1].at("channel").at("kind"), "phone");
  EXPECT_EQ(run.lines[1].at("httpStatus"), 200);

  EXPECT_EQ(run.lines[2].at("success"), true);
  EXPECT_EQ(hitIds(run.lines[3]), std::vector<std::string>{"1010"});

  std::vector<std::string> kinds;
  for (const auto& channel : run.lines[4].at("channels").as_array()) kinds.emplace_back(channel.at("kind").as_string());
  EXPECT_EQ(kinds, (std::vector<std::string>{"phone", "chat", "contact form", "custom URL", "custom script"}));
  EXPECT_EQ(run.lines[5].at("httpStatus"), 200);

  // Under the mesh context the password articles (the app's) are gone.
  EXPECT_TRUE(run.lines[6].at("suggestions").as_array().empty()) << boost::json::serialize(run.lines[6]);
}

TEST(SearchCommandTest, SuggestionsAndMisuseOutsideAContext) {
  const auto run = shell(
      "suggest pass\n"
      "report 1014 0\n"
      "search factory\n"
      "report 1002 9\n"
      "set-context nocolon\n");
  EXPECT_EQ(run.code, 2) << "the misused lines are usage errors";
  EXPECT_NE(run.err.find("no hit 1014 in the latest search"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("there is no channel 9"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("set-context wants NAME:VALUE"), std::string::npos) << run.err;
  ASSERT_EQ(run.lines.size(), 2U) << run.err;

  const auto& suggest = run.lines[0];
  EXPECT_EQ(suggest.at("query"), "pass");
  const auto& second = suggest.at("suggestions").at(1);
  EXPECT_EQ(second.at("text"), "How do I change my Wi-Fi password ");
  // The completion "password" is the bold run, at its UTF-16 place.
  bool bold = false;
  for (const auto& styled : second.at("runs").as_array()) {
    if (styled.at("font").at("bold") == true) {
      EXPECT_EQ(styled.at("location"), 25);
      EXPECT_EQ(styled.at("length"), 8);
      bold = true;
    }
  }
  EXPECT_TRUE(bold);
}

TEST(SearchCommandTest, FaqReportsContextsChannelsAndBadArguments) {
  const auto run = shell(
      "report 1022 0 --faq\n"
      "contexts product\n"
      "channels 1029 --like-state 2 --context \"product:Acme Home app\"\n"
      "channels 1002 --like-state 3\n"
      "track '[1,2]'\n"
      "channels 9999\n");
  EXPECT_EQ(run.code, 2) << run.err;
  ASSERT_EQ(run.lines.size(), 4U) << run.err;

  // An FAQ answer is reported without a session, with the channels the service offers for it.
  EXPECT_EQ(run.lines[0].at("form"), "report");
  EXPECT_EQ(run.lines[0].at("httpStatus"), 200);

  EXPECT_EQ(run.lines[1].at("result").at("values").at("product").at(0).at("name"), "Router X1");

  const auto& chat = run.lines[2].at("channels").at(1);
  EXPECT_EQ(chat.at("kind"), "chat");
  EXPECT_EQ(chat.at("accontNum"), "AC-4711") << "the service's accountNum lands in accontNum";
  EXPECT_EQ(chat.at("accountNum"), nullptr);
  EXPECT_EQ(run.lines[2].at("channels").at(2).at("thankYouMessage"), "Thank you! We answer within one working day.");

  EXPECT_NE(run.err.find("--like-state"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("track wants a JSON object"), std::string::npos) << run.err;
  // The unknown article is the service's error.
  EXPECT_EQ(run.lines[3].at("error").at("code"), 404);
}

TEST(SearchCommandTest, AFailedSessionStartEndsTheSearchAtOnceWithTheReason) {
  // A loopback port nothing listens on: the session cannot open.
  const int port = testing::closedPort();
  ASSERT_NE(port, 0);
  const std::string service = "http://localhost:" + std::to_string(port);

  // Waiting out the time-out would end with exit code 3 instead.
  const auto run = testing::runTool({"--service", service, "--timeout", "20", "search", "reset"});
  EXPECT_EQ(run.code, 1) << run.err;
  EXPECT_NE(run.err.find("error: com.quorvix 0"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("Connection refused"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("hello.js"), std::string::npos) << "the address that failed: " << run.err;
}

}  // namespace
}  // namespace quorvix::cli
