#include "Suggestions.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "SearchRanking.h"
#include "TextFolding.h"

namespace quorvix::sandbox {

namespace {

/// One word of a phrase as shown, and its folded words ("Wi-Fi" -> "wi", "fi").
struct PhraseWord {
  std::string shown;
  std::vector<std::string> folded;
};

/// The shown words of a title or keyword: split at blanks, without the
/// characters the piece format reserves and without outer punctuation.
std::vector<PhraseWord> phraseWords(std::string_view text) {
  std::vector<PhraseWord> words;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t blank = std::min(text.find(' ', at), text.size());
    std::string shown;
    for (char c : text.substr(at, blank - at)) {
      if (c != '|' && c != ',' && c != '*') shown.push_back(c);
    }
    at = blank + 1;
    const auto outer = [](char c) { return std::string_view("?!.:;()\"'").find(c) != std::string_view::npos; };
    while (!shown.empty() && outer(shown.back())) shown.pop_back();
    while (!shown.empty() && outer(shown.front())) shown.erase(shown.begin());
    std::vector<std::string> folded = foldedWords(shown);
    if (!folded.empty()) words.push_back({std::move(shown), std::move(folded)});
  }
  return words;
}

bool beginsWith(const std::string& word, const std::string& prefix) {
  return word.size() >= prefix.size() && word.compare(0, prefix.size(), prefix) == 0;
}

/// What the typed text asks for.
struct Typed {
  std::vector<std::string> finished;
  /// The word being typed; absent when the text ends in a blank.
  std::optional<std::string> unfinished;
  bool stemming = false;

  bool matchesFinished(const std::string& word, const std::string& typed) const {
    return stemming ? beginsWith(word, typed) : word == typed;
  }
  /// Whether a shown word is one the marks go on.
  bool marks(const PhraseWord& word) const {
    return std::any_of(word.folded.begin(), word.folded.end(), [&](const std::string& folded) {
      if (unfinished) return beginsWith(folded, *unfinished);
      return !finished.empty() && matchesFinished(folded, finished.back());
    });
  }
  bool accepts(const std::vector<PhraseWord>& words) const {
    for (const std::string& typed : finished) {
      const bool found = std::any_of(words.begin(), words.end(), [&](const PhraseWord& word) {
        return std::any_of(word.folded.begin(), word.folded.end(),
                           [&](const std::string& folded) { return matchesFinished(folded, typed); });
      });
      if (!found) return false;
    }
    return std::any_of(words.begin(), words.end(), [&](const PhraseWord& word) { return marks(word); });
  }
};

}  // namespace

std::vector<std::string> suggestionPhrases(const KnowledgeBase& kb, std::string_view text, bool stemming,
                                           const ContextFilter& filter, std::size_t limit) {
  Typed typed;
  typed.finished = foldedWords(text);
  typed.stemming = stemming;
  if (typed.finished.empty()) return {};
  if (endsInWord(text)) {
    typed.unfinished = std::move(typed.finished.back());
    typed.finished.pop_back();
  }

  std::vector<const Article*> articles;
  for (const Article& article : kb.articles()) {
    if (appliesUnder(article, filter)) articles.push_back(&article);
  }
  // Popular articles first; equal ones in the knowledge base's order.
  std::stable_sort(articles.begin(), articles.end(), [](const Article* a, const Article* b) {
    return std::atoi(a->likes.c_str()) > std::atoi(b->likes.c_str());
  });

  // How many titles carry each folded word: the data of a marked piece.
  std::map<std::string, int> titleCounts;
  for (const Article* article : articles) {
    const std::vector<std::string> words = foldedWords(article->title);
    for (const std::string& word : std::set<std::string>(words.begin(), words.end())) ++titleCounts[word];
  }

  std::vector<std::string> phrases;
  std::set<std::string> seen;
  auto offer = [&](std::string_view source) {
    const std::vector<PhraseWord> words = phraseWords(source);
    if (phrases.size() >= limit || words.empty() || !typed.accepts(words)) return;
    std::string phrase;
    std::string key;
    for (const PhraseWord& word : words) {
      if (!phrase.empty()) phrase.push_back('|');
      phrase += word.shown;
      if (typed.marks(word)) phrase += "," + std::to_string(titleCounts[word.folded.front()]) + "*";
      for (const std::string& folded : word.folded) key += folded + " ";
    }
    if (seen.insert(key).second) phrases.push_back(std::move(phrase));
  };
  for (const Article* article : articles) {
    for (const std::string& keyword : article->keywords) offer(keyword);
  }
  for (const Article* article : articles) offer(article->title);
  return phrases;
}

}  // namespace quorvix::sandbox
