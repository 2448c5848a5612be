#include "quorvix/configuration/TextHelpers.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace quorvix {
namespace {

struct Range {
  char32_t first, last;
};

// Letters of the right-to-left scripts: Hebrew, Arabic (with its supplement and
// extensions), Syriac, Thaana, N'Ko, and the Hebrew and Arabic presentation forms.
constexpr Range kRightToLeftLetters[] = {
    {0x05D0, 0x05EA}, {0x05EF, 0x05F2}, {0x0620, 0x064A}, {0x066E, 0x066F}, {0x0671, 0x06D3},
    {0x06D5, 0x06D5}, {0x06E5, 0x06E6}, {0x06EE, 0x06EF}, {0x06FA, 0x06FC}, {0x06FF, 0x06FF},
    {0x0710, 0x072F}, {0x074D, 0x07A5}, {0x07B1, 0x07B1}, {0x07CA, 0x07EA}, {0x0860, 0x086A},
    {0x0870, 0x088E}, {0x08A0, 0x08C9}, {0xFB1D, 0xFB1D}, {0xFB1F, 0xFB28}, {0xFB2A, 0xFB4F},
    {0xFB50, 0xFBB1}, {0xFBD3, 0xFD3D}, {0xFD50, 0xFDC7}, {0xFDF0, 0xFDFB}, {0xFE70, 0xFEFC},
};

// Letters of the other common scripts (left-to-right).
constexpr Range kOtherLetters[] = {
    {'A', 'Z'},         {'a', 'z'},         {0x00C0, 0x00D6},   {0x00D8, 0x00F6},   {0x00F8, 0x024F},
    {0x0370, 0x03FF},   {0x0400, 0x052F},   {0x0531, 0x0587},   {0x0900, 0x0DFF},   {0x0E01, 0x0E5B},
    {0x10A0, 0x10FF},   {0x1100, 0x11FF},   {0x1E00, 0x1FFF},   {0x3041, 0x30FF},   {0x3400, 0x4DBF},
    {0x4E00, 0x9FFF},   {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFF21, 0xFF3A},   {0xFF41, 0xFF5A},
};

template <std::size_t N>
bool inRanges(char32_t c, const Range (&ranges)[N]) {
  return std::any_of(std::begin(ranges), std::end(ranges), [c](const Range& r) { return c >= r.first && c <= r.last; });
}

/// Decodes the next UTF-8 code point at `at`; nothing on a malformed sequence.
std::optional<char32_t> nextCodePoint(std::string_view text, std::size_t& at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  std::size_t length = 0;
  char32_t value = 0;
  if (lead < 0x80) {
    ++at;
    return lead;
  } else if ((lead & 0xE0) == 0xC0) {
    length = 2, value = lead & 0x1F;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, value = lead & 0x0F;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, value = lead & 0x07;
  } else {
    return std::nullopt;
  }
  if (at + length > text.size()) return std::nullopt;
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[at + i]);
    if ((next & 0xC0) != 0x80) return std::nullopt;
    value = (value << 6) | (next & 0x3F);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (value < kSmallest[length] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return std::nullopt;
  at += length;
  return value;
}

}  // namespace

QXFont bolded(const QXFont& font) {
  QXFont result = font;
  result.bold = true;
  return result;
}

bool canBeInputByPhonePad(char32_t c) { return (c >= '0' && c <= '9') || c == '#' || c == '*' || c == '+'; }

std::string strip(std::string_view text) {
  // Every phone-pad character is ASCII, and no byte of a multi-byte UTF-8
  // sequence is: filtering bytes keeps exactly the phone-pad characters.
  std::string result;
  for (char c : text) {
    if (canBeInputByPhonePad(static_cast<unsigned char>(c))) result.push_back(c);
  }
  return result;
}

bool isRTL(std::string_view text) {
  std::size_t rightToLeft = 0;
  std::size_t other = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::optional<char32_t> c = nextCodePoint(text, at);
    if (!c) return false;
    if (inRanges(*c, kRightToLeftLetters)) {
      ++rightToLeft;
    } else if (inRanges(*c, kOtherLetters)) {
      ++other;
    }
  }
  return rightToLeft > other;
}

}  // namespace quorvix
