#pragma once
/// @file
/// The account's widget configuration ("cnf.json").

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/configuration/ConversationSettings.h"
#include "quorvix/configuration/QXColor.h"
#include "quorvix/configuration/QXComponentConfiguration.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

class QXFAQGroup;
class QXLabel;

/// The widget configuration: texts, colours and switches for the host's user
/// interface, the knowledge base's language, the no-answer texts, the
/// conversation settings and the FAQ groups or labels shown first.
///
/// Component settings are made on first read with their defaults, so a
/// configuration whose JSON lacks their keys still gives usable objects. Safe
/// to read and write from several threads.
class QXConfiguration : public QXBaseResponse {
 public:
  /// A configuration read from `params`, or nothing when it is absent.
  static std::shared_ptr<QXConfiguration> initWithParams(const JsonObject* params) {
    return create<QXConfiguration>(params);
  }
  /// Fills the configuration from a cnf.json object.
  void inflate(const JsonObject& params) override;

  /// The whole cnf.json object, kept for later lookups.
  std::optional<JsonObject> params() const;
  /// Replaces `params()`.
  void setParams(std::optional<JsonObject> params);
  /// The navigation bar's background colour.
  std::optional<QXColor> statusBarColor() const;
  /// Replaces `statusBarColor()`.
  void setStatusBarColor(std::optional<QXColor> color);

  /// The navigation bar (made on first read, as are the other components).
  std::shared_ptr<QXNavBarConfiguration> navBar() const;
  /// The result title rows.
  std::shared_ptr<QXTitleConfiguration> title() const;
  /// Made with `searchBarStyle` 0.
  std::shared_ptr<QXSearchBarConfiguration> searchBar() const;
  /// Made with its 12-point fonts.
  std::shared_ptr<QXAutoCompleteConfiguration> autoComplete() const;
  /// The article content.
  std::shared_ptr<QXContentConfiguration> content() const;
  /// The like and dislike buttons.
  std::shared_ptr<QXLikeConfiguration> like() const;
  /// The dialog that asks why an article did not help.
  std::shared_ptr<QXNegativeFeedbackConfiguration> negativeFeedback() const;
  /// The escalation options.
  std::shared_ptr<QXChannelingConfiguration> channeling() const;
  /// The service's branding.
  std::shared_ptr<QXLogoConfiguration> logo() const;
  /// The bot's settings ("conversationSettings.data").
  std::shared_ptr<ConversationSettings> conversationSettings() const;

  /// Whether the FAQ list depends on the search context ("faqData" is
  /// "context-dependent"); the FAQ groups are then read from the service.
  bool isContextDependent() const;
  /// The FAQ groups to show first: a copy of the list, so a range-for over the
  /// call holds it (empty when there are none, or not yet).
  std::vector<std::shared_ptr<QXFAQGroup>> faqs() const;
  /// Replaces `faqs()`.
  void setFaqs(std::vector<std::shared_ptr<QXFAQGroup>> faqs);
  /// Builds one group per dictionary of the array, in order; anything that is
  /// not an array (or nullptr) gives an empty list, and elements that are not
  /// dictionaries are skipped.
  void setFAQs(const Json* groups);

  /// The knowledge base's language ("kbLanguageCode").
  const std::optional<std::string>& languageCode() const { return languageCode_; }
  /// The service's knowledge-base id ("kbId"), which the label requests name.
  const std::optional<std::string>& kbId() const { return kbId_; }
  /// The no-answer text of a plain search, with "{QUERY}" for the query.
  const std::optional<std::string>& customNoAnswersText() const { return customNoAnswersText_; }
  /// The no-answer text when a context is in force, with "{QUERY}" for the query.
  const std::optional<std::string>& customNoAnswersTextContext() const { return customNoAnswersTextContext_; }
  /// Heading of the box that asks how an article can be improved.
  const std::optional<std::string>& feedbackCustomiseText() const { return feedbackCustomiseText_; }

  /// The labels listed by "onLoadPageScript": a copy of the list, so a
  /// range-for over the call holds it (empty when there are none or the
  /// script did not parse).
  std::vector<std::shared_ptr<QXLabel>> labels() const;
  /// Builds one label per dictionary of the array, in order; nullptr or a
  /// value that is not an array leaves the labels unchanged.
  void setLabels(const Json* labels);

  /// The host shows labels instead of FAQ groups; never set by the configuration itself.
  bool useLabels() const;
  /// Replaces `useLabels()`.
  void setUseLabels(bool useLabels);

 private:
  template <class T>
  std::shared_ptr<T> lazily(std::shared_ptr<T>& member) const {
    std::lock_guard lock(mutex_);
    if (!member) member = std::make_shared<T>();
    return member;
  }

  mutable std::mutex mutex_;
  std::optional<JsonObject> params_;
  std::optional<QXColor> statusBarColor_;
  mutable std::shared_ptr<QXNavBarConfiguration> navBar_;
  mutable std::shared_ptr<QXTitleConfiguration> title_;
  mutable std::shared_ptr<QXSearchBarConfiguration> searchBar_;
  mutable std::shared_ptr<QXAutoCompleteConfiguration> autoComplete_;
  mutable std::shared_ptr<QXContentConfiguration> content_;
  mutable std::shared_ptr<QXLikeConfiguration> like_;
  mutable std::shared_ptr<QXNegativeFeedbackConfiguration> negativeFeedback_;
  mutable std::shared_ptr<QXChannelingConfiguration> channeling_;
  mutable std::shared_ptr<QXLogoConfiguration> logo_;
  mutable std::shared_ptr<ConversationSettings> conversationSettings_;
  bool isContextDependent_ = false;
  std::vector<std::shared_ptr<QXFAQGroup>> faqs_;
  std::optional<std::string> languageCode_;
  std::optional<std::string> kbId_;
  std::optional<std::string> customNoAnswersText_;
  std::optional<std::string> customNoAnswersTextContext_;
  std::optional<std::string> feedbackCustomiseText_;
  std::vector<std::shared_ptr<QXLabel>> labels_;
  bool useLabels_ = false;
};

}  // namespace quorvix
