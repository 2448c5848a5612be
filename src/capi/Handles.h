#pragma once
// What the C API's opaque handles hold, and how its callbacks are delivered.

#include <atomic>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quorvix/c/quorvix.h"
#include "quorvix/core/Json.h"
#include "quorvix/core/QXError.h"
#include "quorvix/engine/AccountParams.h"
#include "quorvix/engine/Quorvix.h"

namespace quorvix {
class QXQueryResult;
class SearchAnswer;
}  // namespace quorvix

namespace quorvix::capi {

class ChatBridge;

/// What one engine handle remembers for the operations that name earlier
/// results (reporting a channel, the conversation's id).
struct EngineState {
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<SearchAnswer>> latestHits;
  std::map<std::string, std::shared_ptr<QXQueryResult>> articles;
  std::optional<std::string> conversationId;
  std::shared_ptr<ChatBridge> chat;
};

}  // namespace quorvix::capi

struct qx_engine {
  std::shared_ptr<quorvix::Quorvix> engine;
  std::shared_ptr<quorvix::capi::EngineState> state = std::make_shared<quorvix::capi::EngineState>();
};

struct qx_account {
  std::shared_ptr<quorvix::AccountParams> params = std::make_shared<quorvix::AccountParams>();
};

namespace quorvix::capi {

/// An error of the C API's own domain.
QXError makeError(long code, std::string description);
/// A heap error for the synchronous functions; the host frees it with qx_error_free.
qx_error* newError(const QXError& error);

/// The host's callback, called exactly once. `succeed` or `fail` deliver the
/// first outcome through the executor and ignore later ones; when the last
/// copy of the completion that holds it goes without either, the host hears
/// that the request was abandoned (with `abandonReason()` when one is set).
class Callback {
 public:
  Callback(qx_callback callback, void* context) : callback_(callback), context_(context) {}
  ~Callback();
  Callback(const Callback&) = delete;
  Callback& operator=(const Callback&) = delete;

  void succeed(const JsonObject& document);
  void fail(const QXError& error);
  /// Extra user information for the abandoned error, asked for when it is sent.
  void setAbandonReason(std::function<std::optional<QXError>()> reason) { abandonReason_ = std::move(reason); }

 private:
  bool claim() { return !done_.exchange(true); }
  void post(std::optional<std::string> json, std::optional<QXError> error);

  qx_callback callback_;
  void* context_;
  std::atomic<bool> done_{false};
  std::function<std::optional<QXError>()> abandonReason_;
};

/// A shared callback, or nothing (after answering `invalid argument`) when the
/// host passed no callback or a required argument is missing.
std::shared_ptr<Callback> callbackFor(qx_callback callback, void* context);

/// Posts a task to the main executor; exceptions it throws are logged.
void deliver(std::function<void()> task);

/// Parses JSON text; nothing when it does not parse.
std::optional<Json> parse(const char* text);

/// The text, or nothing for NULL.
inline std::optional<std::string> optionalText(const char* text) {
  return text ? std::optional<std::string>(text) : std::nullopt;
}

/// Logs an exception that reached the C boundary (`error` null: not a std::exception).
void logException(const char* where, const std::exception* error) noexcept;

/// Runs `body`; a C++ exception never crosses the boundary: it is logged.
template <typename Body>
void guarded(const char* where, Body&& body) noexcept {
  try {
    body();
  } catch (const std::exception& error) {
    logException(where, &error);
  } catch (...) {
    logException(where, nullptr);
  }
}

}  // namespace quorvix::capi
