#include "Router.h"

#include <utility>

namespace quorvix::sandbox {

std::optional<std::string> EndpointRequest::queryValue(std::string_view name) const {
  for (const auto& [key, value] : query) {
    if (key == name) {
      return value;
    }
  }
  return std::nullopt;
}

std::string EndpointRequest::queryValueOr(std::string_view name, std::string fallback) const {
  std::optional<std::string> value = queryValue(name);
  return value ? std::move(*value) : std::move(fallback);
}

Router::Router(const Accounts& accounts, Sessions& sessions) : accounts_(accounts), sessions_(sessions) {}

void Router::add(std::string endpoint, EndpointHandler handler, Access access) {
  routes_.insert_or_assign(std::move(endpoint), Route{std::move(handler), access});
}

Reply Router::dispatch(const RecordedRequest& request) const {
  const Account* account = accounts_.find(request.account);
  if (account == nullptr) {
    return Reply::error(404, "Unknown account");
  }
  auto route = routes_.find(request.endpoint);
  if (route == routes_.end()) {
    return Reply::error(404, "Unknown endpoint");
  }
  EndpointRequest endpointRequest{*account, request.endpoint, request.query, request.headers, std::nullopt};
  if (route->second.access == Access::SessionBound) {
    const std::optional<std::string> sid = request.queryValue("sid");
    if (sid) {
      endpointRequest.session = sessions_.use(*sid, account->name);
    }
    if (!endpointRequest.session) {
      return invalidSessionReply();
    }
  }
  return route->second.handler(endpointRequest);
}

}  // namespace quorvix::sandbox
