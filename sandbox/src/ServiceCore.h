#pragma once
/// @file
/// The service's state and the path of one HTTP request through it.

#include "Accounts.h"
#include "Faults.h"
#include "RequestLog.h"
#include "Router.h"
#include "Sessions.h"

namespace httplib {
struct Request;
struct Response;
}  // namespace httplib

namespace quorvix::sandbox {

/// Accounts, sessions, endpoints, request log and faults, shared by every
/// connection. Thread-safe.
class ServiceCore {
 public:
  explicit ServiceCore(double sessionTimeoutSeconds);

  /// Records `request`, applies a pending fault of its endpoint, and otherwise
  /// answers it through the router.
  void handle(const httplib::Request& request, httplib::Response& response);

  /// The live sessions.
  Sessions& sessions() { return sessions_; }
  /// Every request received.
  RequestLog& log() { return log_; }
  /// Faults waiting for their endpoint.
  Faults& faults() { return faults_; }

 private:
  Accounts accounts_;
  Sessions sessions_;
  Router router_;
  RequestLog log_;
  Faults faults_;
};

}  // namespace quorvix::sandbox
