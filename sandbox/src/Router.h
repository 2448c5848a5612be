#pragma once
/// @file
/// Dispatches a request to the handler registered for its endpoint, after
/// checking its account and, for session-bound endpoints, its session.

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Accounts.h"
#include "Reply.h"
#include "RequestDecoding.h"
#include "Sessions.h"

namespace quorvix::sandbox {

/// What a handler is given: the account, the endpoint, the decoded query and
/// header fields, and the session when the endpoint is session-bound.
struct EndpointRequest {
  const Account& account;
  const std::string& endpoint;
  /// Query items decoded form-style, in the order sent.
  const QueryItems& query;
  /// Header fields, names in lower case.
  const std::map<std::string, std::string>& headers;
  /// The session named by "sid"; always set for session-bound endpoints.
  std::optional<Session> session;

  /// The first query value of that name, if any.
  std::optional<std::string> queryValue(std::string_view name) const;
  /// The first query value of that name, or `fallback`.
  std::string queryValueOr(std::string_view name, std::string fallback) const;
};

/// An endpoint's implementation.
using EndpointHandler = std::function<Reply(const EndpointRequest&)>;

/// Whether an endpoint needs a live session.
enum class Access {
  Open,          ///< any request of a known account
  SessionBound,  ///< the request must carry the "sid" of a live session of its account
};

/// Endpoint path ("/api/widget/v1/hello.js") to handler. Register every
/// endpoint before serving; dispatching is then thread-safe.
class Router {
 public:
  Router(const Accounts& accounts, Sessions& sessions);

  /// Registers `handler` for `endpoint`, replacing an earlier registration.
  void add(std::string endpoint, EndpointHandler handler, Access access = Access::Open);

  /// Answers `request`: 404 for an unknown account or endpoint, 400 for a
  /// session-bound endpoint without a live session, else the handler's reply.
  Reply dispatch(const RecordedRequest& request) const;

 private:
  struct Route {
    EndpointHandler handler;
    Access access;
  };

  const Accounts& accounts_;
  Sessions& sessions_;
  std::unordered_map<std::string, Route> routes_;
};

}  // namespace quorvix::sandbox
