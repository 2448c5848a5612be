#pragma once
/// @file
/// Suggestions for the text the user is typing.

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/configuration/TextHelpers.h"
#include "quorvix/engine/QXBaseResponse.h"
#include "quorvix/search/QXStyledText.h"

namespace quorvix {

class QXAutoCompleteConfiguration;

/// The service's suggestion phrases for a typed text. A phrase is pieces
/// separated by "|"; a piece is a word, optionally followed by "," and data
/// that is ignored; a piece ending in "*" marks its word for emphasis.
class QXAutoCompleteResponse : public QXBaseResponse {
 public:
  /// A reply read from the service's dictionary; nothing for none.
  static std::shared_ptr<QXAutoCompleteResponse> initWithParams(const JsonObject* params) {
    return create<QXAutoCompleteResponse>(params);
  }
  void inflate(const JsonObject& params) override;

  /// The raw phrases, in the service's order.
  const std::vector<std::string>& a() const { return a_; }
  /// The typed text as it stood in the request address (still percent-encoded).
  const std::optional<std::string>& query() const { return query_; }
  /// The configured autocomplete font last used by `suggestions`.
  std::optional<QXFont> font() const;
  /// One styled text per phrase, styled with the shared engine's autocomplete
  /// configuration: the regular font over all but the trailing blank, marked
  /// words (other than the typed text itself, compared decoded) in its bold font.
  std::vector<QXStyledText> suggestions() const;
  /// The same with the given autocomplete configuration.
  std::vector<QXStyledText> suggestions(const QXAutoCompleteConfiguration& configuration) const;

 private:
  std::vector<std::string> a_;
  std::optional<std::string> query_;
  mutable std::mutex fontMutex_;
  mutable std::optional<QXFont> font_;
};

/// The phrases of a suggestion reply ("a").
std::vector<std::string> answers(const JsonObject& reply);
/// The reply's phrases with every marked word in the 8-point bold system font
/// and no regular font; trailing blank dropped.
std::vector<QXStyledText> fetchSuggestion(const JsonObject& reply);
/// The reply's phrases with `font`'s family and size over all but the last
/// character and every marked word in `font` itself; trailing blank dropped.
std::vector<QXStyledText> parseAutoComplete(const JsonObject& reply, const QXFont& font);

}  // namespace quorvix
