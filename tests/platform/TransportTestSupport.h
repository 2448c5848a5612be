#pragma once
/// @file
/// Throwaway loopback HTTP servers and completion capture for the transport tests.

#include <httplib.h>

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "quorvix/platform/QXConnectionHandler.h"

namespace quorvix::testing {

/// Upper bound for anything a test waits on; only there to turn a hang into a failure.
inline constexpr std::chrono::seconds kHangGuard{10};

/// An httplib server on a loopback address, serving from a thread of its own.
/// Register handlers on `http()` before `start()`.
class LoopbackServer {
 public:
  explicit LoopbackServer(std::unique_ptr<httplib::Server> server = std::make_unique<httplib::Server>(),
                          std::string address = "127.0.0.1")
      : server_(std::move(server)), address_(std::move(address)) {
    server_->set_tcp_nodelay(true);      // no Nagle stall between header and body writes
    server_->set_keep_alive_timeout(1);  // stop() waits out idle keep-alive connections
  }
  ~LoopbackServer() { stop(); }

  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  httplib::Server& http() { return *server_; }

  /// Binds a free port and serves until `stop`. Returns false when it cannot.
  bool start() {
    port_ = server_->bind_to_any_port(address_);
    if (port_ <= 0) {
      return false;
    }
    thread_ = std::thread([this] { server_->listen_after_bind(); });
    // stop() only works once the accept loop runs.
    const auto deadline = std::chrono::steady_clock::now() + kHangGuard;
    while (!server_->is_running() && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return server_->is_running();
  }

  void stop() {
    if (thread_.joinable()) {
      server_->stop();
      thread_.join();
    }
  }

  int port() const { return port_; }

  /// "scheme://host:port" + path.
  std::string url(std::string_view path, std::string_view host = "127.0.0.1", std::string_view scheme = "http") const {
    return std::string(scheme) + "://" + std::string(host) + ":" + std::to_string(port_) + std::string(path);
  }

 private:
  std::unique_ptr<httplib::Server> server_;
  std::string address_;
  int port_ = 0;
  std::thread thread_;
};

/// Everything a completion received, and the thread it ran on.
struct Outcome {
  std::string body;
  std::optional<QXHTTPURLResponse> response;
  std::optional<QXError> error;
  std::thread::id thread;

  /// The error code, or 0 when there was no error.
  long code() const { return error ? error->code : 0; }
};

/// A GET of `url` with the given time-out.
inline QXURLRequest getRequest(std::string url, double timeoutSeconds = 15.0) {
  QXURLRequest request;
  request.url = std::move(url);
  request.timeoutInterval = timeoutSeconds;
  return request;
}

/// Opens `request` and waits (at most `kHangGuard`) for its completion.
inline std::optional<Outcome> openAndWait(QXConnectionHandler& handler, const QXURLRequest& request) {
  auto promise = std::make_shared<std::promise<Outcome>>();
  std::future<Outcome> future = promise->get_future();
  handler.open(request, [promise](std::string body, std::optional<QXHTTPURLResponse> response,
                                  std::optional<QXError> error) {
    promise->set_value(Outcome{std::move(body), std::move(response), std::move(error), std::this_thread::get_id()});
  });
  if (future.wait_for(kHangGuard) != std::future_status::ready) {
    return std::nullopt;
  }
  return future.get();
}

}  // namespace quorvix::testing
