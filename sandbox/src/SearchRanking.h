#pragma once
/// @file
/// The sandbox's search: which articles a text finds, best first, and which
/// articles a session's context lets through.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "KnowledgeBase.h"

namespace quorvix::sandbox {

/// One article a search found and how well it matched.
struct RankedArticle {
  const Article* article = nullptr;
  int score = 0;
};

/// Whether `article` applies under the context `filter`. An entry narrows
/// only the articles that carry its name: they must carry its value (case and
/// accents folded). Articles without that context name apply everywhere, and
/// an entry with an empty value narrows nothing.
bool appliesUnder(const Article& article, const ContextFilter& filter);

/// The article body without its "<quorvixextradata>" blocks (the words a
/// reader sees).
std::string visibleBody(std::string_view body);

/// Ranks the articles of `kb` that apply under `filter` for `text`, best
/// first, at most `limit`. Words are compared case- and accent-folded; a word
/// in the title counts most, then one of the article's keywords, then the
/// body; a query word of three or more letters also finds longer words it
/// begins ("reset" finds "resetting") at half weight. Articles matching more
/// of the query's words come first; ties keep the knowledge base's order.
/// Small words ("how", "my", "the") are ignored unless the text has nothing
/// else. Nothing for a text without words.
std::vector<RankedArticle> rankArticles(const KnowledgeBase& kb, std::string_view text, const ContextFilter& filter,
                                        std::size_t limit);

/// A guess at the language of `text` ("en", "de", "fr", "es") from its small
/// words; `fallback` when nothing decides.
std::string detectLanguage(std::string_view text, const std::string& fallback);

}  // namespace quorvix::sandbox
