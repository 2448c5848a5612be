#pragma once
/// @file
/// The extra-data mark-up of article bodies: a JSON object between
/// "<quorvixextradata>" and "</quorvixextradata>".

#include <optional>
#include <string>
#include <string_view>

#include "quorvix/core/Json.h"

namespace quorvix {

/// The text from the first `start` marker (included) up to the first `end`
/// marker that follows it (excluded); nothing without a `start`, or without an
/// `end` after it.
std::optional<std::string> extractBetween(std::string_view text, std::string_view start, std::string_view end);

/// Splits a body into [body without the extra-data block, parsed extra data]
/// when it carries a block that parses; [the text itself] otherwise. Every
/// occurrence of that exact block is removed.
JsonArray extractExtraData(std::string_view text);

}  // namespace quorvix
