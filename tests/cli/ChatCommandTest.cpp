// `quorvix chat` against the embedded sandbox, scripted as a pipeline would run it.

#include <gtest/gtest.h>

#include <boost/json.hpp>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tool/CliApp.h"

namespace quorvix::cli {
namespace {

struct Run {
  int code = -1;
  std::vector<boost::json::value> lines;
  std::string out;
  std::string err;
};

Run chat(const std::vector<std::string>& arguments, const std::string& input) {
  std::istringstream in(input);
  std::ostringstream out, err;
  Run run;
  run.code = runTool(arguments, Streams{in, out, err, TerminalInfo{}});
  run.out = out.str();
  run.err = err.str();
  std::istringstream lines(run.out);
  for (std::string line; std::getline(lines, line);) {
    boost::system::error_code error;
    auto value = boost::json::parse(line, error);
    if (!error) run.lines.push_back(std::move(value));
  }
  return run;
}

std::string text(const boost::json::value& line) {
  const auto* value = line.as_object().if_contains("text");
  return value != nullptr && value->is_string() ? std::string(value->as_string()) : "";
}

TEST(ChatCommandTest, ScriptedConversationWithAnswersFromAFile) {
  const std::string answers = ::testing::TempDir() + "chat-answers.json";
  std::ofstream(answers) << R"({"number": "100", "date": "2026-12-24", "accountBalance": "1,234.00 EUR"})";

  const auto run = chat({"--json", "--timeout", "20", "chat", "--answers", answers},
                        "hi\n4\n/postback transfer\nmy balance please\n/feedback\n");
  std::remove(answers.c_str());
  ASSERT_EQ(run.code, 0) << run.err;
  ASSERT_EQ(run.lines.size(), 6u) << run.out;
  EXPECT_TRUE(run.lines[0].as_object().contains("conversationId"));
  EXPECT_NE(text(run.lines[1]).find("Acme assistant"), std::string::npos);
  EXPECT_EQ(run.lines[1].at("quickOptions").as_array().size(), 5u);
  // Option 4 of the greeting is the read-more option: its postback asks for the article.
  EXPECT_NE(text(run.lines[2]).find("International transfers"), std::string::npos) << run.out;
  EXPECT_NE(text(run.lines[3]).find("100 will be transferred on 2026-12-24"), std::string::npos) << run.out;
  EXPECT_EQ(text(run.lines[3]).find("48213377091"), std::string::npos) << "masked";
  EXPECT_EQ(text(run.lines[4]), "Your current balance is 1,234.00 EUR.");
  EXPECT_EQ(text(run.lines[5]), "How did this conversation go?");
}

TEST(ChatCommandTest, QuestionsWithoutAnswersAndBadLinesAreReported) {
  const auto run = chat({"--json", "--timeout", "20", "chat"}, "transfer\n/bogus\n");
  EXPECT_EQ(run.code, 2) << run.err;
  EXPECT_NE(run.err.find("none were given"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("unknown chat command"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace quorvix::cli
