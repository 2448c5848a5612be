#pragma once
/// @file
/// The options a bot reply offers.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "quorvix/core/Json.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// One option of a bot reply (a button or link the user may press). What the
/// host shows is read from `params`, the option's dictionary as the service sent it.
class QXConversationQuickOption : public QXObject {
 public:
  QXConversationQuickOption() = default;
  /// An option over a copy of `params`.
  explicit QXConversationQuickOption(JsonObject params) : params_(std::move(params)) {}
  /// An option over a copy of the dictionary; nothing for an absent one.
  static std::shared_ptr<QXConversationQuickOption> initWithParams(const JsonObject* params);

  /// The option's dictionary.
  const JsonObject& params() const { return params_; }
  /// The option's parameters, to read or change in place.
  JsonObject& params() { return params_; }
  /// Replaces `params()`.
  void setParams(JsonObject params) { params_ = std::move(params); }

  /// `params["text"]` when it is text. `setText` keeps a separate field that
  /// this reader never returns: what is shown always comes from the dictionary.
  std::optional<std::string> text() const;
  /// Replaces `text()`.
  void setText(std::optional<std::string> text) { text_ = std::move(text); }
  /// `params["postback"]` as sent (usually text: what pressing the option sends).
  std::optional<Json> postback() const;
  /// `params["external"]` as sent.
  std::optional<Json> external() const;

  /// A plain stored number.
  int64_t type() const { return type_; }
  /// Replaces `type()`.
  void setType(int64_t type) { type_ = type; }

  /// The kind named by `params["kind"]`: "other" 1, "askAnAgent" 2,
  /// "supportCenterLink" 3, "channel" 4, "clickToCall" 5, "readMore" 6,
  /// "feedback" 7, "location" 8, "inlineChoice" 9, "url" 10, "external" 11;
  /// 0 for a missing or unknown name (the names are case-sensitive).
  /// `setKind` stores a plain field and does not change what this returns.
  int64_t kind() const;
  /// Replaces `kind()`.
  void setKind(int64_t kind) { kindField_ = kind; }

 private:
  JsonObject params_;
  std::optional<std::string> text_;
  int64_t type_ = 0;
  int64_t kindField_ = 0;
};

}  // namespace quorvix
