#pragma once

#include <string>
#include <string_view>

namespace quorvix::detail {

/// MD5 of the bytes as 32 lower-case hexadecimal digits.
std::string md5Hex(std::string_view bytes);
/// Standard base64 with padding and no line breaks.
std::string base64(std::string_view bytes);

}  // namespace quorvix::detail
