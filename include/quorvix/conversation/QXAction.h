#pragma once
/// @file
/// A button the host shows under a bot reply.

#include <optional>
#include <string>

#include "quorvix/core/Json.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// An action attached to a bot reply, made from a personal-information
/// placeholder the host gave no value for: `text` is the button label,
/// `actionId` the placeholder's name and `userInfo` its arguments.
class QXAction : public QXObject {
 public:
  /// The placeholder's name (the part of its signature before "(").
  const std::optional<std::string>& actionId() const { return actionId_; }
  /// Replaces `actionId()`.
  void setActionId(std::optional<std::string> actionId) { actionId_ = std::move(actionId); }
  /// The button label.
  const std::optional<std::string>& text() const { return text_; }
  /// Replaces `text()`.
  void setText(std::optional<std::string> text) { text_ = std::move(text); }
  /// The placeholder's arguments by key.
  const std::optional<JsonObject>& userInfo() const { return userInfo_; }
  /// Replaces `userInfo()`.
  void setUserInfo(std::optional<JsonObject> userInfo) { userInfo_ = std::move(userInfo); }

  /// "\n actionId:ID\n text:TEXT\n userInfo:{...}", each part only when set.
  std::string description() const;

 private:
  std::optional<std::string> actionId_;
  std::optional<std::string> text_;
  std::optional<JsonObject> userInfo_;
};

}  // namespace quorvix
