// The tool run as a whole, for the runs that end before the engine is touched.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <quorvix/sandbox/SandboxService.h>

#include "quorvix/platform/Platform.h"
#include "tool/AccountSetup.h"
#include "support/ToolRun.h"

namespace quorvix::cli {
namespace {

using testing::runTool;

TEST(RunToolTest, RefusedServiceBaseIsAUsageErrorThatChangesNothing) {
  const auto hostsBefore = platform::serviceHosts();
  const auto infoBefore = platform::hostInfo();

  for (const char* base : {"ftp://example.com", "http://example.com:8080", "https://"}) {
    const auto run = runTool({"--service", base, "--bundle-id", "com.changed", "session"});
    EXPECT_EQ(run.code, 2) << base;
    EXPECT_NE(run.err.find(base), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "") << base;
  }
  EXPECT_EQ(platform::serviceHosts(), hostsBefore);
  EXPECT_EQ(platform::hostInfo().bundleIdentifier, infoBefore.bundleIdentifier);
}

TEST(RunToolTest, EveryLoopbackFormOfTheServiceReachesIt) {
  sandbox::SandboxService service;
  const int port = service.start();
  ASSERT_NE(port, 0);
  for (const char* host : {"localhost", "127.0.0.1", "demo.localhost", "LOCALHOST"}) {
    const std::string base = "http://" + std::string(host) + ":" + std::to_string(port);
    service.clearRequests();
    const auto run = runTool({"--service", base, "--timeout", "10", "--json", "session"});
    EXPECT_EQ(run.code, 0) << base << "\n" << run.err;
    EXPECT_EQ(service.requestsFor("/api/widget/v1/hello.js").size(), 1u) << base;
  }
  // The sandbox listens on IPv4 only: for [::1] the mapping is what counts.
  auto v6 = serviceHostsFor("http://[::1]:" + std::to_string(port));
  ASSERT_TRUE(std::holds_alternative<QXServiceHosts>(v6)) << std::get<UsageError>(v6).message;
  EXPECT_EQ(std::get<QXServiceHosts>(v6).fixedHost, "[::1]");
  EXPECT_EQ(std::get<QXServiceHosts>(v6).secondSuffix, ".localhost") << "an address has no account names under it";
  EXPECT_EQ(std::get<QXServiceHosts>(v6).port, port);

  // A refusal names the loopback forms and the host that is not one.
  const auto refused = runTool({"--service", "http://example.com:8080", "session"});
  EXPECT_EQ(refused.code, 2);
  for (const char* word : {"localhost, *.localhost, 127.0.0.1, [::1]", "example.com is not one", "https"}) {
    EXPECT_NE(refused.err.find(word), std::string::npos) << word << "\n" << refused.err;
  }
}

TEST(RunToolTest, SandboxRefusesAPortAlreadyInUse) {
  sandbox::SandboxService first;
  const int port = first.start();
  ASSERT_NE(port, 0);
  sandbox::SandboxOptions options;
  options.port = port;
  sandbox::SandboxService second(options);
  ASSERT_EQ(second.start(), 0) << "a second service listens on the port of the first";

  const auto run = runTool({"sandbox", "--port", std::to_string(port)});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("127.0.0.1:" + std::to_string(port) + ": the port is already in use"), std::string::npos)
      << run.err;
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
    const auto run = runTool(arguments);
    std::string joined;
    for (const auto& word : arguments) joined += word + " ";
    EXPECT_EQ(run.code, 2) << joined;
    EXPECT_FALSE(run.err.empty()) << joined;
  }
}

TEST(RunToolTest, MisplacedCommandsAndOptionsAreNamedPlainly) {
  EXPECT_NE(runTool({"--json", "bogus"}).err.find("unknown command 'bogus'"), std::string::npos);
  EXPECT_NE(runTool({"sleep", "1"}).err.find("'sleep' can be used only inside the shell"), std::string::npos);
  EXPECT_NE(runTool({"--kb", "x"}).err.find("no command given"), std::string::npos);
  const auto late = runTool({"session", "--timeout=3"});
  EXPECT_EQ(late.code, 2);
  EXPECT_NE(late.err.find("--timeout goes before the command"), std::string::npos) << late.err;
  const auto zero = runTool({"--timeout", "0", "session"});
  EXPECT_NE(zero.err.find("--timeout: the seconds must be more than 0"), std::string::npos) << zero.err;
}

TEST(RunToolTest, HelpDescribesOptionsAndCommands) {
  const auto run = runTool({"--help"});
  EXPECT_EQ(run.code, 0);
  for (const char* word : {"--service", "--account", "--kb", "--api-key", "--server", "--label-id", "--referrer",
                           "--context", "--all-contexts-mandatory", "--bundle-id", "--build", "--json", "--log",
                           "--timeout", "--linger", "session", "shell", "sandbox", "Exit codes"}) {
    EXPECT_NE(run.out.find(word), std::string::npos) << word;
  }
  // Shell-only commands are not offered on the command line.
  EXPECT_EQ(run.out.find("\n  prepare "), std::string::npos);
  EXPECT_EQ(run.out.find("\n  sleep "), std::string::npos);

  const auto sandboxHelp = runTool({"sandbox", "--help"});
  EXPECT_EQ(sandboxHelp.code, 0);
  EXPECT_NE(sandboxHelp.out.find("--port"), std::string::npos) << sandboxHelp.out;

  const auto chatHelp = runTool({"chat", "--help"});
  EXPECT_EQ(chatHelp.code, 0);
  // The option's own line names what it takes.
  EXPECT_NE(chatHelp.out.find("\n  --answers FILE "), std::string::npos) << chatHelp.out;

  const auto shellHelp = runTool({"shell", "--help"});
  EXPECT_EQ(shellHelp.code, 0);
  EXPECT_NE(shellHelp.out.find("sleep SECONDS"), std::string::npos) << shellHelp.out;
}

}  // namespace
}  // namespace quorvix::cli
