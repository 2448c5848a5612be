#pragma once
/// @file
/// The answer of "hello.js" and "keepAlive.js".

#include <memory>
#include <optional>
#include <string>

#include "quorvix/engine/QXBaseResponse.h"

namespace quorvix {

/// A session answer: the session identifier, the keep-alive period and the status.
class QXSessionResponse : public QXBaseResponse {
 public:
  /// A session reply read from the service's dictionary; nothing for none.
  static std::shared_ptr<QXSessionResponse> initWithParams(const JsonObject* params) {
    return create<QXSessionResponse>(params);
  }
  void inflate(const JsonObject& params) override;

  /// "sessionId", when it is a string.
  const std::optional<std::string>& sessionId() const { return sessionId_; }
  /// Half the announced "timeout" in seconds: the keep-alive period.
  std::optional<double> timeout() const { return timeout_; }
  /// Replaces `timeout()`.
  void setTimeout(std::optional<double> timeout) { timeout_ = timeout; }
  /// "status" as it stands.
  const std::optional<Json>& status() const { return status_; }

 private:
  std::optional<std::string> sessionId_;
  std::optional<double> timeout_;
  std::optional<Json> status_;
};

}  // namespace quorvix
