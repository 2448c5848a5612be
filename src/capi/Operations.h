#pragma once
// The shape every asynchronous operation of the C API shares.

#include <memory>
#include <optional>

#include "capi/Handles.h"

namespace quorvix::capi {

/// Runs an operation for the host: makes its callback, refuses a missing
/// engine, and keeps exceptions on this side (the callback then ends as
/// abandoned once nothing holds it).
template <typename Body>
void run(const char* where, qx_engine* engine, qx_callback callback, void* context, Body&& body) noexcept {
  std::shared_ptr<Callback> shared;
  guarded(where, [&] {
    shared = callbackFor(callback, context);
    if (!shared) return;
    if (engine == nullptr) {
      shared->fail(makeError(QX_ERROR_INVALID_ARGUMENT, std::string(where) + ": no engine"));
      return;
    }
    body(*engine, shared);
  });
  // Dropped outside the guard: the destructor only posts and never throws.
  shared.reset();
}

/// Whether a required text is there; fails the callback when it is not.
inline bool require(const char* text, const char* what, Callback& callback) {
  if (text != nullptr) return true;
  callback.fail(makeError(QX_ERROR_INVALID_ARGUMENT, std::string(what) + " is missing"));
  return false;
}

/// Fails the callback with the engine's error, or, without one, when there is
/// no value (the reply was not what the operation reads); true when it failed.
template <typename Value>
bool failedWithout(Callback& callback, const Value& value, const std::optional<QXError>& error) {
  if (error) {
    callback.fail(*error);
  } else if (!value) {
    callback.fail(errors::notValidResponse());
  } else {
    return false;
  }
  return true;
}

}  // namespace quorvix::capi
