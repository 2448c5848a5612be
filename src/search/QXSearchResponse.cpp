#include "quorvix/search/QXSearchResponse.h"

#include "configuration/JsonReading.h"

namespace quorvix {

std::shared_ptr<QXSearchResponse> QXSearchResponse::initWithParams(JsonObject&& params) {
  auto response = std::make_shared<QXSearchResponse>();
  response->params_ = std::make_shared<const JsonObject>(std::move(params));
  response->readFields();
  return response;
}

void QXSearchResponse::inflate(const JsonObject& params) {
  params_ = std::make_shared<const JsonObject>(params);
  readFields();
}

void QXSearchResponse::readFields() {
  // The context first, so that hits can resolve their identifiers at once.
  const JsonObject& params = *params_;
  if (const auto* context = params.if_contains("context")) context_ = SearchContext::initWithParams(context->if_object());
  const Json* answers = params.if_contains("answers");
  if (answers != nullptr && answers->is_array()) {
    readAnswers(answers->get_array());
  } else {
    answerList_.clear();
  }
  if (const auto* requestId = params.if_contains("requestId")) requestId_ = *requestId;
  kbLanguageCode_ = detail::textAt(params, "kbLanguageCode");
  detectedLanguage_ = detail::textAt(params, "detectedLanguage");
}

void QXSearchResponse::setAnswers(const Json* answers) {
  // Hits of a list given later read a copy of it.
  auto owned = std::make_shared<const Json>(answers != nullptr && answers->is_array() ? *answers : Json(JsonArray()));
  readAnswers(owned->get_array(), owned);
}

void QXSearchResponse::readAnswers(const JsonArray& answers, std::shared_ptr<const void> owner) {
  if (!owner) owner = params_;
  std::vector<std::shared_ptr<SearchAnswer>> list;
  list.reserve(answers.size());
  // Hits resolve through the reply's context, which they keep alive without
  // keeping the whole reply (and so without a reference cycle); a reply
  // without one answers through an empty context.
  std::shared_ptr<ContextValueHandler> handler = context_;
  if (!handler) handler = std::make_shared<SearchContext>();
  for (const auto& element : answers) {
    const auto* object = element.if_object();
    if (object == nullptr) continue;
    auto answer = SearchAnswer::initWithParams(*object, owner);
    if (answer->isContextSelectionOnly()) answer->setContextValueHandler(handler);
    list.push_back(std::move(answer));
  }
  answerList_ = std::move(list);
}

std::optional<std::vector<std::shared_ptr<QXChanneling>>> QXSearchResponse::channels() const {
  std::lock_guard lock(channelsMutex_);
  if (!channels_) {
    if (const auto* list = params_->if_contains("rechanneling")) channels_ = QXChanneling::listWithParams(list);
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
