#pragma once
/// @file
/// The colour value of the widget configuration.

namespace quorvix {

/// An RGBA colour, each channel in [0, 1]. Plain value; safe to copy between threads.
struct QXColor {
  double red = 0;    ///< Red, 0-1.
  double green = 0;  ///< Green, 0-1.
  double blue = 0;   ///< Blue, 0-1.
  double alpha = 1;  ///< Opacity, 0-1.
  /// Member-wise equality.
  friend bool operator==(const QXColor&, const QXColor&) = default;
};

}  // namespace quorvix
