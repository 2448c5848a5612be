// The facade's lifecycle and members. The session machine is in Session.cpp.
#include "quorvix/engine/Quorvix.h"

#include "quorvix/platform/Platform.h"
#include "quorvix/platform/QXDefaultConnectionHandler.h"

namespace quorvix {

Quorvix::Quorvix() = default;

Quorvix::~Quorvix() { platform::scheduler()->cancelAll(this); }

std::shared_ptr<Quorvix> Quorvix::shared() {
  // Never released: hosts may call into it until the process ends.
  static auto* instance = new std::shared_ptr<Quorvix>(std::make_shared<Quorvix>());
  return *instance;
}

std::shared_ptr<Quorvix> Quorvix::create() { return std::make_shared<Quorvix>(); }

void Quorvix::prepareWithAccountParams(std::shared_ptr<AccountParams> params) {
  {
    std::lock_guard lock(mutex_);
    accountParams_ = std::move(params);
    configuration_.reset();
    isPrepared_ = false;
    fetchConfiguration_ = nullptr;
    // `whenConfigured` callers keep waiting: this preparation's fetch answers them.
    configurationFetching_ = false;
    ++preparation_;
  }
  // With no configuration and no callback this starts the fetch.
  setFetchConfiguration(nullptr);
}

void Quorvix::stop() {
  // Dropped after the lock is released: a waiter's captures may call back in.
  std::vector<SessionWaiter> abandoned;
  std::lock_guard lock(mutex_);
  // Under the lock: keep-alives are only scheduled under it, so none can
  // follow this cancellation.
  platform::scheduler()->cancelAll(this);
  // A keep-alive already in flight must not restart the chain when it answers.
  ++keepAliveChain_;
  // A "hello.js" in flight is abandoned; the next request starts a new one.
  ++sessionStart_;
  sessionStarting_ = false;
  abandoned.swap(sessionWaiters_);
  // The suggestion cache is emptied; the search cache is deliberately kept.
  if (cachedSuggestions_) cachedSuggestions_->clear();
  sessionId_.reset();
  delay_.reset();
}

std::shared_ptr<AccountParams> Quorvix::accountParams() const {
  std::lock_guard lock(mutex_);
  return accountParams_;
}

void Quorvix::setAccountParams(std::shared_ptr<AccountParams> params) {
  std::lock_guard lock(mutex_);
  accountParams_ = std::move(params);
}

bool Quorvix::isPrepared() const {
  std::lock_guard lock(mutex_);
  return isPrepared_;
}

void Quorvix::setIsPrepared(bool prepared) {
  std::lock_guard lock(mutex_);
  isPrepared_ = prepared;
}

std::shared_ptr<QXErrorHandler> Quorvix::errorHandler() {
  std::lock_guard lock(mutex_);
  if (!errorHandler_) errorHandler_ = std::make_shared<QXErrorHandler>();
  return errorHandler_;
}

std::shared_ptr<QXConnectionHandler> Quorvix::connectionHandler() const {
  std::lock_guard lock(mutex_);
  if (connectionHandler_) return connectionHandler_;
  return std::make_shared<QXDefaultConnectionHandler>();
}

void Quorvix::setConnectionHandler(std::shared_ptr<QXConnectionHandler> handler) {
  std::lock_guard lock(mutex_);
  connectionHandler_ = std::move(handler);
}

std::weak_ptr<QXChatEngineDelegate> Quorvix::delegate() const {
  std::lock_guard lock(mutex_);
  return delegate_;
}

void Quorvix::setDelegate(std::weak_ptr<QXChatEngineDelegate> delegate) {
  std::lock_guard lock(mutex_);
  delegate_ = std::move(delegate);
}

std::weak_ptr<QXChatEngineDelegate> Quorvix::chatDelegate() const {
  std::lock_guard lock(mutex_);
  return chatDelegate_;
}

void Quorvix::setChatDelegate(std::weak_ptr<QXChatEngineDelegate> delegate) {
  std::lock_guard lock(mutex_);
  chatDelegate_ = std::move(delegate);
}

std::optional<std::string> Quorvix::sessionId() const {
  std::lock_guard lock(mutex_);
  return sessionId_;
}

void Quorvix::setSessionId(std::optional<std::string> sessionId) {
  std::lock_guard lock(mutex_);
  sessionId_ = std::move(sessionId);
}

std::optional<double> Quorvix::delay() const {
  std::lock_guard lock(mutex_);
  return delay_;
}

void Quorvix::setDelay(std::optional<double> delay) {
  std::lock_guard lock(mutex_);
  delay_ = delay;
}

std::optional<QXError> Quorvix::sessionError() const {
  std::lock_guard lock(mutex_);
  return sessionError_;
}

void Quorvix::setSessionError(std::optional<QXError> error) {
  std::lock_guard lock(mutex_);
  sessionError_ = std::move(error);
}

JsonArray Quorvix::waitingAPICalls() {
  std::lock_guard lock(mutex_);
  if (!waitingAPICalls_) waitingAPICalls_.emplace();
  return *waitingAPICalls_;
}

void Quorvix::setWaitingAPICalls(JsonArray calls) {
  std::lock_guard lock(mutex_);
  waitingAPICalls_ = std::move(calls);
}

JsonObject Quorvix::requestParams() const {
  std::lock_guard lock(mutex_);
  return requestParams_;
}

void Quorvix::setRequestParams(JsonObject params) {
  std::lock_guard lock(mutex_);
  requestParams_ = std::move(params);
}

std::function<void()> Quorvix::faqCompletion() const {
  std::lock_guard lock(mutex_);
  return faqCompletion_;
}

void Quorvix::setFaqCompletion(std::function<void()> completion) {
  std::lock_guard lock(mutex_);
  faqCompletion_ = std::move(completion);
}

std::optional<std::string> Quorvix::knowledgeBase() const {
  std::lock_guard lock(mutex_);
  return knowledgeBase_;
}

void Quorvix::setKnowledgeBase(std::optional<std::string> knowledgeBase) {
  std::lock_guard lock(mutex_);
  knowledgeBase_ = std::move(knowledgeBase);
}

std::optional<std::string> Quorvix::conversationId() const {
  std::lock_guard lock(mutex_);
  return conversationId_;
}

void Quorvix::setConversationId(std::optional<std::string> conversationId) {
  std::lock_guard lock(mutex_);
  conversationId_ = std::move(conversationId);
}

}  // namespace quorvix
