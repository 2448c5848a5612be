#include <gtest/gtest.h>

#include <boost/json.hpp>

#include "quorvix/conversation/ClientCalls.h"
#include "quorvix/conversation/QXPersonalInfo.h"

namespace quorvix {
namespace {

using Strings = std::vector<std::string>;

TEST(ClientCallsTest, SignatureSelectorAndArguments) {
  const std::string text = "Balance: {{accountBalance(ButtonText:Show my balance, account:main)}} today";
  const auto signature = extractSignature(text);
  ASSERT_TRUE(signature.has_value());
  EXPECT_EQ(*signature, "accountBalance(ButtonText:Show my balance, account:main)");
  EXPECT_EQ(extractSelector(*signature), "accountBalance");
  // Blanks after commas stay part of the next argument.
  EXPECT_EQ(extractArguments(*signature), (Strings{"ButtonText:Show my balance", " account:main"}));

  EXPECT_EQ(extractSignature("no placeholder"), std::nullopt);
  EXPECT_EQ(extractSignature("first {{a()}} then {{b()}}"), "a()");
  EXPECT_EQ(extractArguments("name()"), (Strings{""}));
}

TEST(ClientCallsTest, OddSignaturesDoNotCrash) {
  EXPECT_EQ(extractSelector("noParenthesis"), "noParenthesis");
  EXPECT_EQ(extractSelector(""), "");
  EXPECT_TRUE(extractArguments("noParenthesis").empty());
  // Markers that are missing or in the wrong order give no placeholder.
  EXPECT_FALSE(extractSignature("open {{ never closed").has_value());
  EXPECT_FALSE(extractSignature("}} before {{").has_value());
  auto info = QXPersonalInfo::initWithSignature("plain");
  EXPECT_EQ(info->personalInfoId(), "plain");
  EXPECT_TRUE(info->methodArgs().empty());
}

TEST(ClientCallsTest, ArgumentsAsDictionary) {
  EXPECT_EQ(args({"ButtonText:Go", "x:1:2"}), boost::json::parse(R"({"ButtonText":"Go","x":"2"})").as_object());
  EXPECT_EQ(args({"a:1", "a:2"}), boost::json::parse(R"({"a":"2"})").as_object()) << "a later key wins";
  EXPECT_EQ(args({"a:1", "broken"}), std::nullopt);
  EXPECT_EQ(args({}), std::nullopt);
  EXPECT_EQ(args({"key:"}), boost::json::parse(R"({"key":""})").as_object());
}

TEST(ClientCallsTest, HostHelpers) {
  EXPECT_EQ(methodName("accountBalance"), "AccountBalance");
  EXPECT_EQ(methodName(""), "");
  EXPECT_EQ(inJsonText("hi \"you\""), "{\"text\": \"hi \"you\"\"}");
}

}  // namespace
}  // namespace quorvix
