#include "quorvix/search/QXAutoCompleteResponse.h"

#include "engine/Helpers.h"
#include "quorvix/configuration/QXComponentConfiguration.h"
#include "quorvix/configuration/QXConfiguration.h"
#include "quorvix/engine/Quorvix.h"

namespace quorvix {
namespace {

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  std::size_t start = 0;
  for (;;) {
    const auto at = text.find(separator, start);
    pieces.push_back(text.substr(start, at - start));
    if (at == std::string_view::npos) return pieces;
    start = at + 1;
  }
}

/// A phrase read into its words joined by blanks (with the trailing blank)
/// and the words marked for emphasis.
struct Phrase {
  std::string text;
  std::vector<std::string> marked;
};

Phrase readPhrase(std::string_view phrase) {
  Phrase read;
  for (auto piece : split(phrase, '|')) {
    std::string word(piece.substr(0, piece.find(',')));
    std::erase(word, '*');
    if (piece.ends_with('*')) read.marked.push_back(word);
    read.text.append(word).append(" ");
  }
  return read;
}

QXFont regularOf(const QXFont& font) { return QXFont{font.family, font.pointSize, false}; }

}  // namespace

void QXAutoCompleteResponse::inflate(const JsonObject& params) {
  a_ = answers(params);
  const auto* query = params.if_contains("query");
  if (query != nullptr && query->is_string()) {
    // "text=re%20set&stemming=true" gives "re%20set".
    const auto first = split(query->get_string(), '&').front();
    query_ = std::string(split(first, '=').back());
  }
}

std::optional<QXFont> QXAutoCompleteResponse::font() const {
  std::lock_guard lock(fontMutex_);
  return font_;
}

std::vector<QXStyledText> QXAutoCompleteResponse::suggestions() const {
  auto configuration = Quorvix::shared()->configuration()->autoComplete();
  if (!configuration) return suggestions(QXAutoCompleteConfiguration());
  return suggestions(*configuration);
}

std::vector<QXStyledText> QXAutoCompleteResponse::suggestions(const QXAutoCompleteConfiguration& configuration) const {
  {
    std::lock_guard lock(fontMutex_);
    font_ = configuration.font();
  }
  // The query travels percent-encoded; words are compared with what was typed.
  const std::optional<std::string> typed =
      query_ ? std::optional<std::string>(removingPercentEncoding(*query_).value_or(*query_)) : std::nullopt;
  std::vector<QXStyledText> styled;
  styled.reserve(a_.size());
  for (const auto& phrase : a_) {
    Phrase read = readPhrase(phrase);
    QXStyledTextBuilder builder(read.text);
    if (configuration.font()) builder.apply(0, builder.length() - 1, regularOf(*configuration.font()));
    for (const auto& word : read.marked) {
      // A marked word that is exactly the typed text stays regular.
      if (typed && word == *typed) continue;
      builder.applyToFirst(word, configuration.boldedFont());
    }
    styled.push_back(builder.build());
  }
  return styled;
}

std::vector<std::string> answers(const JsonObject& reply) {
  std::vector<std::string> phrases;
  const auto* list = reply.if_contains("a");
  if (list == nullptr || !list->is_array()) return phrases;
  for (const auto& phrase : list->get_array()) {
    if (phrase.is_string()) phrases.emplace_back(phrase.get_string());
  }
  return phrases;
}

std::vector<QXStyledText> fetchSuggestion(const JsonObject& reply) {
  std::vector<QXStyledText> styled;
  for (const auto& phrase : answers(reply)) {
    Phrase read = readPhrase(phrase);
    read.text.pop_back();
    QXStyledTextBuilder builder(read.text);
    for (const auto& word : read.marked) builder.applyToFirst(word, QXFont::boldSystemFontOfSize(8.0));
    styled.push_back(builder.build());
  }
  return styled;
}

std::vector<QXStyledText> parseAutoComplete(const JsonObject& reply, const QXFont& font) {
  std::vector<QXStyledText> styled;
  for (const auto& phrase : answers(reply)) {
    Phrase read = readPhrase(phrase);
    read.text.pop_back();
    QXStyledTextBuilder builder(read.text);
    // The last character is left without the regular font, as hosts have always seen it.
    if (builder.length() > 0) builder.apply(0, builder.length() - 1, regularOf(font));
    for (const auto& word : read.marked) builder.applyToFirst(word, font);
    styled.push_back(builder.build());
  }
  return styled;
}

}  // namespace quorvix
