#pragma once
/// @file
/// The HTTPS server of the service's TLS mode.

#include <httplib.h>

#include <string>

#include "ListenControl.h"
#include "Listener.h"

namespace quorvix::sandbox {

/// httplib's TLS server with a short keep-alive, so that a stop never waits
/// long for an idle connection. Faults that act on the raw connection (reset,
/// stall) fall back to closing it after the header.
class TlsServer : public httplib::SSLServer, public Listener {
 public:
  /// Serves with the PEM certificate (chain) and key at these paths; `valid()`
  /// tells whether they could be loaded.
  TlsServer(const std::string& certificateFile, const std::string& keyFile);

  int bind(const std::string& address, int port) override;
  bool serve() override;
  void shutdown() override;

 private:
  ListenControl listening_;
};

}  // namespace quorvix::sandbox
