#include "quorvix/search/SearchContext.h"

#include "configuration/JsonReading.h"
#include "engine/Helpers.h"

namespace quorvix {

void SearchContextValue::inflate(const JsonObject& params) {
  name_ = detail::textAt(params, "name");
  if (const auto* flags = params.if_contains("flags")) flags_ = integerValue(*flags);
  if (const auto* id = params.if_contains("id")) id_ = *id;
  selectionText_ = detail::textAt(params, "selectionText");
}

void SearchContext::inflate(const JsonObject& params) {
  if (const auto* v = params.if_contains("v")) v_ = integerValue(*v);
  if (const auto* order = params.if_contains("order")) order_ = *order;
  const auto* values = params.if_contains("values");
  if (values == nullptr || !values->is_array()) return;
  if (values->get_array().size() >= 2) multipleContext_ = std::string();
  for (const auto& value : values->get_array()) {
    if (auto read = SearchContextValue::initWithParams(value.if_object())) values_.push_back(std::move(read));
  }
}

std::shared_ptr<SearchContextValue> SearchContext::contextForId(const Json& identifier) const {
  // Identifiers compare by their integer readings: the text "7" finds the
  // number 7, and a value without "id" reads as 0.
  const int64_t wanted = integerValue(identifier);
  for (const auto& value : values_) {
    if ((value->id() ? integerValue(*value->id()) : 0) == wanted) return value;
  }
  return nullptr;
}

}  // namespace quorvix
