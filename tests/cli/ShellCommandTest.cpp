// The shell's read-parse-dispatch loop, driven with lines that never reach the engine.

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <sstream>
#include <string>

#include "tool/CommandRegistry.h"
#include "tool/Runtime.h"

namespace quorvix::cli {
namespace {

struct ShellRun {
  ExitCode code = ExitCode::Success;
  std::string out;
  std::string err;
};

ShellRun runShellOn(const std::string& input, TerminalInfo terminal = {}) {
  const auto* shell = builtinCommands().find("shell");
  EXPECT_NE(shell, nullptr);
  if (!shell) return {};
  CLI::App app;
  const auto action = shell->define(app);

  std::istringstream in(input);
  std::ostringstream out, err;
  Console console(out, err, terminal);
  Output output(console, /*json=*/false);
  GlobalOptions options;
  Runtime runtime(options, output, builtinCommands(), in, nullptr, nullptr);
  ShellRun run;
  run.code = action(runtime);
  run.out = out.str();
  run.err = err.str();
  return run;
}

TEST(ShellCommandTest, BadLinesAreReportedWithTheirNumberAndTheShellGoesOn) {
  const auto run = runShellOn(
      "# a comment\n"
      "\n"
      "bogus\n"
      "search \"reset password\n"
      "sleep\n"
      "shell\n"
      "sleep 0\n"
      "help\n");
  EXPECT_EQ(run.code, ExitCode::Usage);
  EXPECT_NE(run.err.find("line 3: unknown command 'bogus'"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("line 4: unterminated \" quote"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("line 5: SECONDS is required"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("line 6: 'shell' cannot be used inside the shell"), std::string::npos) << run.err;
  // Lines after the failures still ran: `help` printed the shell's commands.
  for (const char* command : {"session", "stop", "prepare", "sleep", "help"}) {
    EXPECT_NE(run.out.find(command), std::string::npos) << command << "\n" << run.out;
  }
  EXPECT_EQ(run.out.find("sandbox"), std::string::npos) << run.out;
  // No prompt when stdin is not a terminal.
  EXPECT_EQ(run.out.find("quorvix> "), std::string::npos);
}

TEST(ShellCommandTest, CleanInputEndsWithSuccessAndATerminalGetsPrompts) {
  const auto clean = runShellOn("# nothing but\n   \nsleep 0\nsleep --help\n");
  EXPECT_EQ(clean.code, ExitCode::Success);
  EXPECT_EQ(clean.err, "");
  EXPECT_NE(clean.out.find("SECONDS"), std::string::npos) << clean.out;  // the help of `sleep`

  const auto prompted = runShellOn("sleep 0\n\n", TerminalInfo{/*stdinIsTerminal=*/true, false});
  EXPECT_EQ(prompted.code, ExitCode::Success);
  // One prompt per line read, and one more before end of input.
  EXPECT_EQ(prompted.out, "quorvix> quorvix> quorvix> \n");
}

}  // namespace
}  // namespace quorvix::cli
