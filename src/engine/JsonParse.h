#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "quorvix/core/Json.h"
#include "quorvix/core/QXError.h"

namespace quorvix::detail {

/// Deepest nesting a reply may have; deeper bodies are parse errors, not crashes.
inline constexpr std::size_t kMaxJsonDepth = 64;

/// Parses JSON (a bare scalar at top level allowed): nothing for empty text,
/// the value, or a parse error of domain "NSCocoaErrorDomain", code 3840.
std::variant<std::monostate, Json, QXError> parseJson(std::string_view text);

/// The object as compact JSON text, or nothing (logged) when it holds a
/// number JSON cannot write (NaN, infinity). `sizeHint`: the expected length.
std::optional<std::string> writeJsonObject(const JsonObject& object, std::size_t sizeHint);

}  // namespace quorvix::detail
