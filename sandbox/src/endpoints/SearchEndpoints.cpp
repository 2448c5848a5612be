// Search, suggestions and contexts: "q.js", "autoComplete", "contextvalues.js"
// and "setParams". All of them work inside a session, under the session's
// context (given to "hello.js" or changed by "setParams").
#include <algorithm>
#include <atomic>
#include <boost/json.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ChannelCatalog.h"
#include "KnowledgeBase.h"
#include "RequestChecks.h"
#include "SearchRanking.h"
#include "Suggestions.h"
#include "TextFolding.h"
#include "endpoints/Endpoints.h"

namespace quorvix::sandbox {

namespace {

namespace json = boost::json;

constexpr std::size_t kMaxAnswers = 10;
constexpr std::size_t kMaxSuggestions = 8;

/// Whether the filter names `name` with a value (folded comparison).
bool filterNames(const ContextFilter& filter, const std::string& name) {
  return std::any_of(filter.begin(), filter.end(), [&](const auto& entry) {
    return !entry.second.empty() && foldText(entry.first) == foldText(name);
  });
}

/// The service's identifier text as a JSON number when it is one.
json::value identifier(const std::string& id) {
  if (const std::optional<int64_t> number = parseInteger(id)) return *number;
  return json::value(id);
}

/// The identifiers of the context values an article carries, as numbers.
json::array contextSelection(const KnowledgeBase& kb, const Article& article) {
  json::array selection;
  for (const ContextName& name : kb.contexts()) {
    auto carried = article.contexts.find(name.name);
    if (carried == article.contexts.end()) continue;
    for (const ContextValue& value : name.values) {
      if (foldText(value.value) == foldText(carried->second)) selection.push_back(identifier(value.id));
    }
  }
  return selection;
}

/// The "context" block: every value of the contexts the hits carry; "flags" 1
/// marks the value the session is narrowed to. "v" is the identifier of the
/// first context offered (0 when none), "order" the contexts' identifiers.
json::object contextBlock(const KnowledgeBase& kb, const std::vector<RankedArticle>& hits, const ContextFilter& filter) {
  json::array order;
  json::array values;
  int64_t selector = 0;
  for (const ContextName& name : kb.contexts()) {
    const bool carried = std::any_of(hits.begin(), hits.end(), [&](const RankedArticle& hit) {
      return hit.article->contexts.count(name.name) != 0;
    });
    if (!carried) continue;
    const int64_t nameId = parseInteger(name.id).value_or(0);
    if (order.empty()) selector = nameId;
    order.push_back(nameId);
    for (const ContextValue& value : name.values) {
      const bool selected = std::any_of(filter.begin(), filter.end(), [&](const auto& entry) {
        return foldText(entry.first) == foldText(name.name) && foldText(entry.second) == foldText(value.value);
      });
      values.push_back(json::object{{"id", value.id},
                                    {"name", value.value},
                                    {"flags", selected ? 1 : 0},
                                    {"selectionText", "Show answers for " + value.value}});
    }
  }
  return json::object{{"v", selector}, {"order", std::move(order)}, {"values", std::move(values)}};
}

json::object answerOf(const KnowledgeBase& kb, const RankedArticle& hit, const ContextFilter& filter) {
  const Article& article = *hit.article;
  const ChannelCatalog* catalog = ChannelCatalogs::builtIn().find(kb.account(), kb.knowledgeBase());
  json::object answer{{"id", article.id},
                      {"title", article.title},
                      {"summary", article.body},
                      {"titleAndBodyHash", article.hash},
                      {"likes", article.likes},
                      {"keywordsetId", article.keywordsetId},
                      {"score", hit.score},
                      {"contextSelection", contextSelection(kb, article)},
                      {"rechanneling", catalog ? catalog->forArticle(article.id, "none", filter) : json::array{}}};
  // A hit that depends on a context the session has not chosen applies only
  // once the user selects one of its context values.
  const bool selectionOnly = std::any_of(article.contexts.begin(), article.contexts.end(),
                                         [&](const auto& entry) { return !filterNames(filter, entry.first); });
  if (selectionOnly) answer["contextSelectionOnly"] = true;
  return answer;
}

/// The entries of "a, b,c" without their outer blanks; empty entries dropped.
std::vector<std::string> commaSeparated(std::string_view text) {
  std::vector<std::string> entries;
  while (!text.empty()) {
    const std::size_t comma = std::min(text.find(','), text.size());
    std::string_view entry = text.substr(0, comma);
    text.remove_prefix(std::min(comma + 1, text.size()));
    while (!entry.empty() && entry.front() == ' ') entry.remove_prefix(1);
    while (!entry.empty() && entry.back() == ' ') entry.remove_suffix(1);
    if (!entry.empty()) entries.emplace_back(entry);
  }
  return entries;
}

std::string nextRequestId() {
  static std::atomic<uint64_t> counter{0};
  return "q-" + std::to_string(++counter);
}

Reply search(const EndpointRequest& request) {
  const KnowledgeBase* kb = requestKnowledgeBase(request);
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  const std::optional<std::string> text = request.queryValue("text");
  if (!text) return Reply::error(400, "Missing text");
  const ContextFilter& filter = request.session->context;

  const std::vector<RankedArticle> hits = rankArticles(*kb, *text, filter, kMaxAnswers);
  json::array answers;
  for (const RankedArticle& hit : hits) answers.push_back(answerOf(*kb, hit, filter));
  const ChannelCatalog* catalog = ChannelCatalogs::builtIn().find(kb->account(), kb->knowledgeBase());
  return Reply::json(json::object{{"answers", std::move(answers)},
                                  {"context", contextBlock(*kb, hits, filter)},
                                  {"rechanneling", catalog ? catalog->general("none", filter) : json::array{}},
                                  {"requestId", nextRequestId()},
                                  {"kbLanguageCode", kb->languageCode()},
                                  {"detectedLanguage", detectLanguage(*text, kb->languageCode())},
                                  {"status", 200}});
}

Reply autoComplete(const EndpointRequest& request) {
  const KnowledgeBase* kb = requestKnowledgeBase(request);
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  const std::optional<std::string> text = request.queryValue("text");
  if (!text) return Reply::error(400, "Missing text");
  const bool stemming = request.queryValueOr("stemming", "false") == "true";
  json::array phrases;
  for (std::string& phrase : suggestionPhrases(*kb, *text, stemming, request.session->context, kMaxSuggestions)) {
    phrases.push_back(json::value(std::move(phrase)));
  }
  return Reply::json(json::object{{"a", std::move(phrases)}, {"status", 200}});
}

/// "contexts" is a comma-separated list of context names; empty lists them all.
Reply contextValues(const EndpointRequest& request) {
  if (!accountItemMatches(request, true)) return Reply::error(400, "Account does not match");
  const KnowledgeBase* kb = requestKnowledgeBase(request);
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  if (const std::optional<std::string> named = request.queryValue("kb"); named && *named != kb->knowledgeBase()) {
    return Reply::error(400, "Knowledge base does not match the session");
  }
  std::vector<std::string> wanted = commaSeparated(request.queryValueOr("contexts", ""));
  if (wanted.empty()) {
    for (const ContextName& name : kb->contexts()) wanted.push_back(name.name);
  }
  const ContextFilter& filter = request.session->context;
  json::object values;
  for (const std::string& wantedName : wanted) {
    auto name = std::find_if(kb->contexts().begin(), kb->contexts().end(),
                             [&](const ContextName& candidate) { return foldText(candidate.name) == foldText(wantedName); });
    if (name == kb->contexts().end()) return Reply::error(404, "Unknown context: " + wantedName);
    json::array list;
    for (const ContextValue& value : name->values) {
      const bool selected = std::any_of(filter.begin(), filter.end(), [&](const auto& entry) {
        return foldText(entry.first) == foldText(name->name) && foldText(entry.second) == foldText(value.value);
      });
      list.push_back(json::object{{"id", value.id}, {"name", value.value}, {"selected", selected}});
    }
    values[name->name] = std::move(list);
  }
  return Reply::json(json::object{{"values", std::move(values)}, {"status", 200}});
}

/// Replaces the session's context with the "context" item ("k1:v1,k2:v2");
/// without the item the context stays as it was.
Reply setParams(const EndpointRequest& request, Sessions& sessions) {
  const std::optional<std::string> wire = request.queryValue("context");
  if (!wire) return Reply::json(json::object{{"status", 200}});
  ContextFilter context = parseContextFilter(*wire);
  if (std::any_of(context.begin(), context.end(), [](const auto& entry) { return entry.first.empty(); })) {
    return Reply::error(400, "Malformed context");
  }
  if (!sessions.setContext(request.session->id, request.account.name, std::move(context))) {
    return invalidSessionReply();
  }
  return Reply::json(json::object{{"status", 200}});
}

}  // namespace

void registerSearchEndpoints(Router& router, Sessions& sessions) {
  router.add("/api/widget/v1/q.js", search, Access::SessionBound);
  router.add("/api/kb/v1/autoComplete", autoComplete, Access::SessionBound);
  router.add("/api/widget/v1/contextvalues.js", contextValues, Access::SessionBound);
  router.add(
      "/api/widget/v1/setParams",
      [&sessions](const EndpointRequest& request) { return setParams(request, sessions); }, Access::SessionBound);
}

}  // namespace quorvix::sandbox
