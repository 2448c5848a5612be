#pragma once
/// @file
/// The completions of the bot conversation's operations.

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "quorvix/core/Json.h"
#include "quorvix/core/QXError.h"

namespace quorvix {

class QXConversationalResponse;

/// Completion of a plain conversation create: the new conversation's id, or the error.
using QXCreateConversationCompletion =
    std::function<void(std::optional<std::string> conversationId, std::optional<QXError> error)>;
/// Completion of a create that declares entities: the service's answer as it
/// came (a dictionary whose "id" names the conversation), or the error.
using QXCreateConversationWithEntitiesCompletion =
    std::function<void(std::optional<Json> answer, std::optional<QXError> error)>;
/// Completion of a statement, postback, article or missing-entity exchange:
/// the bot's reply, or the error.
using QXConversationCompletion =
    std::function<void(std::shared_ptr<QXConversationalResponse> response, std::optional<QXError> error)>;
/// Completion of the feedback request: the feedback reply, or nothing.
using QXConversationFeedbackCompletion = std::function<void(std::shared_ptr<QXConversationalResponse> response)>;

}  // namespace quorvix
