#pragma once
/// @file
/// Small readings of request items shared by the search and channel endpoints.

#include <cstdint>
#include <optional>
#include <string_view>

#include "KnowledgeBase.h"
#include "Router.h"

namespace quorvix::sandbox {

/// The whole text as a decimal integer (an optional "-" sign), or nothing.
std::optional<int64_t> parseInteger(std::string_view text);

/// The knowledge base a request works on: its session's, else the one its
/// "kb" item names (the account's first when the item is absent or empty).
/// nullptr when the account has no such knowledge base.
const KnowledgeBase* requestKnowledgeBase(const EndpointRequest& request);

/// Whether the request's "account" item names the account it was addressed
/// to; a request without the item passes unless `required`.
bool accountItemMatches(const EndpointRequest& request, bool required);

}  // namespace quorvix::sandbox
