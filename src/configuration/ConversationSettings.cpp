#include "quorvix/configuration/ConversationSettings.h"

#include "configuration/JsonReading.h"
#include "engine/Helpers.h"

namespace quorvix {

void ConversationSettings::inflate(const JsonObject& params) {
  requireAPIKey_ = detail::boolAt(params, "requireAPIKey");
  // The service sends no switch of its own for channels: they follow the API key.
  channelsEnabled_ = detail::boolAt(params, "requireAPIKey");
  feedbackEnabled_ = detail::boolAt(params, "feedbackEnabled");
  const Json* timeout = params.if_contains("feedbackTimeout");
  feedbackTimeout_ = timeout != nullptr ? doubleValue(*timeout) : 0.0;
  feedbackText_ = detail::textAt(params, "feedbackText");
  askAgent_ = detail::boolAt(params, "askAgent");
  showSupportCenterLink_ = detail::boolAt(params, "showSupportCenterLink");
  multiResultsHeader_ = detail::textAt(params, "multiResultsHeader");
}

}  // namespace quorvix
