#include "quorvix/engine/QXSessionResponse.h"

#include "engine/Helpers.h"

namespace quorvix {

void QXSessionResponse::inflate(const JsonObject& params) {
  if (const auto* id = params.if_contains("sessionId"); id != nullptr && (id->is_string() || id->is_number())) {
    sessionId_ = describe(*id);
  }
  // The service announces the session's time-out; the keep-alive runs at half of it.
  const auto* timeout = params.if_contains("timeout");
  timeout_ = (timeout != nullptr ? doubleValue(*timeout) : 0.0) * 0.5;
  if (const auto* status = params.if_contains("status")) status_ = *status;
}

}  // namespace quorvix
