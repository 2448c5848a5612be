#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quorvix/core/Json.h"

namespace quorvix::detail {

/// A text split from the extra data it carries.
struct ExtraDataSplit {
  std::string text;
  std::optional<Json> data;
};

/// What `extractExtraData` gives, without wrapping the text in JSON: the text
/// without the block and the parsed block, or the text as it is and nothing.
ExtraDataSplit splitExtraData(std::string_view text);

}  // namespace quorvix::detail
