#pragma once
/// @file
/// One reply of the conversation bot.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quorvix/conversation/QXAction.h"
#include "quorvix/conversation/QXConversationQuickOption.h"
#include "quorvix/conversation/QXEntity.h"
#include "quorvix/conversation/QXPersonalInfo.h"
#include "quorvix/core/Json.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// A bot reply. The reply's JSON dictionary (`params`) is the source of truth:
/// readers look into it on every call, and the engine edits it (the text after
/// masking and personal-information substitution, the read-more flag) instead
/// of separate fields. The option and entity lists are built on their first
/// read and kept from then on.
///
/// A reply is a plain object: use it from one thread at a time.
class QXConversationalResponse : public QXObject {
 public:
  /// The reply's actions.
  using ActionList = std::vector<std::shared_ptr<QXAction>>;
  /// The reply's quick or persistent options.
  using OptionList = std::vector<std::shared_ptr<QXConversationQuickOption>>;

  /// An empty reply (`params` is an empty dictionary, not valid).
  QXConversationalResponse() = default;
  /// A reply over the parsed text; text that is not a JSON object gives an
  /// empty dictionary. Always valid (the test only rejects a reply that could
  /// not be made).
  static std::shared_ptr<QXConversationalResponse> initWithJSON(std::string_view json);
  /// A reply over the parsed bytes (an empty dictionary when they are not a
  /// JSON object); not marked valid.
  static std::shared_ptr<QXConversationalResponse> initWithData(std::string_view bytes);
  /// A reply over a copy of the dictionary; not marked valid.
  static std::shared_ptr<QXConversationalResponse> initWithDictionary(JsonObject dictionary);

  /// The reply's dictionary.
  const JsonObject& params() const { return params_; }
  /// The reply's parameters, to read or change in place.
  JsonObject& params() { return params_; }
  /// Replaces `params()`.
  void setParams(JsonObject params) { params_ = std::move(params); }

  /// The actions added so far.
  std::vector<std::shared_ptr<QXAction>> innerActions() const { return innerActions_.value_or(ActionList{}); }
  /// Replaces `innerActions()`.
  void setInnerActions(std::vector<std::shared_ptr<QXAction>> actions);
  /// Appends an action; a null one is ignored.
  void addAction(std::shared_ptr<QXAction> action);
  /// The actions added so far; nothing until the first one is added.
  const std::optional<ActionList>& actions() const { return innerActions_; }

  /// `params["status"]` as an integer (0 when missing).
  int64_t status() const;
  /// `params["statement"]` when it is text.
  std::optional<std::string> statement() const;
  /// Writes "statement" (nothing removes it).
  void setStatement(std::optional<std::string> statement);
  /// `params["answersCaption"]` when the reply has one, else `params["text"]`.
  std::optional<std::string> text() const;
  /// Writes "text" (nothing removes it). A reply with a caption keeps showing
  /// the caption.
  void setText(std::optional<std::string> text);
  /// Not filled by the engine.
  const std::shared_ptr<QXPersonalInfo>& personalInfo() const { return personalInfo_; }
  /// `params["articleId"]` as sent.
  std::optional<Json> articleId() const;
  /// `params["missingEntities"]` as sent, read on the first call and kept.
  const std::optional<Json>& missingEntities();
  /// The recognised entities, built from `params["entities"]` on the first read and kept.
  const std::optional<std::vector<std::shared_ptr<QXEntity>>>& entities();
  /// The quick options, built from `params["quickOptions"]` on the first read
  /// and kept; a value that is not a list reads as no options.
  const std::optional<OptionList>& quickOptions();
  /// The persistent options, built from `params["persistentOptions"]` on the
  /// first read and kept.
  const std::optional<OptionList>& persistentOptions();
  /// Rewrites the dictionary: "persistentOptions" becomes one
  /// {"text", "kind": "inlineChoice", "type": "postback"} per option and
  /// "quickOptions" the empty string. Lists already read are kept as they are.
  void setPersistentOptions(const OptionList& options);
  /// `params["isReadMore"]` as a boolean when it is one (or a number).
  std::optional<bool> isReadMore() const;
  /// Writes "isReadMore" (nothing removes it).
  void setIsReadMore(std::optional<bool> isReadMore);
  /// Whether `initWithJSON` made this reply.
  bool isValid() const { return isValid_; }

  /// `params` as JSON text; nothing when it cannot be written.
  std::optional<std::string> inJSON() const;
  /// The JSON text of `params`.
  std::string description() const;

 private:
  JsonObject params_;
  std::optional<ActionList> innerActions_;
  std::shared_ptr<QXPersonalInfo> personalInfo_;
  // Kept from the first read that found the key; unset until then.
  std::optional<Json> missingEntities_;
  std::optional<std::vector<std::shared_ptr<QXEntity>>> entities_;
  std::optional<OptionList> quickOptions_;
  std::optional<OptionList> persistentOptions_;
  bool isValid_ = false;
};

}  // namespace quorvix
