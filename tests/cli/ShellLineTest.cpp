#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tool/ShellLine.h"

namespace quorvix::cli {
namespace {

using Words = std::vector<std::string>;

Words wordsOf(std::string_view line) {
  auto split = splitShellLine(line);
  if (auto* error = std::get_if<UsageError>(&split)) {
    ADD_FAILURE() << "\"" << line << "\" refused: " << error->message;
    return {};
  }
  return std::get<Words>(split);
}

TEST(ShellLineTest, BlanksSeparateWordsAndCommentsEndTheLine) {
  EXPECT_EQ(wordsOf("session"), (Words{"session"}));
  EXPECT_EQ(wordsOf("  sleep \t 1.5  "), (Words{"sleep", "1.5"}));
  EXPECT_EQ(wordsOf("session\r"), (Words{"session"}));  // a line from a CRLF file
  EXPECT_EQ(wordsOf(""), Words{});
  EXPECT_EQ(wordsOf("   "), Words{});
  EXPECT_EQ(wordsOf("# a whole comment line"), Words{});
  EXPECT_EQ(wordsOf("   # indented comment"), Words{});
  EXPECT_EQ(wordsOf("session # open one"), (Words{"session"}));
  // A # inside a word or quoted is text, not a comment.
  EXPECT_EQ(wordsOf("label-faq a#b"), (Words{"label-faq", "a#b"}));
  EXPECT_EQ(wordsOf("search \"#hashtag\" '#2'"), (Words{"search", "#hashtag", "#2"}));
}

TEST(ShellLineTest, QuotesKeepBlanksAndJoinTouchingParts) {
  EXPECT_EQ(wordsOf("search \"reset password\""), (Words{"search", "reset password"}));
  EXPECT_EQ(wordsOf("search 'reset  password'"), (Words{"search", "reset  password"}));
  EXPECT_EQ(wordsOf("set-context lang:\"en gb\"x"), (Words{"set-context", "lang:en gbx"}));
  EXPECT_EQ(wordsOf("a \"\" b ''"), (Words{"a", "", "b", ""}));
  // Single quotes take backslashes and double quotes literally.
  EXPECT_EQ(wordsOf(R"(track '{"a":"\n"}')"), (Words{"track", R"({"a":"\n"})"}));
}

TEST(ShellLineTest, BackslashesEscapeOutsideAndSomeInsideDoubleQuotes) {
  EXPECT_EQ(wordsOf(R"(search reset\ password)"), (Words{"search", "reset password"}));
  EXPECT_EQ(wordsOf(R"(search \"quoted\")"), (Words{"search", "\"quoted\""}));
  EXPECT_EQ(wordsOf(R"(search "say \"hi\" \\ now")"), (Words{"search", R"(say "hi" \ now)"}));
  // Inside double quotes other backslashes stay as they are.
  EXPECT_EQ(wordsOf(R"(track "{\n}")"), (Words{"track", R"({\n})"}));
  EXPECT_EQ(wordsOf(R"(\#not-a-comment)"), (Words{"#not-a-comment"}));
}

TEST(ShellLineTest, UnfinishedQuotesAndTrailingBackslashAreRefused) {
  for (const char* line : {"search \"reset password", "search 'reset", "search reset\\", "\"", "a \"b\\\""}) {
    auto split = splitShellLine(line);
    ASSERT_TRUE(std::holds_alternative<UsageError>(split)) << line;
    EXPECT_FALSE(std::get<UsageError>(split).message.empty()) << line;
  }
}

}  // namespace
}  // namespace quorvix::cli
