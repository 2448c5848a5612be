#include "quorvix/search/QXQueryResult.h"

#include "configuration/JsonReading.h"
#include "quorvix/conversation/ExtraData.h"

namespace quorvix {

std::shared_ptr<QXQueryResultBody> QXQueryResultBody::initWithBody(const std::optional<std::string>& body) {
  auto split = std::make_shared<QXQueryResultBody>();
  if (!body) return split;
  JsonArray parts = extractExtraData(*body);
  split->articleBody_ = std::string(parts.front().get_string());
  if (parts.size() == 2) split->extraData_ = std::move(parts.back());
  return split;
}

void QXQueryResult::inflate(const JsonObject& params) {
  hash_ = detail::textAt(params, "titleAndBodyHash");
  setChannels(params.if_contains("rechanneling"));
  resultId_ = detail::textAt(params, "resultId");
  updteBody(detail::textAt(params, "body"));
  likes_ = detail::textAt(params, "likes");
  keywordsetId_ = detail::textAt(params, "keywordsetId");
  title_ = detail::textAt(params, "title");
  isContextSelectionOnly_ = detail::boolAt(params, "contextSelectionOnly");
}

}  // namespace quorvix
