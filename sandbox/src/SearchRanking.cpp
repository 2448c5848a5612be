#include "SearchRanking.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "TextFolding.h"

namespace quorvix::sandbox {

namespace {

constexpr std::string_view kExtraDataStart = "<quorvixextradata>";
constexpr std::string_view kExtraDataEnd = "</quorvixextradata>";

// Points for a query word found in a field; a word it only begins gets half.
constexpr int kTitlePoints = 6;
constexpr int kKeywordPoints = 4;
constexpr int kBodyPoints = 2;
// Matching one more of the query's words outweighs any number of points.
constexpr int kPerMatchedWord = 100;
constexpr std::size_t kShortestPrefix = 3;

bool isSmallWord(const std::string& word) {
  static const std::set<std::string, std::less<>> kSmallWords = {
      "a",   "an",  "and", "are", "can",  "do",  "does", "for", "how",  "i",    "in",   "is",
      "it",  "me",  "my",  "of",  "on",   "or",  "the",  "to",  "what", "when", "where", "why",
      "with", "you", "your"};
  return kSmallWords.count(word) != 0;
}

/// The folded words of one article, by field.
struct ArticleWords {
  std::vector<std::string> title;
  std::vector<std::string> keywords;
  std::vector<std::string> body;
};

ArticleWords wordsOf(const Article& article) {
  ArticleWords words{foldedWords(article.title), {}, foldedWords(visibleBody(article.body))};
  for (const std::string& keyword : article.keywords) {
    for (std::string& word : foldedWords(keyword)) words.keywords.push_back(std::move(word));
  }
  return words;
}

/// Points of `query` in one field: full points for the word itself, half for a
/// longer word it begins.
int fieldPoints(const std::vector<std::string>& field, const std::string& query, int points) {
  int best = 0;
  for (const std::string& word : field) {
    if (word == query) return points;
    if (query.size() >= kShortestPrefix && word.size() > query.size() && word.compare(0, query.size(), query) == 0) {
      best = points / 2;
    }
  }
  return best;
}

}  // namespace

bool appliesUnder(const Article& article, const ContextFilter& filter) {
  for (const auto& [name, value] : filter) {
    if (value.empty()) continue;
    for (const auto& [articleName, articleValue] : article.contexts) {
      if (foldText(articleName) == foldText(name) && foldText(articleValue) != foldText(value)) return false;
    }
  }
  return true;
}

std::string visibleBody(std::string_view body) {
  std::string visible;
  while (!body.empty()) {
    const std::size_t start = body.find(kExtraDataStart);
    visible += body.substr(0, start);
    if (start == std::string_view::npos) break;
    const std::size_t end = body.find(kExtraDataEnd, start);
    // An unclosed block hides the rest of the body.
    if (end == std::string_view::npos) break;
    body.remove_prefix(end + kExtraDataEnd.size());
  }
  return visible;
}

std::vector<RankedArticle> rankArticles(const KnowledgeBase& kb, std::string_view text, const ContextFilter& filter,
                                        std::size_t limit) {
  std::vector<std::string> query;
  std::vector<std::string> allWords = foldedWords(text);
  for (const std::string& word : allWords) {
    if (!isSmallWord(word) && std::find(query.begin(), query.end(), word) == query.end()) query.push_back(word);
  }
  if (query.empty()) {
    for (const std::string& word : allWords) {
      if (std::find(query.begin(), query.end(), word) == query.end()) query.push_back(word);
    }
  }
  std::vector<RankedArticle> ranked;
  if (query.empty()) return ranked;

  for (const Article& article : kb.articles()) {
    if (!appliesUnder(article, filter)) continue;
    const ArticleWords words = wordsOf(article);
    int score = 0;
    for (const std::string& word : query) {
      const int points = std::max({fieldPoints(words.title, word, kTitlePoints),
                                   fieldPoints(words.keywords, word, kKeywordPoints),
                                   fieldPoints(words.body, word, kBodyPoints)});
      if (points > 0) score += kPerMatchedWord + points;
    }
    if (score > 0) ranked.push_back({&article, score});
  }
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const RankedArticle& a, const RankedArticle& b) { return a.score > b.score; });
  if (ranked.size() > limit) ranked.resize(limit);
  return ranked;
}

std::string detectLanguage(std::string_view text, const std::string& fallback) {
  static const std::map<std::string, std::string, std::less<>> kMarkers = {
      {"the", "en"},  {"how", "en"},  {"my", "en"},   {"is", "en"},   {"what", "en"}, {"do", "en"},
      {"der", "de"},  {"die", "de"},  {"das", "de"},  {"wie", "de"},  {"ich", "de"},  {"mein", "de"},
      {"le", "fr"},   {"la", "fr"},   {"les", "fr"},  {"comment", "fr"}, {"mon", "fr"}, {"est", "fr"},
      {"el", "es"},   {"los", "es"},  {"como", "es"}, {"mi", "es"},   {"que", "es"},  {"es", "es"}};
  std::map<std::string, int> votes;
  for (const std::string& word : foldedWords(text)) {
    if (auto found = kMarkers.find(word); found != kMarkers.end()) ++votes[found->second];
  }
  std::string best = fallback;
  int bestVotes = 0;
  for (const auto& [language, count] : votes) {
    if (count > bestVotes) {
      best = language;
      bestVotes = count;
    }
  }
  return best;
}

}  // namespace quorvix::sandbox
