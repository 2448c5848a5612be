#include <gtest/gtest.h>

#include <boost/json.hpp>
#include <map>
#include <string>

#include "quorvix/conversation/QXTokenizer.h"
#include "support/PlatformFixture.h"

namespace quorvix {
namespace {

// A JSON statement whose "text" is `text`.
std::string statement(const std::string& text) { return boost::json::serialize(boost::json::object{{"text", text}}); }

std::string textOf(const std::string& json) { return std::string(boost::json::parse(json).at("text").as_string()); }

class TokenizerTest : public testing::PlatformFixture {
 protected:
  void SetUp() override {
    PlatformFixture::SetUp();
    tokenizer.setToken(250000);
  }
  QXTokenizer tokenizer;
};

TEST_F(TokenizerTest, StartsAtARandomSixDigitToken) {
  for (int i = 0; i < 20; ++i) {
    QXTokenizer fresh;
    EXPECT_GE(fresh.token(), 200000);
    EXPECT_LE(fresh.token(), 299999);
    EXPECT_FALSE(fresh.tokens().has_value());
  }
}

TEST_F(TokenizerTest, MasksLongRunsAndRestoresTokens) {
  EXPECT_EQ(textOf(tokenizer.decode(statement("card 1234567 ok"))), "card 250000 ok");
  EXPECT_EQ(tokenizer.tokens()->at("250000"), "1234567");
  EXPECT_EQ(log->countStartingWith("tokened card 250000 ok"), 1u);

  EXPECT_EQ(textOf(tokenizer.encode(statement("pay 250000 now"))), "pay 1234567 now");
  // Four- and five-digit runs that are no token, and runs of three, stay as they are.
  EXPECT_EQ(textOf(tokenizer.encode(statement("pin 1234 or 56789 or 123 ok"))), "pin 1234 or 56789 or 123 ok");
  // Five-digit runs are not masked.
  EXPECT_EQ(textOf(tokenizer.decode(statement("code 12345 ok"))), "code 12345 ok");
}

TEST_F(TokenizerTest, TheLastCharacterIsLeftOutOfTheSearch) {
  // A run that ends the text is matched without its last digit.
  EXPECT_EQ(textOf(tokenizer.decode(statement("1234567"))), "2500007");
  EXPECT_EQ(tokenizer.tokens()->at("250000"), "123456");
  // A run of exactly the minimum length at the very end is not matched at all.
  EXPECT_EQ(textOf(tokenizer.decode(statement("ref 987654"))), "ref 987654");
  // The last character is a whole character, not a byte.
  EXPECT_EQ(textOf(tokenizer.decode(statement("1234567€"))), "250001€");
}

TEST_F(TokenizerTest, EveryOccurrenceIsMaskedAndRestoredAndLogsShowTokensOnly) {
  // A matched number is replaced wherever it stands, in the run that ends the
  // text too (that run is outside the search itself).
  EXPECT_EQ(textOf(tokenizer.decode(statement("1234567 then 1234567"))), "250000 then 250000");
  tokenizer.setTokens(std::nullopt);
  tokenizer.setToken(250000);
  EXPECT_EQ(textOf(tokenizer.decode(statement("acct 123456 and 123456"))), "acct 250000 and 250000");
  EXPECT_EQ(textOf(tokenizer.decode(statement("n 1234567 / 9876543210"))), "n 250001 / 2500020");

  // Restoring reads every run, the one that ends the statement too.
  tokenizer.setTokens(std::map<std::string, std::string>{{"250000", "1234567"}});
  EXPECT_EQ(textOf(tokenizer.encode(statement("pay 250000"))), "pay 1234567");
  EXPECT_EQ(textOf(tokenizer.encode(statement("250000 or 250000"))), "1234567 or 1234567");
  // The log shows what went out masked, never the values the tokens stand for.
  for (const auto& line : log->lines()) EXPECT_EQ(line.find("123456"), std::string::npos) << line;
  EXPECT_EQ(log->countStartingWith("tokened pay 250000"), 1u);
}

TEST_F(TokenizerTest, NewValuesTakeTheNextTokenAndValuesSeenAgainRebind) {
  EXPECT_EQ(tokenizer.replaceValue("1111111"), "250000");
  EXPECT_EQ(tokenizer.replaceValue("2222222"), "250001");
  EXPECT_EQ(tokenizer.replaceValue("2222222"), "250001");
  // A value seen before is bound to the current token, which the other value loses.
  EXPECT_EQ(tokenizer.replaceValue("1111111"), "250001");
  EXPECT_EQ(tokenizer.extractValue("250001"), "1111111");
  EXPECT_EQ(tokenizer.extractValue("250000"), "1111111");
  EXPECT_EQ(tokenizer.token(), 250001);
  // "2222222" has no token left: it is new again.
  EXPECT_EQ(tokenizer.replaceValue("2222222"), "250002");
  EXPECT_EQ(tokenizer.extractValue("999999"), "999999");
}

TEST_F(TokenizerTest, OneTextWithRepeatedAndDistinctRuns) {
  const auto masked = textOf(tokenizer.decode(statement("from 1111111 to 2222222 (again 1111111) end")));
  EXPECT_EQ(masked, "from 250000 to 250001 (again 250000) end");
  // The repeat re-bound "1111111" to the current token.
  EXPECT_EQ(tokenizer.extractValue("250001"), "1111111");
}

TEST_F(TokenizerTest, OnlyTheTextOfAJsonObjectIsTouched) {
  for (const char* input : {"card 1234567 ok", "{}", "[\"1234567 x\"]", ""}) {
    EXPECT_EQ(tokenizer.decode(input), input);
    EXPECT_EQ(tokenizer.encode(input), input);
  }
  EXPECT_EQ(tokenizer.decode(R"({"text":5,"a":1})"), R"({"text":5,"a":1})");
  EXPECT_FALSE(tokenizer.tokens().has_value());
  // Other keys of the object are kept.
  EXPECT_EQ(boost::json::parse(tokenizer.decode(R"({"text":"n 1234567 x","status":200})")),
            boost::json::parse(R"({"text":"n 250000 x","status":200})"));
}

TEST_F(TokenizerTest, UpdateStatementWithPatterns) {
  EXPECT_EQ(tokenizer.updateStatement(std::nullopt, "[0-9]+", true), std::nullopt);
  EXPECT_EQ(tokenizer.updateStatement("ABC abc x", "abc", true), "250000 250001 x") << "case-insensitive";
  EXPECT_EQ(tokenizer.updateStatement("250001 x", "[0-9]{4,}", false), "abc x");
  EXPECT_EQ(tokenizer.updateStatement("abc x", "(", true), "abc x") << "a pattern that does not compile";
  EXPECT_EQ(tokenizer.updateStatement("abc", "b*", false), "abc") << "empty matches replace nothing";
  EXPECT_EQ(tokenizer.updateStatement("", "[0-9]{6,}", true), "");
}

TEST_F(TokenizerTest, HugeInputsAreHandledWithoutRecursion) {
  // A single 10 MB digit run: matched (without its last digit) in one go.
  const std::string digits(10 * 1024 * 1024, '7');
  const auto masked = textOf(tokenizer.decode(statement(digits)));
  EXPECT_EQ(masked, "2500007");
  EXPECT_EQ(tokenizer.tokens()->at("250000").size(), digits.size() - 1);

  // Many distinct runs in one text.
  std::string many;
  for (int i = 0; i < 100000; ++i) many += std::to_string(1000000 + i) + ' ';
  const auto tokens = textOf(tokenizer.decode(statement(many)));
  EXPECT_EQ(tokens.substr(0, 15), "250001 250002 2");
  EXPECT_EQ(tokenizer.token(), 250000 + 100000);
  EXPECT_EQ(textOf(tokenizer.encode(statement(tokens))), many);
}

}  // namespace
}  // namespace quorvix
