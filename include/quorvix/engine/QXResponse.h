#pragma once
/// @file
/// The result of one request.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "quorvix/core/Json.h"
#include "quorvix/core/QXError.h"
#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

class QXConnectionHandler;

/// The typed result of a request: nothing, a JSON value kept as sent, or a model.
using QXTypedResult = std::variant<std::monostate, Json, std::shared_ptr<QXObject>>;

/// The result of one request: where the answer came from, the HTTP status,
/// the raw body, the typed result chosen by the endpoint, and the error.
class QXResponse {
 public:
  QXResponse() = default;
  /// A response for an answer from `url` (absent when no answer arrived).
  explicit QXResponse(std::optional<std::string> url) : url_(std::move(url)) {}

  /// The URL of the HTTP answer (absent when there was none).
  const std::optional<std::string>& url() const { return url_; }
  /// Always absent: the raw value is not kept.
  std::optional<JsonObject> params() const { return std::nullopt; }
  /// The raw body, exactly as received.
  const std::string& cacheParams() const { return cacheParams_; }
  /// Replaces `cacheParams()`.
  void setCacheParams(std::string body) { cacheParams_ = std::move(body); }
  /// The HTTP status code (0 when there was no HTTP answer).
  int64_t status() const { return status_; }
  /// Replaces `status()`.
  void setStatus(int64_t status) { status_ = status; }
  /// The typed result chosen by the endpoint (see `setParams`).
  const QXTypedResult& type() const { return type_; }
  /// The typed result as model `T`, or nothing when it is not one.
  template <class T>
  std::shared_ptr<T> typeAs() const {
    if (auto* object = std::get_if<std::shared_ptr<QXObject>>(&type_)) return std::dynamic_pointer_cast<T>(*object);
    return nullptr;
  }
  /// The typed result when it is a JSON value kept as sent, else nullptr.
  const Json* typeJson() const { return std::get_if<Json>(&type_); }
  /// The request's error, if any.
  const std::optional<QXError>& error() const { return error_; }
  /// Replaces `error()`.
  void setError(std::optional<QXError> error) { error_ = std::move(error); }
  /// Stored only.
  std::weak_ptr<QXConnectionHandler> connectionHandler() const { return connectionHandler_; }
  /// Replaces `connectionHandler()`.
  void setConnectionHandler(std::weak_ptr<QXConnectionHandler> handler) { connectionHandler_ = std::move(handler); }

  /// Builds `type` from a dictionary or an array, chosen by the last path
  /// component of `url` ("hello.js", "q.js", "list.json", ...). Takes the value
  /// by value so a caller that is done with it can move it in.
  void setParams(Json value);

 private:
  std::optional<std::string> url_;
  std::string cacheParams_;
  int64_t status_ = 0;
  QXTypedResult type_;
  std::optional<QXError> error_;
  std::weak_ptr<QXConnectionHandler> connectionHandler_;
};

}  // namespace quorvix
