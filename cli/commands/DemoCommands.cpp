// The demo: a guided tour of the engine against the embedded sandbox, one
// titled step per capability, each running the tool's own command.

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "commands/Commands.h"
#include "tool/Runtime.h"
#include "tool/ShellLine.h"

namespace quorvix::cli {
namespace {

/// One stop of the tour: what it shows and the command line that shows it.
struct DemoStep {
  const char* title;
  const char* line;
};

// The sandbox's demo account knows every article, context and channel named here.
constexpr DemoStep kTour[] = {
    {"Open a session with the service (the engine keeps it alive on its own)", "session"},
};

ExitCode runDemo(Runtime& runtime) {
  ExitCode worst = ExitCode::Success;
  int number = 0;
  for (const auto& step : kTour) {
    auto split = splitShellLine(step.line);
    const auto* words = std::get_if<std::vector<std::string>>(&split);
    if (words == nullptr || words->empty() || runtime.commands().find(words->front()) == nullptr) continue;
    ++number;
    if (!runtime.options().json) {
      runtime.console().out((number == 1 ? "" : "\n") + std::to_string(number) + ". " + step.title + "\n   $ quorvix " +
                            step.line + "\n\n");
    }
    worst = worse(worst, runShellCommand(runtime, *words, std::string(step.line) + ": "));
  }
  return worst;
}

}  // namespace

void registerDemoCommands(CommandRegistry& registry) {
  registry.add(CommandDef{
      .name = "demo",
      .summary = "A guided tour of every capability against the embedded sandbox",
      .details = "Runs one command per capability on one engine and one session, each under a short "
                 "title saying what it shows. Ends with the highest exit code of its steps.",
      .scope = CommandScope::CommandLine,
      .usesEngine = true,
      .define = [](CLI::App&) -> CommandAction { return runDemo; },
  });
}

}  // namespace quorvix::cli
