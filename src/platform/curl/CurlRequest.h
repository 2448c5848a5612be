#pragma once
/// @file
/// One request on its way through libcurl: easy-handle setup, the received
/// body, and the result handed to its completion.

#include <curl/curl.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "platform/curl/CurlHandles.h"
#include "platform/curl/URLPolicy.h"
#include "quorvix/core/QXError.h"
#include "quorvix/core/QXURLRequest.h"

namespace quorvix::detail {

/// Replies with a larger body fail with -1103.
inline constexpr std::size_t kMaxBodyBytes = std::size_t{32} * 1024 * 1024;
/// The most redirects followed for one request.
inline constexpr long kMaxRedirects = 10;

/// What one transfer produced: the body (partial or empty on failure), the
/// HTTP answer when one arrived, and the error when the transfer failed.
struct TransferResult {
  std::string body;
  std::optional<QXHTTPURLResponse> response;
  std::optional<QXError> error;
};

/// A failed transfer: empty body, no HTTP answer, a URL-loading error.
TransferResult failedTransfer(long code, std::string description, const std::string& url);

/// Receives a finished transfer's result. Called on the I/O thread, so it must
/// hand the result on without blocking.
using TransferSink = std::function<void(TransferResult)>;

/// A request accepted by the transport, from its set-up on an easy handle to
/// its result. Lives on the I/O thread once started.
class CurlRequest {
 public:
  CurlRequest(QXURLRequest request, URLTarget target, TransferSink sink);

  CurlRequest(const CurlRequest&) = delete;
  CurlRequest& operator=(const CurlRequest&) = delete;

  /// Takes `easy` and sets it up for this request: GET with the request's
  /// headers and time-out, redirects, verified TLS (`caFile` replaces the
  /// system CA store when not empty) and the body limit. A handle that
  /// `prepared` says already holds the options every request shares (for
  /// `caFile`) only gets this request's own. Returns the first option libcurl
  /// refused, or `CURLE_OK`.
  CURLcode configure(EasyHandle easy, bool prepared, CURLSH* share, const std::string& caFile);

  /// The easy handle set up by `configure`.
  CURL* easy() const { return easy_.get(); }
  /// Where the request goes.
  const URLTarget& target() const { return target_; }
  /// Gives the easy handle back (after it left the multi handle).
  EasyHandle takeHandle() { return std::move(easy_); }
  /// Whether the handle holds the options every request shares, for `caFile()`.
  bool prepared() const { return prepared_; }
  /// The CA bundle the handle was set up for.
  const std::string& caFile() const { return caFile_; }

  /// The result of the transfer, which ended with `code`.
  TransferResult finish(CURLcode code);
  /// The result for a request stopped because the transport shut down.
  TransferResult cancelled();

  /// Hands `result` to the request's sink.
  void deliver(TransferResult result) { sink_(std::move(result)); }

 private:
  /// libcurl write callback: collects body bytes, aborting past the limit.
  static std::size_t onBody(char* data, std::size_t size, std::size_t count, void* self);
  /// libcurl pre-request callback: refuses a redirect that left loopback over plain http.
  static int onRequestReady(void* self, char* primaryIp, char* localIp, int primaryPort, int localPort);

  /// A failure result with `code`, described by `description`.
  TransferResult failure(long code, std::string description);
  /// Sets the options every request shares; the first one libcurl refused, or `CURLE_OK`.
  CURLcode setSharedOptions(CURLSH* share);
  /// libcurl's reason for a failed transfer, with the system's reason for a
  /// failed connect ("Connection refused") when libcurl's text leaves it out.
  std::string reason(CURLcode code, long osErrno) const;

  QXURLRequest request_;
  URLTarget target_;
  TransferSink sink_;
  HeaderList headers_;
  EasyHandle easy_;  // declared after headers_: freed before the list it uses
  std::string body_;
  bool tooLarge_ = false;
  bool refusedRedirect_ = false;
  bool prepared_ = false;
  std::string caFile_;
  char errorText_[CURL_ERROR_SIZE] = {};
};

}  // namespace quorvix::detail
