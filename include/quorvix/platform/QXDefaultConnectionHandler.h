#pragma once
/// @file
/// The engine's default transport.

#include <memory>

#include "quorvix/platform/QXConnectionHandler.h"

namespace quorvix {

namespace detail {
class CurlTransport;
}

/// The default transport: a cheap handle over one process-wide HTTP client
/// (one I/O thread, connections and TLS sessions reused, completions on a
/// small pool, never on the caller's thread). TLS peer and host verification
/// are always on; "http" is used only for loopback hosts; replies larger than
/// 32 MiB fail with code -1103.
class QXDefaultConnectionHandler : public QXConnectionHandler {
 public:
  QXDefaultConnectionHandler();
  ~QXDefaultConnectionHandler() override;

  void open(const QXURLRequest& request, QXOpenCompletion completion) override;
  std::optional<std::string> fetchDataAtRequest(const QXURLRequest& request, std::optional<QXError>* error) override;

 private:
  std::shared_ptr<detail::CurlTransport> transport_;
};

}  // namespace quorvix
