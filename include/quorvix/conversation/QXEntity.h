#pragma once
/// @file
/// An entity of a conversation: a typed value the bot recognised or asked for.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/conversation/Property.h"
#include "quorvix/core/Json.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// Entity type "number".
inline constexpr const char* EntityTypeNumber = "number";
/// Entity type "text".
inline constexpr const char* EntityTypeText = "text";
/// Entity type "date".
inline constexpr const char* EntityTypeDate = "date";
/// Entity type "duration".
inline constexpr const char* EntityTypeDuration = "duration";
/// Lifecycle "persistent": the entity holds for the whole conversation.
inline constexpr const char* EntityLifecyclePersistent = "persistent";
/// Lifecycle "statement": the entity holds for one statement.
inline constexpr const char* EntityLifecycleStatement = "statement";
/// Lifecycle "topic": the entity holds while the topic lasts.
inline constexpr const char* EntityLifecycleTopic = "topic";

/// An entity: a typed value (a number, a date, ...) in a bot reply or in the
/// host's answer to the bot's question for missing entities. `root` is its
/// JSON form; the setters of the JSON fields write both the field and `root`.
class QXEntity : public QXObject {
 public:
  QXEntity() = default;
  /// An entity whose JSON starts as a copy of the dictionary; its typed fields
  /// stay empty. Nothing for an absent dictionary.
  static std::shared_ptr<QXEntity> initWithParams(const JsonObject* params);

  /// How sure the bot is of the entity (0-1).
  const std::optional<double>& confidence() const { return confidence_; }
  /// Stores the field and writes "confidence" (nothing is ignored in the JSON).
  void setConfidence(std::optional<double> confidence);
  /// Not written to the JSON.
  const std::optional<int64_t>& statementId() const { return statementId_; }
  /// Replaces `statementId()`.
  void setStatementId(std::optional<int64_t> statementId) { statementId_ = statementId; }
  /// The entity type (`EntityTypeNumber`, ...).
  const std::optional<std::string>& type() const { return type_; }
  /// Stores the field and writes "type".
  void setType(std::optional<std::string> type);
  /// The value, as text.
  const std::optional<std::string>& value() const { return value_; }
  /// Stores the field and writes "value".
  void setValue(std::optional<std::string> value);
  /// The entity's name within its type.
  const std::optional<std::string>& kind() const { return kind_; }
  /// Stores the field and writes "kind".
  void setKind(std::optional<std::string> kind);
  /// How long the entity holds (`EntityLifecyclePersistent`, ...).
  const std::optional<std::string>& lifecycle() const { return lifecycle_; }
  /// Stores the field and writes "lifecycle".
  void setLifecycle(std::optional<std::string> lifecycle);
  /// Not written to the JSON.
  bool isPublic() const { return isPublic_; }
  /// Replaces `isPublic()`.
  void setIsPublic(bool isPublic) { isPublic_ = isPublic; }

  /// The properties added so far.
  const std::vector<std::shared_ptr<Property>>& properties() const { return properties_; }
  /// Replaces `properties()`; null entries are left out.
  void setProperties(std::vector<std::shared_ptr<Property>> properties);
  /// Appends a property; a null one is ignored. Its JSON is taken when
  /// `inJSON` is called, so later changes to it show.
  void addProperty(const std::shared_ptr<Property>& property);

  /// Sets `root[key]` to the value; nothing is ignored (a key once set stays).
  void safeInsert(std::string_view key, const std::optional<Json>& value);
  /// The entity's JSON form.
  const JsonObject& root() const { return root_; }
  /// Replaces `root()`.
  void setRoot(JsonObject root) { root_ = std::move(root); }
  /// The whole entity: `root`, with "properties" set to the properties' JSON
  /// when there are any.
  JsonObject inJSON();
  /// The JSON text of `root`.
  std::string description() const;

 private:
  std::optional<double> confidence_;
  std::optional<int64_t> statementId_;
  std::optional<std::string> type_, value_, kind_, lifecycle_;
  bool isPublic_ = false;
  std::vector<std::shared_ptr<Property>> properties_;
  JsonObject root_;
};

}  // namespace quorvix
