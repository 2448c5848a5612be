#include "quorvix/engine/QXErrorHandler.h"

#include "platform/Log.h"
#include "quorvix/platform/Platform.h"

namespace quorvix {
namespace {

// The platform's URL-loading codes that mean the network itself is gone.
bool isNetworkLoss(long code) {
  return code == errors::kNotConnectedToInternet || code == errors::kNetworkConnectionLost ||
         code == errors::kCannotFindHost || code == errors::kUnsupportedURL || code == errors::kBadURL;
}

}  // namespace

std::shared_ptr<QXErrorHandler> QXErrorHandler::shared() {
  // Never released: a transport completion may still report after main returns.
  static auto* instance = new std::shared_ptr<QXErrorHandler>(std::make_shared<QXErrorHandler>());
  return *instance;
}

void QXErrorHandler::setError(const QXError& error) {
  {
    std::lock_guard lock(mutex_);
    errorState_ = true;
  }
  if (!isNetworkLoss(error.code)) return;
  detail::logFormat("error %@", describe(error));
  notify(true);
}

void QXErrorHandler::setErrorState(bool state) {
  {
    std::lock_guard lock(mutex_);
    errorState_ = state;
  }
  if (!state) notify(false);
}

bool QXErrorHandler::errorState() const {
  std::lock_guard lock(mutex_);
  return errorState_;
}

std::weak_ptr<QXErrorHandlerDelegate> QXErrorHandler::delegate() const {
  std::lock_guard lock(mutex_);
  return delegate_;
}

void QXErrorHandler::setDelegate(std::weak_ptr<QXErrorHandlerDelegate> delegate) {
  std::lock_guard lock(mutex_);
  delegate_ = std::move(delegate);
}

void QXErrorHandler::notify(bool failed) const {
  // The delegate is read when the main executor runs the call, not now; a
  // handler gone by then (or not owned by a shared_ptr) uses the delegate it had.
  platform::mainExecutor()->post([self = weak_from_this(), fallback = delegate(), failed] {
    auto handler = self.lock();
    auto delegate = (handler ? handler->delegate() : fallback).lock();
    if (!delegate) return;
    if (failed) {
      delegate->didFailWithSource(nullptr);
    } else {
      delegate->didRecover();
    }
  });
}

}  // namespace quorvix
