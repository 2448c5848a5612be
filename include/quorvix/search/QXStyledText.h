#pragma once
/// @file
/// Text with fonts over ranges, as a host's attributed strings hold it.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "quorvix/configuration/TextHelpers.h"

namespace quorvix {

/// A font over a range of a styled text. `location` and `length` count UTF-16
/// code units, as the host's attributed strings do.
struct QXFontRun {
  /// Where the run starts, in UTF-16 code units.
  std::size_t location = 0;
  /// The run's length, in UTF-16 code units.
  std::size_t length = 0;
  /// The run's font.
  QXFont font;
  /// Member-wise equality.
  friend bool operator==(const QXFontRun&, const QXFontRun&) = default;
};

/// A UTF-8 text and its font runs: ordered, not overlapping; parts of the
/// text under no run have no font of their own.
struct QXStyledText {
  /// The plain text.
  std::string text;
  /// The font runs, in order.
  std::vector<QXFontRun> runs;
  /// Member-wise equality.
  friend bool operator==(const QXStyledText&, const QXStyledText&) = default;
};

/// Builds a styled text by applying fonts over ranges; a later font replaces an
/// earlier one where they overlap.
class QXStyledTextBuilder {
 public:
  /// A builder over the text, with no runs yet.
  explicit QXStyledTextBuilder(std::string text);
  /// The text's length in UTF-16 code units.
  std::size_t length() const { return fonts_.size(); }
  /// Applies `font` over [location, location + length), clipped to the text.
  void apply(std::size_t location, std::size_t length, const QXFont& font);
  /// Applies `font` over the first occurrence of `word`; false when there is none.
  bool applyToFirst(std::string_view word, const QXFont& font);
  /// The styled text built so far.
  QXStyledText build() const;

 private:
  std::string text_;
  std::vector<int> fonts_;  // per UTF-16 unit: index into palette_, or -1
  std::vector<QXFont> palette_;
};

/// The length of UTF-8 text in UTF-16 code units.
std::size_t utf16Length(std::string_view text);

}  // namespace quorvix
