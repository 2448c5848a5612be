#include "TextFolding.h"

#include <cstdint>

namespace quorvix::sandbox {

namespace {

// Base letters of U+00C0..U+00FF; '#' marks the two symbols among them and
// '?' the letters that fold to two characters (handled in `foldLetter`).
constexpr std::string_view kLatin1 =
    "aaaaaa?ceeeeiiii"   // C0..CF
    "dnooooo#ouuuuy??"   // D0..DF
    "aaaaaa?ceeeeiiii"   // E0..EF
    "dnooooo#ouuuuy?y";  // F0..FF

// Base letters of U+0100..U+017F; '?' marks the ligatures.
constexpr std::string_view kLatinExtendedA =
    "aaaaaaccccccccdddd"    // 0100..0111
    "eeeeeeeeeegggggggg"    // 0112..0123
    "hhhhiiiiiiiiii??jj"    // 0124..0135
    "kkkllllllllllnnnnn"    // 0136..0147
    "nnnnoooooo??rrrrrr"    // 0148..0159
    "sssssssstttttt"        // 015A..0167
    "uuuuuuuuuuuuwwyyyzzzzzzs";  // 0168..017F
static_assert(kLatin1.size() == 0x40 && kLatinExtendedA.size() == 0x80);

/// What one code point is for matching.
enum class Kind { Separator, Mark, Letter };

struct Decoded {
  char32_t codePoint = 0;
  std::size_t length = 1;
  bool valid = false;
};

Decoded decode(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  if (lead < 0x80) return {lead, 1, true};
  std::size_t length = 0;
  char32_t value = 0;
  if ((lead & 0xE0) == 0xC0) {
    length = 2;
    value = lead & 0x1F;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3;
    value = lead & 0x0F;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4;
    value = lead & 0x07;
  } else {
    return {};
  }
  if (at + length > text.size()) return {};
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<unsigned char>(text[at + i]);
    if ((next & 0xC0) != 0x80) return {};
    value = (value << 6) | (next & 0x3F);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (value < kSmallest[length] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return {};
  return {value, length, true};
}

void appendUtf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out.push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (c >> 6)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (c >> 12)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (c >> 18)));
    out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

bool isSeparatorRange(char32_t c) {
  return c < 0x80 || (c >= 0x80 && c <= 0xBF) || (c >= 0x2000 && c <= 0x2BFF) || (c >= 0x3000 && c <= 0x303F) ||
         (c >= 0xFE30 && c <= 0xFE4F) || (c >= 0xFF00 && c <= 0xFF0F) || c == 0xFEFF;
}

/// Classifies `c` and, for a letter, appends its folded form to `out`.
Kind foldLetter(char32_t c, std::string& out) {
  if (c < 0x80) {
    const char ascii = static_cast<char>(c);
    if (ascii >= 'A' && ascii <= 'Z') {
      out.push_back(static_cast<char>(ascii - 'A' + 'a'));
      return Kind::Letter;
    }
    if ((ascii >= 'a' && ascii <= 'z') || (ascii >= '0' && ascii <= '9')) {
      out.push_back(ascii);
      return Kind::Letter;
    }
    return Kind::Separator;
  }
  if (c >= 0x0300 && c <= 0x036F) return Kind::Mark;  // combining accents
  if (c >= 0xC0 && c <= 0xFF) {
    const char base = kLatin1[c - 0xC0];
    if (base == '#') return Kind::Separator;
    if (base != '?') {
      out.push_back(base);
    } else if (c == 0xC6 || c == 0xE6) {
      out += "ae";
    } else if (c == 0xDE || c == 0xFE) {
      out += "th";
    } else {
      out += "ss";  // U+00DF
    }
    return Kind::Letter;
  }
  if (c >= 0x100 && c <= 0x17F) {
    const char base = kLatinExtendedA[c - 0x100];
    if (base != '?') {
      out.push_back(base);
    } else {
      out += (c == 0x132 || c == 0x133) ? "ij" : "oe";
    }
    return Kind::Letter;
  }
  if (isSeparatorRange(c)) return Kind::Separator;
  // Greek and Cyrillic capitals have their small letters at fixed distances.
  if ((c >= 0x391 && c <= 0x3A9) || (c >= 0x410 && c <= 0x42F)) {
    appendUtf8(out, c + 0x20);
  } else if (c >= 0x400 && c <= 0x40F) {
    appendUtf8(out, c + 0x50);
  } else {
    appendUtf8(out, c);
  }
  return Kind::Letter;
}

}  // namespace

std::vector<TextWord> splitWords(std::string_view text) {
  std::vector<TextWord> words;
  TextWord current;
  bool inWord = false;
  auto finish = [&](std::size_t end) {
    if (inWord && !current.folded.empty()) {
      current.length = end - current.offset;
      words.push_back(std::move(current));
    }
    current = TextWord{};
    inWord = false;
  };
  std::size_t at = 0;
  while (at < text.size()) {
    const Decoded decoded = decode(text, at);
    std::string folded;
    const Kind kind = decoded.valid ? foldLetter(decoded.codePoint, folded) : Kind::Separator;
    if (kind == Kind::Separator) {
      finish(at);
    } else if (kind == Kind::Letter) {
      if (!inWord) {
        inWord = true;
        current.offset = at;
      }
      current.folded += folded;
    }
    // A combining mark belongs to the word it follows and adds nothing.
    at += decoded.valid ? decoded.length : 1;
  }
  finish(text.size());
  return words;
}

std::vector<std::string> foldedWords(std::string_view text) {
  std::vector<std::string> folded;
  for (TextWord& word : splitWords(text)) folded.push_back(std::move(word.folded));
  return folded;
}

std::string foldText(std::string_view text) {
  std::string joined;
  for (const std::string& word : foldedWords(text)) {
    if (!joined.empty()) joined.push_back(' ');
    joined += word;
  }
  return joined;
}

bool endsInWord(std::string_view text) {
  const std::vector<TextWord> words = splitWords(text);
  if (words.empty()) return false;
  // A word's length covers the combining marks that follow its letters.
  return words.back().offset + words.back().length == text.size();
}

}  // namespace quorvix::sandbox
