#include "engine/Text.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <string>

namespace quorvix::detail {

bool isValidUtf8(std::string_view bytes) {
  const auto* s = reinterpret_cast<const unsigned char*>(bytes.data());
  const std::size_t n = bytes.size();
  std::size_t i = 0;
  while (i < n) {
    const unsigned char c = s[i];
    if (c < 0x80) {
      ++i;
      continue;
    }
    std::size_t length;
    uint32_t code;
    if (c >= 0xC2 && c <= 0xDF) {
      length = 2;
      code = c & 0x1F;
    } else if (c >= 0xE0 && c <= 0xEF) {
      length = 3;
      code = c & 0x0F;
    } else if (c >= 0xF0 && c <= 0xF4) {
      length = 4;
      code = c & 0x07;
    } else {
      return false;
    }
    if (n - i < length) return false;
    for (std::size_t k = 1; k < length; ++k) {
      if ((s[i + k] & 0xC0) != 0x80) return false;
      code = (code << 6) | (s[i + k] & 0x3F);
    }
    if ((length == 3 && (code < 0x800 || (code >= 0xD800 && code <= 0xDFFF))) || (length == 4 && (code < 0x10000 || code > 0x10FFFF))) {
      return false;
    }
    i += length;
  }
  return true;
}

namespace {
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }
}  // namespace

int64_t leadingInteger(std::string_view text, int64_t min, int64_t max) {
  std::size_t i = 0;
  while (i < text.size() && isBlank(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  int64_t value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    const int digit = text[i] - '0';
    if (!negative) {
      if (value > (max - digit) / 10) return max;
      value = value * 10 + digit;
    } else {
      if (value < (min + digit) / 10) return min;
      value = value * 10 - digit;
    }
  }
  return value;
}

double leadingDouble(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && isBlank(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  if (i >= text.size() || !(std::isdigit(static_cast<unsigned char>(text[i])) || text[i] == '.')) return 0;
  double value = 0;
  auto [end, ec] = std::from_chars(text.data() + i, text.data() + text.size(), value, std::chars_format::general);
  if (ec == std::errc::result_out_of_range) value = HUGE_VAL;
  else if (ec != std::errc()) return 0;
  (void)end;
  return negative ? -value : value;
}

}  // namespace quorvix::detail
