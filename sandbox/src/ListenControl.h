#pragma once
/// @file
/// Binding, serving and stopping an httplib server, plain or TLS, so that a
/// stop never misses an accept loop that has not started yet.

#include <httplib.h>

#include <mutex>
#include <string>

namespace quorvix::sandbox {

/// The listening state both of the service's servers keep. httplib's `stop()`
/// only takes effect once the accept loop runs, which may not have happened yet
/// on the serving thread when a stop comes.
class ListenControl {
 public:
  /// Binds `address`:`port` (0 picks a free port); returns the bound port, or 0.
  int bind(httplib::Server& server, const std::string& address, int port);
  /// Runs the accept loop of a bound server on the calling thread.
  bool serve(httplib::Server& server);
  /// True the first time only: later stops have nothing left to do.
  bool beginShutdown();
  /// Ends the accept loop of a bound server, waiting for it to start if it has not yet.
  void stopListening(httplib::Server& server);

 private:
  std::mutex mutex_;
  bool listenPending_ = false;
  bool shutDown_ = false;
};

}  // namespace quorvix::sandbox
