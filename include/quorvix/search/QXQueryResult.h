#pragma once
/// @file
/// An article result: the common base of search hits and FAQ answers.

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quorvix/channeling/QXChanneling.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// An article body split from the extra data it carries.
class QXQueryResultBody : public QXObject {
 public:
  /// Splits `body` (absent gives an absent article body).
  static std::shared_ptr<QXQueryResultBody> initWithBody(const std::optional<std::string>& body);

  /// The body without the extra-data mark-up.
  const std::optional<std::string>& articleBody() const { return articleBody_; }
  /// Replaces `articleBody()`.
  void setArticleBody(std::optional<std::string> body) { articleBody_ = std::move(body); }
  /// The extra data the body carried, if any (normally a dictionary).
  const std::optional<Json>& extraData() const { return extraData_; }
  /// Replaces `extraData()`.
  void setExtraData(std::optional<Json> data) { extraData_ = std::move(data); }

 private:
  std::optional<std::string> articleBody_;
  std::optional<Json> extraData_;
};

/// One article result. The host writes `likeState` and `dislikeText`; the
/// engine reads them when it sends feedback or asks for channels.
class QXQueryResult : public QXBaseResponse {
 public:
  /// A result read from the service's dictionary; nothing for none.
  static std::shared_ptr<QXQueryResult> initWithParams(const JsonObject* params) { return create<QXQueryResult>(params); }
  void inflate(const JsonObject& params) override;

  /// The article's id.
  const std::optional<std::string>& resultId() const { return resultId_; }
  /// Replaces `resultId()`.
  void setResultId(std::optional<std::string> id) { resultId_ = std::move(id); }
  /// The article's title.
  const std::optional<std::string>& title() const { return title_; }
  /// Replaces `title()`.
  void setTitle(std::optional<std::string> title) { title_ = std::move(title); }
  /// The body, split into its text and its extra data.
  const std::shared_ptr<QXQueryResultBody>& body() const { return body_; }
  /// Replaces `body()`.
  void setBody(std::shared_ptr<QXQueryResultBody> body) { body_ = std::move(body); }
  /// Replaces `body` with the split of `text`.
  void updteBody(const std::optional<std::string>& text) { body_ = QXQueryResultBody::initWithBody(text); }
  /// The like count, as sent.
  const std::optional<std::string>& likes() const { return likes_; }
  /// The keyword set that matched.
  const std::optional<std::string>& keywordsetId() const { return keywordsetId_; }
  /// The service's hash of title and body ("titleAndBodyHash").
  const std::optional<std::string>& hash() const { return hash_; }
  /// The article's escalation channels ("rechanneling"); empty when it has
  /// none. Built on the first read.
  const std::vector<std::shared_ptr<QXChanneling>>& channeling() const;
  /// Replaces `channeling()`.
  void setChanneling(std::vector<std::shared_ptr<QXChanneling>> channels);
  /// Replaces `channeling` with the channels of a list of descriptions.
  void setChannels(const Json* list);
  /// Whether the hit only asks the user to pick a context.
  bool isContextSelectionOnly() const { return isContextSelectionOnly_; }
  /// 0 none, 1 liked, 2 disliked: written by the host.
  int32_t likeState() const { return likeState_; }
  /// Replaces `likeState()`.
  void setLikeState(int32_t state) { likeState_ = state; }
  /// The user's reason for a dislike: written by the host.
  const std::optional<std::string>& dislikeText() const { return dislikeText_; }
  /// Replaces `dislikeText()`.
  void setDislikeText(std::optional<std::string> text) { dislikeText_ = std::move(text); }

 protected:
  /// Reads the fields of a result, its body from `bodyKey`. With an `owner`
  /// that keeps `params` alive, the channel descriptions are read from there
  /// on first use instead of being copied.
  void inflateFields(const JsonObject& params, std::string_view bodyKey,
                     const std::shared_ptr<const void>& owner = nullptr);

 private:
  std::optional<std::string> resultId_;
  std::optional<std::string> title_;
  std::shared_ptr<QXQueryResultBody> body_;
  std::optional<std::string> likes_;
  std::optional<std::string> keywordsetId_;
  std::optional<std::string> hash_;
  mutable std::mutex channelingMutex_;
  // The descriptions as sent, until the channels are first read.
  mutable std::shared_ptr<const Json> rechanneling_;
  mutable std::vector<std::shared_ptr<QXChanneling>> channeling_;
  bool isContextSelectionOnly_ = false;
  int32_t likeState_ = 0;
  std::optional<std::string> dislikeText_;
};

}  // namespace quorvix
