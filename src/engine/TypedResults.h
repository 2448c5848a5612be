#pragma once

#include <string_view>

#include "quorvix/engine/QXResponse.h"

namespace quorvix::detail {

/// Builds the typed result of a reply from the endpoint that answered (the
/// last path component of `url`): the one table that maps endpoints onto
/// models. `query` is the answer URL's encoded query string.
QXTypedResult typedResult(std::string_view lastPathComponent, std::string_view query, Json value);

}  // namespace quorvix::detail
