#pragma once
/// @file
/// What the service needs of the HTTP server under it, plain or TLS.

#include <string>

namespace quorvix::sandbox {

/// A server that binds, serves on the calling thread and stops from any thread.
class Listener {
 public:
  virtual ~Listener() = default;
  /// Binds `address`:`port` (0 picks a free port); returns the bound port, or 0.
  /// A successful bind must be followed by `serve()`.
  virtual int bind(const std::string& address, int port) = 0;
  /// Accepts connections on the calling thread until `shutdown()`.
  virtual bool serve() = 0;
  /// Ends the accept loop and the connections; idempotent, callable from any thread.
  virtual void shutdown() = 0;
};

}  // namespace quorvix::sandbox
