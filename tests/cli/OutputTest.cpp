#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <sstream>

#include "tool/Console.h"
#include "tool/Output.h"

namespace quorvix::cli {
namespace {

QXError connectionError() {
  return QXError{"NSURLErrorDomain", -1004,
                 {{"NSLocalizedDescription", "Could not connect to the server."}, {"NSErrorFailingURLKey", "http://x"}}};
}

TEST(OutputTest, ErrorDocumentHasDomainIntegerCodeAndUserInfo) {
  const auto document = errorJson(connectionError());
  EXPECT_EQ(boost::json::serialize(document),
            R"({"error":{"domain":"NSURLErrorDomain","code":-1004,"userInfo":{)"
            R"("NSErrorFailingURLKey":"http://x","NSLocalizedDescription":"Could not connect to the server."}}})");
  // The code is a JSON integer, not a floating-point number.
  EXPECT_TRUE(document.at("error").at("code").is_int64());

  const auto bare = errorJson(QXError{"com.quorvix", 400, {}});
  EXPECT_EQ(boost::json::serialize(bare), R"({"error":{"domain":"com.quorvix","code":400,"userInfo":{}}})");
}

TEST(OutputTest, HumanErrorNamesDomainCodeAndEachUserInfoEntry) {
  EXPECT_EQ(formatError(connectionError()),
            "error: NSURLErrorDomain -1004\n"
            "  NSErrorFailingURLKey: http://x\n"
            "  NSLocalizedDescription: Could not connect to the server.\n");
  EXPECT_EQ(formatError(QXError{"com.quorvix", 500, {}}), "error: com.quorvix 500\n");

  EXPECT_EQ(errorMessage(connectionError()), "Could not connect to the server.");
  EXPECT_EQ(errorMessage(QXError{"com.quorvix.engine", -1002, {{"Description", "unsupported scheme"}}}),
            "unsupported scheme");
  EXPECT_EQ(errorMessage(QXError{"com.quorvix.engine", -1000, {}}), "com.quorvix.engine -1000");
}

TEST(OutputTest, NumbersAndSecondsPrintAsWritten) {
  EXPECT_EQ(boost::json::serialize(jsonNumber(10)), "10");
  EXPECT_TRUE(jsonNumber(10).is_int64());
  EXPECT_TRUE(jsonNumber(-3).is_int64());
  EXPECT_TRUE(jsonNumber(2.5).is_double());
  EXPECT_DOUBLE_EQ(jsonNumber(2.5).as_double(), 2.5);
  EXPECT_TRUE(jsonNumber(1e300).is_double());  // too large for an exact integer

  EXPECT_EQ(formatSeconds(30), "30");
  EXPECT_EQ(formatSeconds(2.5), "2.5");
  EXPECT_EQ(formatSeconds(0.25), "0.25");
}

TEST(OutputTest, TextRowsLineUpUnderAnOptionalHeading) {
  TextResult rows;
  rows.rows = {{"session", "s-1"}, {"keep-alive", "every 10 s"}};
  EXPECT_EQ(formatText(rows),
            "session     s-1\n"
            "keep-alive  every 10 s\n");

  TextResult headed;
  headed.heading = "Labels";
  headed.rows = {{"id", "7"}, {"name", "Billing"}, {"empty", ""}};
  EXPECT_EQ(formatText(headed),
            "Labels\n"
            "  id     7\n"
            "  name   Billing\n"
            "  empty\n");
}

TEST(OutputTest, ErrorsGoToStderrForPeopleAndToStdoutAsJson) {
  std::ostringstream out, err;
  Console console(out, err, TerminalInfo{});
  Output human(console, /*json=*/false);
  human.engineError(connectionError());
  human.timedOut(2.5);
  human.message("bad option");
  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(err.str(), formatError(connectionError()) + "no answer within 2.5 s\nquorvix: bad option\n");

  std::ostringstream jsonOut, jsonErr;
  Console jsonConsole(jsonOut, jsonErr, TerminalInfo{});
  Output json(jsonConsole, /*json=*/true);
  json.engineError(connectionError());
  json.result(TextResult{"ignored", {}}, JsonObject{{"sessionId", "s-1"}});
  EXPECT_EQ(jsonOut.str(), boost::json::serialize(errorJson(connectionError())) + "\n" + R"({"sessionId":"s-1"})" + "\n");
  EXPECT_EQ(jsonErr.str(), "");
}

TEST(OutputTest, NoSpinnerWhenStdoutIsNoTerminalAndNothingAfterDetach) {
  std::ostringstream out, err;
  Console console(out, err, TerminalInfo{false, false});
  console.spinnerTick(std::chrono::seconds(5));
  EXPECT_EQ(out.str(), "");

  std::ostringstream ttyOut, ttyErr;
  Console tty(ttyOut, ttyErr, TerminalInfo{false, true});
  tty.spinnerTick(std::chrono::seconds(5));
  EXPECT_NE(ttyOut.str(), "");
  tty.out("result\n");
  // The spinner line is erased before the result is written.
  EXPECT_TRUE(ttyOut.str().ends_with("\r\033[Kresult\n")) << ttyOut.str();

  tty.detach();
  const auto written = ttyOut.str().size() + ttyErr.str().size();
  tty.logLine("late line");
  tty.out("late");
  tty.spinnerTick(std::chrono::seconds(9));
  EXPECT_EQ(ttyOut.str().size() + ttyErr.str().size(), written);
}

}  // namespace
}  // namespace quorvix::cli
