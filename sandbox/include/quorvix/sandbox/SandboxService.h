#pragma once
/// @file
/// The loopback reference service: a real HTTP server that answers every
/// endpoint the engine calls, with sessions, a small knowledge base, a request
/// log and switchable faults. Usable in-process (tests, the `quorvix` tool) and
/// as the `quorvix-sandbox` executable.

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quorvix::sandbox {

/// One request as the sandbox received it.
struct RecordedRequest {
  std::string method;
  /// The "Host" header as sent ("acme.localhost:8080").
  std::string host;
  /// The request target as sent, still encoded ("/api/widget/v1/hello.js?nostats=false").
  std::string target;
  /// The decoded path as sent, account prefix included ("/~acme/api/widget/v1/q.js").
  std::string path;
  /// The account the request was addressed to (from the "/~account" prefix or the host's first label).
  std::string account;
  /// The path below the account ("/api/widget/v1/q.js").
  std::string endpoint;
  /// Query items decoded form-style ("+" and "%20" both read as a blank), in order.
  std::vector<std::pair<std::string, std::string>> query;
  /// Header fields, names in lower case.
  std::map<std::string, std::string> headers;
  /// The client's port: requests from one connection share it.
  int remotePort = 0;

  /// The first query value of that name, if any.
  std::optional<std::string> queryValue(const std::string& name) const;
};

/// What a fault does to a request.
enum class FaultKind {
  Http500,         ///< HTTP 500 with a JSON body {"status": 500, ...}
  BodyStatus400,   ///< HTTP 200 with the body {"status": 400}
  GarbageBody,     ///< HTTP 200 with a body that is not JSON
  EmptyBody,       ///< HTTP 200 with an empty body
  DropConnection,  ///< the connection is closed before a complete answer
  Delay,           ///< the normal answer, after `delay`
  Reset,           ///< the connection is reset (TCP RST) before anything is answered
  TruncatedBody,   ///< the normal answer's header and first half of its body, then the connection ends
  Stall,           ///< nothing at all for `delay` (2 s when zero), then the connection is reset;
                   ///< ends early when the client gives up
  Oversized,       ///< HTTP 200 with a JSON body of more than 32 MiB, streamed
  DeepNesting,     ///< HTTP 200 with a JSON body nested 100 levels deep
};

/// A fault for the next `count` requests of one endpoint.
struct Fault {
  FaultKind kind = FaultKind::Http500;
  int count = 1;
  std::chrono::milliseconds delay{0};
};

/// How the sandbox starts.
struct SandboxOptions {
  /// 0 picks a free port.
  int port = 0;
  std::string bindAddress = "127.0.0.1";
  /// The session time-out the service announces in "hello.js" and enforces.
  double sessionTimeoutSeconds = 600;
  /// PEM files of the certificate (chain) and its private key: when both are
  /// set the service speaks HTTPS only.
  std::string tlsCertificateFile{};
  std::string tlsKeyFile{};
};

/// The sandbox service. Thread-safe; stops in its destructor.
class SandboxService {
 public:
  explicit SandboxService(SandboxOptions options = {});
  ~SandboxService();
  SandboxService(const SandboxService&) = delete;
  SandboxService& operator=(const SandboxService&) = delete;

  /// Starts serving on a background thread; returns the bound port (0 when the
  /// port could not be bound).
  int start();
  /// Serves on the calling thread until `stop()` is called from elsewhere.
  /// Returns false when the port could not be bound.
  bool run();
  /// Stops serving; idempotent.
  void stop();
  /// The bound port (0 before start).
  int port() const;
  /// "http://localhost:PORT" ("https://" in TLS mode), the base to give the engine.
  std::string baseURL() const;

  /// The demo account every data file describes.
  static constexpr const char* kDemoAccount = "acme";
  /// The demo account's knowledge base.
  static constexpr const char* kDemoKnowledgeBase = "support";
  /// The demo account's API key.
  static constexpr const char* kDemoApiKey = "demo-key-7f3a";

  /// Every request received so far, in arrival order.
  std::vector<RecordedRequest> requests() const;
  /// The requests of one endpoint ("/api/widget/v1/hello.js").
  std::vector<RecordedRequest> requestsFor(const std::string& endpoint) const;
  void clearRequests();

  /// Applies `fault` to the next `fault.count` requests of `endpoint`.
  void injectFault(const std::string& endpoint, Fault fault);
  void clearFaults();

  /// Changes the announced and enforced session time-out for new sessions.
  void setSessionTimeout(double seconds);
  /// Forgets every session: later requests with their "sid" are rejected.
  void expireAllSessions();
  /// The number of sessions still alive.
  std::size_t activeSessions() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace quorvix::sandbox
