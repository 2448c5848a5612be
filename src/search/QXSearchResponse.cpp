#include "quorvix/search/QXSearchResponse.h"

#include "configuration/JsonReading.h"

namespace quorvix {

void QXSearchResponse::inflate(const JsonObject& params) {
  // The context first, so that hits can resolve their identifiers at once.
  if (const auto* context = params.if_contains("context")) context_ = SearchContext::initWithParams(context->if_object());
  setAnswers(params.if_contains("answers"));
  if (const auto* requestId = params.if_contains("requestId")) requestId_ = *requestId;
  kbLanguageCode_ = detail::textAt(params, "kbLanguageCode");
  detectedLanguage_ = detail::textAt(params, "detectedLanguage");
  params_ = params;
}

void QXSearchResponse::setAnswers(const Json* answers) {
  std::vector<std::shared_ptr<SearchAnswer>> list;
  if (answers != nullptr && answers->is_array()) {
    for (const auto& element : answers->get_array()) {
      auto answer = SearchAnswer::initWithParams(element.if_object());
      if (!answer) continue;
      // Hits resolve through the reply's context, which they keep alive
      // without keeping the whole reply (and so without a reference cycle).
      if (answer->isContextSelectionOnly()) answer->setContextValueHandler(context_);
      list.push_back(std::move(answer));
    }
  }
  answerList_ = std::move(list);
}

std::optional<std::vector<std::shared_ptr<QXChanneling>>> QXSearchResponse::channels() const {
  std::lock_guard lock(channelsMutex_);
  if (!channels_) {
    if (const auto* list = params_.if_contains("rechanneling")) channels_ = QXChanneling::listWithParams(list);
  }
  return channels_;
}

std::shared_ptr<SearchContextValue> QXSearchResponse::contextForId(const Json& identifier) const {
  return context_ ? context_->contextForId(identifier) : nullptr;
}

std::optional<std::string> QXSearchResponse::multipleContext() const {
  return context_ ? context_->multipleContext() : std::nullopt;
}

}  // namespace quorvix
