#pragma once
/// @file
/// Suggestion phrases for a text the user is still typing, in the service's
/// piece format: the words joined by "|", a word the typed word completes
/// written "word,COUNT*" (COUNT: how many article titles carry that word).

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "KnowledgeBase.h"

namespace quorvix::sandbox {

/// The phrases for `text`, at most `limit`: the articles' keywords, then their
/// titles, that contain every finished word of `text` and a word beginning
/// with its last, unfinished word (folded). The words that complete it are
/// marked. When `text` ends in a blank every word counts as finished and the
/// words equal to the last one are marked; with `stemming` a finished word
/// also matches longer words it begins ("router" matches "routers"). Only
/// articles that apply under `filter` are used; phrases are not repeated.
std::vector<std::string> suggestionPhrases(const KnowledgeBase& kb, std::string_view text, bool stemming,
                                           const ContextFilter& filter, std::size_t limit);

}  // namespace quorvix::sandbox
