#pragma once
/// @file
/// What a command runs with: the options, the output, the engine and the
/// account, and helpers to wait for completions and report how they ended.

#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <utility>

#include "quorvix/core/QXError.h"
#include "quorvix/engine/AccountParams.h"
#include "quorvix/engine/Quorvix.h"
#include "tool/CommandRegistry.h"
#include "tool/ExitCode.h"
#include "tool/GlobalOptions.h"
#include "tool/Output.h"
#include "tool/Wait.h"

namespace quorvix::cli {

/// The state one run of the tool shares between its commands (all commands
/// of a `shell` run share one).
class Runtime {
 public:
  Runtime(const GlobalOptions& options, Output& output, const CommandRegistry& commands, std::istream& input,
          std::shared_ptr<Quorvix> engine, std::shared_ptr<AccountParams> params)
      : options_(options),
        output_(output),
        commands_(commands),
        input_(input),
        engine_(std::move(engine)),
        params_(std::move(params)),
        preparationUnseen_(engine_ != nullptr) {}

  const GlobalOptions& options() const { return options_; }
  Output& output() { return output_; }
  Console& console() { return output_.console(); }
  const CommandRegistry& commands() const { return commands_; }
  std::istream& input() { return input_; }
  /// Set for commands that use the engine; null otherwise.
  const std::shared_ptr<Quorvix>& engine() const { return engine_; }
  /// The account the engine was prepared with.
  const std::shared_ptr<AccountParams>& params() const { return params_; }
  /// Records that the engine was just prepared (it is fetching its configuration).
  void notePreparation() { preparationUnseen_ = true; }
  /// Whether the configuration of the latest preparation is still to be shown;
  /// the first call after a preparation says yes, later ones no.
  bool takeUnseenPreparation() { return std::exchange(preparationUnseen_, false); }
  /// Whether the input is a script the tool types itself (the demo's), not the user's.
  bool inputIsScript() const { return inputIsScript_; }
  /// Says whether the input is such a script; commands that show what they read mark its lines.
  void setInputIsScript(bool script) { inputIsScript_ = script; }

  /// Waits for `slot` within --timeout, with the spinner on a terminal.
  /// `failure` (may be empty) is polled for errors that drop the completion.
  template <class T>
  WaitOutcome<T> await(Handoff<T>& slot, std::function<std::optional<QXError>()> failure = {}) {
    WaitPolicy policy;
    policy.timeout = secondsToDuration(options_.timeoutSeconds);
    policy.failure = std::move(failure);
    policy.tick = [this](std::chrono::steady_clock::duration waited) { console().spinnerTick(waited); };
    auto outcome = awaitCompletion(slot, policy);
    console().spinnerClear();
    return outcome;
  }

  /// For session-bound requests, whose completion the engine drops when the
  /// session cannot be opened: forgets an earlier session failure and returns
  /// a check for a new one, to pass to `await`. Call before sending.
  std::function<std::optional<QXError>()> watchSessionStart() {
    engine_->setSessionError(std::nullopt);
    return [engine = engine_]() -> std::optional<QXError> {
      if (engine->sessionId()) return std::nullopt;
      return engine->sessionError();
    };
  }

  /// Reports a wait that did not deliver: the failure as an engine error
  /// (exit code 1) or the time-out (exit code 3). Call only when there is no value.
  template <class T>
  ExitCode reportUndelivered(const WaitOutcome<T>& outcome) {
    if (outcome.failure) {
      output_.engineError(*outcome.failure);
      return ExitCode::EngineError;
    }
    output_.timedOut(options_.timeoutSeconds);
    return ExitCode::TimedOut;
  }

 private:
  const GlobalOptions& options_;
  Output& output_;
  const CommandRegistry& commands_;
  std::istream& input_;
  std::shared_ptr<Quorvix> engine_;
  std::shared_ptr<AccountParams> params_;
  // A runtime starts with an engine that was prepared for it.
  bool preparationUnseen_ = false;
  bool inputIsScript_ = false;
};

}  // namespace quorvix::cli
