#pragma once
/// @file
/// The options offered for the whole conversation.

#include <memory>
#include <optional>
#include <string>

#include "quorvix/conversation/QXConversationQuickOption.h"

namespace quorvix {

/// A persistent option: offered for the whole conversation (FAQ groups are
/// presented as replies made of these).
class QXConversationPersistentOption : public QXConversationQuickOption {
 public:
  /// The constructors of a quick option.
  using QXConversationQuickOption::QXConversationQuickOption;
  /// An option over a copy of the dictionary; nothing for an absent one.
  static std::shared_ptr<QXConversationPersistentOption> initWithParams(const JsonObject* params);
  /// A link for the option; the engine never fills it.
  const std::optional<std::string>& url() const { return url_; }

 private:
  std::optional<std::string> url_;
};

}  // namespace quorvix
