/// @file
/// The easy-handle pool.

#include "platform/curl/CurlHandles.h"

#include <utility>

namespace quorvix::detail {

EasyHandle EasyHandlePool::acquire() {
  if (idle_.empty()) {
    return EasyHandle(curl_easy_init());
  }
  EasyHandle easy = std::move(idle_.back());
  idle_.pop_back();
  return easy;
}

void EasyHandlePool::release(EasyHandle easy) {
  if (!easy || idle_.size() >= capacity_) {
    return;  // freed by the handle's deleter
  }
  // A reset handle forgets every option; connections and cached sessions live
  // in the multi and share handles and are kept.
  curl_easy_reset(easy.get());
  idle_.push_back(std::move(easy));
}

}  // namespace quorvix::detail
