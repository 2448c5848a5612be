// `quorvix chat` against the embedded sandbox, scripted as a pipeline would run it.

#include <gtest/gtest.h>

#include <boost/json.hpp>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "support/ToolRun.h"

namespace quorvix::cli {
namespace {

using testing::runTool;

std::string text(const boost::json::value& line) {
  const auto* value = line.as_object().if_contains("text");
  return value != nullptr && value->is_string() ? std::string(value->as_string()) : "";
}

TEST(ChatCommandTest, ScriptedConversationWithAnswersFromAFile) {
  const std::string answers = ::testing::TempDir() + "chat-answers.json";
  std::ofstream(answers) << R"({"number": "100", "date": "2026-12-24", "accountBalance": "1,234.00 EUR"})";

  const auto run = runTool({"--json", "--timeout", "20", "chat", "--answers", answers},
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
  const auto run = runTool({"--json", "--timeout", "20", "chat"}, "transfer\n/bogus\n");
  EXPECT_EQ(run.code, 2) << run.err;
  EXPECT_NE(run.err.find("none were given"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("unknown chat command"), std::string::npos) << run.err;
}

TEST(ChatCommandTest, InputEndingAtTheBotsQuestionEndsTheChat) {
  // printf 'hi\ntransfer\n' | quorvix chat
  const auto run = runTool({"--timeout", "20", "chat"}, "hi\ntransfer\n");
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_NE(run.out.find("you> transfer\nbot: Happy to help"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("How much would you like to transfer?\nnumber> \n"), std::string::npos) << run.out;
  EXPECT_NE(run.err.find("input ended"), std::string::npos) << run.err;

  // An answer, then the end: the bot asks for the rest and the chat ends there too.
  const auto partly = runTool({"--timeout", "20", "chat"}, "transfer\n250\n");
  EXPECT_EQ(partly.code, 0) << partly.err;
  EXPECT_NE(partly.out.find("number> 250\n"), std::string::npos) << partly.out;
}

TEST(ChatCommandTest, TypedJsonStatementIsSentAsTyped) {
  const auto run = runTool({"--json", "--timeout", "20", "chat"}, "{\"text\": \"my card\"}\nhi\n");
  ASSERT_EQ(run.code, 0) << run.err;
  ASSERT_EQ(run.lines.size(), 3u) << run.out;
  // The service got the typed object itself, not one wrapped in another "text".
  const auto sent = [](const boost::json::value& line) { return boost::json::parse(line.at("statement").as_string()); };
  EXPECT_EQ(sent(run.lines[1]), (boost::json::object{{"text", "my card"}})) << run.out;
  EXPECT_NE(text(run.lines[1]).find("Your card"), std::string::npos) << run.out;
  EXPECT_EQ(sent(run.lines[2]), (boost::json::object{{"text", "hi"}})) << run.out;
}

}  // namespace
}  // namespace quorvix::cli
