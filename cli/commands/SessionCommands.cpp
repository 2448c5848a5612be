// The session command: opens a session and shows its keep-alive period.

#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "commands/Commands.h"
#include "tool/Runtime.h"

namespace quorvix::cli {
namespace {

/// What the engine holds once the session is open.
struct OpenSession {
  std::optional<std::string> sessionId;
  std::optional<double> delay;
};

ExitCode runSession(Runtime& runtime) {
  const auto& engine = runtime.engine();
  // The engine keeps the last start error even after a later success; clear
  // it so that only a failure of this start ends the wait.
  engine->setSessionError(std::nullopt);

  auto slot = std::make_shared<Handoff<OpenSession>>();
  std::weak_ptr<Quorvix> weakEngine = engine;
  engine->startSession([slot, weakEngine] {
    OpenSession open;
    if (auto strong = weakEngine.lock()) {
      open.sessionId = strong->sessionId();
      open.delay = strong->delay();
    }
    slot->deliver(std::move(open));
  });

  const auto outcome = runtime.await(*slot, [engine] { return engine->sessionError(); });
  if (!outcome.value) return runtime.reportUndelivered(outcome);

  const auto& open = *outcome.value;
  TextResult text;
  text.rows.emplace_back("session", open.sessionId.value_or("(none)"));
  text.rows.emplace_back("keep-alive", open.delay ? "every " + formatSeconds(*open.delay) + " s" : "none");

  runtime.output().result(text, documents::sessionDocument(open.sessionId, open.delay));
  return ExitCode::Success;
}

}  // namespace

void registerSessionCommands(CommandRegistry& registry) {
  registry.add(CommandDef{
      .name = "session",
      .summary = "Open a session (startSession); print its id and keep-alive period",
      .details = "Prints the session id and how often the engine sends a keep-alive. With --json: "
                 "{\"sessionId\": ID, \"delay\": SECONDS}. A failed start prints the engine's error "
                 "(exit code 1).",
      .scope = CommandScope::Everywhere,
      .usesEngine = true,
      .define = [](CLI::App&) -> CommandAction { return runSession; },
  });
}

}  // namespace quorvix::cli
