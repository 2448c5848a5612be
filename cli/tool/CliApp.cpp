#include "tool/CliApp.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "engine/Helpers.h"
#include "tool/AccountSetup.h"
#include "tool/CommandRegistry.h"
#include "tool/EngineHost.h"
#include "tool/GlobalOptions.h"
#include "tool/Interrupt.h"
#include "tool/Output.h"
#include "tool/Runtime.h"

namespace quorvix::cli {
namespace {

constexpr const char* kDescription = "quorvix: explore a Quorvix account from the terminal.";

constexpr const char* kFooter =
    "Options go before the command; 'quorvix COMMAND --help' describes a command's arguments.\n"
    "\n"
    "Service and account:\n"
    "  Without --service and --account, a sandbox service is started inside this process and its\n"
    "  demo account is used, so every command works with no network. Without --account, the demo\n"
    "  account also fills --kb and --api-key where they are not given. --account without --service\n"
    "  uses the production hosts. With --service https://HOST[:PORT] (or http://localhost:PORT for a\n"
    "  loopback service), account hosts become ACCOUNT.HOST, server hosts SERVER.HOST and the\n"
    "  configuration host HOST. --context entries are sent in the order given; a repeated NAME takes\n"
    "  the last VALUE.\n"
    "\n"
    "Output:\n"
    "  People get aligned text, with a spinner while waiting when stdout is a terminal; errors go to\n"
    "  stderr. With --json each result is one JSON document per line on stdout, and an engine error is\n"
    "  {\"error\":{\"domain\":...,\"code\":...,\"userInfo\":{...}}}. --log shows the engine's log lines\n"
    "  (requests as 'URL :: ...') on stderr. --linger keeps the session and its keep-alive going after\n"
    "  the last command; Ctrl-C ends it early.\n"
    "\n"
    "Exit codes:\n"
    "  0  success\n"
    "  1  the engine reported an error (printed as 'error: DOMAIN CODE' and its user information)\n"
    "  2  usage error\n"
    "  3  no answer within --timeout\n"
    "Inside 'shell' the run ends with the highest code any command ended with.";

void linger(double seconds) {
  if (seconds <= 0) return;
  InterruptCatcher catcher;
  catcher.sleepFor(secondsToDuration(seconds));
}

}  // namespace

int runTool(const std::vector<std::string>& arguments, const Streams& streams) {
  auto console = std::make_shared<Console>(streams.out, streams.err, streams.terminal);
  // Whatever happens, no stream is written once the run is over.
  struct Detach {
    Console& console;
    ~Detach() { console.detach(); }
  } detach{*console};

  GlobalOptions options;
  CLI::App app{kDescription, "quorvix"};
  app.footer(kFooter);
  app.require_subcommand(1);
  app.get_formatter()->label("SUBCOMMAND", "COMMAND [ARGS...]");
  app.set_version_flag("--version", engineVersion(), "Print the engine version and exit");
  addGlobalOptions(app, options);
  const auto& registry = builtinCommands();
  CommandSet commands(app, registry, /*shell=*/false);

  try {
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    app.parse(reversed);
  } catch (const CLI::ParseError& error) {
    const auto stop = commands.explain(app, error);
    if (stop.isHelp) {
      console->out(stop.text);
      return toInt(ExitCode::Success);
    }
    console->err("quorvix: " + stop.text + "\nRun 'quorvix --help' for more information.\n");
    return toInt(ExitCode::Usage);
  }

  Output output(*console, options.json);
  const auto chosen = commands.chosen();
  if (!chosen) {
    output.message("no command given");
    return toInt(ExitCode::Usage);
  }

  if (!chosen->command->usesEngine) {
    Runtime runtime(options, output, registry, streams.in, nullptr, nullptr);
    return toInt(chosen->action(runtime));
  }

  auto plan = planAccount(options);
  if (auto* error = std::get_if<UsageError>(&plan)) {
    output.message(error->message);
    return toInt(ExitCode::Usage);
  }

  auto started = EngineHost::start(std::get<AccountPlan>(std::move(plan)), console, options.log);
  if (auto* failure = std::get_if<EngineHost::Failure>(&started)) {
    output.message(failure->message);
    return toInt(failure->code);
  }
  const auto host = std::get<std::unique_ptr<EngineHost>>(std::move(started));

  Runtime runtime(options, output, registry, streams.in, host->engine(), host->params());
  const ExitCode code = chosen->action(runtime);
  linger(options.lingerSeconds);
  return toInt(code);
}

}  // namespace quorvix::cli
