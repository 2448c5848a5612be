// The facade's lifecycle and members. The session machine is in Session.cpp.
#include "quorvix/engine/Quorvix.h"

#include "engine/EngineState.h"
#include "quorvix/conversation/QXChatEngineDelegate.h"
#include "quorvix/engine/QXErrorHandler.h"
#include "quorvix/platform/Platform.h"
#include "quorvix/platform/QXDefaultConnectionHandler.h"

namespace quorvix {

Quorvix::Quorvix() : state_(std::make_unique<State>()) {}

Quorvix::~Quorvix() { platform::scheduler()->cancelAll(this); }

std::shared_ptr<Quorvix> Quorvix::shared() {
  // Never released: hosts may call into it until the process ends.
  static auto* instance = new std::shared_ptr<Quorvix>(std::make_shared<Quorvix>());
  return *instance;
}

std::shared_ptr<Quorvix> Quorvix::create() { return std::make_shared<Quorvix>(); }

void Quorvix::prepareWithAccountParams(std::shared_ptr<AccountParams> params) {
  {
    std::lock_guard lock(state_->mutex);
    state_->accountParams = std::move(params);
    state_->configuration.reset();
    state_->isPrepared = false;
    state_->fetchConfiguration = nullptr;
    // `whenConfigured` callers keep waiting: this preparation's fetch answers them.
    state_->configurationFetching = false;
    ++state_->preparation;
  }
  // With no configuration and no callback this starts the fetch.
  setFetchConfiguration(nullptr);
}

void Quorvix::stop() {
  // Dropped after the lock is released: a waiter's captures may call back in.
  std::vector<SessionWaiter> abandoned;
  std::lock_guard lock(state_->mutex);
  // Under the lock: keep-alives are only scheduled under it, so none can
  // follow this cancellation.
  platform::scheduler()->cancelAll(this);
  // A keep-alive already in flight must not restart the chain when it answers.
  ++state_->keepAliveChain;
  // A "hello.js" in flight is abandoned; the next request starts a new one.
  ++state_->sessionStart;
  state_->sessionStarting = false;
  abandoned.swap(state_->sessionWaiters);
  // The suggestion cache is emptied; the search cache is deliberately kept.
  if (state_->cachedSuggestions) state_->cachedSuggestions->clear();
  state_->sessionId.reset();
  state_->delay.reset();
}

std::shared_ptr<AccountParams> Quorvix::accountParams() const {
  std::lock_guard lock(state_->mutex);
  return state_->accountParams;
}

void Quorvix::setAccountParams(std::shared_ptr<AccountParams> params) {
  std::lock_guard lock(state_->mutex);
  state_->accountParams = std::move(params);
}

bool Quorvix::isPrepared() const {
  std::lock_guard lock(state_->mutex);
  return state_->isPrepared;
}

void Quorvix::setIsPrepared(bool prepared) {
  std::lock_guard lock(state_->mutex);
  state_->isPrepared = prepared;
}

std::shared_ptr<QXErrorHandler> Quorvix::errorHandler() {
  std::lock_guard lock(state_->mutex);
  if (!state_->errorHandler) state_->errorHandler = std::make_shared<QXErrorHandler>();
  return state_->errorHandler;
}

std::shared_ptr<QXConnectionHandler> Quorvix::connectionHandler() const {
  std::lock_guard lock(state_->mutex);
  if (state_->connectionHandler) return state_->connectionHandler;
  return std::make_shared<QXDefaultConnectionHandler>();
}

void Quorvix::setConnectionHandler(std::shared_ptr<QXConnectionHandler> handler) {
  std::lock_guard lock(state_->mutex);
  state_->connectionHandler = std::move(handler);
}

std::weak_ptr<QXChatEngineDelegate> Quorvix::delegate() const {
  std::lock_guard lock(state_->mutex);
  return state_->delegate;
}

void Quorvix::setDelegate(std::weak_ptr<QXChatEngineDelegate> delegate) {
  std::lock_guard lock(state_->mutex);
  state_->delegate = std::move(delegate);
}

std::weak_ptr<QXChatEngineDelegate> Quorvix::chatDelegate() const {
  std::lock_guard lock(state_->mutex);
  return state_->chatDelegate;
}

void Quorvix::setChatDelegate(std::weak_ptr<QXChatEngineDelegate> delegate) {
  std::lock_guard lock(state_->mutex);
  state_->chatDelegate = std::move(delegate);
}

std::optional<std::string> Quorvix::sessionId() const {
  std::lock_guard lock(state_->mutex);
  return state_->sessionId;
}

void Quorvix::setSessionId(std::optional<std::string> sessionId) {
  std::lock_guard lock(state_->mutex);
  state_->sessionId = std::move(sessionId);
}

std::optional<double> Quorvix::delay() const {
  std::lock_guard lock(state_->mutex);
  return state_->delay;
}

void Quorvix::setDelay(std::optional<double> delay) {
  std::lock_guard lock(state_->mutex);
  state_->delay = delay;
}

std::optional<QXError> Quorvix::sessionError() const {
  std::lock_guard lock(state_->mutex);
  return state_->sessionError;
}

void Quorvix::setSessionError(std::optional<QXError> error) {
  std::lock_guard lock(state_->mutex);
  state_->sessionError = std::move(error);
}

JsonArray Quorvix::waitingAPICalls() {
  std::lock_guard lock(state_->mutex);
  if (!state_->waitingAPICalls) state_->waitingAPICalls.emplace();
  return *state_->waitingAPICalls;
}

void Quorvix::setWaitingAPICalls(JsonArray calls) {
  std::lock_guard lock(state_->mutex);
  state_->waitingAPICalls = std::move(calls);
}

JsonObject Quorvix::requestParams() const {
  std::lock_guard lock(state_->mutex);
  return state_->requestParams;
}

void Quorvix::setRequestParams(JsonObject params) {
  std::lock_guard lock(state_->mutex);
  state_->requestParams = std::move(params);
}

std::function<void()> Quorvix::faqCompletion() const {
  std::lock_guard lock(state_->mutex);
  return state_->faqCompletion;
}

void Quorvix::setFaqCompletion(std::function<void()> completion) {
  std::lock_guard lock(state_->mutex);
  state_->faqCompletion = std::move(completion);
}

std::optional<std::string> Quorvix::knowledgeBase() const {
  std::lock_guard lock(state_->mutex);
  return state_->knowledgeBase;
}

void Quorvix::setKnowledgeBase(std::optional<std::string> knowledgeBase) {
  std::lock_guard lock(state_->mutex);
  state_->knowledgeBase = std::move(knowledgeBase);
}

std::optional<std::string> Quorvix::conversationId() const {
  std::lock_guard lock(state_->mutex);
  return state_->conversationId;
}

void Quorvix::setConversationId(std::optional<std::string> conversationId) {
  std::lock_guard lock(state_->mutex);
  state_->conversationId = std::move(conversationId);
}

}  // namespace quorvix
