#pragma once
// Helpers shared by the fuzz targets.

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace quorvix::fuzz {

/// The input as text.
inline std::string_view text(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// The input cut at every `separator` byte into at most `count` pieces (the
/// last piece keeps the remaining separators); missing pieces are empty. Seed
/// files separate their fields with a line feed.
inline std::vector<std::string_view> pieces(std::string_view input, std::size_t count, char separator = '\n') {
  std::vector<std::string_view> parts;
  while (parts.size() + 1 < count) {
    const std::size_t at = input.find(separator);
    if (at == std::string_view::npos) break;
    parts.push_back(input.substr(0, at));
    input.remove_prefix(at + 1);
  }
  parts.push_back(input);
  parts.resize(count);
  return parts;
}

/// Calls `visit` on every element of what a model hands out: a vector, or an
/// optional or pointer to one (absent: nothing).
template <class Range, class Visit>
void each(const Range& range, Visit visit) {
  if constexpr (requires { static_cast<bool>(range); *range; }) {
    if (range) {
      for (const auto& element : *range) visit(element);
    }
  } else {
    for (const auto& element : range) visit(element);
  }
}

}  // namespace quorvix::fuzz
