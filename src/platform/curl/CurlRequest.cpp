/// @file
/// Easy-handle set-up for one request and the result of its transfer.

#include "platform/curl/CurlRequest.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <variant>

#include "platform/curl/CurlErrors.h"

namespace quorvix::detail {

namespace {

constexpr double kDefaultTimeoutSeconds = 15.0;
constexpr double kLongestTimeoutMs = 24.0 * 60 * 60 * 1000;

/// The request's time-out in milliseconds; the default when it is not positive.
long timeoutMilliseconds(double seconds) {
  if (!(seconds > 0) || !std::isfinite(seconds)) {
    seconds = kDefaultTimeoutSeconds;
  }
  return static_cast<long>(std::clamp(std::ceil(seconds * 1000.0), 1.0, kLongestTimeoutMs));
}

/// The request's header fields as libcurl lines. A field with an empty value
/// is written "Name;" (libcurl's way of sending it empty); a field that would
/// break the header block is dropped.
HeaderList headerLines(const QXURLRequest& request) {
  curl_slist* list = nullptr;
  for (const auto& [name, value] : request.headers) {
    const auto breaksLine = [](const std::string& s) { return s.find_first_of("\r\n") != std::string::npos; };
    if (name.empty() || breaksLine(name) || breaksLine(value)) {
      continue;
    }
    const std::string line = value.empty() ? name + ";" : name + ": " + value;
    curl_slist* grown = curl_slist_append(list, line.c_str());
    if (grown == nullptr) {
      break;  // out of memory: send what we have
    }
    list = grown;
  }
  return HeaderList(list);
}

/// Collects the result of a sequence of `curl_easy_setopt` calls: the first failure wins.
class OptionSetter {
 public:
  explicit OptionSetter(CURL* easy) : easy_(easy) {}

  template <typename Value>
  void set(CURLoption option, Value value) {
    const CURLcode code = curl_easy_setopt(easy_, option, value);
    if (result_ == CURLE_OK) {
      result_ = code;
    }
  }
  CURLcode result() const { return result_; }

 private:
  CURL* easy_;
  CURLcode result_ = CURLE_OK;
};

}  // namespace

TransferResult failedTransfer(long code, std::string description, const std::string& url) {
  return TransferResult{std::string(), std::nullopt, urlError(code, std::move(description), url)};
}

CurlRequest::CurlRequest(QXURLRequest request, URLTarget target, TransferSink sink)
    : request_(std::move(request)), target_(target), sink_(std::move(sink)) {}

CURLcode CurlRequest::configure(EasyHandle easy, bool prepared, CURLSH* share, const std::string& caFile) {
  easy_ = std::move(easy);
  if (!easy_) {
    return CURLE_OUT_OF_MEMORY;
  }
  caFile_ = caFile;
  prepared_ = prepared;
  if (!prepared_) {
    if (const CURLcode code = setSharedOptions(share); code != CURLE_OK) {
      return code;
    }
  }
  OptionSetter options(easy_.get());
  headers_ = headerLines(request_);
  const long timeoutMs = timeoutMilliseconds(request_.timeoutInterval);

  options.set(CURLOPT_PRIVATE, static_cast<void*>(this));
  options.set(CURLOPT_ERRORBUFFER, errorText_);
  if (target_.parsed) {
    // Parsed once, when it was checked. The URL string must be cleared too:
    // a reused handle would otherwise keep addressing its previous URL.
    options.set(CURLOPT_URL, static_cast<const char*>(nullptr));
    options.set(CURLOPT_CURLU, target_.parsed.get());
  } else {
    options.set(CURLOPT_URL, request_.url.c_str());
  }
  if (request_.method.empty() || request_.method == "GET") {
    options.set(CURLOPT_CUSTOMREQUEST, static_cast<const char*>(nullptr));
    options.set(CURLOPT_HTTPGET, 1L);
  } else {
    options.set(CURLOPT_CUSTOMREQUEST, request_.method.c_str());
  }
  options.set(CURLOPT_HTTPHEADER, headers_.get());
  options.set(CURLOPT_TIMEOUT_MS, timeoutMs);
  options.set(CURLOPT_CONNECTTIMEOUT_MS, timeoutMs);
  options.set(CURLOPT_REDIR_PROTOCOLS_STR, target_.plainHttp ? "http,https" : "https");
  if (target_.plainHttp) {
    // A redirect may leave this machine; plain http must not.
    options.set(CURLOPT_PREREQFUNCTION, &CurlRequest::onRequestReady);
    options.set(CURLOPT_PREREQDATA, static_cast<void*>(this));
  } else {
    options.set(CURLOPT_PREREQFUNCTION, static_cast<curl_prereq_callback>(nullptr));
  }
  // This machine is never reached through a proxy; other hosts as the environment says.
  options.set(CURLOPT_PROXY, target_.loopback ? "" : static_cast<const char*>(nullptr));
  options.set(CURLOPT_WRITEDATA, static_cast<void*>(this));
  return options.result();
}

CURLcode CurlRequest::setSharedOptions(CURLSH* share) {
  OptionSetter options(easy_.get());
  options.set(CURLOPT_SHARE, share);
  options.set(CURLOPT_NOSIGNAL, 1L);
  options.set(CURLOPT_ACCEPT_ENCODING, "");  // every encoding libcurl can decode
  options.set(CURLOPT_TCP_KEEPALIVE, 1L);
  options.set(CURLOPT_PROTOCOLS_STR, "http,https");
  options.set(CURLOPT_FOLLOWLOCATION, 1L);
  options.set(CURLOPT_MAXREDIRS, kMaxRedirects);

  options.set(CURLOPT_SSL_VERIFYPEER, 1L);
  options.set(CURLOPT_SSL_VERIFYHOST, 2L);
  options.set(CURLOPT_SSL_SESSIONID_CACHE, 1L);
  if (!caFile_.empty()) {
    options.set(CURLOPT_CAINFO, caFile_.c_str());
    options.set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));  // skip scanning the CA folder
  }

  options.set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(kMaxBodyBytes));
  options.set(CURLOPT_WRITEFUNCTION, &CurlRequest::onBody);
  prepared_ = options.result() == CURLE_OK;
  return options.result();
}

TransferResult CurlRequest::finish(CURLcode code) {
  if (!easy_) {
    return failure(urlErrorCode(code, 0), curl_easy_strerror(code));
  }
  if (code == CURLE_OK) {
    QXHTTPURLResponse response;
    curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &response.statusCode);
    const char* effectiveURL = nullptr;
    curl_easy_getinfo(easy_.get(), CURLINFO_EFFECTIVE_URL, &effectiveURL);
    response.url = effectiveURL != nullptr ? effectiveURL : request_.url;
    return TransferResult{std::move(body_), std::move(response), std::nullopt};
  }
  if (tooLarge_) {
    body_.clear();
    return failure(errors::kDataLengthExceedsMaximum, "The reply is larger than the 32 MiB limit");
  }
  if (refusedRedirect_) {
    return failure(errors::kUnsupportedURL, "Redirect to plain http outside this machine refused");
  }
  long osErrno = 0;
  curl_easy_getinfo(easy_.get(), CURLINFO_OS_ERRNO, &osErrno);
  const long urlCode = urlErrorCode(code, osErrno);
  if (urlCode == errors::kDataLengthExceedsMaximum) {
    body_.clear();
  }
  return failure(urlCode, reason(code, osErrno));
}

std::string CurlRequest::reason(CURLcode code, long osErrno) const {
  std::string text = errorText_[0] != '\0' ? errorText_ : curl_easy_strerror(code);
  if (osErrno != 0 && code == CURLE_COULDNT_CONNECT) {
    const std::string system = std::strerror(static_cast<int>(osErrno));
    if (text.find(system) == std::string::npos) {
      text += " (" + system + ")";
    }
  }
  return text;
}

TransferResult CurlRequest::cancelled() { return failure(kCancelled, "cancelled"); }

TransferResult CurlRequest::failure(long code, std::string description) {
  TransferResult result = failedTransfer(code, std::move(description), request_.url);
  result.body = std::move(body_);
  return result;
}

std::size_t CurlRequest::onBody(char* data, std::size_t size, std::size_t count, void* self) {
  auto* request = static_cast<CurlRequest*>(self);
  const std::size_t length = size * count;
  if (length > kMaxBodyBytes - request->body_.size()) {
    request->tooLarge_ = true;
    return 0;  // anything but `length` aborts the transfer
  }
  if (request->body_.empty()) {
    curl_off_t announced = -1;
    curl_easy_getinfo(request->easy_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
    if (announced > 0 && static_cast<std::size_t>(announced) <= kMaxBodyBytes) {
      request->body_.reserve(static_cast<std::size_t>(announced));
    }
  }
  request->body_.append(data, length);
  return length;
}

int CurlRequest::onRequestReady(void* self, char*, char*, int, int) {
  auto* request = static_cast<CurlRequest*>(self);
  const char* currentURL = nullptr;
  curl_easy_getinfo(request->easy_.get(), CURLINFO_EFFECTIVE_URL, &currentURL);
  if (currentURL == nullptr || !std::holds_alternative<URLTarget>(checkRequestURL(currentURL))) {
    request->refusedRedirect_ = true;
    return CURL_PREREQFUNC_ABORT;
  }
  return CURL_PREREQFUNC_OK;
}

}  // namespace quorvix::detail
