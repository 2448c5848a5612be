#pragma once
/// @file
/// Escalation channels of an article: phone, chat, contact form, custom
/// address, custom script.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/core/Json.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// One escalation channel. `initWithParams` is the factory: it reads
/// "actionEsc" and "channel" from the description and makes the matching kind.
class QXChanneling : public QXObject {
 public:
  /// The channel of the kind the description names (a plain channel for
  /// unknown codes); nothing for an absent description.
  static std::shared_ptr<QXChanneling> initWithParams(const JsonObject* params);
  /// The channels of a list of descriptions, in order (non-dictionaries skipped).
  static std::vector<std::shared_ptr<QXChanneling>> listWithParams(const Json* list);

  /// The button's caption; also reported back as "apiName".
  const std::optional<std::string>& buttonText() const { return buttonText_; }
  /// "description".
  const std::optional<std::string>& channelDescription() const { return channelDescription_; }
  /// The kind code: 1 contact form, 2 custom address, 3 chat, 5 phone, 0 plain or custom script.
  int64_t type() const { return type_; }
  /// Replaces `type()`.
  void setType(int64_t type) { type_ = type; }

 protected:
  /// Reads the kind's own keys and sets its code.
  virtual void read(const JsonObject& params);
  /// The channel's type code, as the service sends it.
  int64_t type_ = 0;

 private:
  std::optional<std::string> buttonText_;
  std::optional<std::string> channelDescription_;
};

/// A phone number to call (code 5).
class QXChannelingPhoneNumber : public QXChanneling {
 public:
  /// The number to call.
  const std::optional<std::string>& phoneNumber() const { return phoneNumber_; }
  /// Text shown with the number.
  const std::optional<std::string>& customContent() const { return customContent_; }

 protected:
  void read(const JsonObject& params) override;

 private:
  std::optional<std::string> phoneNumber_;
  std::optional<std::string> customContent_;
};

/// A live chat (code 3). `accontNum` carries the service's "accountNum";
/// `accountNum` is never filled (both kept for hosts written against them).
class QXChannelingChatForm : public QXChanneling {
 public:
  /// The chat provider, as sent.
  const std::optional<Json>& chatProvider() const { return chatProvider_; }
  /// The provider's account number under the service's own spelling, as sent.
  const std::optional<Json>& accontNum() const { return accontNum_; }
  /// The provider's account number, as sent.
  const std::optional<Json>& accountNum() const { return accountNum_; }
  /// How the chat starts, as sent.
  const std::optional<Json>& initialiseStatus() const { return initialiseStatus_; }
  /// The agent skill to route to, as sent.
  const std::optional<Json>& agentSkill() const { return agentSkill_; }
  /// The expected wait, as sent.
  const std::optional<Json>& waitTime() const { return waitTime_; }
  /// The pre-chat form, as sent.
  const std::optional<Json>& preChat() const { return preChat_; }
  /// The post-chat form, as sent.
  const std::optional<Json>& postChat() const { return postChat_; }
  /// Whether the "send to email" choice is hidden.
  bool hideSendToEmail() const { return hideSendToEmail_; }
  /// Whether the chat opens in a popup.
  bool isPopup() const { return isPopup_; }
  /// The popup size, as sent.
  const std::optional<Json>& popupSize() const { return popupSize_; }
  /// Every other provider setting, as sent.
  const std::optional<Json>& otherChatProviderValues() const { return otherChatProviderValues_; }

 protected:
  void read(const JsonObject& params) override;

 private:
  std::optional<Json> chatProvider_, accontNum_, accountNum_, initialiseStatus_, agentSkill_, waitTime_, preChat_,
      postChat_, popupSize_, otherChatProviderValues_;
  bool hideSendToEmail_ = false;
  bool isPopup_ = false;
};

/// A contact form (code 1).
class QXChannelingContactForm : public QXChanneling {
 public:
  /// The form's fields, as sent.
  const std::optional<Json>& contactForms() const { return contactForms_; }
  /// The ticketing system the form feeds, as sent.
  const std::optional<Json>& ticketingInterface() const { return ticketingInterface_; }
  /// As sent (not read as a boolean).
  const std::optional<Json>& showInArticle() const { return showInArticle_; }
  /// From "ThankYouMessage" only.
  const std::optional<std::string>& thankYouMessage() const { return thankYouMessage_; }

 protected:
  void read(const JsonObject& params) override;

 private:
  std::optional<Json> contactForms_, ticketingInterface_, showInArticle_;
  std::optional<std::string> thankYouMessage_;
};

/// A web address to open (code 2).
class QXChannelingOpenCustomURL : public QXChanneling {
 public:
  /// The address to open.
  const std::optional<std::string>& linkUrl() const { return linkUrl_; }
  /// Where to open it, as the service gives it (for instance "_blank").
  const std::optional<std::string>& linkTarget() const { return linkTarget_; }
  /// The popup size, as sent.
  const std::optional<Json>& popupSize() const { return popupSize_; }

 protected:
  void read(const JsonObject& params) override;

 private:
  std::optional<std::string> linkUrl_, linkTarget_;
  std::optional<Json> popupSize_;
};

/// A script the host runs (code 0, like a plain channel).
class QXChannelingCustomScript : public QXChanneling {
 public:
  /// The script to run.
  const std::optional<std::string>& scriptContent() const { return scriptContent_; }

 protected:
  void read(const JsonObject& params) override;

 private:
  std::optional<std::string> scriptContent_;
};

/// The channels listed under a reply's "rechanneling"; nothing when it has none.
std::optional<std::vector<std::shared_ptr<QXChanneling>>> channeling(const JsonObject& reply);

}  // namespace quorvix
