#include "engine/TypedResults.h"

#include <utility>

#include "quorvix/engine/QXSessionResponse.h"

namespace quorvix::detail {
namespace {

using Builder = QXTypedResult (*)(std::string_view query, Json&& value);

const JsonObject* dictionary(const Json& value) { return value.if_object(); }

QXTypedResult sessionResponse(std::string_view, Json&& value) {
  if (auto session = QXSessionResponse::initWithParams(dictionary(value))) return session;
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
    {"keepAlive.js", sessionResponse},
    {"list.json", valueItself},
    {"contextvalues.js", valueItself},
    {"setParams", statusEntry},
    {"get", rechannelingEntry},
    {"faq", valueItself},
    {"create", valueItself},
    {"statement", valueItself},
};

}  // namespace

QXTypedResult typedResult(std::string_view lastPathComponent, std::string_view query, Json value) {
  for (const auto& [endpoint, build] : kTable) {
    if (endpoint == lastPathComponent) return build(query, std::move(value));
  }
  return std::monostate{};
}

}  // namespace quorvix::detail
