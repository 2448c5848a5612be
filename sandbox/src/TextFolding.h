#pragma once
/// @file
/// Matching forms of text for the search and suggestion endpoints: lower case,
/// Latin accents removed, split into words.

#include <string>
#include <string_view>
#include <vector>

namespace quorvix::sandbox {

/// One word of a text: its matching form and where it stands in the text.
struct TextWord {
  /// Lower case, accents removed ("Café" -> "cafe", "Straße" -> "strasse").
  std::string folded;
  /// Byte offset and length of the word in the original text.
  std::size_t offset = 0;
  std::size_t length = 0;
};

/// The words of UTF-8 text in order. Letters and digits of any script make
/// words; blanks, punctuation and symbols separate them, so "Wi-Fi" is the two
/// words "wi" and "fi". Combining accents are dropped, invalid bytes separate.
std::vector<TextWord> splitWords(std::string_view text);

/// The folded words alone.
std::vector<std::string> foldedWords(std::string_view text);

/// The folded form of the whole text: its words joined by one blank.
std::string foldText(std::string_view text);

/// Whether the text ends in the middle of a word (the user is still typing it).
bool endsInWord(std::string_view text);

}  // namespace quorvix::sandbox
