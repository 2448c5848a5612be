#include "faq/BlockingRead.h"

#include "platform/Log.h"
#include "quorvix/engine/Helpers.h"
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
  auto* value = std::get_if<Json>(&parsed);
  if (value == nullptr) return std::nullopt;
  // The service reports a refusal in the body as well; such a reply is no answer.
  if (const auto* object = value->if_object()) {
    if (const Json* status = object->if_contains("status"); status != nullptr && integerValue(*status) != 200) {
      logError(errors::service(static_cast<long>(integerValue(*status))));
      return std::nullopt;
    }
  }
  return std::move(*value);
}

}  // namespace quorvix::detail
