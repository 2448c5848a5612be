#pragma once
/// @file
/// A titled group of frequently asked questions.

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/core/Json.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

class QXConversationalResponse;
class QXQueryResult;

/// A FAQ group: a title, the service's "behavior" value and the group's
/// answers (`FAQAnswer`s). It can present itself as a bot reply offering one
/// option per answer (`parse`). Safe to use from several threads.
class QXFAQGroup : public QXBaseResponse {
 public:
  QXFAQGroup() = default;
  QXFAQGroup(const QXFAQGroup&) = delete;
  QXFAQGroup& operator=(const QXFAQGroup&) = delete;

  /// A group read from `params`, or nothing when it is absent.
  static std::shared_ptr<QXFAQGroup> initWithParams(const JsonObject* params) { return create<QXFAQGroup>(params); }
  /// Reads "data" (through `setData`), then "title", then "behavior".
  void inflate(const JsonObject& params) override;

  /// "title".
  std::optional<std::string> title() const;
  /// "behavior", as the service sent it.
  std::optional<Json> behavior() const;

  /// The answers of the group, in the service's order.
  std::vector<std::shared_ptr<QXQueryResult>> data() const;
  /// Takes the raw "data" value the service sends: an array whose first
  /// element's own "data" is the array of answer dictionaries (further
  /// elements are ignored). Anything of another shape gives no answers;
  /// elements that are not dictionaries are skipped.
  void setData(const Json* raw);
  /// Keeps answers already built, as they are.
  void setData(std::vector<std::shared_ptr<QXQueryResult>> answers);

  /// The group as a bot reply: the title as its text and one persistent
  /// option {"text": answer title, "kind": "inlineChoice", "type": "url"} per
  /// answer, in order. Built on first read, and again after `setParse(nullptr)`.
  std::shared_ptr<QXConversationalResponse> parse();
  /// Replaces the reply `parse()` returns; nullptr has it built again on the next read.
  void setParse(std::shared_ptr<QXConversationalResponse> response);

 protected:
  /// Guards the group's state.
  mutable std::mutex mutex_;

 private:
  std::optional<std::string> title_;
  std::optional<Json> behavior_;
  std::vector<std::shared_ptr<QXQueryResult>> data_;
  std::shared_ptr<QXConversationalResponse> parse_;
};

}  // namespace quorvix
