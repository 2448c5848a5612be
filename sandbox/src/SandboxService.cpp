#include "quorvix/sandbox/SandboxService.h"

#include <httplib.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "Listener.h"
#include "LoopbackServer.h"
#include "ServiceCore.h"
#include "TlsServer.h"

namespace quorvix::sandbox {

struct SandboxService::Impl {
  explicit Impl(SandboxOptions opts) : options(std::move(opts)), core(options.sessionTimeoutSeconds) {}

  bool tls() const { return !options.tlsCertificateFile.empty() && !options.tlsKeyFile.empty(); }

  /// A server bound to the configured address, or nullptr when binding failed
  /// (or, in TLS mode, the certificate or key could not be loaded).
  std::shared_ptr<Listener> bindServer() {
    if (tls()) {
      auto created = std::make_shared<TlsServer>(options.tlsCertificateFile, options.tlsKeyFile);
      route(*created);
      return bound(created);
    }
    auto created = std::make_shared<LoopbackServer>();
    route(*created);
    return bound(created);
  }

  void route(httplib::Server& created) {
    const auto handler = [this](const httplib::Request& request, httplib::Response& response) {
      core.handle(request, response);
    };
    created.Get(".*", handler);
    created.Post(".*", handler);
    created.Put(".*", handler);
    created.Patch(".*", handler);
    created.Delete(".*", handler);
    created.Options(".*", handler);
  }

  std::shared_ptr<Listener> bound(std::shared_ptr<Listener> created) {
    const int boundPort = created->bind(options.bindAddress, options.port);
    if (boundPort == 0) {
      return nullptr;
    }
    port = boundPort;
    return created;
  }

  SandboxOptions options;
  ServiceCore core;

  std::mutex lifecycle;
  std::condition_variable idle;
  std::shared_ptr<Listener> server;
  std::thread background;
  /// `run()` is serving on its caller's thread.
  bool foreground = false;
  /// A `stop()` is waiting for the background thread.
  bool joining = false;
  std::atomic<int> port{0};
};

SandboxService::SandboxService(SandboxOptions options) : impl_(std::make_unique<Impl>(std::move(options))) {}

SandboxService::~SandboxService() { stop(); }

int SandboxService::start() {
  std::lock_guard lock(impl_->lifecycle);
  if (impl_->server) {
    return impl_->port;
  }
  std::shared_ptr<Listener> server = impl_->bindServer();
  if (!server) {
    return 0;
  }
  impl_->server = server;
  impl_->background = std::thread([server] { server->serve(); });
  return impl_->port;
}

bool SandboxService::run() {
  std::unique_lock lock(impl_->lifecycle);
  if (impl_->server) {
    return false;
  }
  std::shared_ptr<Listener> server = impl_->bindServer();
  if (!server) {
    return false;
  }
  impl_->server = server;
  impl_->foreground = true;
  lock.unlock();
  server->serve();
  lock.lock();
  impl_->foreground = false;
  if (impl_->server == server) {
    impl_->server.reset();
  }
  impl_->idle.notify_all();
  return true;
}

void SandboxService::stop() {
  std::unique_lock lock(impl_->lifecycle);
  if (!impl_->server) {
    impl_->idle.wait(lock, [this] { return !impl_->joining; });
    return;
  }
  const std::shared_ptr<Listener> server = impl_->server;
  server->shutdown();
  if (impl_->background.joinable()) {
    std::thread background = std::move(impl_->background);
    impl_->joining = true;
    lock.unlock();
    background.join();
    lock.lock();
    impl_->joining = false;
    impl_->idle.notify_all();
  }
  impl_->idle.wait(lock, [this] { return !impl_->foreground && !impl_->joining; });
  if (impl_->server == server) {
    impl_->server.reset();
  }
}

int SandboxService::port() const { return impl_->port; }

std::string SandboxService::baseURL() const {
  return (impl_->tls() ? "https://localhost:" : "http://localhost:") + std::to_string(impl_->port.load());
}

std::vector<RecordedRequest> SandboxService::requests() const { return impl_->core.log().all(); }

std::vector<RecordedRequest> SandboxService::requestsFor(const std::string& endpoint) const {
  return impl_->core.log().forEndpoint(endpoint);
}

void SandboxService::clearRequests() { impl_->core.log().clear(); }

void SandboxService::injectFault(const std::string& endpoint, Fault fault) {
  impl_->core.faults().inject(endpoint, fault);
}

void SandboxService::clearFaults() { impl_->core.faults().clear(); }

void SandboxService::setSessionTimeout(double seconds) { impl_->core.sessions().setTimeout(seconds); }

void SandboxService::expireAllSessions() { impl_->core.sessions().clear(); }

std::size_t SandboxService::activeSessions() const { return impl_->core.sessions().alive(); }

}  // namespace quorvix::sandbox
