#include "quorvix/search/QXSearchResponse.h"

#include "configuration/JsonReading.h"

namespace quorvix {

std::shared_ptr<QXSearchResponse> QXSearchResponse::initWithParams(JsonObject&& params) {
  auto response = std::make_shared<QXSearchResponse>();
  response->params_ = std::move(params);
  response->readFields();
  return response;
}

void QXSearchResponse::inflate(const JsonObject& params) {
  params_ = params;
  readFields();
}

void QXSearchResponse::readFields() {
  // The context first, so that hits can resolve their identifiers at once.
  if (const auto* context = params_.if_contains("context")) context_ = SearchContext::initWithParams(context->if_object());
  setAnswers(params_.if_contains("answers"));
  if (const auto* requestId = params_.if_contains("requestId")) requestId_ = *requestId;
  kbLanguageCode_ = detail::textAt(params_, "kbLanguageCode");
  detectedLanguage_ = detail::textAt(params_, "detectedLanguage");
}

void QXSearchResponse::setAnswers(const Json* answers) {
  std::vector<std::shared_ptr<SearchAnswer>> list;
  if (answers != nullptr && answers->is_array()) {
    list.reserve(answers->get_array().size());
    // Hits resolve through the reply's context, which they keep alive without
    // keeping the whole reply (and so without a reference cycle); a reply
    // without one answers through an empty context.
    std::shared_ptr<ContextValueHandler> handler = context_;
    if (!handler) handler = std::make_shared<SearchContext>();
    for (const auto& element : answers->get_array()) {
      auto answer = SearchAnswer::initWithParams(element.if_object());
      if (!answer) continue;
      if (answer->isContextSelectionOnly()) answer->setContextValueHandler(handler);
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
