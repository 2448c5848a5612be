#pragma once
/// @file
/// A personal-information placeholder of a bot reply, put to the host.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/conversation/QXAction.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// The host's answer to a placeholder: a value to put in its place, or no
/// value and no action to have it turned into a button.
using QXPersonalInfoCallback = std::function<void(std::optional<std::string> value, std::shared_ptr<QXAction> action)>;

/// One "{{signature}}" placeholder of a bot reply, such as
/// `accountBalance(ButtonText:Show my balance,account:main)`. The engine hands
/// it to `QXChatEngineDelegate::shouldHandlePersonalInformation`; the host
/// calls `personalInfoCallback` once, on any thread and at any time.
class QXPersonalInfo : public QXObject {
 public:
  QXPersonalInfo() = default;
  /// A placeholder with the given signature.
  static std::shared_ptr<QXPersonalInfo> initWithSignature(std::string signature);

  /// The text between "{{" and "}}".
  const std::string& signature() const { return signature_; }
  /// Replaces `signature()`.
  void setSignature(std::string signature) { signature_ = std::move(signature); }
  /// The name of the information asked for: the signature before "(".
  std::string personalInfoId() const;
  /// The "key:value" arguments between "(" and ")", split at "," as written.
  std::vector<std::string> methodArgs() const;

  /// Set by the engine; the host calls it once with its answer.
  const QXPersonalInfoCallback& personalInfoCallback() const { return personalInfoCallback_; }
  /// Replaces `personalInfoCallback()`.
  void setPersonalInfoCallback(QXPersonalInfoCallback callback) { personalInfoCallback_ = std::move(callback); }

 private:
  std::string signature_;
  QXPersonalInfoCallback personalInfoCallback_;
};

}  // namespace quorvix
