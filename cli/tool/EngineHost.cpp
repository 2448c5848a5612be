#include "tool/EngineHost.h"

#include <quorvix/sandbox/SandboxService.h>

#include "quorvix/platform/Platform.h"
#include "tool/Output.h"

namespace quorvix::cli {

std::variant<std::unique_ptr<EngineHost>, EngineHost::Failure> EngineHost::start(AccountPlan plan,
                                                                                  std::shared_ptr<Console> console,
                                                                                  bool showLog) {
  std::unique_ptr<EngineHost> host(new EngineHost());

  if (showLog) {
    platform::setLogSink([console](std::string_view line) { console->logLine(line); });
  } else {
    platform::discardLog();
  }
  platform::setHostInfo(plan.hostInfo);
  if (plan.caFile) platform::setCAFile(*plan.caFile);

  std::optional<QXServiceHosts> hosts = plan.hosts;
  if (plan.service == ServiceKind::Embedded) {
    sandbox::SandboxOptions options;
    options.sessionTimeoutSeconds = kEmbeddedSessionTimeoutSeconds;
    host->sandbox_ = std::make_unique<sandbox::SandboxService>(options);
    if (host->sandbox_->start() == 0) {
      return Failure{ExitCode::EngineError, "could not start the embedded sandbox service on 127.0.0.1"};
    }
    auto embedded = serviceHostsFor(host->sandbox_->baseURL());
    if (auto* error = std::get_if<UsageError>(&embedded)) {
      return Failure{ExitCode::EngineError, "the embedded sandbox service: " + error->message};
    }
    hosts = std::get<QXServiceHosts>(std::move(embedded));
  }
  if (hosts) {
    if (auto refused = platform::setServiceHosts(*hosts)) {
      return Failure{ExitCode::Usage, "the service hosts were refused: " + errorMessage(*refused)};
    }
  }

  host->engine_ = Quorvix::shared();
  host->params_ = std::move(plan.params);
  host->engine_->prepareWithAccountParams(host->params_);
  return host;
}

EngineHost::~EngineHost() {
  if (engine_) engine_->stop();
  if (sandbox_) {
    sandbox_->stop();
    sandbox_.reset();
  }
  platform::discardLog();
}

}  // namespace quorvix::cli
