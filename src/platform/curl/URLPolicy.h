#pragma once
/// @file
/// Which URLs the transport agrees to send a request to.

#include <curl/curl.h>

#include <memory>
#include <string>
#include <string_view>
#include <variant>

namespace quorvix::detail {

/// What the transport needs to know about a URL it accepted.
struct URLTarget {
  /// The URL is plain "http" (which is only accepted for this machine).
  bool plainHttp = false;
  /// The host names this machine.
  bool loopback = false;
  /// The URL as parsed for the check, handed to libcurl so it does not parse it again.
  std::shared_ptr<CURLU> parsed;
  /// Scheme, host and port in lower case ("http://acme.localhost:8080"):
  /// requests with the same origin share connections.
  std::string origin;
};

/// Checks a request URL before anything is sent: "https" to any host, "http"
/// only to a loopback host. Returns the refusal's URL-loading code instead
/// when the URL cannot be parsed (-1000) or is not allowed (-1002).
std::variant<URLTarget, long> checkRequestURL(std::string_view url);

}  // namespace quorvix::detail
