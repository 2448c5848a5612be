#pragma once
/// @file
/// The pluggable transport of the engine.

#include <functional>
#include <optional>
#include <string>

#include "quorvix/core/QXError.h"
#include "quorvix/core/QXURLRequest.h"

namespace quorvix {

/// Completion of `QXConnectionHandler::open`: the body bytes (empty when there
/// was none), the HTTP answer (absent when none arrived) and the transport
/// error (absent on success).
using QXOpenCompletion = std::function<void(std::string body, std::optional<QXHTTPURLResponse> response,
                                            std::optional<QXError> error)>;

/// The transport the engine sends every request through. A host may install
/// its own with `Quorvix::setConnectionHandler`; the default one is
/// `QXDefaultConnectionHandler`.
class QXConnectionHandler {
 public:
  virtual ~QXConnectionHandler() = default;

  /// Performs the request asynchronously and calls the completion exactly once,
  /// on a thread other than the caller's.
  virtual void open(const QXURLRequest& request, QXOpenCompletion completion) = 0;

  /// Reads the body at the request's URL synchronously. Returns nothing on any
  /// failure and then writes the reason to `error` when it is given. Blocks the
  /// calling thread; it may be called from inside an `open` completion.
  virtual std::optional<std::string> fetchDataAtRequest(const QXURLRequest& request, std::optional<QXError>* error) = 0;
};

}  // namespace quorvix
