// The tool run as a whole, for the runs that end before the engine is touched.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "quorvix/platform/Platform.h"
#include "tool/CliApp.h"

namespace quorvix::cli {
namespace {

struct Run {
  int code = -1;
  std::string out;
  std::string err;
};

Run runWith(const std::vector<std::string>& arguments, const std::string& input = "") {
  std::istringstream in(input);
  std::ostringstream out, err;
  Run run;
  run.code = runTool(arguments, Streams{in, out, err, TerminalInfo{}});
  run.out = out.str();
  run.err = err.str();
  return run;
}

TEST(RunToolTest, RefusedServiceBaseIsAUsageErrorThatChangesNothing) {
  const auto hostsBefore = platform::serviceHosts();
  const auto infoBefore = platform::hostInfo();

  for (const char* base : {"ftp://example.com", "http://example.com:8080", "https://"}) {
    const auto run = runWith({"--service", base, "--bundle-id", "com.changed", "session"});
    EXPECT_EQ(run.code, 2) << base;
    EXPECT_NE(run.err.find(base), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "") << base;
  }
  EXPECT_EQ(platform::serviceHosts(), hostsBefore);
  EXPECT_EQ(platform::hostInfo().bundleIdentifier, infoBefore.bundleIdentifier);
}

TEST(RunToolTest, MalformedCommandLinesAreUsageErrors) {
  const std::vector<std::vector<std::string>> commandLines = {
      {},                                     // no command
      {"no-such-command"},                    //
      {"--context", "nameonly", "session"},   // context without a value
      {"--context", "a:1", "b:2", "session"}, // one value per --context
      {"--timeout", "0", "session"},          // time-out must be positive
      {"--linger", "soon", "session"},        // not a number
      {"stop"},                               // a shell-only command
      {"session", "--json"},                  // global options go before the command
      {"sandbox", "--port", "70000"},
  };
  for (const auto& arguments : commandLines) {
    const auto run = runWith(arguments);
    std::string joined;
    for (const auto& word : arguments) joined += word + " ";
    EXPECT_EQ(run.code, 2) << joined;
    EXPECT_FALSE(run.err.empty()) << joined;
  }
}

TEST(RunToolTest, MisplacedCommandsAndOptionsAreNamedPlainly) {
  EXPECT_NE(runWith({"--json", "bogus"}).err.find("unknown command 'bogus'"), std::string::npos);
  EXPECT_NE(runWith({"sleep", "1"}).err.find("'sleep' can be used only inside the shell"), std::string::npos);
  EXPECT_NE(runWith({"--kb", "x"}).err.find("no command given"), std::string::npos);
  const auto late = runWith({"session", "--timeout=3"});
  EXPECT_EQ(late.code, 2);
  EXPECT_NE(late.err.find("--timeout goes before the command"), std::string::npos) << late.err;
  const auto zero = runWith({"--timeout", "0", "session"});
  EXPECT_NE(zero.err.find("--timeout: the seconds must be more than 0"), std::string::npos) << zero.err;
}

TEST(RunToolTest, HelpDescribesOptionsAndCommands) {
  const auto run = runWith({"--help"});
  EXPECT_EQ(run.code, 0);
  for (const char* word : {"--service", "--account", "--kb", "--api-key", "--server", "--label-id", "--referrer",
                           "--context", "--all-contexts-mandatory", "--bundle-id", "--build", "--json", "--log",
                           "--timeout", "--linger", "session", "shell", "sandbox", "Exit codes"}) {
    EXPECT_NE(run.out.find(word), std::string::npos) << word;
  }
  // Shell-only commands are not offered on the command line.
  EXPECT_EQ(run.out.find("\n  prepare "), std::string::npos);
  EXPECT_EQ(run.out.find("\n  sleep "), std::string::npos);

  const auto sandboxHelp = runWith({"sandbox", "--help"});
  EXPECT_EQ(sandboxHelp.code, 0);
  EXPECT_NE(sandboxHelp.out.find("--port"), std::string::npos) << sandboxHelp.out;

  const auto shellHelp = runWith({"shell", "--help"});
  EXPECT_EQ(shellHelp.code, 0);
  EXPECT_NE(shellHelp.out.find("sleep SECONDS"), std::string::npos) << shellHelp.out;
}

}  // namespace
}  // namespace quorvix::cli
