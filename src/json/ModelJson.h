#pragma once
/// @file
/// The engine's model objects as JSON documents: one schema for every host
/// that does not speak C++ (the quorvix tool's --json output, the C API, the
/// bindings over it). docs/json-models.md describes the documents.
///
/// Every property of a model object appears under its property name, nested
/// models as objects, absent values as null, colours as "#RRGGBB", styled
/// texts as {"text", "runs"}. The functions only read their arguments.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvix/core/Json.h"
#include "quorvix/core/QXError.h"

namespace quorvix {
class QXChanneling;
class QXConfiguration;
class QXConversationalResponse;
class QXAutoCompleteResponse;
class QXFAQGroup;
class QXQueryResult;
class QXSearchResponse;
class SearchAnswer;
struct QXColor;
struct QXFont;
struct QXStyledText;
}  // namespace quorvix

namespace quorvix::documents {

// --- values ------------------------------------------------------------------

/// A number as JSON: whole numbers as integers (10, not 1E1), others as doubles.
Json number(double value);
/// "#RRGGBB" of a colour.
std::string colorText(const QXColor& color);
/// {"family", "pointSize", "bold"}.
JsonObject fontJson(const QXFont& font);
/// {"text": ..., "runs": [{"location", "length", "font"}]}.
JsonObject styledTextJson(const QXStyledText& styled);

// --- models ------------------------------------------------------------------

/// {"error": {"domain", "code", "userInfo"}}.
JsonObject errorJson(const QXError& error);
/// Every property of the configuration and its components.
JsonObject configurationJson(const QXConfiguration& configuration);
/// A FAQ group: {"title", "behavior", "data": [answers]}.
JsonObject groupJson(QXFAQGroup& group);
/// Every property of an answer: {"resultId", "title", "body", "hash", "likeState"}.
JsonObject queryResultJson(const QXQueryResult& result);
/// The kind of a channel in words ("phone", "chat", "contact form", "custom URL",
/// "custom script", "plain").
std::string channelKind(const QXChanneling& channel);
/// Every property of a channel, those of its kind included, and its "kind".
JsonObject channelJson(const QXChanneling& channel);
/// Every property of a search hit: those of an answer and the hit's own.
JsonObject searchAnswerJson(const SearchAnswer& answer);
/// Every property of a search reply.
JsonObject searchResponseJson(const QXSearchResponse& response);
/// A bot reply: status, texts, options, actions, entities.
JsonObject replyJson(QXConversationalResponse& reply);

// --- the document of each operation --------------------------------------------

/// fetchFAQList: {"groups": [group]} of the list's groups that read as groups.
JsonObject faqListDocument(const Json& list);
/// faqForLabel: {"labelId", "answers": [answer]}.
JsonObject labelFaqDocument(const std::string& labelId, const std::vector<std::shared_ptr<QXQueryResult>>& answers);
/// labels: {"labels": the reply as sent}.
JsonObject labelsDocument(const Json& labels);
/// like: {"resultId", "action", "success"}.
JsonObject likeDocument(const std::optional<std::string>& resultId, int32_t action, bool success);
/// suggestionsForText: {"query", "a", "suggestions": [styled text]}.
JsonObject suggestionsDocument(const QXAutoCompleteResponse& response, const std::vector<QXStyledText>& suggestions);
/// contextValue: {"contexts": the names asked for, "result": the reply as sent}.
JsonObject contextsDocument(const std::string& names, const Json& reply);
/// changeContext: {"name", "value", "success"}.
JsonObject changeContextDocument(const std::string& name, const Json& value, bool success);
/// channels: {"articleId", "channels": [channel]}.
JsonObject channelsDocument(const std::string& articleId, const std::vector<std::shared_ptr<QXChanneling>>& channels);
/// reportChanneling: {"articleId", "form": "escalate" for a search hit or
/// "report", "channel"}. The tool adds "httpStatus" once the service answered.
JsonObject reportDocument(const std::string& articleId, bool escalation, const QXChanneling& channel);
/// startSession: {"sessionId", "delay"}.
JsonObject sessionDocument(const std::optional<std::string>& sessionId, const std::optional<double>& delay);
/// A conversation opened: {"conversationId"}.
JsonObject conversationDocument(const std::optional<std::string>& conversationId);
/// A bot exchange: the reply's document, or {"reply": null} when there is none.
JsonObject exchangeDocument(const std::shared_ptr<QXConversationalResponse>& reply);

}  // namespace quorvix::documents
