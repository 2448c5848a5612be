#pragma once
/// @file
/// The engine facade: the one object a host uses.

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/conversation/QXChatEngineDelegate.h"
#include "quorvix/engine/AccountParams.h"
#include "quorvix/engine/Json.h"
#include "quorvix/engine/QXConnection.h"
#include "quorvix/engine/QXConnectionHandler.h"
#include "quorvix/engine/QXErrorHandler.h"
#include "quorvix/engine/QXError.h"
#include "quorvix/engine/URLComponents.h"

namespace quorvix {

/// The engine. A host uses the process-wide `shared()` instance; tests and
/// hosts that need several engines may make their own with `create()`.
///
/// Every member is safe to use from any thread. Completions run on the thread
/// the transport delivers on unless an operation says otherwise; no lock is
/// held while a completion, a delegate or the transport is called.
class Quorvix : public std::enable_shared_from_this<Quorvix> {
 public:
  /// Use `shared()` or `create()`.
  Quorvix();
  ~Quorvix();
  Quorvix(const Quorvix&) = delete;
  Quorvix& operator=(const Quorvix&) = delete;

  /// The process-wide engine, created once, thread-safely; never released.
  static std::shared_ptr<Quorvix> shared();
  /// A new, independent engine.
  static std::shared_ptr<Quorvix> create();

  // --- lifecycle -----------------------------------------------------------

  /// Stores the account, drops the configuration and any pending configuration
  /// callback, and marks the engine not prepared. Does not touch the session.
  void prepareWithAccountParams(std::shared_ptr<AccountParams> params);
  /// Cancels the keep-alive, empties the suggestion cache and drops the
  /// session; the next session-bound request opens a new one.
  void stop();

  // --- session -------------------------------------------------------------

  /// Opens a session ("hello.js") and runs `continuation` once it is open. A
  /// call while a session start is in flight joins that start. When the start
  /// fails the error is kept in `sessionError()` and the continuation is dropped.
  void startSession(std::function<void()> continuation);
  /// Sends a request inside the session: opens one when there is none, appends
  /// "sid" last, and on an error code 400 probes the session and, when the
  /// probe fails, re-opens it and re-sends the request once.
  void executeRequest(URLComponents components, QXResponseCompletion completion);
  /// Sends one keep-alive call and schedules the next.
  void startKeepAlive();

  // --- members -------------------------------------------------------------

  std::shared_ptr<AccountParams> accountParams() const;
  void setAccountParams(std::shared_ptr<AccountParams> params);
  bool isPrepared() const;
  void setIsPrepared(bool prepared);
  /// An error handler of this engine, made on first read. Nothing reports to
  /// it: the connection layer reports to `QXErrorHandler::shared()`.
  std::shared_ptr<QXErrorHandler> errorHandler();
  /// The installed transport, or a new `QXDefaultConnectionHandler` on every
  /// read when none is installed.
  std::shared_ptr<QXConnectionHandler> connectionHandler() const;
  void setConnectionHandler(std::shared_ptr<QXConnectionHandler> handler);
  /// Stored only.
  std::weak_ptr<QXChatEngineDelegate> delegate() const;
  void setDelegate(std::weak_ptr<QXChatEngineDelegate> delegate);
  /// Receives the conversation's questions for the host.
  std::weak_ptr<QXChatEngineDelegate> chatDelegate() const;
  void setChatDelegate(std::weak_ptr<QXChatEngineDelegate> delegate);

  std::optional<std::string> sessionId() const;
  void setSessionId(std::optional<std::string> sessionId);
  /// The keep-alive period in seconds.
  std::optional<double> delay() const;
  void setDelay(std::optional<double> delay);
  /// The last session-start error; never cleared by a later success.
  std::optional<QXError> sessionError() const;
  void setSessionError(std::optional<QXError> error);
  /// Made on first read; no operation fills it.
  JsonArray waitingAPICalls();
  void setWaitingAPICalls(JsonArray calls);
  /// Stored only.
  JsonObject requestParams() const;
  void setRequestParams(JsonObject params);
  /// Stored only.
  std::function<void()> faqCompletion() const;
  void setFaqCompletion(std::function<void()> completion);
  /// Stored only.
  std::optional<std::string> knowledgeBase() const;
  void setKnowledgeBase(std::optional<std::string> knowledgeBase);
  /// The current conversation.
  std::optional<std::string> conversationId() const;
  void setConversationId(std::optional<std::string> conversationId);

 private:
  void sendInSession(URLComponents components, QXResponseCompletion completion);
  void probeAndResend(URLComponents components, QXResponseCompletion completion, QXResponse rejected);
  void finishSessionStart(QXResponse response);
  void keepAlive(uint64_t chain);
  void scheduleKeepAlive(uint64_t chain, double seconds);

  mutable std::mutex mutex_;
  std::shared_ptr<AccountParams> accountParams_;
  bool isPrepared_ = false;
  std::shared_ptr<QXErrorHandler> errorHandler_;
  std::shared_ptr<QXConnectionHandler> connectionHandler_;
  std::weak_ptr<QXChatEngineDelegate> delegate_;
  std::weak_ptr<QXChatEngineDelegate> chatDelegate_;

  std::optional<std::string> sessionId_;
  std::optional<double> delay_;
  std::optional<QXError> sessionError_;
  std::optional<JsonArray> waitingAPICalls_;
  JsonObject requestParams_;
  std::function<void()> faqCompletion_;
  std::optional<std::string> knowledgeBase_;
  std::optional<std::string> conversationId_;

  // Continuations waiting for the "hello.js" in flight (none in flight when empty
  // and `sessionStarting_` is false).
  bool sessionStarting_ = false;
  std::vector<std::function<void()>> sessionWaiters_;
  // Identifies the live keep-alive chain; a chain whose number is stale stops.
  uint64_t keepAliveChain_ = 0;
};

}  // namespace quorvix
