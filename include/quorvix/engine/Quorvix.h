#pragma once
/// @file
/// The engine facade: the one object a host uses.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/conversation/ConversationCompletions.h"
#include "quorvix/core/Json.h"
#include "quorvix/core/QXError.h"
#include "quorvix/core/URLComponents.h"
#include "quorvix/engine/AccountParams.h"
#include "quorvix/engine/QXConnection.h"
#include "quorvix/faq/FAQCompletions.h"
#include "quorvix/search/SearchCompletions.h"

namespace quorvix {

class QXChatEngineDelegate;
class QXConnectionHandler;
class QXErrorHandler;
class QXQueryResult;
class QXTokenizer;

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
  /// session; the next session-bound request opens a new one. A session start
  /// in flight is abandoned: its answer sets no session, schedules no
  /// keep-alive and records no error, and the requests that waited for it are
  /// dropped (they never complete). No keep-alive is scheduled after `stop`
  /// returns until a new session opens.
  void stop();

  // --- session -------------------------------------------------------------

  /// Opens a session ("hello.js") and runs `continuation` once it is open. A
  /// call while a session start is in flight joins that start: one engine has
  /// at most one "hello.js" of its own in flight. When the start fails the
  /// error is kept in `sessionError()` and the continuation is dropped; an
  /// account or server that is not a host name fails it before anything is sent.
  void startSession(std::function<void()> continuation);
  /// Sends a request inside the session: opens one when there is none (or
  /// joins the start in flight), appends "sid" last, and on an error code 400
  /// probes the session and, when the probe fails, re-sends the request once in
  /// a new session (requests rejected together share that new session).
  void executeRequest(URLComponents components, QXResponseCompletion completion);
  /// Sends one keep-alive call and schedules the next.
  void startKeepAlive();

  // --- members -------------------------------------------------------------

  /// The account the engine is prepared with.
  std::shared_ptr<AccountParams> accountParams() const;
  /// Replaces `accountParams()`.
  void setAccountParams(std::shared_ptr<AccountParams> params);
  /// Whether the configuration (and what it names) has arrived.
  bool isPrepared() const;
  /// Replaces `isPrepared()`.
  void setIsPrepared(bool prepared);
  /// An error handler of this engine, made on first read. Nothing reports to
  /// it: the connection layer reports to `QXErrorHandler::shared()`.
  std::shared_ptr<QXErrorHandler> errorHandler();
  /// The installed transport, or a new `QXDefaultConnectionHandler` on every
  /// read when none is installed.
  std::shared_ptr<QXConnectionHandler> connectionHandler() const;
  /// Replaces `connectionHandler()`.
  void setConnectionHandler(std::shared_ptr<QXConnectionHandler> handler);
  /// Stored only.
  std::weak_ptr<QXChatEngineDelegate> delegate() const;
  /// Replaces `delegate()`.
  void setDelegate(std::weak_ptr<QXChatEngineDelegate> delegate);
  /// Receives the conversation's questions for the host.
  std::weak_ptr<QXChatEngineDelegate> chatDelegate() const;
  /// Replaces `chatDelegate()`.
  void setChatDelegate(std::weak_ptr<QXChatEngineDelegate> delegate);

  /// The open session's id, or nothing.
  std::optional<std::string> sessionId() const;
  /// Replaces `sessionId()`.
  void setSessionId(std::optional<std::string> sessionId);
  /// The keep-alive period in seconds.
  std::optional<double> delay() const;
  /// Replaces `delay()`.
  void setDelay(std::optional<double> delay);
  /// The last session-start error; never cleared by a later success.
  std::optional<QXError> sessionError() const;
  /// Replaces `sessionError()`.
  void setSessionError(std::optional<QXError> error);
  /// Made on first read; no operation fills it.
  JsonArray waitingAPICalls();
  /// Replaces `waitingAPICalls()`.
  void setWaitingAPICalls(JsonArray calls);
  /// Stored only.
  JsonObject requestParams() const;
  /// Replaces `requestParams()`.
  void setRequestParams(JsonObject params);
  /// Stored only.
  std::function<void()> faqCompletion() const;
  /// Replaces `faqCompletion()`.
  void setFaqCompletion(std::function<void()> completion);
  /// Stored only.
  std::optional<std::string> knowledgeBase() const;
  /// Replaces `knowledgeBase()`.
  void setKnowledgeBase(std::optional<std::string> knowledgeBase);
  /// The current conversation.
  std::optional<std::string> conversationId() const;
  /// Replaces `conversationId()`.
  void setConversationId(std::optional<std::string> conversationId);

  // --- search, contexts, channels (src/search/QuorvixSearch.cpp, src/channeling/QuorvixChanneling.cpp)

  /// Searches the knowledge base ("q.js" with "text" inside the session). A
  /// text already in the search cache is answered at once from it; the cache
  /// is only used once the host has read `cachedSearches()`. A reply with
  /// neither result nor error never completes.
  void searchText(std::optional<std::string> text, SearchCompletion completion);
  /// The search cache; made (and from then on used by `searchText`) on first read.
  SearchCache cachedSearches();
  /// Replaces `cachedSearches()`.
  void setCachedSearches(SearchCache cache);
  /// Suggestions for a typed text ("autoComplete" with "text" and "stemming"
  /// inside the session). Every reply with a result is cached by its text; a
  /// cached text is answered at once. `stop` empties the cache.
  void suggestionsForText(std::optional<std::string> text, SuggestionCompletion completion);
  /// The suggestion cache (made on first read).
  SuggestionCache cachedSuggestions();
  /// Replaces `cachedSuggestions()`.
  void setCachedSuggestions(SuggestionCache cache);
  /// Lists the values of the named contexts ("contextvalues.js" inside the
  /// session); the result is the whole reply.
  void contextValue(std::string contexts, ContextValueCompletion completion);
  /// Adds the first entry of `context` as a dynamic context of the account and
  /// sends the account's whole context ("setParams" inside the session); the
  /// completion (may be empty) hears true for an HTTP 200.
  void changeContext(std::optional<JsonObject> context, ChangeContextCompletion completion);
  /// Fetches the escalation channels of an article for its like state and an
  /// optional context ("/api/channeling/v1/get", no session).
  void channels(std::shared_ptr<QXQueryResult> forResult, std::optional<std::string> context,
                ChannelsCompletion completion);
  /// Tells the service a channel was used: "escalate" inside the session for a
  /// search hit, "report" without a session for any other article. Fire and forget.
  void reportChanneling(std::shared_ptr<QXChanneling> channel, std::shared_ptr<QXQueryResult> article);
  /// Sends a tracked event of the current conversation. Fire and forget.
  void trackEvent(const JsonObject& event);

  // --- configuration and FAQ (src/configuration/QuorvixConfiguration.cpp, src/faq/QuorvixFAQ.cpp)

  /// The widget configuration; an empty one is made (and kept) on first read
  /// when none has arrived.
  std::shared_ptr<QXConfiguration> configuration();
  /// Replaces `configuration()`.
  void setConfiguration(std::shared_ptr<QXConfiguration> configuration);
  /// The stored configuration callback, waiting for the fetch under way.
  QXConfigurationCompletion fetchConfiguration() const;
  /// Asks for the configuration: with one held, calls `callback` at once
  /// (configuration, nothing). Otherwise a callback given while none is stored
  /// is stored for the fetch under way, and nothing is fetched. Otherwise (no
  /// callback, or one already stored: the new one is dropped uncalled) starts a
  /// fetch when account parameters are set.
  void setFetchConfiguration(QXConfigurationCompletion callback);
  /// Calls `completion` exactly once with the configuration of the current
  /// preparation once the engine is prepared (at once when it already is), or
  /// with the error its fetch ended with. Calls made while a fetch is under
  /// way wait for it; a call with none under way (the last one failed) starts
  /// one. A reply that is not a configuration ends the waiting calls with
  /// `errors::notValidResponse()`; an engine without a usable account answers
  /// at once with the address error. Waiting calls stay waiting across a new
  /// preparation and get its configuration. Unlike `setFetchConfiguration`,
  /// no callback is ever dropped or kept beyond its one call.
  void whenConfigured(QXConfigurationCompletion completion);
  /// The address of the widget configuration: the base address plus
  /// "/widget/scripts/cnf.json", then "kb" (when set), "isFloat" = "true" and
  /// "context" (when a context is set) after the base's items.
  std::optional<URLComponents> cnfComponent() const;
  /// Fetches the configuration. The argument is not used: the stored callback
  /// gets the result. On success the configuration is kept, the FAQ groups of
  /// the label, the context list or the context group are read (blocking, on
  /// the transport's thread), the stored callback is called, and the engine is
  /// marked prepared.
  void fetchCNF(QXConfigurationCompletion callback);
  /// Does nothing.
  void preFetchAndCahceFAQs();

  /// Fetches the FAQ list ("account", "context" in base64 when set, "kb" when
  /// set); the completion gets the connection layer's response (its `typeJson()`
  /// is the list of group dictionaries).
  void fetchFAQList(QXResponseCompletion completion);
  /// Blocking: the FAQ list as parsed ("account", "isFloat", "context" for a
  /// non-empty context, "kb"), or nothing after an error (logged). Never call
  /// it on the main thread.
  std::optional<Json> faqList();
  /// Blocking: a one-element array holding the context's FAQ group as parsed,
  /// or nothing after an error (logged) or when nothing parses.
  std::optional<JsonArray> faqGroup();
  /// Blocking: the user's labels as parsed ("kb" = the configuration's `kbId`,
  /// "apiKey"), or nothing after an error (logged).
  std::optional<Json> labels();
  /// Blocking: the FAQ group of the account's label, or nothing.
  std::shared_ptr<QXFAQGroup> label();
  /// Fetches the FAQ group of a label. "labelId" is sent only when the account
  /// parameters name a label (the value comes from `forLabel`). The completion
  /// gets the group's answers, or nothing after an error; a reply that parses to
  /// nothing never completes.
  void faqForLabel(std::shared_ptr<QXLabel> forLabel, QXLabelFAQCompletion completion);
  /// The answer of that identifier: from the answer store when it is there (the
  /// completion then runs at once, on the calling thread, and nothing is sent),
  /// otherwise from the service. `hash` is not used.
  void fetchFAQAnswer(std::string identifier, std::optional<std::string> hash, QXFAQAnswerCompletion completion);
  /// Reports a like or dislike (`action`, the service's code) for a result,
  /// with the result's `dislikeText` as the reason when it has one; inside the
  /// session when one is open. The completion always runs on the main executor;
  /// success means the service answered HTTP 200.
  void like(int32_t action, std::shared_ptr<QXQueryResult> forResult, QXLikeCompletion completion);
  /// The host's memory of votes, made on first read.
  std::shared_ptr<QXLikeStateHandler> likeState();

  // --- conversation (src/conversation/QuorvixConversation.cpp) --------------
  // Every completion runs on the thread the transport delivers on; an
  // exchange whose answer carries neither a result nor an error never
  // completes (the host must allow for that).

  /// Opens a conversation ("kb", "textOnly" = "false", then "apiKey" when the
  /// account has one) and keeps its id in `conversationId`.
  void createConversationWithCompletion(QXCreateConversationCompletion completion);
  /// Fetches the widget configuration (and the FAQ groups or label it names)
  /// and then opens a conversation declaring the entities the host can
  /// supply; clears `conversationId` and marks the engine prepared as soon as
  /// the request is sent. The completion gets the answer as sent (its "id"
  /// names the conversation, which is not kept).
  void createConversationWithEntities(std::vector<std::string> entities, bool textOnly,
                                      QXCreateConversationWithEntitiesCompletion completion);
  /// Sends a statement (its "text" tokens restored) or, with `type` true, a
  /// postback as it is. The held `conversationId` wins over the argument,
  /// which is adopted only while none is held. A reply that asks for missing
  /// entities goes to the chat delegate; the completion then gets the answer
  /// to the entities' resend.
  void conversationStatement(std::string statement, bool type, std::optional<std::string> conversationId,
                             QXConversationCompletion completion);
  /// Asks the bot for an article.
  void conversationArticle(std::string articleId, std::optional<std::string> conversationId,
                           QXConversationCompletion completion);
  /// Answers the bot's question for missing entities (`entities` is the JSON
  /// text of a `QXConversationMissingEntity`) by resending the statement.
  void sendMissingEntities(std::optional<std::string> entities, bool isPostback,
                           std::optional<std::string> conversationId, std::string statement,
                           QXConversationCompletion completion);
  /// Delivers a reply that still lacks entities as it is; otherwise resolves
  /// its personal-information placeholders first.
  void callClientSelector(std::shared_ptr<QXConversationalResponse> response, QXConversationCompletion completion);
  /// Resolves the reply's "{{...}}" placeholders one at a time through the
  /// chat delegate, then calls the completion once. Without a delegate that
  /// handles personal information the completion is never called.
  void extractPrivateInfo(std::shared_ptr<QXConversationalResponse> response, QXConversationCompletion completion);
  /// Fetches the feedback reply of the open conversation; nothing at once
  /// when no conversation is open.
  void sendConversationFeedbackWithCompletion(QXConversationFeedbackCompletion completion);
  /// The engine's one tokenizer: tokens stay valid for the engine's life.
  std::shared_ptr<QXTokenizer> tokenizer();

 private:
  // Runs once a session start ends well, with the new session's id.
  using SessionWaiter = std::function<void(const std::optional<std::string>& sessionId)>;

  // A held lock on the engine's state.
  struct StateLock;
  // Queues `waiter` for the session start in flight, or starts one. Called with
  // `lock` held; may release it.
  void joinSessionStart(StateLock& lock, SessionWaiter waiter);
  void sendInSession(URLComponents components, QXResponseCompletion completion);
  void probeAndResend(URLComponents components, QXResponseCompletion completion, QXResponse rejected);
  void resendInNewSession(URLComponents components, QXResponseCompletion completion);
  void finishSessionStart(uint64_t start, QXResponse response);
  // Ends the `whenConfigured` calls waiting for a fetch of `preparation`
  // (nothing when the engine was prepared again since).
  void endConfigurationWait(uint64_t preparation, const std::shared_ptr<QXConfiguration>& configuration,
                            const std::optional<QXError>& error);
  void keepAlive(uint64_t chain);
  // Called with the state locked.
  void scheduleKeepAlive(uint64_t chain, double seconds);

  // The create request of `createConversationWithEntities`, once the configuration is in.
  void openConversationWithEntities(const std::shared_ptr<AccountParams>& params,
                                    const std::vector<std::string>& entities, bool textOnly,
                                    const QXCreateConversationWithEntitiesCompletion& completion);

  // Everything the engine holds (src/engine/EngineState.h), behind one pointer
  // so that the subsystems' state stays out of this header.
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace quorvix
