#include <algorithm>
#include <boost/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "endpoints/Endpoints.h"

namespace quorvix::sandbox {

namespace {

using ContextPairs = std::vector<std::pair<std::string, std::string>>;

/// "k1:v1,k2:v2" into pairs; an entry without ":" has an empty value.
ContextPairs parseContext(std::string_view text) {
  ContextPairs pairs;
  while (!text.empty()) {
    const std::size_t comma = std::min(text.find(','), text.size());
    const std::string_view entry = text.substr(0, comma);
    text.remove_prefix(std::min(comma + 1, text.size()));
    if (entry.empty()) {
      continue;
    }
    const std::size_t colon = entry.find(':');
    if (colon == std::string_view::npos) {
      pairs.emplace_back(std::string(entry), std::string());
    } else {
      pairs.emplace_back(std::string(entry.substr(0, colon)), std::string(entry.substr(colon + 1)));
    }
  }
  return pairs;
}

Reply hello(const EndpointRequest& request, Sessions& sessions) {
  std::string knowledgeBase = request.queryValueOr("kb", "");
  if (knowledgeBase.empty()) {
    knowledgeBase = request.account.defaultKnowledgeBase();
  } else if (!request.account.hasKnowledgeBase(knowledgeBase)) {
    return Reply::error(404, "Unknown knowledge base");
  }
  const Session session =
      sessions.open(request.account.name, std::move(knowledgeBase), parseContext(request.queryValueOr("context", "")));
  return Reply::json(boost::json::object{
      {"sessionId", session.id},
      {"timeout", Reply::seconds(session.timeoutSeconds)},
      {"status", 200},
  });
}

}  // namespace

void registerSessionEndpoints(Router& router, Sessions& sessions) {
  router.add("/api/widget/v1/hello.js", [&sessions](const EndpointRequest& request) { return hello(request, sessions); });
  // The router has already checked and refreshed the session.
  router.add(
      "/api/widget/v1/keepAlive.js",
      [](const EndpointRequest&) { return Reply::json(boost::json::object{{"status", 200}}); },
      Access::SessionBound);
}

}  // namespace quorvix::sandbox
