#pragma once
/// @file
/// Completions of the search, suggestion, context and channel operations.

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/core/Json.h"
#include "quorvix/core/QXError.h"

namespace quorvix {

class QXSearchResponse;
class QXAutoCompleteResponse;
class QXChanneling;

/// A search reply, or the error.
using SearchCompletion = std::function<void(std::shared_ptr<QXSearchResponse>, std::optional<QXError>)>;
/// Suggestions for a typed text, or the error.
using SuggestionCompletion = std::function<void(std::shared_ptr<QXAutoCompleteResponse>, std::optional<QXError>)>;
/// The service's reply listing context values, or the error.
using ContextValueCompletion = std::function<void(std::optional<Json>, std::optional<QXError>)>;
/// Whether a context change was accepted, and the error when it was not.
using ChangeContextCompletion = std::function<void(bool, std::optional<QXError>)>;
/// The channels of an article, or the error.
using ChannelsCompletion =
    std::function<void(std::optional<std::vector<std::shared_ptr<QXChanneling>>>, std::optional<QXError>)>;

/// Cached search replies by query text.
using SearchCache = std::map<std::string, std::shared_ptr<QXSearchResponse>>;
/// Cached suggestion replies by typed text.
using SuggestionCache = std::map<std::string, std::shared_ptr<QXAutoCompleteResponse>>;

}  // namespace quorvix
