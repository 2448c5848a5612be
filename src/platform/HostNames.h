#pragma once
/// @file
/// What may stand in a host name the engine builds.

#include <string_view>

namespace quorvix::detail {

/// One host label: one or more ASCII letters, digits and "-".
bool isHostLabel(std::string_view text);
/// Host labels joined by single dots (no empty label, no leading or trailing dot).
bool isHostName(std::string_view text);

}  // namespace quorvix::detail
