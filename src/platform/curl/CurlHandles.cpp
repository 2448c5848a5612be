/// @file
/// The easy-handle pool.

#include "platform/curl/CurlHandles.h"

#include <utility>

namespace quorvix::detail {

std::pair<EasyHandle, bool> EasyHandlePool::acquire(const std::string& caFile) {
  if (idle_.empty()) {
    return {EasyHandle(curl_easy_init()), false};
  }
  Idle idle = std::move(idle_.back());
  idle_.pop_back();
  if (idle.configured && idle.caFile == caFile) {
    return {std::move(idle.easy), true};
  }
  // Set up for another bundle: start from libcurl's defaults. Connections and
  // cached sessions live in the multi and share handles and are kept.
  curl_easy_reset(idle.easy.get());
  return {std::move(idle.easy), false};
}

void EasyHandlePool::release(EasyHandle easy, bool configured, std::string caFile) {
  if (!easy || idle_.size() >= capacity_) {
    return;  // freed by the handle's deleter
  }
  // Nothing of the finished request may be reachable from an idle handle.
  curl_easy_setopt(easy.get(), CURLOPT_HTTPHEADER, static_cast<curl_slist*>(nullptr));
  curl_easy_setopt(easy.get(), CURLOPT_CURLU, static_cast<CURLU*>(nullptr));
  curl_easy_setopt(easy.get(), CURLOPT_ERRORBUFFER, static_cast<char*>(nullptr));
  idle_.push_back(Idle{std::move(easy), configured, std::move(caFile)});
}

}  // namespace quorvix::detail
