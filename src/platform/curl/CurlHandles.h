#pragma once
/// @file
/// Owning wrappers for libcurl handles and the pool of reusable easy handles.

#include <curl/curl.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
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

/// A few easy handles kept for the next requests, so a request pays neither
/// for allocating a handle nor for setting every option again. A kept handle
/// keeps the options every request shares; they were set for one CA bundle,
/// so a handle taken for another bundle comes back reset. Used from the I/O
/// thread only.
class EasyHandlePool {
 public:
  /// Keeps at most `capacity` idle handles.
  explicit EasyHandlePool(std::size_t capacity) : capacity_(capacity) {}

  /// A handle for a request using the CA bundle `caFile`, and whether it
  /// already holds the shared options for that bundle. The handle is null only
  /// when libcurl is out of memory.
  std::pair<EasyHandle, bool> acquire(const std::string& caFile);
  /// Takes a handle back once it has left the multi handle; `configured` says
  /// whether it holds the shared options for `caFile`. Frees it when the pool
  /// is full.
  void release(EasyHandle easy, bool configured, std::string caFile);

 private:
  /// An idle handle and the bundle its options were set for.
  struct Idle {
    EasyHandle easy;
    bool configured = false;
    std::string caFile;
  };

  std::size_t capacity_;
  std::vector<Idle> idle_;
};

}  // namespace quorvix::detail
