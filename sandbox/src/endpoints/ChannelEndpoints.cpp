// Escalation channels and what is reported about them: "/api/channeling/v1/get",
// "escalate" (inside a session, for a search hit), "report" (for any other
// article) and "trackEvent".
#include <boost/json.hpp>
#include <optional>
#include <string>

#include "ChannelCatalog.h"
#include "KnowledgeBase.h"
#include "RequestChecks.h"
#include "endpoints/Endpoints.h"

namespace quorvix::sandbox {

namespace {

namespace json = boost::json;

Reply accepted() { return Reply::json(json::object{{"status", 200}}); }

/// The article the request names with "articleId", or nullptr.
const Article* namedArticle(const KnowledgeBase& kb, const EndpointRequest& request) {
  return kb.article(request.queryValueOr("articleId", ""));
}

/// The channels of an article for the user's like state ("clientState",
/// "none" when absent) and the optional "context" ("k1:v1,k2:v2").
Reply channels(const EndpointRequest& request) {
  if (!accountItemMatches(request, true)) return Reply::error(400, "Account does not match");
  const KnowledgeBase* kb = requestKnowledgeBase(request);
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  const Article* article = namedArticle(*kb, request);
  if (article == nullptr) return Reply::error(404, "Unknown article");
  const std::string clientState = request.queryValueOr("clientState", "none");
  if (!isClientState(clientState)) return Reply::error(400, "Unknown client state");
  const ChannelCatalog* catalog = ChannelCatalogs::builtIn().find(kb->account(), kb->knowledgeBase());
  const ContextFilter filter = parseContextFilter(request.queryValueOr("context", ""));
  return Reply::json(json::object{
      {"rechanneling", catalog ? catalog->forArticle(article->id, clientState, filter) : json::array{}},
      {"status", 200}});
}

/// The use of a channel on a search hit, inside the session that found it.
Reply escalate(const EndpointRequest& request) {
  const KnowledgeBase* kb = requestKnowledgeBase(request);
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  if (namedArticle(*kb, request) == nullptr) return Reply::error(404, "Unknown article");
  if (!parseInteger(request.queryValueOr("type", ""))) return Reply::error(400, "Invalid escalation type");
  return accepted();
}

/// The use of a channel on an article outside a search (an FAQ answer).
Reply report(const EndpointRequest& request) {
  if (!accountItemMatches(request, true)) return Reply::error(400, "Account does not match");
  const KnowledgeBase* kb = requestKnowledgeBase(request);
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  if (namedArticle(*kb, request) == nullptr) return Reply::error(404, "Unknown article");
  if (!parseInteger(request.queryValueOr("reportedEscalationType", ""))) {
    return Reply::error(400, "Invalid escalation type");
  }
  if (request.queryValueOr("trafficSource", "").empty()) return Reply::error(400, "Missing traffic source");
  return accepted();
}

/// A tracked event: "eventType" a number, "data" a JSON document.
Reply trackEvent(const EndpointRequest& request) {
  if (!parseInteger(request.queryValueOr("eventType", ""))) return Reply::error(400, "Invalid event type");
  boost::system::error_code error;
  json::parse(request.queryValueOr("data", ""), error);
  if (error) return Reply::error(400, "Event data is not JSON");
  return accepted();
}

}  // namespace

void registerChannelEndpoints(Router& router) {
  router.add("/api/channeling/v1/get", channels);
  router.add("/api/channeling/v1/escalate", escalate, Access::SessionBound);
  router.add("/api/channeling/v1/report", report);
  router.add("/api/widget/v1/trackEvent", trackEvent);
}

}  // namespace quorvix::sandbox
