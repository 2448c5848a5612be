#include "TlsServer.h"

#include <chrono>
#include <thread>

namespace quorvix::sandbox {

TlsServer::TlsServer(const std::string& certificateFile, const std::string& keyFile)
    : httplib::SSLServer(certificateFile.c_str(), keyFile.c_str()) {
  set_keep_alive_timeout(1);
}

int TlsServer::bind(const std::string& address, int port) {
  if (!is_valid()) {
    return 0;
  }
  const int bound = port == 0 ? bind_to_any_port(address) : (bind_to_port(address, port) ? port : -1);
  if (bound <= 0) {
    return 0;
  }
  std::lock_guard lock(mutex_);
  listenPending_ = true;
  return bound;
}

bool TlsServer::serve() {
  const bool ok = listen_after_bind();
  std::lock_guard lock(mutex_);
  listenPending_ = false;
  return ok;
}

void TlsServer::shutdown() {
  {
    std::lock_guard lock(mutex_);
    if (shutDown_) {
      return;
    }
    shutDown_ = true;
  }
  // stop() only takes effect once the accept loop has started.
  for (;;) {
    {
      std::lock_guard lock(mutex_);
      if (!listenPending_) {
        return;
      }
    }
    if (is_running()) {
      stop();
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace quorvix::sandbox
