#pragma once
/// @file
/// One search hit.

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quorvix/search/QXQueryResult.h"
#include "quorvix/search/SearchContext.h"

namespace quorvix {

/// A search hit: an article result with its summary as body, its identifier
/// from "id", and the context values it applies under.
class SearchAnswer : public QXQueryResult {
 public:
  /// A hit read from the service's dictionary; nothing for none.
  static std::shared_ptr<SearchAnswer> initWithParams(const JsonObject* params) { return create<SearchAnswer>(params); }
  void inflate(const JsonObject& params) override;

  /// Identifiers of the context values this hit applies under, as sent.
  const std::optional<Json>& contextSelection() const { return contextSelection_; }
  /// The names of the context values in `contextSelection`, joined by ","
  /// (an unknown identifier, or a hit without handler, reads "(null)").
  /// Computed on first read.
  std::string contextValue() const;
  /// Resolves identifiers: the search reply's context, for hits that are
  /// context-selection-only (an empty context when the reply had none).
  std::shared_ptr<ContextValueHandler> contextValueHandler() const { return contextValueHandler_; }
  /// Replaces `contextValueHandler()`.
  void setContextValueHandler(std::shared_ptr<ContextValueHandler> handler) { contextValueHandler_ = std::move(handler); }
  /// Never filled by the engine.
  std::shared_ptr<SearchContextValue> searchContext() const { return nullptr; }
  /// The host's own index into the context choices.
  int32_t currentContextIndex() const { return currentContextIndex_; }
  /// Replaces `currentContextIndex()`.
  void setCurrentContextIndex(int32_t index) { currentContextIndex_ = index; }

 private:
  friend class QXSearchResponse;
  // A hit read from a reply that `owner` keeps alive.
  static std::shared_ptr<SearchAnswer> initWithParams(const JsonObject& params, const std::shared_ptr<const void>& owner);
  void inflate(const JsonObject& params, const std::shared_ptr<const void>& owner);

  std::optional<Json> contextSelection_;
  std::shared_ptr<ContextValueHandler> contextValueHandler_;
  int32_t currentContextIndex_ = 0;
  mutable std::mutex contextValueMutex_;
  mutable std::string contextValue_;
};

}  // namespace quorvix
