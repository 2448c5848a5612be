#include "faq/BlockingRead.h"

#include "engine/Helpers.h"
#include "platform/Log.h"
#include "quorvix/engine/QXConnection.h"

namespace quorvix::detail {
namespace {

// The error may carry the request's URL: its secrets never reach the log.
void logError(const QXError& error) { logFormat("com.quorvix Error:%@", redactSecrets(describe(error))); }

}  // namespace

std::optional<Json> readBlocking(const std::shared_ptr<QXConnectionHandler>& handler, const URLComponents& components) {
  QXURLRequest request;
  request.url = components.string();
  std::optional<QXError> error;
  const std::optional<std::string> body = handler->fetchDataAtRequest(request, &error);
  if (!body) {
    logError(error.value_or(errors::notValidResponse()));
    return std::nullopt;
  }
  QXParseResult parsed = QXConnection::parse(*body);
  if (auto* failure = std::get_if<QXError>(&parsed)) {
    logError(*failure);
    return std::nullopt;
  }
  // Whatever parses is the answer, whatever "status" its body gives.
  auto* value = std::get_if<Json>(&parsed);
  if (value == nullptr) return std::nullopt;
  return std::move(*value);
}

}  // namespace quorvix::detail
