#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quorvix/core/Json.h"

namespace quorvix::detail {

/// The platform's `boolValue` of a JSON value: true, a non-zero number, or text
/// whose first non-blank character (after a sign and leading zeros) is one of
/// "Y", "y", "T", "t" or a digit 1-9. Anything else is false.
bool boolValue(const Json& value);
/// The value of `key` as text: strings as they stand, numbers and literals as
/// they print; nothing for a missing key, null, arrays and objects.
std::optional<std::string> textAt(const JsonObject& object, std::string_view key);
/// `boolValue` of the value of `key`; false when it is missing.
bool boolAt(const JsonObject& object, std::string_view key);

}  // namespace quorvix::detail
