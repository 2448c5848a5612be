#pragma once

#include <cstdint>
#include <string_view>

namespace quorvix::detail {

/// Whether the bytes are well-formed UTF-8 (no overlongs, no surrogates).
bool isValidUtf8(std::string_view bytes);
/// Reads the leading integer the way the platform's string `integerValue`
/// does: leading blanks, an optional sign, digits; saturating at the bounds.
int64_t leadingInteger(std::string_view text, int64_t min, int64_t max);
/// Reads the leading decimal number (blanks, sign, digits, point, exponent); 0 when none.
double leadingDouble(std::string_view text);

}  // namespace quorvix::detail
