#pragma once
/// @file
/// The HTTP server under the service: httplib's, with connections that end as
/// soon as the service stops.

#include <httplib.h>

#include <string>

#include "ListenControl.h"
#include "Listener.h"

namespace quorvix::sandbox {

/// An httplib server that keeps connections alive for thousands of requests and
/// still stops at once. httplib's own connection loop waits out the whole
/// keep-alive time-out of an idle connection before it notices a stop, so this
/// server runs its own loop, which also watches a wake-up pipe.
class LoopbackServer : public httplib::Server, public Listener {
 public:
  LoopbackServer();
  ~LoopbackServer() override;
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  /// Binds `address`:`port` (0 picks a free port); returns the bound port, or 0.
  /// A successful bind must be followed by `serve()`.
  int bind(const std::string& address, int port) override;
  /// Accepts connections on the calling thread until `shutdown()`.
  bool serve() override;
  /// Ends the accept loop and every connection waiting for its next request;
  /// answers being written finish first. Idempotent, callable from any thread.
  void shutdown() override;

 private:
  bool process_and_close_socket(socket_t sock) override;
  /// Waits until `sock` has a request to read (true), or the keep-alive time-out
  /// passes or the server shuts down (false).
  bool awaitRequest(socket_t sock) const;

  int wakeRead_ = -1;
  int wakeWrite_ = -1;
  ListenControl listening_;
};

}  // namespace quorvix::sandbox
