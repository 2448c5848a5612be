#pragma once
/// @file
/// Requests issued by the service's own channel pages (chat and contact forms
/// shown in the host's web view) under the private scheme "quorvix".

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quorvix/core/Json.h"

namespace quorvix {

/// What a web view hands the host for a navigation: the address and what the
/// request carries.
struct QXWebRequest {
  /// The address, as the web view reports it.
  std::string url;
  /// The HTTP method.
  std::string method = "GET";
  /// The request's headers, in order.
  std::vector<std::pair<std::string, std::string>> headers;
  /// The request's body.
  std::string body;
};

/// Whether the request is one of the channel pages' own: the text before the
/// address's first ":" is exactly "quorvix".
///
/// These helpers read an address leniently, as `formData` does: a page hands
/// over what it built, which need not be a strict URL (blanks, braces, quotes
/// in the query). The host is what follows "//" up to "/", "?" or "#"; the
/// query what follows the first "?" up to "#", read by `queryItemsOf`.
bool isQuorvix(const QXWebRequest& request);
/// The page's command: 1 cancel, the "result" of a send (0 without exactly
/// one such item), 6 exit, 8 contact form (9 for its file removal), 0 anything else.
int64_t type(const QXWebRequest& request);
/// The decoded value of the address's first query item, if any.
std::optional<std::string> result(const QXWebRequest& request);
/// The JSON after "quorvix://formData/" in the address, parsed; nothing when it does not parse.
std::optional<Json> formData(const QXWebRequest& request);

}  // namespace quorvix
