/// @file
/// URL checks made before a request reaches libcurl.

#include "platform/curl/URLPolicy.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "quorvix/core/QXError.h"
#include "quorvix/platform/ServiceHosts.h"

namespace quorvix::detail {

namespace {

/// One part of a parsed URL, or nothing when the URL lacks it.
std::optional<std::string> urlPart(CURLU* url, CURLUPart part, unsigned int flags = 0) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, flags) != CURLUE_OK || text == nullptr) {
    return std::nullopt;
  }
  std::string value(text);
  curl_free(text);
  return value;
}

/// `text` in ASCII lower case.
std::string lowercased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

/// The host as a name or address: an IPv6 literal loses its brackets.
std::string bareHost(std::string host) {
  if (host.size() >= 2 && host.front() == '[' && host.back() == ']') {
    return host.substr(1, host.size() - 2);
  }
  return host;
}

}  // namespace

std::variant<URLTarget, long> checkRequestURL(std::string_view text) {
  std::shared_ptr<CURLU> url(curl_url(), [](CURLU* parsed) { curl_url_cleanup(parsed); });
  if (!url) {
    return errors::kUnknown;
  }
  // Any scheme is parsed so that a well-formed URL of a foreign scheme is
  // reported as unsupported rather than malformed.
  if (curl_url_set(url.get(), CURLUPART_URL, std::string(text).c_str(), CURLU_NON_SUPPORT_SCHEME) != CURLUE_OK) {
    return errors::kBadURL;
  }
  const std::optional<std::string> scheme = urlPart(url.get(), CURLUPART_SCHEME);
  if (!scheme) {
    return errors::kBadURL;
  }
  const std::string lowerScheme = lowercased(*scheme);
  if (lowerScheme != "https" && lowerScheme != "http") {
    return errors::kUnsupportedURL;
  }
  const std::optional<std::string> host = urlPart(url.get(), CURLUPART_HOST);
  if (!host || host->empty()) {
    return errors::kBadURL;
  }
  URLTarget target;
  target.plainHttp = lowerScheme == "http";
  target.loopback = isLoopbackHost(lowercased(bareHost(*host)));
  if (target.plainHttp && !target.loopback) {
    return errors::kUnsupportedURL;
  }
  target.origin = lowerScheme + "://" + lowercased(*host) + ":" +
                  urlPart(url.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT).value_or("");
  target.parsed = std::move(url);
  return target;
}

}  // namespace quorvix::detail
