#pragma once
/// @file
/// Owning wrappers for libcurl handles and the pool of reusable easy handles.

#include <curl/curl.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace quorvix::detail {

/// Holds libcurl's process-wide state for as long as it lives; libcurl counts
/// these, so several holders may coexist.
class CurlGlobal {
 public:
  CurlGlobal() : result_(curl_global_init(CURL_GLOBAL_DEFAULT)) {}
  ~CurlGlobal() {
    if (result_ == CURLE_OK) {
      curl_global_cleanup();
    }
  }
  CurlGlobal(const CurlGlobal&) = delete;
  CurlGlobal& operator=(const CurlGlobal&) = delete;

 private:
  CURLcode result_;
};

/// Frees a multi handle.
struct MultiDeleter {
  void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
};
/// Frees a share handle.
struct ShareDeleter {
  void operator()(CURLSH* share) const { curl_share_cleanup(share); }
};
/// Frees an easy handle.
struct EasyDeleter {
  void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
/// Frees a header list.
struct SlistDeleter {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

using MultiHandle = std::unique_ptr<CURLM, MultiDeleter>;
using ShareHandle = std::unique_ptr<CURLSH, ShareDeleter>;
using EasyHandle = std::unique_ptr<CURL, EasyDeleter>;
using HeaderList = std::unique_ptr<curl_slist, SlistDeleter>;

/// A few reset easy handles kept for the next requests, so a request does not
/// pay for allocating a handle. Used from the I/O thread only.
class EasyHandlePool {
 public:
  /// Keeps at most `capacity` idle handles.
  explicit EasyHandlePool(std::size_t capacity) : capacity_(capacity) {}

  /// An idle handle, or a new one (null only when libcurl is out of memory).
  EasyHandle acquire();
  /// Takes a handle back once it has left the multi handle; resets it, or frees
  /// it when the pool is full.
  void release(EasyHandle easy);

 private:
  std::size_t capacity_;
  std::vector<EasyHandle> idle_;
};

}  // namespace quorvix::detail
