// The facade's channel operations: the channels of an article, the report of
// a channel's use, and tracked events.
#include "engine/Helpers.h"
#include "engine/ServiceAddress.h"
#include "platform/Log.h"
#include "quorvix/channeling/QXChanneling.h"
#include "quorvix/engine/Quorvix.h"
#include "quorvix/search/SearchAnswer.h"

namespace quorvix {
namespace {

constexpr std::string_view kChannelsPath = "/api/channeling/v1/get";
constexpr std::string_view kTrackEventPath = "/api/widget/v1/trackEvent";

// The names the service gives the like states 0, 1 and 2.
std::string clientState(int32_t likeState) {
  switch (likeState) {
    case 1:
      return "positiveFeedback";
    case 2:
      return "negativeFeedback";
    default:
      return "none";  // also for a state the host set out of range
  }
}

}  // namespace

void Quorvix::channels(std::shared_ptr<QXQueryResult> forResult, std::optional<std::string> context,
                       ChannelsCompletion completion) {
  auto params = accountParams();
  auto url = params ? params->baseUrlComp() : std::nullopt;
  if (!url || !forResult) {
    if (completion) {
      completion(std::nullopt, url ? errors::noArticle() : detail::addressError(params));
    }
    return;
  }
  url->appendPath(kChannelsPath);
  std::vector<QueryItem> items{{"account", params->account()},
                               {"referer", appParams("iOS")},
                               {"articleId", forResult->resultId()},
                               {"clientState", clientState(forResult->likeState())}};
  if (context) items.push_back({"context", std::move(context)});
  if (params->knowledgeBase()) items.push_back({"kb", params->knowledgeBase()});
  url->setQueryItems(std::move(items));
  // Channels need no session: the request goes out directly.
  QXConnection::openConnection(connectionHandler(), *url, [completion = std::move(completion)](QXResponse response) {
    if (!completion) return;
    if (response.error()) {
      completion(std::nullopt, response.error());
    } else if (const Json* list = response.typeJson()) {
      completion(QXChanneling::listWithParams(list), std::nullopt);
    }
  });
}

void Quorvix::reportChanneling(std::shared_ptr<QXChanneling> channel, std::shared_ptr<QXQueryResult> article) {
  auto params = accountParams();
  auto url = params ? params->baseUrlComp() : std::nullopt;
  if (!url || !channel || !article) return;
  // A search hit escalates inside the session; any other article is reported.
  const bool escalation = std::dynamic_pointer_cast<SearchAnswer>(article) != nullptr;
  url->appendPath(escalation ? "/api/channeling/v1/escalate" : "/api/channeling/v1/report");
  std::vector<QueryItem> items{{"apiName", channel->buttonText()},
                               {"articleId", article->resultId().value_or("0")},
                               {escalation ? "type" : "reportedEscalationType", std::to_string(channel->type())}};
  if (escalation) {
    items.push_back({"text", article->title()});
  } else {
    items.push_back({"account", params->account()});
    items.push_back({"kb", params->knowledgeBase()});
    items.push_back({"trafficSource", "FAQ"});
  }
  url->setQueryItems(std::move(items));
  // Logged as it stands once handed over: an escalation inside an open
  // session has "sid" appended by then (its value hidden in the log).
  URLComponents logged = *url;
  if (escalation) {
    executeRequest(std::move(*url), nullptr);
    if (auto sid = sessionId()) logged.appendQueryItem("sid", std::move(sid));
  } else {
    QXConnection::openConnection(connectionHandler(), *url, nullptr);
  }
  detail::logFormat("Report Channel URL:: %@", detail::redactSecrets(logged.string()));
}

void Quorvix::trackEvent(const JsonObject& event) {
  auto params = accountParams();
  auto url = params ? params->baseUrlComp() : std::nullopt;
  if (!url) return;
  url->appendPath(kTrackEventPath);
  // Without a conversation the identifier goes out empty.
  url->setQueryItems({{"conversationId", conversationId().value_or("")},
                      {"eventType", "18"},
                      {"data", inJSON(event)},
                      {"referer", params->referrer()}});
  QXConnection::openConnection(connectionHandler(), *url, nullptr);
}

}  // namespace quorvix
