#include "LoopbackServer.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <stdexcept>

#include "ConnectionStream.h"
#include "WorkerPool.h"

namespace quorvix::sandbox {

namespace {

/// Benchmarks send thousands of requests over one connection.
constexpr std::size_t kKeepAliveMaxCount = 10000;
constexpr time_t kKeepAliveTimeoutSeconds = 30;
/// Each kept-alive connection holds a thread, so allow plenty.
constexpr std::size_t kMaxThreads = 64;

int milliseconds(time_t seconds, time_t microseconds) {
  return static_cast<int>(seconds * 1000 + microseconds / 1000);
}

}  // namespace

LoopbackServer::LoopbackServer() {
  int fds[2] = {-1, -1};
  if (::pipe2(fds, O_CLOEXEC) != 0) {
    throw std::runtime_error("sandbox: cannot create a pipe");
  }
  wakeRead_ = fds[0];
  wakeWrite_ = fds[1];
  set_keep_alive_max_count(kKeepAliveMaxCount);
  set_keep_alive_timeout(kKeepAliveTimeoutSeconds);
  new_task_queue = [] { return new WorkerPool(kMaxThreads); };
  // httplib's default sets SO_REUSEPORT, with which a second server binds a
  // port that another one listens on and the two share its connections.
  // SO_REUSEADDR alone still allows a restart over connections in TIME_WAIT.
  set_socket_options([](socket_t sock) {
    const int yes = 1;
    ::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
}

LoopbackServer::~LoopbackServer() {
  // A bound socket that never served is still open.
  const socket_t listening = svr_sock_.exchange(INVALID_SOCKET);
  if (listening != INVALID_SOCKET) {
    ::close(listening);
  }
  ::close(wakeRead_);
  ::close(wakeWrite_);
}

int LoopbackServer::bind(const std::string& address, int port) { return listening_.bind(*this, address, port); }

bool LoopbackServer::serve() { return listening_.serve(*this); }

void LoopbackServer::shutdown() {
  if (!listening_.beginShutdown()) {
    return;
  }
  // Never read: the pipe stays readable, waking every waiting connection.
  const char byte = 1;
  [[maybe_unused]] const ssize_t written = ::write(wakeWrite_, &byte, 1);
  listening_.stopListening(*this);
}

bool LoopbackServer::awaitRequest(socket_t sock) const {
  pollfd entries[2] = {{sock, POLLIN, 0}, {wakeRead_, POLLIN, 0}};
  const int timeoutMs = milliseconds(keep_alive_timeout_sec_, 0);
  for (;;) {
    const int ready = ::poll(entries, 2, timeoutMs);
    if (ready < 0 && errno == EINTR) {
      continue;
    }
    if (ready <= 0 || entries[1].revents != 0) {
      return false;
    }
    // A closed or failed connection also counts: reading it ends the loop.
    return true;
  }
}

bool LoopbackServer::process_and_close_socket(socket_t sock) {
  // httplib writes the header and the body separately; without this, Nagle's
  // algorithm holds the body back for a delayed ACK on reused connections.
  const int noDelay = 1;
  ::setsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);
  ConnectionStream stream(sock, milliseconds(read_timeout_sec_, read_timeout_usec_),
                          milliseconds(write_timeout_sec_, write_timeout_usec_), wakeRead_);
  const ConnectionStream::Current current(stream);
  const std::function<void(httplib::Request&)> noSetup;
  bool ok = false;
  for (std::size_t left = keep_alive_max_count_; left > 0; --left) {
    if (!stream.hasBuffered() && !awaitRequest(sock)) {
      break;
    }
    bool closed = false;
    ok = process_request(stream, left == 1, closed, noSetup);
    if (!ok || closed || stream.wasReset()) {
      break;
    }
  }
  if (stream.wasReset()) {
    // A zero linger time turns the close into a reset.
    const linger abort{1, 0};
    ::setsockopt(sock, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
  } else {
    ::shutdown(sock, SHUT_RDWR);
  }
  ::close(sock);
  return ok;
}

}  // namespace quorvix::sandbox
