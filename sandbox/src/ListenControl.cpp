#include "ListenControl.h"

#include <chrono>
#include <thread>

namespace quorvix::sandbox {

int ListenControl::bind(httplib::Server& server, const std::string& address, int port) {
  const int bound = port == 0 ? server.bind_to_any_port(address) : (server.bind_to_port(address, port) ? port : -1);
  if (bound <= 0) {
    return 0;
  }
  std::lock_guard lock(mutex_);
  listenPending_ = true;
  return bound;
}

bool ListenControl::serve(httplib::Server& server) {
  const bool ok = server.listen_after_bind();
  std::lock_guard lock(mutex_);
  listenPending_ = false;
  return ok;
}

bool ListenControl::beginShutdown() {
  std::lock_guard lock(mutex_);
  if (shutDown_) {
    return false;
  }
  shutDown_ = true;
  return true;
}

void ListenControl::stopListening(httplib::Server& server) {
  for (;;) {
    {
      std::lock_guard lock(mutex_);
      if (!listenPending_) {
        return;
      }
    }
    if (server.is_running()) {
      server.stop();
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace quorvix::sandbox
