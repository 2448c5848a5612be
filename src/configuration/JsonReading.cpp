#include "configuration/JsonReading.h"

#include "engine/Helpers.h"

namespace quorvix::detail {

bool boolValue(const Json& value) {
  switch (value.kind()) {
    case boost::json::kind::bool_:
      return value.get_bool();
    case boost::json::kind::int64:
    case boost::json::kind::uint64:
    case boost::json::kind::double_:
      return doubleValue(value) != 0.0;
    case boost::json::kind::string: {
      std::string_view text = value.get_string();
      std::size_t i = 0;
      while (i < text.size() && (text[i] == ' ' || text[i] == '\t' || text[i] == '\n' || text[i] == '\r')) ++i;
      if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
      while (i < text.size() && text[i] == '0') ++i;
      if (i == text.size()) return false;
      const char c = text[i];
      return c == 'Y' || c == 'y' || c == 'T' || c == 't' || (c >= '1' && c <= '9');
    }
    default:
      return false;
  }
}

std::optional<std::string> textAt(const JsonObject& object, std::string_view key) {
  const Json* value = object.if_contains(key);
  if (value == nullptr || value->is_null() || value->is_array() || value->is_object()) return std::nullopt;
  return describe(*value);
}

bool boolAt(const JsonObject& object, std::string_view key) {
  const Json* value = object.if_contains(key);
  return value != nullptr && boolValue(*value);
}

}  // namespace quorvix::detail
