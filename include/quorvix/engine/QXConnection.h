#pragma once
/// @file
/// The request road every engine operation uses.

#include <functional>
#include <memory>
#include <string_view>
#include <variant>

#include "quorvix/core/Json.h"
#include "quorvix/core/URLComponents.h"
#include "quorvix/engine/QXResponse.h"
#include "quorvix/platform/QXConnectionHandler.h"

namespace quorvix {

/// Completion of a request: runs on the thread the transport delivers on.
using QXResponseCompletion = std::function<void(QXResponse response)>;

/// What `QXConnection::parse` gives: nothing (empty body), the JSON value, or the parse error.
using QXParseResult = std::variant<std::monostate, Json, QXError>;

/// Sends requests and turns their answers into `QXResponse`s. Stateless.
class QXConnection {
 public:
  /// Sends a GET for the components' URL with a 15-second time-out and the
  /// "Referer" client identification header through `handler`, and calls the
  /// completion exactly once with the response. When no HTTP answer arrived
  /// the response's error is "com.quorvix" code 0 with, in `userInfo`, the
  /// transport's reason under "description" (connection refused, time-out,
  /// certificate rejected...) and the address under "url", the values of
  /// "apiKey" and "sid" replaced by "***".
  static void openConnection(const std::shared_ptr<QXConnectionHandler>& handler, const URLComponents& components,
                             QXResponseCompletion completion);
  /// The same, but the "URL :: %@" log line shows `loggedAs`: a request that
  /// carries values restored from tokens is logged with the tokens.
  static void openConnection(const std::shared_ptr<QXConnectionHandler>& handler, const URLComponents& components,
                             const URLComponents& loggedAs, QXResponseCompletion completion);

  /// The same road for an already built request (only its URL is taken over),
  /// sent through a default handler. Any dictionary is kept whatever its
  /// "status"; a non-200 HTTP status becomes a "com.quorvix" error 500.
  static void connection(const QXURLRequest& request, QXResponseCompletion completion);

  /// Parses a body: nothing for empty bytes, else the JSON value or the parse error.
  /// Bodies nested deeper than 64 levels are errors.
  static QXParseResult parse(std::string_view body);
};

}  // namespace quorvix
