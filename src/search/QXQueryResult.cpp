#include "quorvix/search/QXQueryResult.h"

#include "configuration/JsonReading.h"
#include "conversation/ExtraDataSplit.h"

namespace quorvix {

std::shared_ptr<QXQueryResultBody> QXQueryResultBody::initWithBody(const std::optional<std::string>& body) {
  auto split = std::make_shared<QXQueryResultBody>();
  if (!body) return split;
  auto parts = detail::splitExtraData(*body);
  split->articleBody_ = std::move(parts.text);
  split->extraData_ = std::move(parts.data);
  return split;
}

void QXQueryResult::inflate(const JsonObject& params) { inflateFields(params, "body"); }

void QXQueryResult::inflateFields(const JsonObject& params, std::string_view bodyKey,
                                  const std::shared_ptr<const void>& owner) {
  hash_ = detail::textAt(params, "titleAndBodyHash");
  const Json* channels = params.if_contains("rechanneling");
  if (owner && channels != nullptr && channels->is_array()) {
    std::lock_guard lock(channelingMutex_);
    channeling_.clear();
    rechanneling_ = std::shared_ptr<const Json>(owner, channels);
  } else {
    setChannels(channels);
  }
  resultId_ = detail::textAt(params, "resultId");
  updteBody(detail::textAt(params, bodyKey));
  likes_ = detail::textAt(params, "likes");
  keywordsetId_ = detail::textAt(params, "keywordsetId");
  title_ = detail::textAt(params, "title");
  isContextSelectionOnly_ = detail::boolAt(params, "contextSelectionOnly");
}

const std::vector<std::shared_ptr<QXChanneling>>& QXQueryResult::channeling() const {
  std::lock_guard lock(channelingMutex_);
  if (rechanneling_) {
    channeling_ = QXChanneling::listWithParams(rechanneling_.get());
    rechanneling_.reset();
  }
  return channeling_;
}

void QXQueryResult::setChanneling(std::vector<std::shared_ptr<QXChanneling>> channels) {
  std::lock_guard lock(channelingMutex_);
  rechanneling_.reset();
  channeling_ = std::move(channels);
}

void QXQueryResult::setChannels(const Json* list) {
  std::lock_guard lock(channelingMutex_);
  channeling_.clear();
  // Kept as sent until the first read: most results are shown without their channels.
  if (list != nullptr && list->is_array()) {
    rechanneling_ = std::make_shared<const Json>(*list);
  } else {
    rechanneling_.reset();
  }
}

}  // namespace quorvix
