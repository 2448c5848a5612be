#include "TlsServer.h"

namespace quorvix::sandbox {

TlsServer::TlsServer(const std::string& certificateFile, const std::string& keyFile)
    : httplib::SSLServer(certificateFile.c_str(), keyFile.c_str()) {
  set_keep_alive_timeout(1);
}

int TlsServer::bind(const std::string& address, int port) {
  return is_valid() ? listening_.bind(*this, address, port) : 0;
}

bool TlsServer::serve() { return listening_.serve(*this); }

void TlsServer::shutdown() {
  if (listening_.beginShutdown()) {
    listening_.stopListening(*this);
  }
}

}  // namespace quorvix::sandbox
