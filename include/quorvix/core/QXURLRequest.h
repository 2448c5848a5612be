#pragma once
/// @file
/// The HTTP request and the HTTP answer exchanged with a connection handler.

#include <string>
#include <utility>
#include <vector>

namespace quorvix {

/// An HTTP request as the connection layer builds it: method "GET", a
/// time-out and the client identification header.
struct QXURLRequest {
  /// The HTTP method.
  std::string method = "GET";
  /// The absolute URL, already percent-encoded.
  std::string url;
  /// Seconds before the request fails with a time-out.
  double timeoutInterval = 15.0;
  /// Header fields in the order they were set.
  std::vector<std::pair<std::string, std::string>> headers;

  /// Sets (or replaces) a header field.
  void setValue(std::string value, const std::string& field);
  /// The value of a header field, or empty when it is not set.
  std::string valueForHTTPHeaderField(const std::string& field) const;
};

/// What the server answered at the HTTP level.
struct QXHTTPURLResponse {
  /// The URL the answer came from (after redirects).
  std::string url;
  /// The HTTP status code.
  long statusCode = 0;
};

}  // namespace quorvix
