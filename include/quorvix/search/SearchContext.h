#pragma once
/// @file
/// Contexts: the named dimensions (a product line, a region) that narrow search.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// One value of a context.
class SearchContextValue : public QXBaseResponse {
 public:
  /// A value read from the service's dictionary; nothing for none.
  static std::shared_ptr<SearchContextValue> initWithParams(const JsonObject* params) {
    return create<SearchContextValue>(params);
  }
  void inflate(const JsonObject& params) override;

  /// The value's name.
  const std::optional<std::string>& name() const { return name_; }
  /// The value's flags, as sent.
  int64_t flags() const { return flags_; }
  /// As sent (a number or a text).
  const std::optional<Json>& id() const { return id_; }
  /// The text that asks the user to pick this value.
  const std::optional<std::string>& selectionText() const { return selectionText_; }

 private:
  std::optional<std::string> name_;
  int64_t flags_ = 0;
  std::optional<Json> id_;
  std::optional<std::string> selectionText_;
};

/// Resolves context value identifiers to their values.
class ContextValueHandler {
 public:
  virtual ~ContextValueHandler() = default;
  /// The value whose "id" reads as the same integer as `identifier`, or nothing.
  virtual std::shared_ptr<SearchContextValue> contextForId(const Json& identifier) const = 0;
  /// The empty text when there are two or more values; nothing otherwise.
  virtual std::optional<std::string> multipleContext() const = 0;
};

/// The context part of a search reply.
class SearchContext : public QXBaseResponse, public ContextValueHandler {
 public:
  /// A context read from the service's dictionary; nothing for none.
  static std::shared_ptr<SearchContext> initWithParams(const JsonObject* params) { return create<SearchContext>(params); }
  void inflate(const JsonObject& params) override;

  /// The context's version, as sent.
  int64_t v() const { return v_; }
  /// The order of the values, as sent.
  const std::optional<Json>& order() const { return order_; }
  /// The values, in order.
  const std::vector<std::shared_ptr<SearchContextValue>>& values() const { return values_; }
  std::optional<std::string> multipleContext() const override { return multipleContext_; }
  /// The first value whose "id" has the identifier's integer reading (the
  /// text "7" finds the number 7; a value without "id" reads as 0).
  std::shared_ptr<SearchContextValue> contextForId(const Json& identifier) const override;

 private:
  int64_t v_ = 0;
  std::optional<Json> order_;
  std::vector<std::shared_ptr<SearchContextValue>> values_;
  std::optional<std::string> multipleContext_;
};

}  // namespace quorvix
