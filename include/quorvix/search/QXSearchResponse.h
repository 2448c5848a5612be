#pragma once
/// @file
/// The reply to one search.

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/channeling/QXChanneling.h"
#include "quorvix/search/SearchAnswer.h"
#include "quorvix/search/SearchContext.h"

namespace quorvix {

/// A search reply: the hits, the context the service applied, the request
/// identifier and languages, and the reply's channels (built on first read).
/// Answers the context questions of its hits from its `context`.
class QXSearchResponse : public QXBaseResponse, public ContextValueHandler {
 public:
  /// A reply read from the service's dictionary; nothing for none.
  static std::shared_ptr<QXSearchResponse> initWithParams(const JsonObject* params) {
    return create<QXSearchResponse>(params);
  }
  /// The same from a reply the caller gives up: it becomes `params` without a copy.
  static std::shared_ptr<QXSearchResponse> initWithParams(JsonObject&& params);
  void inflate(const JsonObject& params) override;

  /// The hits, best first.
  const std::vector<std::shared_ptr<SearchAnswer>>& answerList() const { return answerList_; }
  /// Builds the hits from a list of answer dictionaries.
  void setAnswers(const Json* answers);
  /// The context the hits ask the user to pick, or nothing.
  const std::shared_ptr<SearchContext>& context() const { return context_; }
  /// The service's request id, as sent.
  const std::optional<Json>& requestId() const { return requestId_; }
  /// The knowledge base's language.
  const std::optional<std::string>& kbLanguageCode() const { return kbLanguageCode_; }
  /// The language the service detected in the query.
  const std::optional<std::string>& detectedLanguage() const { return detectedLanguage_; }
  /// The whole reply.
  const JsonObject& params() const { return *params_; }
  /// Replaces `params()`.
  void setParams(JsonObject params) { params_ = std::make_shared<const JsonObject>(std::move(params)); }
  /// The reply's "rechanneling" as channels; absent when the reply had none.
  std::optional<std::vector<std::shared_ptr<QXChanneling>>> channels() const;

  std::shared_ptr<SearchContextValue> contextForId(const Json& identifier) const override;
  std::optional<std::string> multipleContext() const override;

 private:
  void readFields();
  // Builds the hits; they read their channels from what `owner` (the reply
  // when none is given) keeps alive.
  void readAnswers(const JsonArray& answers, std::shared_ptr<const void> owner = nullptr);

  std::vector<std::shared_ptr<SearchAnswer>> answerList_;
  std::shared_ptr<SearchContext> context_;
  std::optional<Json> requestId_;
  std::optional<std::string> kbLanguageCode_;
  std::optional<std::string> detectedLanguage_;
  // Shared with the hits, which read their channels from it on first use.
  std::shared_ptr<const JsonObject> params_ = std::make_shared<const JsonObject>();
  mutable std::mutex channelsMutex_;
  mutable std::optional<std::vector<std::shared_ptr<QXChanneling>>> channels_;
};

}  // namespace quorvix
