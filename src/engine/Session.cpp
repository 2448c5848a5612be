// The session with the service: opened lazily by the first request that needs
// one, kept alive with periodic calls, probed and re-opened when the service
// answers 400 because it no longer knows the session.
#include <algorithm>
#include <cmath>

#include "engine/EngineState.h"
#include "engine/Helpers.h"
#include "engine/ServiceAddress.h"
#include "platform/Log.h"
#include "quorvix/engine/QXSessionResponse.h"
#include "quorvix/engine/Quorvix.h"
#include "quorvix/platform/Platform.h"

namespace quorvix {
namespace {

constexpr std::string_view kHelloPath = "/api/widget/v1/hello.js";
constexpr std::string_view kKeepAlivePath = "/api/widget/v1/keepAlive.js";
// A failed keep-alive is tried again after this many seconds, without limit.
constexpr double kKeepAliveRetrySeconds = 10.0;
// A service that announces no time-out (or a tiny one) must not make the
// engine call it in a tight loop.
constexpr double kShortestKeepAliveSeconds = 1.0;

double keepAlivePeriod(std::optional<double> delay) {
  // The period is read at single precision, as the service's clients always have.
  const double seconds = static_cast<float>(delay.value_or(0.0));
  return std::isfinite(seconds) ? std::max(seconds, kShortestKeepAliveSeconds) : kShortestKeepAliveSeconds;
}

}  // namespace

void Quorvix::startSession(std::function<void()> continuation) {
  SessionWaiter waiter;
  if (continuation) waiter = [continuation = std::move(continuation)](const std::optional<std::string>&) { continuation(); };
  StateLock lock(state_->mutex);
  joinSessionStart(lock, std::move(waiter));
}

void Quorvix::joinSessionStart(StateLock& lock, SessionWaiter waiter) {
  if (waiter) state_->sessionWaiters.push_back(std::move(waiter));
  // One "hello.js" at a time: later callers wait for the one in flight.
  if (state_->sessionStarting) return;
  state_->sessionStarting = true;
  const uint64_t start = ++state_->sessionStart;
  auto params = state_->accountParams;
  lock.unlock();

  auto components = params ? params->baseUrlComp() : std::nullopt;
  if (!components) {
    std::vector<SessionWaiter> dropped;
    lock.lock();
    if (start != state_->sessionStart) return;
    state_->sessionStarting = false;
    dropped.swap(state_->sessionWaiters);
    state_->sessionError = detail::addressError(params);
    lock.unlock();
    return;
  }
  components->appendPath(kHelloPath);
  std::vector<QueryItem> items{{"nostats", "false"}, {"url", "mobile"}};
  if (auto knowledgeBase = params->knowledgeBase()) items.push_back({"kb", *knowledgeBase});
  if (auto context = params->quorvixContext()) items.push_back({"context", wrapped(*context)});
  components->setQueryItems(std::move(items));

  QXConnection::openConnection(connectionHandler(), *components, [weak = weak_from_this(), start](QXResponse response) {
    if (auto self = weak.lock()) self->finishSessionStart(start, std::move(response));
  });
}

void Quorvix::finishSessionStart(uint64_t start, QXResponse response) {
  std::vector<SessionWaiter> waiters;
  std::optional<std::string> sessionId;
  {
    std::lock_guard lock(state_->mutex);
    // `stop` abandoned this start: its answer changes nothing.
    if (start != state_->sessionStart || !state_->sessionStarting) return;
    state_->sessionStarting = false;
    // On failure the waiting requests are dropped: they never complete.
    waiters.swap(state_->sessionWaiters);
    if (response.error()) {
      state_->sessionError = response.error();
      return;
    }
    auto session = response.typeAs<QXSessionResponse>();
    if (!session) return;
    state_->sessionId = session->sessionId();
    sessionId = state_->sessionId;
    state_->delay = session->timeout();
    scheduleKeepAlive(++state_->keepAliveChain, keepAlivePeriod(state_->delay));
  }
  for (auto& waiter : waiters) {
    detail::runCatching("A request waiting for the session", [&] { waiter(sessionId); });
  }
}

void Quorvix::executeRequest(URLComponents components, QXResponseCompletion completion) {
  StateLock lock(state_->mutex);
  // Read and decided under one lock: a session that opens meanwhile is either
  // seen here or still being started, so no second "hello.js" goes out.
  if (state_->sessionId) {
    auto sid = state_->sessionId;
    lock.unlock();
    components.appendQueryItem("sid", std::move(sid));
    sendInSession(std::move(components), std::move(completion));
    return;
  }
  joinSessionStart(lock, [weak = weak_from_this(), components = std::move(components),
                          completion = std::move(completion)](const std::optional<std::string>& sid) mutable {
    auto self = weak.lock();
    if (!self) return;
    components.appendQueryItem("sid", sid);
    QXConnection::openConnection(self->connectionHandler(), components, std::move(completion));
  });
}

void Quorvix::sendInSession(URLComponents components, QXResponseCompletion completion) {
  QXConnection::openConnection(
      connectionHandler(), components,
      [weak = weak_from_this(), components, completion = std::move(completion)](QXResponse response) mutable {
        auto self = weak.lock();
        if (!self || !response.error() || response.error()->code != 400) {
          if (completion) completion(std::move(response));
          return;
        }
        self->probeAndResend(std::move(components), std::move(completion), std::move(response));
      });
}

void Quorvix::probeAndResend(URLComponents components, QXResponseCompletion completion, QXResponse rejected) {
  auto params = accountParams();
  auto probe = params ? params->baseUrlComp() : std::nullopt;
  if (!probe) {
    // Nothing to probe without an account: the caller hears the rejection.
    if (completion) completion(std::move(rejected));
    return;
  }
  probe->appendPath(kKeepAlivePath);
  QXConnection::openConnection(
      connectionHandler(), *probe,
      [self = shared_from_this(), components = std::move(components), completion = std::move(completion)](QXResponse answer) mutable {
        // The session is still alive: the rejection was about something else and the
        // request is dropped without an answer.
        if (!answer.error()) return;
        self->resendInNewSession(std::move(components), std::move(completion));
      });
}

void Quorvix::resendInNewSession(URLComponents components, QXResponseCompletion completion) {
  const auto rejectedSid = components.queryValue("sid");
  SessionWaiter resend = [weak = weak_from_this(), components = std::move(components),
                          completion = std::move(completion)](const std::optional<std::string>& sid) mutable {
    auto owner = weak.lock();
    if (!owner) return;
    components.removeQueryItems("sid");
    components.appendQueryItem("sid", sid);
    QXConnection::openConnection(owner->connectionHandler(), components, std::move(completion));
  };
  StateLock lock(state_->mutex);
  if (state_->sessionId && state_->sessionId != rejectedSid) {
    // Another rejected request has already opened the new session: use it.
    auto sid = state_->sessionId;
    lock.unlock();
    resend(sid);
    return;
  }
  joinSessionStart(lock, std::move(resend));
}

void Quorvix::startKeepAlive() {
  uint64_t chain;
  {
    std::lock_guard lock(state_->mutex);
    chain = ++state_->keepAliveChain;
  }
  keepAlive(chain);
}

void Quorvix::keepAlive(uint64_t chain) {
  {
    std::lock_guard lock(state_->mutex);
    if (chain != state_->keepAliveChain) return;
  }
  auto params = accountParams();
  auto components = params ? params->baseUrlComp() : std::nullopt;
  if (!components) return;
  components->appendPath(kKeepAlivePath);
  executeRequest(std::move(*components), [weak = weak_from_this(), chain](QXResponse response) {
    auto self = weak.lock();
    if (!self) return;
    if (response.error()) detail::logFormat("Quorvix failed to keep alive %@", describe(*response.error()));
    auto session = response.error() ? nullptr : response.typeAs<QXSessionResponse>();
    const int64_t status = session && session->status() ? integerValue(*session->status()) : 0;
    std::lock_guard lock(self->state_->mutex);
    // A chain that `stop` (or a newer chain) ended schedules nothing.
    if (chain != self->state_->keepAliveChain) return;
    if (response.error()) {
      self->scheduleKeepAlive(chain, kKeepAliveRetrySeconds);
    } else if (status != 200) {
      // The service no longer keeps this session: the next request opens a new one.
      self->state_->sessionId.reset();
    } else {
      self->scheduleKeepAlive(chain, keepAlivePeriod(self->state_->delay));
    }
  });
}

void Quorvix::scheduleKeepAlive(uint64_t chain, double seconds) {
  // Called under `state_->mutex`, so a `stop` (which cancels under it too) cannot slip
  // between the check of the chain and the scheduling.
  platform::scheduler()->schedule(this, seconds, [weak = weak_from_this(), chain] {
    if (auto self = weak.lock()) self->keepAlive(chain);
  });
}

}  // namespace quorvix
