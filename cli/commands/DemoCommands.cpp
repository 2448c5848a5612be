// The demo: a guided tour of the engine against the embedded sandbox, one
// titled step per capability, each running the tool's own command.

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "commands/Commands.h"
#include "tool/Runtime.h"
#include "tool/ShellLine.h"

namespace quorvix::cli {
namespace {

/// One stop of the tour: what it shows, the command line that shows it, for
/// a conversation the lines typed into it, and the label the account names
/// for this step (as --label-id would).
struct DemoStep {
  const char* title;
  const char* line;
  const char* typed = nullptr;
  const char* labelId = nullptr;
};

// The sandbox's demo account knows every article, label, context and channel named here.
constexpr DemoStep kTour[] = {
    {"Open a session with the service (the engine keeps it alive on its own)", "session"},
    {"The account's widget configuration: texts, colours, flags, FAQ groups", "config"},
    {"The FAQ list", "faq-list"},
    {"The user's labels (read once the configuration has arrived)", "labels"},
    {"The FAQ group of the label \"Billing\" (the account names the label, so the group is filtered by it)",
     "label-faq 10", nullptr, "10"},
    {"Free-text search: ranked hits with bodies, extra data and channels", "search \"reset password\""},
    {"Suggestions while the user types, emphasised words marked", "suggest pass"},
    {"One answer, with the extra data its body carries (then kept in the answer store)", "answer 1006"},
    {"The values of the contexts that partition the knowledge base", "contexts product,platform"},
    {"Narrow the session to one product ...", "set-context \"product:Mesh Node M2\""},
    {"... and the same kind of search now finds only that product's articles", "search reset"},
    {"Escalation channels of an article the user disliked: all five kinds", "channels 1002 --like-state 2"},
    {"The user liked an article", "like 1002 1"},
    {"Report that the user took a channel of the latest search hit", "report 1010 0"},
    {"A tracked event", "track '{\"action\":\"opened\"}'"},
    {"A conversation with the bot: a transfer (it asks for missing entities), the balance (personal "
     "information the app supplies) and the feedback form",
     "chat", "hi\ntransfer\n250\n2026-12-01\nbalance\nEUR 1,234.56\n/feedback\n"},
};

// A step for a label runs on the account with that label id, as
// `quorvix --label-id ID` would; the tour goes on with the account as it was.
ExitCode runForLabel(Runtime& runtime, const std::vector<std::string>& words, const std::string& where,
                     const std::string& labelId) {
  auto labelled = std::make_shared<AccountParams>(*runtime.params());
  labelled->setLabelId(labelId);
  runtime.engine()->prepareWithAccountParams(labelled);
  Runtime forLabel(runtime.options(), runtime.output(), runtime.commands(), runtime.input(), runtime.engine(),
                   labelled);
  const ExitCode code = runShellCommand(forLabel, words, where);
  runtime.engine()->prepareWithAccountParams(runtime.params());
  return code;
}

ExitCode runDemo(Runtime& runtime) {
  ExitCode worst = ExitCode::Success;
  int number = 0;
  for (const auto& step : kTour) {
    auto split = splitShellLine(step.line);
    const auto* words = std::get_if<std::vector<std::string>>(&split);
    if (words == nullptr || words->empty() || runtime.commands().find(words->front()) == nullptr) continue;
    ++number;
    if (!runtime.options().json) {
      const std::string options = step.labelId != nullptr ? std::string("--label-id ") + step.labelId + " " : "";
      runtime.console().out((number == 1 ? "" : "\n") + std::to_string(number) + ". " + step.title + "\n   $ quorvix " +
                            options + step.line + "\n\n");
    }
    const std::string where = std::string(step.line) + ": ";
    if (step.labelId != nullptr) {
      worst = worse(worst, runForLabel(runtime, *words, where, step.labelId));
      continue;
    }
    if (step.typed == nullptr) {
      worst = worse(worst, runShellCommand(runtime, *words, where));
      continue;
    }
    // A conversation reads what the user types: here, a script, marked as such in the transcript.
    std::istringstream typed(step.typed);
    Runtime scripted(runtime.options(), runtime.output(), runtime.commands(), typed, runtime.engine(), runtime.params());
    scripted.setInputIsScript(true);
    worst = worse(worst, runCommandWords(scripted, *words, where, /*shell=*/false));
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
