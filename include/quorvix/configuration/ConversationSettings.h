#pragma once
/// @file
/// The bot's settings from the widget configuration.

#include <memory>
#include <optional>
#include <string>

#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// The conversation settings ("conversationSettings.data" of the widget
/// configuration). Missing keys read as false, 0 or nothing.
class ConversationSettings : public QXBaseResponse {
 public:
  /// Settings read from `params`, or nothing when it is absent.
  static std::shared_ptr<ConversationSettings> initWithParams(const JsonObject* params) {
    return create<ConversationSettings>(params);
  }
  void inflate(const JsonObject& params) override;

  /// Whether the bot needs the account's API key ("requireAPIKey").
  bool requireAPIKey() const { return requireAPIKey_; }
  /// Mirrors "requireAPIKey": the service sends no key of its own for it.
  bool channelsEnabled() const { return channelsEnabled_; }
  /// Whether the bot asks for feedback ("feedbackEnabled").
  bool feedbackEnabled() const { return feedbackEnabled_; }
  /// Seconds, as the service sends them.
  double feedbackTimeout() const { return feedbackTimeout_; }
  /// The bot's feedback question ("feedbackText").
  const std::optional<std::string>& feedbackText() const { return feedbackText_; }
  /// Whether the bot offers a human agent ("askAgent").
  bool askAgent() const { return askAgent_; }
  /// Whether the bot links to the support centre ("showSupportCenterLink").
  bool showSupportCenterLink() const { return showSupportCenterLink_; }
  /// Heading of a reply with several articles ("multiResultsHeader").
  const std::optional<std::string>& multiResultsHeader() const { return multiResultsHeader_; }

 private:
  bool requireAPIKey_ = false;
  bool channelsEnabled_ = false;
  bool feedbackEnabled_ = false;
  double feedbackTimeout_ = 0.0;
  std::optional<std::string> feedbackText_;
  bool askAgent_ = false;
  bool showSupportCenterLink_ = false;
  std::optional<std::string> multiResultsHeader_;
};

}  // namespace quorvix
