#pragma once
/// @file
/// Turns an HTTP request into the service's view of it: account, endpoint and
/// form-decoded query items.

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quorvix/sandbox/SandboxService.h"

namespace httplib {
struct Request;
}

namespace quorvix::sandbox {

/// Query items in the order they were sent.
using QueryItems = std::vector<std::pair<std::string, std::string>>;

/// Decodes one form-encoded component: "%XX" escapes, and "+" as a blank.
/// A malformed escape is kept as written.
std::string decodeFormComponent(std::string_view text);

/// Decodes "a=1&b=x+y" into items; an item without "=" has an empty value.
QueryItems decodeQuery(std::string_view query);

/// Where a request was addressed.
struct Addressee {
  std::string account;
  std::string endpoint;
};

/// The account is the "/~name" prefix of `path` when there is one (the rest is
/// the endpoint), otherwise the first label of `host`, lower-cased.
Addressee addresseeOf(std::string_view path, std::string_view host);

/// Everything the request log keeps about `request`.
RecordedRequest recordOf(const httplib::Request& request);

}  // namespace quorvix::sandbox
