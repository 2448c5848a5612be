#pragma once
/// @file
/// Sets the engine up for a run and takes it down again: log sink, host
/// information, service hosts (or the embedded sandbox), the prepared engine.

#include <memory>
#include <string>
#include <variant>

#include "quorvix/engine/AccountParams.h"
#include "quorvix/engine/Quorvix.h"
#include "tool/AccountSetup.h"
#include "tool/Console.h"
#include "tool/ExitCode.h"

namespace quorvix::sandbox {
class SandboxService;
}

namespace quorvix::cli {

/// The engine of one run and what it talks to. Destroying it stops the
/// engine first (no keep-alive left), then the embedded sandbox, and then
/// silences the engine's log.
class EngineHost {
 public:
  /// Why the engine could not be set up, and with which exit code to end.
  struct Failure {
    ExitCode code = ExitCode::EngineError;
    std::string message;
  };

  /// Installs the log sink (lines to `console` with `showLog`, dropped
  /// otherwise) and the host information, points the engine at the planned
  /// service (starting the embedded sandbox when planned) and prepares the
  /// shared engine with the planned account.
  static std::variant<std::unique_ptr<EngineHost>, Failure> start(AccountPlan plan, std::shared_ptr<Console> console,
                                                                  bool showLog);

  ~EngineHost();
  EngineHost(const EngineHost&) = delete;
  EngineHost& operator=(const EngineHost&) = delete;

  const std::shared_ptr<Quorvix>& engine() const { return engine_; }
  const std::shared_ptr<AccountParams>& params() const { return params_; }

  /// Options of the embedded sandbox: sessions time out after 20 s, so the
  /// engine's keep-alive (half of that) shows within a short --linger.
  static constexpr double kEmbeddedSessionTimeoutSeconds = 20;

 private:
  EngineHost() = default;

  std::unique_ptr<sandbox::SandboxService> sandbox_;
  std::shared_ptr<Quorvix> engine_;
  std::shared_ptr<AccountParams> params_;
};

}  // namespace quorvix::cli
