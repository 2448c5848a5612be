#pragma once
/// @file
/// A label: a named, optionally iconed entry that opens its own FAQ group.

#include <memory>
#include <optional>
#include <string>

#include "quorvix/faq/QXFAQGroup.h"

namespace quorvix {

/// A label of the knowledge base. Also a FAQ group (title, answers) when it
/// is read from a group reply.
class QXLabel : public QXFAQGroup {
 public:
  /// A label read from `params`, or nothing when it is absent.
  static std::shared_ptr<QXLabel> initWithParams(const JsonObject* params) { return create<QXLabel>(params); }
  /// Reads the group fields, then "context", "labelName", "icon" and "id".
  void inflate(const JsonObject& params) override;

  /// A new label with this one's `labelId`, `labelName`, `context`, `iconUrl`
  /// and `iconData`; the group fields (title, answers) are not copied.
  std::shared_ptr<QXLabel> copy() const;

  /// "id" (text; a number is written in decimal).
  std::optional<std::string> labelId() const;
  /// Replaces `labelId()`.
  void setLabelId(std::optional<std::string> labelId);
  /// "context".
  std::optional<std::string> context() const;
  /// "labelName".
  std::optional<std::string> labelName() const;
  /// "icon" as sent when it is text (an absolute URL or a relative path); nothing otherwise.
  std::optional<std::string> iconUrl() const;
  /// Never filled by the engine: for the host to keep a downloaded icon.
  std::optional<std::string> iconData() const;
  /// Replaces `iconData()`.
  void setIconData(std::optional<std::string> bytes);

 private:
  std::optional<std::string> labelId_;
  std::optional<std::string> context_;
  std::optional<std::string> labelName_;
  std::optional<std::string> iconUrl_;
  std::optional<std::string> iconData_;
};

}  // namespace quorvix
