#include "quorvix/engine/QXConnection.h"

#include "engine/Helpers.h"
#include "engine/JsonParse.h"
#include "platform/Log.h"
#include "quorvix/engine/QXErrorHandler.h"
#include "quorvix/platform/QXDefaultConnectionHandler.h"

namespace quorvix {
namespace {

// The two roads read answers alike but for how strict they are with a
// dictionary's "status" and what a non-200 HTTP status turns into.
enum class Road { Components, Request };

// Adds the transport's reason ("description") and the redacted address
// ("url") of a failed transfer to the error that reports it.
void addTransportReason(QXError& error, const QXError& transportError) {
  const auto& info = transportError.userInfo;
  if (auto found = info.find("NSLocalizedDescription"); found != info.end()) {
    error.userInfo["description"] = found->second;
  }
  if (auto found = info.find("NSErrorFailingURLStringKey"); found != info.end()) {
    error.userInfo["url"] = detail::redactSecrets(found->second);
  }
}

QXResponse readAnswer(Road road, std::string body, const std::optional<QXHTTPURLResponse>& http,
                      const std::optional<QXError>& transportError) {
  const auto errorHandler = QXErrorHandler::shared();
  if (!transportError && errorHandler->errorState()) errorHandler->setErrorState(false);

  QXResponse response(http ? std::optional<std::string>(http->url) : std::nullopt);
  response.setCacheParams(std::move(body));
  response.setStatus(http ? http->statusCode : 0);

  auto parsed = QXConnection::parse(response.cacheParams());
  if (auto* error = std::get_if<QXError>(&parsed)) {
    response.setError(*error);
    errorHandler->setError(*error);
  } else if (auto* value = std::get_if<Json>(&parsed)) {
    if (const auto* object = value->if_object(); object != nullptr && road == Road::Components) {
      const auto* status = object->if_contains("status");
      const int64_t code = status != nullptr ? integerValue(*status) : 200;
      if (code != 200) {
        response.setError(errors::service(static_cast<long>(code)));
      } else {
        response.setParams(std::move(*value));
      }
    } else if (value->is_object() || value->is_array()) {
      response.setParams(std::move(*value));
    }
  }

  if (transportError) {
    errorHandler->setError(*transportError);
    if (!response.error()) response.setError(*transportError);
  }

  // Without an HTTP answer the status reads 0, so a transport failure ends
  // as a "com.quorvix" error of code 0; it keeps why and where it failed.
  if (response.status() != 200) {
    if (road == Road::Components) {
      QXError error = errors::service(static_cast<long>(response.status()));
      if (transportError && !http) addTransportReason(error, *transportError);
      response.setError(std::move(error));
    } else {
      QXError error{errors::kServiceDomain, 500, {{"Error", "Status code 500"}}};
      if (transportError && !http) addTransportReason(error, *transportError);
      response.setError(std::move(error));
    }
  }
  return response;
}

QXURLRequest identifiedRequest(std::string url, std::string_view loggedAs) {
  detail::logFormat("URL :: %@", loggedAs);
  QXURLRequest request = refererRequest(appParams("iOS"));
  request.url = std::move(url);
  return request;
}

void send(Road road, const std::shared_ptr<QXConnectionHandler>& handler, std::string url, std::string_view loggedAs,
          QXResponseCompletion completion) {
  QXURLRequest request = identifiedRequest(std::move(url), loggedAs);
  auto answer = [road, weakHandler = std::weak_ptr<QXConnectionHandler>(handler), completion = std::move(completion)](
                    std::string body, std::optional<QXHTTPURLResponse> http, std::optional<QXError> error) {
    QXResponse response = readAnswer(road, std::move(body), http, error);
    response.setConnectionHandler(weakHandler);
    if (completion) completion(std::move(response));
  };
  if (!handler) {
    answer({}, std::nullopt, QXError{errors::kURLDomain, errors::kUnknown, {{"NSLocalizedDescription", "No connection handler"}}});
    return;
  }
  handler->open(request, std::move(answer));
}

}  // namespace

void QXConnection::openConnection(const std::shared_ptr<QXConnectionHandler>& handler, const URLComponents& components,
                                  QXResponseCompletion completion) {
  std::string url = components.string();
  const std::string logged = url;
  send(Road::Components, handler, std::move(url), logged, std::move(completion));
}

void QXConnection::openConnection(const std::shared_ptr<QXConnectionHandler>& handler, const URLComponents& components,
                                  const URLComponents& loggedAs, QXResponseCompletion completion) {
  send(Road::Components, handler, components.string(), loggedAs.string(), std::move(completion));
}

void QXConnection::connection(const QXURLRequest& request, QXResponseCompletion completion) {
  send(Road::Request, std::make_shared<QXDefaultConnectionHandler>(), request.url, request.url, std::move(completion));
}

QXParseResult QXConnection::parse(std::string_view body) { return detail::parseJson(body); }

}  // namespace quorvix
