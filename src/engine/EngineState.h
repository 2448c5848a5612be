#pragma once
// What one engine holds: the account, the session, the configuration, the
// caches, the delegates and the transport. Only the files that implement the
// facade's members include this; a change here rebuilds them and nothing that
// merely includes quorvix/engine/Quorvix.h.

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/core/Json.h"
#include "quorvix/core/QXError.h"
#include "quorvix/engine/Quorvix.h"

namespace quorvix {

class AccountParams;
class QXChatEngineDelegate;
class QXConfiguration;
class QXConnectionHandler;
class QXErrorHandler;
class QXLikeStateHandler;
class QXTokenizer;

// Guarded by `mutex`: no member is read or written without it, and it is never
// held while a completion, a delegate or the transport runs.
struct Quorvix::State {
  mutable std::mutex mutex;
  std::shared_ptr<AccountParams> accountParams;
  bool isPrepared = false;
  std::shared_ptr<QXErrorHandler> errorHandler;
  std::shared_ptr<QXConnectionHandler> connectionHandler;
  std::weak_ptr<QXChatEngineDelegate> delegate;
  std::weak_ptr<QXChatEngineDelegate> chatDelegate;

  std::optional<std::string> sessionId;
  std::optional<double> delay;
  std::optional<QXError> sessionError;
  std::optional<JsonArray> waitingAPICalls;
  JsonObject requestParams;
  std::function<void()> faqCompletion;
  std::optional<std::string> knowledgeBase;
  std::optional<std::string> conversationId;

  // Configuration and FAQ.
  std::shared_ptr<QXConfiguration> configuration;
  QXConfigurationCompletion fetchConfiguration;
  std::shared_ptr<QXLikeStateHandler> likeState;
  // Callers of `whenConfigured` waiting for a fetch of the current preparation,
  // and whether one is under way.
  std::vector<QXConfigurationCompletion> configurationWaiters;
  bool configurationFetching = false;
  // Counts preparations: a configuration fetched for an earlier account is dropped.
  uint64_t preparation = 0;
  std::shared_ptr<QXTokenizer> tokenizer;  // made on first read

  // Search and suggestion caches: absent until first read through their accessors.
  std::optional<SearchCache> cachedSearches;
  std::optional<SuggestionCache> cachedSuggestions;

  // Continuations waiting for the "hello.js" in flight (none in flight when
  // `sessionStarting` is false).
  bool sessionStarting = false;
  std::vector<SessionWaiter> sessionWaiters;
  // Numbers session starts; `stop` moves it on, so the answer of a start it
  // abandoned is recognised and ignored.
  uint64_t sessionStart = 0;
  // Identifies the live keep-alive chain; a chain whose number is stale stops.
  uint64_t keepAliveChain = 0;
};

struct Quorvix::StateLock : std::unique_lock<std::mutex> {
  using std::unique_lock<std::mutex>::unique_lock;
};

}  // namespace quorvix
