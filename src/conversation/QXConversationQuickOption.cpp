#include "quorvix/conversation/QXConversationQuickOption.h"

#include <array>
#include <string_view>

#include "quorvix/conversation/QXConversationPersistentOption.h"

namespace quorvix {

namespace {

// The kind of an option is its name's position here plus one.
constexpr std::array<std::string_view, 11> kKinds = {
    "other",    "askAnAgent", "supportCenterLink", "channel", "clickToCall", "readMore",
    "feedback", "location",   "inlineChoice",      "url",     "external",
};

std::optional<Json> entry(const JsonObject& params, std::string_view key) {
  if (const auto* value = params.if_contains(key)) return *value;
  return std::nullopt;
}

}  // namespace

std::shared_ptr<QXConversationQuickOption> QXConversationQuickOption::initWithParams(const JsonObject* params) {
  if (params == nullptr) return nullptr;
  return std::make_shared<QXConversationQuickOption>(*params);
}

std::optional<std::string> QXConversationQuickOption::text() const {
  if (const auto* value = params_.if_contains("text")) {
    if (const auto* text = value->if_string()) return std::string(*text);
  }
  return std::nullopt;
}

std::optional<Json> QXConversationQuickOption::postback() const { return entry(params_, "postback"); }

std::optional<Json> QXConversationQuickOption::external() const { return entry(params_, "external"); }

int64_t QXConversationQuickOption::kind() const {
  const auto* value = params_.if_contains("kind");
  if (value == nullptr || !value->is_string()) return 0;
  const std::string_view name = value->get_string();
  for (std::size_t i = 0; i < kKinds.size(); ++i) {
    if (kKinds[i] == name) return static_cast<int64_t>(i) + 1;
  }
  return 0;
}

std::shared_ptr<QXConversationPersistentOption> QXConversationPersistentOption::initWithParams(
    const JsonObject* params) {
  if (params == nullptr) return nullptr;
  return std::make_shared<QXConversationPersistentOption>(*params);
}

}  // namespace quorvix
