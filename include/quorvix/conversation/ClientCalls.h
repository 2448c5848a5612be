#pragma once
/// @file
/// Reading the "{{name(key:value,...)}}" personal-information placeholders of
/// bot replies.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quorvix/core/Json.h"

namespace quorvix {

/// The inside of the first "{{...}}" placeholder of the text (every "{{"
/// removed); nothing when the text has no "{{".
std::optional<std::string> extractSignature(std::string_view receiver);
/// The part of a signature before the first "("; the whole signature when it
/// has no "(".
std::string extractSelector(std::string_view receiver);
/// The arguments between "(" and ")" split at "," with nothing trimmed;
/// empty when the signature has no "(".
std::vector<std::string> extractArguments(std::string_view receiver);
/// The text with its first letter in upper case.
std::string methodName(std::string_view receiver);
/// `{"text": "TEXT"}` with the text put in as it is, without escaping.
std::string inJsonText(std::string_view receiver);
/// The "key:value" arguments as a dictionary: each split at every ":", the
/// first part the key and the last the value (middle parts dropped, a later
/// key wins). Nothing for no arguments or when one has no ":".
std::optional<JsonObject> args(const std::vector<std::string>& receiver);

}  // namespace quorvix
