/// @file
/// The default connection handler: a thin front of the process-wide transport.

#include "quorvix/platform/QXDefaultConnectionHandler.h"

#include <utility>

#include "platform/curl/CurlTransport.h"

namespace quorvix {

QXDefaultConnectionHandler::QXDefaultConnectionHandler() : transport_(detail::CurlTransport::shared()) {}

QXDefaultConnectionHandler::~QXDefaultConnectionHandler() = default;

void QXDefaultConnectionHandler::open(const QXURLRequest& request, QXOpenCompletion completion) {
  transport_->submit(request, std::move(completion));
}

std::optional<std::string> QXDefaultConnectionHandler::fetchDataAtRequest(const QXURLRequest& request,
                                                                          std::optional<QXError>* error) {
  return transport_->fetch(request, error);
}

}  // namespace quorvix
