#include "quorvix/search/SearchAnswer.h"

#include "configuration/JsonReading.h"

namespace quorvix {

void SearchAnswer::inflate(const JsonObject& params) { inflate(params, nullptr); }

std::shared_ptr<SearchAnswer> SearchAnswer::initWithParams(const JsonObject& params,
                                                           const std::shared_ptr<const void>& owner) {
  auto answer = std::make_shared<SearchAnswer>();
  answer->inflate(params, owner);
  return answer;
}

void SearchAnswer::inflate(const JsonObject& params, const std::shared_ptr<const void>& owner) {
  // Search hits carry their identifier under "id" and a summary instead of the body.
  inflateFields(params, "summary", owner);
  setResultId(detail::textAt(params, "id"));
  if (const auto* selection = params.if_contains("contextSelection")) contextSelection_ = *selection;
}

std::string SearchAnswer::contextValue() const {
  std::lock_guard lock(contextValueMutex_);
  if (!contextValue_.empty()) return contextValue_;
  std::string names;
  if (contextSelection_ && contextSelection_->is_array()) {
    for (const auto& identifier : contextSelection_->get_array()) {
      auto value = contextValueHandler_ ? contextValueHandler_->contextForId(identifier) : nullptr;
      names.append(value && value->name() ? *value->name() : "(null)").append(",");
    }
  }
  if (!names.empty()) names.pop_back();
  contextValue_ = names;
  return contextValue_;
}

}  // namespace quorvix
