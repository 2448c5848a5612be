#pragma once
/// @file
/// A property of an entity, itself a tree of properties.

#include <memory>
#include <optional>
#include <string>

#include "quorvix/core/Json.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// A property of an entity the host sends back to the bot. `root` is its JSON
/// form: {"kind", "type", "value", "name", "properties": [...]}, keys present
/// only when set.
///
/// Only `value` is read back by code: `setKind`, `setType` and `setName` write
/// the JSON only, so `kind()`, `type()` and `name()` stay empty while `root`
/// holds the values.
class Property : public QXObject {
 public:
  Property() = default;
  /// Calls `setKind`, `setType`, `setValue`, `setName` in that order.
  static std::shared_ptr<Property> initWithKind(std::optional<std::string> kind, std::optional<std::string> type,
                                                std::optional<std::string> value, std::optional<std::string> name);

  /// Always empty (see the class note).
  const std::optional<std::string>& kind() const { return kind_; }
  /// Writes "kind" into the JSON only; nothing is ignored.
  void setKind(const std::optional<std::string>& kind);
  /// Always empty (see the class note).
  const std::optional<std::string>& type() const { return type_; }
  /// Writes "type" into the JSON only; nothing is ignored.
  void setType(const std::optional<std::string>& type);
  /// The property's value.
  const std::optional<std::string>& value() const { return value_; }
  /// Stores the value and writes "value"; nothing leaves an earlier "value" in the JSON.
  void setValue(std::optional<std::string> value);
  /// Always empty (see the class note).
  const std::optional<std::string>& name() const { return name_; }
  /// Writes "name" into the JSON only; nothing is ignored.
  void setName(const std::optional<std::string>& name);

  /// The children's JSON as they were when added (empty before the first `addProperty`).
  JsonArray properties() const;
  /// Adds a snapshot of the child's JSON under "properties" (made on first
  /// use, even for a null child); a null child adds nothing. Later changes to
  /// the child do not reach this property.
  void addProperty(const std::shared_ptr<Property>& property);

  /// Sets `root[key]` to the value; nothing is ignored (a key once set stays).
  void safeInsert(std::string_view key, const std::optional<Json>& value);
  /// The property's JSON.
  const JsonObject& root() const { return root_; }
  /// Replaces `root()`.
  void setRoot(JsonObject root) { root_ = std::move(root); }

 private:
  std::optional<std::string> kind_, type_, value_, name_;
  JsonObject root_;
};

}  // namespace quorvix
