#include "quorvix/search/QXStyledText.h"

#include <algorithm>

namespace quorvix {

std::size_t utf16Length(std::string_view text) {
  std::size_t units = 0;
  for (std::size_t i = 0; i < text.size();) {
    const auto c = static_cast<unsigned char>(text[i]);
    const std::size_t width = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
    units += width == 4 ? 2 : 1;  // characters beyond the BMP take a surrogate pair
    i += width;
  }
  return units;
}

QXStyledTextBuilder::QXStyledTextBuilder(std::string text) : text_(std::move(text)), fonts_(utf16Length(text_), -1) {}

void QXStyledTextBuilder::apply(std::size_t location, std::size_t length, const QXFont& font) {
  if (location >= fonts_.size() || length == 0) return;
  const std::size_t end = std::min(fonts_.size(), location + length);
  auto found = std::find(palette_.begin(), palette_.end(), font);
  const int index = static_cast<int>(found - palette_.begin());
  if (found == palette_.end()) palette_.push_back(font);
  std::fill(fonts_.begin() + static_cast<std::ptrdiff_t>(location), fonts_.begin() + static_cast<std::ptrdiff_t>(end), index);
}

bool QXStyledTextBuilder::applyToFirst(std::string_view word, const QXFont& font) {
  if (word.empty()) return false;
  const auto at = text_.find(word);
  if (at == std::string::npos) return false;
  apply(utf16Length(std::string_view(text_).substr(0, at)), utf16Length(word), font);
  return true;
}

QXStyledText QXStyledTextBuilder::build() const {
  QXStyledText styled{text_, {}};
  for (std::size_t i = 0; i < fonts_.size();) {
    std::size_t j = i;
    while (j < fonts_.size() && fonts_[j] == fonts_[i]) ++j;
    if (fonts_[i] >= 0) styled.runs.push_back(QXFontRun{i, j - i, palette_[static_cast<std::size_t>(fonts_[i])]});
    i = j;
  }
  return styled;
}

}  // namespace quorvix
