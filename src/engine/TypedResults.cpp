#include "engine/TypedResults.h"

#include <utility>

#include "engine/Helpers.h"

#include "platform/Log.h"
#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/conversation/QXConversationalResponse.h"
#include "quorvix/engine/QXSessionResponse.h"
#include "quorvix/faq/FAQAnswer.h"
#include "quorvix/search/QXAutoCompleteResponse.h"
#include "quorvix/search/QXSearchResponse.h"

namespace quorvix::detail {
namespace {

using Builder = QXTypedResult (*)(std::string_view query, Json&& value);

const JsonObject* dictionary(const Json& value) { return value.if_object(); }

QXTypedResult sessionResponse(std::string_view, Json&& value) {
  if (auto session = QXSessionResponse::initWithParams(dictionary(value))) return session;
  return std::monostate{};
}

QXTypedResult conversationalResponse(std::string_view, Json&& value) {
  if (auto* object = value.if_object()) return QXConversationalResponse::initWithDictionary(std::move(*object));
  return std::monostate{};
}

QXTypedResult searchResponse(std::string_view, Json&& value) {
  if (auto* object = value.if_object()) return QXSearchResponse::initWithParams(std::move(*object));
  return std::monostate{};
}

// The reply is logged, and the typed text travels along as the request's own
// query string, still percent-encoded.
QXTypedResult autoCompleteResponse(std::string_view query, Json&& value) {
  auto* object = value.if_object();
  if (object == nullptr) return std::monostate{};
  logFormat("Auto Complete %@", describe(value));
  (*object)["query"] = query;
  if (auto suggestions = QXAutoCompleteResponse::initWithParams(object)) return suggestions;
  return std::monostate{};
}

// The answer's identifier is read back from the request's "id" item.
QXTypedResult faqAnswer(std::string_view query, Json&& value) {
  auto* object = value.if_object();
  if (object == nullptr) return std::monostate{};
  if (auto id = resultId(query)) (*object)["resultId"] = removingPercentEncoding(*id).value_or(*id);
  if (auto answer = FAQAnswer::initWithParams(object)) return answer;
  return std::monostate{};
}

QXTypedResult configuration(std::string_view, Json&& value) {
  if (auto made = QXConfiguration::initWithParams(dictionary(value))) return made;
  return std::monostate{};
}

QXTypedResult valueItself(std::string_view, Json&& value) { return std::move(value); }

QXTypedResult entry(const Json& value, std::string_view key) {
  if (const auto* object = value.if_object()) {
    if (const auto* found = object->if_contains(key)) return *found;
  }
  return std::monostate{};
}

QXTypedResult statusEntry(std::string_view, Json&& value) { return entry(value, "status"); }
QXTypedResult rechannelingEntry(std::string_view, Json&& value) { return entry(value, "rechanneling"); }

// Tested in this order; the first endpoint that matches builds the result.
constexpr std::pair<std::string_view, Builder> kTable[] = {
    {"hello.js", sessionResponse},
    {"answer.js", faqAnswer},
    {"keepAlive.js", sessionResponse},
    {"q.js", searchResponse},
    {"autoComplete", autoCompleteResponse},
    {"cnf.json", configuration},
    {"list.json", valueItself},
    {"contextvalues.js", valueItself},
    {"setParams", statusEntry},
    {"get", rechannelingEntry},
    {"faq", valueItself},
    {"create", valueItself},
    {"statement", valueItself},
    {"createFeedbackResponse", conversationalResponse},
};

}  // namespace

QXTypedResult typedResult(std::string_view lastPathComponent, std::string_view query, Json value) {
  for (const auto& [endpoint, build] : kTable) {
    if (endpoint == lastPathComponent) return build(query, std::move(value));
  }
  return std::monostate{};
}

}  // namespace quorvix::detail
