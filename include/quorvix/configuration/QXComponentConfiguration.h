#pragma once
/// @file
/// The settings of each user-interface component the host presents: plain
/// value holders with defaults, filled from the widget configuration.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "quorvix/configuration/QXColor.h"
#include "quorvix/configuration/TextHelpers.h"
#include "quorvix/core/Json.h"

namespace quorvix {

/// Inner margins of a view, in points.
struct QXEdgeInsets {
  double top = 0;     ///< Top margin.
  double left = 0;    ///< Left margin.
  double bottom = 0;  ///< Bottom margin.
  double right = 0;   ///< Right margin.
  /// Member-wise equality.
  friend bool operator==(const QXEdgeInsets&, const QXEdgeInsets&) = default;
};

/// Base of every component's settings: colours, font and the raw dictionary.
class QXComponentConfiguration {
 public:
  QXComponentConfiguration() = default;
  virtual ~QXComponentConfiguration() = default;
  /// A configuration that keeps `params` and reads nothing from it.
  static std::shared_ptr<QXComponentConfiguration> initWithParams(std::optional<JsonObject> params) {
    auto configuration = std::make_shared<QXComponentConfiguration>();
    configuration->setParams(std::move(params));
    return configuration;
  }

  /// The background colour (nothing until set).
  const std::optional<QXColor>& backgroundColor() const { return backgroundColor_; }
  /// Replaces `backgroundColor()`.
  void setBackgroundColor(std::optional<QXColor> v) { backgroundColor_ = v; }
  /// The text font (nothing until set).
  const std::optional<QXFont>& font() const { return font_; }
  /// Replaces `font()`.
  void setFont(std::optional<QXFont> v) { font_ = std::move(v); }
  /// The text colour (nothing until set).
  const std::optional<QXColor>& textColor() const { return textColor_; }
  /// Replaces `textColor()`.
  void setTextColor(std::optional<QXColor> v) { textColor_ = v; }
  /// The dictionary the settings were made from, kept as given.
  const std::optional<JsonObject>& params() const { return params_; }
  /// Replaces `params()`.
  void setParams(std::optional<JsonObject> v) { params_ = std::move(v); }

 private:
  std::optional<QXColor> backgroundColor_;
  std::optional<QXFont> font_;
  std::optional<QXColor> textColor_;
  std::optional<JsonObject> params_;
};

/// The navigation bar.
class QXNavBarConfiguration : public QXComponentConfiguration {
 public:
  /// The title text ("titleTeaserText").
  const std::optional<std::string>& title() const { return title_; }
  /// Replaces `title()`.
  void setTitle(std::optional<std::string> v) { title_ = std::move(v); }

 private:
  std::optional<std::string> title_;
};

/// The rows that show result titles.
class QXTitleConfiguration : public QXComponentConfiguration {
 public:
  /// Height of one row, in points (0: the host decides).
  double rowHeight() const { return rowHeight_; }
  /// Replaces `rowHeight()`.
  void setRowHeight(double v) { rowHeight_ = v; }
  /// Name of the image shown at the end of a row.
  const std::optional<std::string>& accessoryImageName() const { return accessoryImageName_; }
  /// Replaces `accessoryImageName()`.
  void setAccessoryImageName(std::optional<std::string> v) { accessoryImageName_ = std::move(v); }
  /// Margins around a result row.
  const QXEdgeInsets& resultInset() const { return resultInset_; }
  /// Replaces `resultInset()`.
  void setResultInset(QXEdgeInsets v) { resultInset_ = v; }
  /// Margins around a row's text.
  const QXEdgeInsets& textInset() const { return textInset_; }
  /// Replaces `textInset()`.
  void setTextInset(QXEdgeInsets v) { textInset_ = v; }

 private:
  double rowHeight_ = 0.0;
  std::optional<std::string> accessoryImageName_;
  QXEdgeInsets resultInset_;
  QXEdgeInsets textInset_;
};

/// The search bar.
class QXSearchBarConfiguration : public QXComponentConfiguration {
 public:
  /// The placeholder text ("initialText").
  const std::optional<std::string>& placeHolder() const { return placeHolder_; }
  /// Replaces `placeHolder()`.
  void setPlaceHolder(std::optional<std::string> v) { placeHolder_ = std::move(v); }
  /// Whether voice input is offered ("voiceEnabled").
  bool voiceEnabled() const { return voiceEnabled_; }
  /// Replaces `voiceEnabled()`.
  void setVoiceEnabled(bool v) { voiceEnabled_ = v; }
  /// The platform's search-bar style (0: default).
  uint64_t searchBarStyle() const { return searchBarStyle_; }
  /// Replaces `searchBarStyle()`.
  void setSearchBarStyle(uint64_t v) { searchBarStyle_ = v; }

 private:
  std::optional<std::string> placeHolder_;
  bool voiceEnabled_ = false;
  uint64_t searchBarStyle_ = 0;
};

/// The article content.
class QXContentConfiguration : public QXComponentConfiguration {};

/// The like and dislike buttons.
class QXLikeConfiguration : public QXComponentConfiguration {
 public:
  /// True unless the host turns it off.
  bool shouldPresentDislikeOptions() const { return shouldPresentDislikeOptions_; }
  /// Replaces `shouldPresentDislikeOptions()`.
  void setShouldPresentDislikeOptions(bool v) { shouldPresentDislikeOptions_ = v; }
  /// How the like buttons look ("feedbackType", defined by the service).
  int64_t feedbackType() const { return feedbackType_; }
  /// Replaces `feedbackType()`.
  void setFeedbackType(int64_t v) { feedbackType_ = v; }
  /// Text of the like button ("feedbackPositiveButtonText").
  const std::optional<std::string>& feedbackPositiveButtonText() const { return feedbackPositiveButtonText_; }
  /// Replaces `feedbackPositiveButtonText()`.
  void setFeedbackPositiveButtonText(std::optional<std::string> v) { feedbackPositiveButtonText_ = std::move(v); }
  /// Text of the dislike button ("feedbackNegativeButtonText").
  const std::optional<std::string>& feedbackNegativeButtonText() const { return feedbackNegativeButtonText_; }
  /// Replaces `feedbackNegativeButtonText()`.
  void setFeedbackNegativeButtonText(std::optional<std::string> v) { feedbackNegativeButtonText_ = std::move(v); }
  /// Heading of the "how can we improve" box, as received (no default here).
  const std::optional<std::string>& feedbackCustomiseText() const { return feedbackCustomiseText_; }
  /// Replaces `feedbackCustomiseText()`.
  void setFeedbackCustomiseText(std::optional<std::string> v) { feedbackCustomiseText_ = std::move(v); }

 private:
  bool shouldPresentDislikeOptions_ = true;
  int64_t feedbackType_ = 0;
  std::optional<std::string> feedbackPositiveButtonText_;
  std::optional<std::string> feedbackNegativeButtonText_;
  std::optional<std::string> feedbackCustomiseText_;
};

/// The dialog that asks why an article did not help.
class QXNegativeFeedbackConfiguration : public QXComponentConfiguration {
 public:
  /// Choice for an inaccurate article ("feedbackSearchProblemText").
  const std::optional<std::string>& inAccurateContent() const { return inAccurateContent_; }
  /// Replaces `inAccurateContent()`.
  void setInAccurateContent(std::optional<std::string> v) { inAccurateContent_ = std::move(v); }
  /// Choice for an article that does not answer ("feedbackProblemWithAnswerText").
  const std::optional<std::string>& notRelevantContent() const { return notRelevantContent_; }
  /// Replaces `notRelevantContent()`.
  void setNotRelevantContent(std::optional<std::string> v) { notRelevantContent_ = std::move(v); }
  /// The dialog's kind ("feedbackDialogType", defined by the service).
  int64_t type() const { return type_; }
  /// Replaces `type()`.
  void setType(int64_t v) { type_ = v; }
  /// The text box's placeholder (note the lower-case "h", unlike the search bar's).
  const std::optional<std::string>& placeholder() const { return placeholder_; }
  /// Replaces `placeholder()`.
  void setPlaceholder(std::optional<std::string> v) { placeholder_ = std::move(v); }
  /// Text of the send button ("feedbackBottomText"; "Submit" by default).
  const std::optional<std::string>& submitButtonText() const { return submitButtonText_; }
  /// Replaces `submitButtonText()`.
  void setSubmitButtonText(std::optional<std::string> v) { submitButtonText_ = std::move(v); }
  /// The dialog's title ("feedbackSubmissionText").
  const std::optional<std::string>& title() const { return title_; }
  /// Replaces `title()`.
  void setTitle(std::optional<std::string> v) { title_ = std::move(v); }
  /// Small print under the box ("feedbackDisclaimerText").
  const std::optional<std::string>& disclaimer() const { return disclaimer_; }
  /// Replaces `disclaimer()`.
  void setDisclaimer(std::optional<std::string> v) { disclaimer_ = std::move(v); }

 private:
  std::optional<std::string> inAccurateContent_;
  std::optional<std::string> notRelevantContent_;
  int64_t type_ = 0;
  std::optional<std::string> placeholder_;
  std::optional<std::string> submitButtonText_;
  std::optional<std::string> title_;
  std::optional<std::string> disclaimer_;
};

/// The autocomplete list. Its `font` starts as the 12-point system font and
/// `boldedFont` (the emphasised words of a suggestion) as its bold variant.
class QXAutoCompleteConfiguration : public QXComponentConfiguration {
 public:
  QXAutoCompleteConfiguration() { setFont(QXFont::systemFontOfSize(12.0)); }

  /// Whether suggestions are shown while typing ("autocompleteEnabled").
  bool autocompleteEnabled() const { return autocompleteEnabled_; }
  /// Replaces `autocompleteEnabled()`.
  void setAutocompleteEnabled(bool v) { autocompleteEnabled_ = v; }
  /// Height of one suggestion row, in points.
  double rowHeight() const { return rowHeight_; }
  /// Replaces `rowHeight()`.
  void setRowHeight(double v) { rowHeight_ = v; }
  /// Whether rows are separated by a line.
  bool withDivider() const { return withDivider_; }
  /// Replaces `withDivider()`.
  void setWithDivider(bool v) { withDivider_ = v; }
  /// The font of the emphasised words of a suggestion.
  const QXFont& boldedFont() const { return boldedFont_; }
  /// Replaces `boldedFont()`.
  void setBoldedFont(QXFont v) { boldedFont_ = std::move(v); }

 private:
  bool autocompleteEnabled_ = false;
  double rowHeight_ = 0.0;
  bool withDivider_ = false;
  QXFont boldedFont_ = QXFont::boldSystemFontOfSize(12.0);
};

/// The escalation options.
class QXChannelingConfiguration : public QXComponentConfiguration {};

/// The service's branding. Hidden unless the configuration says otherwise.
class QXLogoConfiguration : public QXComponentConfiguration {
 public:
  /// Whether the service's branding is hidden ("hideBranding").
  bool hideBranding() const { return hideBranding_; }
  /// Replaces `hideBranding()`.
  void setHideBranding(bool v) { hideBranding_ = v; }

 private:
  bool hideBranding_ = true;
};

}  // namespace quorvix
