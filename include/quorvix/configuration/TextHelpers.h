#pragma once
/// @file
/// Fonts and the small text helpers the host's presentation uses.

#include <string>
#include <string_view>

namespace quorvix {

/// A font: family, point size and whether it is the bold variant. The family
/// "system" stands for the platform's system font.
struct QXFont {
  /// The font family ("system": the platform's system font).
  std::string family = "system";
  /// The size, in points.
  double pointSize = 12.0;
  /// Whether this is the bold variant.
  bool bold = false;

  /// The regular system font of that size.
  static QXFont systemFontOfSize(double pointSize) { return QXFont{"system", pointSize, false}; }
  /// The bold system font of that size.
  static QXFont boldSystemFontOfSize(double pointSize) { return QXFont{"system", pointSize, true}; }

  /// Member-wise equality.
  friend bool operator==(const QXFont&, const QXFont&) = default;
};

/// The same font with the bold trait added, at the same point size.
QXFont bolded(const QXFont& font);

/// Whether the character can be typed on a phone pad: "0"-"9", "#", "*" and "+".
bool canBeInputByPhonePad(char32_t character);

/// The characters of `text` that can be typed on a phone pad, in order
/// ("+1 (555) 010-99#*" gives "+155501099#*"). Text that is not valid UTF-8 is
/// read byte by byte; nothing outside ASCII survives either way.
std::string strip(std::string_view text);

/// Whether the text is mostly written in a right-to-left script: letters of
/// Hebrew, Arabic, Syriac, Thaana, N'Ko (and their presentation forms) outnumber
/// the other letters. Empty text, text without letters and invalid UTF-8 give false.
bool isRTL(std::string_view text);

}  // namespace quorvix
