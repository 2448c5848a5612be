// The shell: commands read from stdin on one engine, plus the commands only
// the shell has (stop, prepare, sleep).

#include <istream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <CLI/CLI.hpp>

#include "commands/Commands.h"
#include "tool/Runtime.h"
#include "tool/ShellLine.h"
#include "tool/Validators.h"

namespace quorvix::cli {
namespace {

constexpr const char* kPrompt = "quorvix> ";

/// The command list the shell prints for `help`.
std::string shellHelp(const CommandRegistry& registry) {
  TextResult text;
  text.heading = "Commands (COMMAND --help for its arguments; blank lines and # comments are skipped):";
  for (const auto& command : registry.all()) {
    if (CommandSet::available(command, /*shell=*/true)) text.rows.emplace_back(command.name, command.summary);
  }
  text.rows.emplace_back("help", "This list");
  return formatText(text);
}

}  // namespace

ExitCode runShellCommand(Runtime& runtime, const std::vector<std::string>& words, const std::string& where) {
  return runCommandWords(runtime, words, where, /*shell=*/true);
}

ExitCode runCommandWords(Runtime& runtime, const std::vector<std::string>& words, const std::string& where, bool shell) {
  CLI::App app{"", ""};
  app.require_subcommand(1);
  CommandSet commands(app, runtime.commands(), shell);
  try {
    std::vector<std::string> reversed(words.rbegin(), words.rend());
    app.parse(reversed);
  } catch (const CLI::ParseError& error) {
    const auto stop = commands.explain(app, error);
    if (stop.isHelp) {
      runtime.console().out(stop.text);
      return ExitCode::Success;
    }
    runtime.output().message(where + stop.text + " (type help for the commands)");
    return ExitCode::Usage;
  }
  const auto chosen = commands.chosen();
  if (!chosen) return ExitCode::Usage;
  return chosen->action(runtime);
}

namespace {

ExitCode runShell(Runtime& runtime) {
  const bool interactive = runtime.console().terminal().stdinIsTerminal;
  ExitCode worst = ExitCode::Success;
  std::string line;
  std::size_t lineNumber = 0;
  for (;;) {
    if (interactive) runtime.console().out(kPrompt);
    if (!std::getline(runtime.input(), line)) break;
    ++lineNumber;

    const std::string where = "line " + std::to_string(lineNumber) + ": ";
    auto split = splitShellLine(line);
    if (auto* error = std::get_if<UsageError>(&split)) {
      runtime.output().message(where + error->message);
      worst = worse(worst, ExitCode::Usage);
      continue;
    }
    const auto& words = std::get<std::vector<std::string>>(split);
    if (words.empty()) continue;
    if (words.size() == 1 && words.front() == "help") {
      runtime.console().out(shellHelp(runtime.commands()));
      continue;
    }
    worst = worse(worst, runShellCommand(runtime, words, where));
  }
  if (interactive) runtime.console().out("\n");
  return worst;
}

ExitCode runStop(Runtime& runtime) {
  runtime.engine()->stop();
  TextResult text;
  text.rows.emplace_back("stopped", "");
  JsonObject json;
  json["stopped"] = true;
  runtime.output().result(text, json);
  return ExitCode::Success;
}

ExitCode runPrepare(Runtime& runtime) {
  runtime.engine()->prepareWithAccountParams(runtime.params());
  runtime.notePreparation();
  const auto& params = *runtime.params();
  const std::string account = params.account().value_or("");
  const std::string knowledgeBase = params.knowledgeBase().value_or("");

  TextResult text;
  text.rows.emplace_back("prepared", account + (knowledgeBase.empty() ? "" : "/" + knowledgeBase));
  JsonObject prepared;
  prepared["account"] = account;
  prepared["knowledgeBase"] = knowledgeBase;
  JsonObject json;
  json["prepared"] = std::move(prepared);
  runtime.output().result(text, json);
  return ExitCode::Success;
}

}  // namespace

void registerShellCommands(CommandRegistry& registry) {
  registry.add(CommandDef{
      .name = "shell",
      .summary = "Read commands from stdin, one per line, on one engine and one session",
      .details = "Each line is a command with its arguments, as on the command line but without the "
                 "global options; words are split like a POSIX shell does (quotes and backslashes, no "
                 "expansions). Blank lines and lines starting with # are skipped; 'help' lists the "
                 "commands. Besides the commands, the shell knows 'stop', 'prepare' and 'sleep SECONDS'. "
                 "A line that fails is reported and the shell goes on; the run ends with the highest exit "
                 "code of its lines. A prompt shows when stdin is a terminal.",
      .scope = CommandScope::CommandLine,
      .usesEngine = true,
      .define = [](CLI::App&) -> CommandAction { return runShell; },
  });
  registry.add(CommandDef{
      .name = "stop",
      .summary = "Stop the engine: cancel the keep-alive and drop the session",
      .details = "",
      .scope = CommandScope::ShellOnly,
      .usesEngine = true,
      .define = [](CLI::App&) -> CommandAction { return runStop; },
  });
  registry.add(CommandDef{
      .name = "prepare",
      .summary = "Prepare the engine again with the account of the global options",
      .details = "",
      .scope = CommandScope::ShellOnly,
      .usesEngine = true,
      .define = [](CLI::App&) -> CommandAction { return runPrepare; },
  });
  registry.add(CommandDef{
      .name = "sleep",
      .summary = "Wait SECONDS (the engine's keep-alive goes on meanwhile)",
      .details = "",
      .scope = CommandScope::ShellOnly,
      .usesEngine = true,
      .define = [](CLI::App& sub) -> CommandAction {
        auto seconds = std::make_shared<double>(0);
        sub.add_option("SECONDS", *seconds, "How long to wait")
            ->type_name("SECONDS")
            ->required()
            ->check(secondsValidator(/*allowZero=*/true));
        return [seconds](Runtime&) {
          std::this_thread::sleep_for(secondsToDuration(*seconds));
          return ExitCode::Success;
        };
      },
  });
}

}  // namespace quorvix::cli
