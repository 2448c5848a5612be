// The widget configuration, FAQ, label, answer and feedback endpoints, served
// from the knowledge-base files ("kb-*.json") and the widget configuration
// files ("cnf-*.json").
#include <algorithm>
#include <boost/json.hpp>
#include <charconv>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "EmbeddedData.h"
#include "KnowledgeBase.h"
#include "endpoints/Endpoints.h"

namespace quorvix::sandbox {

namespace {

namespace json = boost::json;

// The widget configuration files compiled into the service.
constexpr std::string_view kConfigurationFiles[] = {"cnf-acme.json"};

/// (account, knowledge base) -> the configuration object of its file.
const std::map<std::pair<std::string, std::string>, json::object>& widgetConfigurations() {
  static const auto configurations = [] {
    std::map<std::pair<std::string, std::string>, json::object> result;
    for (std::string_view name : kConfigurationFiles) {
      const std::optional<std::string_view> text = embeddedFile(name);
      if (!text) throw std::runtime_error("widget configuration: " + std::string(name) + " was not embedded");
      const json::object root = json::parse(*text).as_object();
      result.emplace(std::pair{std::string(root.at("account").as_string()), std::string(root.at("knowledgeBase").as_string())},
                     root.at("configuration").as_object());
    }
    return result;
  }();
  return configurations;
}

/// The knowledge base the request names with "kb" (the account's first when it names none).
const KnowledgeBase* knowledgeBaseOf(const EndpointRequest& request) {
  const std::string kb = request.queryValueOr("kb", "");
  if (!kb.empty() && !request.account.hasKnowledgeBase(kb)) return nullptr;
  return KnowledgeBases::builtIn().find(request.account.name, kb.empty() ? request.account.defaultKnowledgeBase() : kb);
}

/// The "account" item, when sent, must name the account the request was addressed to.
bool accountMatches(const EndpointRequest& request) {
  const std::optional<std::string> account = request.queryValue("account");
  return !account || *account == request.account.name;
}

/// The base64 "context" item as filter pairs; nothing when it is not base64.
std::optional<ContextFilter> base64Context(const EndpointRequest& request) {
  const std::optional<std::string> wire = request.queryValue("context");
  if (!wire) return ContextFilter{};
  const std::optional<std::string> decoded = decodeBase64(*wire);
  if (!decoded) return std::nullopt;
  return parseContextFilter(*decoded);
}

/// One article as a FAQ list entry.
json::object faqEntry(const Article& article) {
  return json::object{{"objectId", article.id},
                      {"label", article.title},
                      {"titleAndBodyHash", article.hash},
                      {"likes", article.likes},
                      {"keywordsetId", article.keywordsetId}};
}

/// The group shape of the service: the answers sit in the first element of "data".
json::object groupReply(std::string_view title, int behavior, const std::vector<const Article*>& articles,
                        std::size_t limit) {
  json::array entries;
  for (const Article* article : articles) {
    if (entries.size() >= limit) break;
    entries.push_back(faqEntry(*article));
  }
  const std::size_t total = articles.size();
  return json::object{{"title", title},
                      {"behavior", behavior},
                      {"data", json::array{json::object{{"data", std::move(entries)}, {"total", total}}}}};
}

json::object groupReply(const KnowledgeBase& kb, const FaqGroup& group) {
  std::vector<const Article*> articles;
  for (const std::string& id : group.articleIds) articles.push_back(kb.article(id));
  return groupReply(group.title, group.behavior, articles, articles.size());
}

/// Whether every context entry of the group is in the filter.
bool groupInContext(const FaqGroup& group, const ContextFilter& filter) {
  return !group.context.empty() && std::all_of(group.context.begin(), group.context.end(), [&](const auto& entry) {
    return std::find(filter.begin(), filter.end(), std::pair{entry.first, entry.second}) != filter.end();
  });
}

/// The general groups (those shown without a context).
json::array generalGroups(const KnowledgeBase& kb) {
  json::array groups;
  for (const FaqGroup& group : kb.faqGroups()) {
    if (group.context.empty()) groups.push_back(groupReply(kb, group));
  }
  return groups;
}

Reply widgetConfiguration(const EndpointRequest& request) {
  const KnowledgeBase* kb = knowledgeBaseOf(request);
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  auto found = widgetConfigurations().find({kb->account(), kb->knowledgeBase()});
  if (found == widgetConfigurations().end()) return Reply::error(404, "No widget configuration for this knowledge base");
  json::object configuration = found->second;
  // A page that runs under a context reads its FAQ groups for that context.
  if (!request.queryValueOr("context", "").empty()) {
    configuration["faqData"] = "context-dependent";
  } else {
    configuration["faqData"] = generalGroups(*kb);
  }
  return Reply::json(configuration);
}

Reply faqList(const EndpointRequest& request) {
  if (!accountMatches(request)) return Reply::error(400, "Account does not match");
  const KnowledgeBase* kb = knowledgeBaseOf(request);
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  const std::optional<ContextFilter> filter = base64Context(request);
  if (!filter) return Reply::error(400, "Malformed context");
  json::array groups;
  for (const FaqGroup& group : kb->faqGroups()) {
    if (groupInContext(group, *filter)) groups.push_back(groupReply(*kb, group));
  }
  if (groups.empty()) groups = generalGroups(*kb);
  return Reply::json(groups);
}

/// Decimal text of an upper-case hexadecimal label identifier ("1B" -> "27").
std::optional<std::string> labelFromHex(std::string_view hex) {
  uint32_t value = 0;
  auto [end, error] = std::from_chars(hex.data(), hex.data() + hex.size(), value, 16);
  if (error != std::errc() || end != hex.data() + hex.size() || hex.empty()) return std::nullopt;
  return std::to_string(static_cast<int32_t>(value));
}

std::size_t itemLimit(const EndpointRequest& request) {
  const std::string items = request.queryValueOr("items", "");
  std::size_t limit = 0;
  auto [end, error] = std::from_chars(items.data(), items.data() + items.size(), limit);
  if (items.empty() || error != std::errc() || end != items.data() + items.size()) return 1000;
  return limit;
}

Reply faqGroup(const EndpointRequest& request) {
  if (!accountMatches(request)) return Reply::error(400, "Account does not match");
  const KnowledgeBase* kb = knowledgeBaseOf(request);
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  const std::size_t limit = itemLimit(request);

  if (const std::optional<std::string> hex = request.queryValue("labelId")) {
    const std::optional<std::string> id = labelFromHex(*hex);
    const Label* label = id ? kb->label(*id) : nullptr;
    if (label == nullptr) return Reply::error(404, "Unknown label");
    std::vector<const Article*> articles;
    for (const std::string& articleId : label->articleIds) articles.push_back(kb->article(articleId));
    return Reply::json(groupReply(label->labelName, 1, articles, limit));
  }

  const std::optional<ContextFilter> filter = base64Context(request);
  if (!filter) return Reply::error(400, "Malformed context");
  if (filter->empty()) {
    // Without a context: the general group.
    for (const FaqGroup& group : kb->faqGroups()) {
      if (!group.context.empty()) continue;
      std::vector<const Article*> articles;
      for (const std::string& id : group.articleIds) articles.push_back(kb->article(id));
      return Reply::json(groupReply(group.title, group.behavior, articles, limit));
    }
    return Reply::json(groupReply("Frequently asked questions", 1, {}, limit));
  }
  // With every context mandatory an article must carry all of them; otherwise one is enough.
  const bool allMandatory = request.queryValueOr("allContextsMandatory", "false") == "true";
  std::vector<const Article*> articles;
  std::string title;
  for (const auto& [name, value] : *filter) title += (title.empty() ? "" : ", ") + value;
  for (const Article& article : kb->articles()) {
    const bool matches =
        allMandatory ? KnowledgeBase::inContext(article, *filter)
                     : std::any_of(filter->begin(), filter->end(),
                                   [&](const auto& entry) { return KnowledgeBase::inContext(article, {entry}); });
    if (matches) articles.push_back(&article);
  }
  return Reply::json(groupReply(title, 1, articles, limit));
}

Reply userLabels(const EndpointRequest& request) {
  const std::string kbId = request.queryValueOr("kb", "");
  if (kbId.empty()) return Reply::error(400, "Missing knowledge base");
  if (request.queryValueOr("apiKey", "") != request.account.apiKey) return Reply::error(401, "Invalid API key");
  const KnowledgeBase* kb = nullptr;
  for (const std::string& name : request.account.knowledgeBases) {
    const KnowledgeBase* candidate = KnowledgeBases::builtIn().find(request.account.name, name);
    if (candidate != nullptr && candidate->kbId() == kbId) kb = candidate;
  }
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  json::array labels;
  for (const Label& label : kb->labels()) {
    json::value icon = label.icon ? json::value(*label.icon) : json::value(nullptr);
    labels.push_back(
        json::object{{"id", label.id}, {"labelName", label.labelName}, {"icon", std::move(icon)}, {"context", label.context}});
  }
  return Reply::json(labels);
}

Reply answer(const EndpointRequest& request) {
  if (!accountMatches(request)) return Reply::error(400, "Account does not match");
  const KnowledgeBase* kb = knowledgeBaseOf(request);
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  const Article* article = kb->article(request.queryValueOr("id", ""));
  if (article == nullptr) return Reply::error(404, "Unknown article");
  return Reply::json(json::object{{"objectId", article->id},
                                  {"title", article->title},
                                  {"body", article->body},
                                  {"titleAndBodyHash", article->hash},
                                  {"likes", article->likes},
                                  {"keywordsetId", article->keywordsetId}});
}

Reply feedback(const EndpointRequest& request, Sessions& sessions) {
  // Feedback may be sent inside a session; a stale one must be re-opened.
  if (const std::optional<std::string> sid = request.queryValue("sid")) {
    if (!sessions.use(*sid, request.account.name)) return invalidSessionReply();
  }
  if (!accountMatches(request)) return Reply::error(400, "Account does not match");
  const KnowledgeBase* kb = knowledgeBaseOf(request);
  if (kb == nullptr) return Reply::error(404, "Unknown knowledge base");
  if (kb->article(request.queryValueOr("id", "")) == nullptr) return Reply::error(404, "Unknown article");
  const std::string action = request.queryValueOr("action", "");
  int32_t code = 0;
  auto [end, error] = std::from_chars(action.data(), action.data() + action.size(), code);
  if (action.empty() || error != std::errc() || end != action.data() + action.size()) {
    return Reply::error(400, "Invalid action");
  }
  return Reply::json(json::object{{"status", 200}});
}

}  // namespace

void registerKnowledgeBaseEndpoints(Router& router, Sessions& sessions) {
  router.add("/widget/scripts/cnf.json", widgetConfiguration);
  router.add("/api/faq/v1/list.json", faqList);
  router.add("/api/kb/v1/faq", faqGroup);
  router.add("/api/kb/labels/v1/getUserLabels", userLabels);
  router.add("/api/faq/v1/answer.js", answer);
  router.add("/api/analytics/v1/addFeedback",
             [&sessions](const EndpointRequest& request) { return feedback(request, sessions); });
}

}  // namespace quorvix::sandbox
