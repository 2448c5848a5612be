#include "ConnectionStream.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace quorvix::sandbox {

namespace {

bool waitFor(socket_t sock, short events, int timeoutMs) {
  pollfd entry{sock, events, 0};
  for (;;) {
    const int ready = ::poll(&entry, 1, timeoutMs);
    if (ready >= 0) {
      return ready > 0;
    }
    if (errno != EINTR) {
      return false;
    }
  }
}

void describe(const sockaddr_storage& address, std::string& ip, int& port) {
  char text[INET6_ADDRSTRLEN] = {};
  if (address.ss_family == AF_INET) {
    const auto* v4 = reinterpret_cast<const sockaddr_in*>(&address);
    ::inet_ntop(AF_INET, &v4->sin_addr, text, sizeof text);
    port = ntohs(v4->sin_port);
  } else if (address.ss_family == AF_INET6) {
    const auto* v6 = reinterpret_cast<const sockaddr_in6*>(&address);
    ::inet_ntop(AF_INET6, &v6->sin6_addr, text, sizeof text);
    port = ntohs(v6->sin6_port);
  }
  ip = text;
}

thread_local ConnectionStream* currentStream = nullptr;

}  // namespace

ConnectionStream::ConnectionStream(socket_t sock, int readTimeoutMs, int writeTimeoutMs, int wakeFd)
    : sock_(sock), readTimeoutMs_(readTimeoutMs), writeTimeoutMs_(writeTimeoutMs), wakeFd_(wakeFd) {}

ConnectionStream* ConnectionStream::current() { return currentStream; }

ConnectionStream::Current::Current(ConnectionStream& stream) { currentStream = &stream; }

ConnectionStream::Current::~Current() { currentStream = nullptr; }

void ConnectionStream::stall(int timeoutMs) const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  pollfd entries[2] = {{sock_, POLLRDHUP, 0}, {wakeFd_, POLLIN, 0}};
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      return;
    }
    const int ready = ::poll(entries, wakeFd_ < 0 ? 1 : 2, static_cast<int>(left.count()));
    if (ready < 0 && errno == EINTR) {
      continue;
    }
    // The client hung up, the server is stopping, or the time is up.
    if (ready != 0 || entries[0].revents != 0) {
      return;
    }
  }
}

bool ConnectionStream::is_readable() const { return hasBuffered() || waitFor(sock_, POLLIN, readTimeoutMs_); }

bool ConnectionStream::is_writable() const { return waitFor(sock_, POLLOUT, writeTimeoutMs_); }

ssize_t ConnectionStream::read(char* ptr, std::size_t size) {
  if (!hasBuffered()) {
    if (!is_readable()) {
      return -1;
    }
    ssize_t received = 0;
    do {
      received = ::recv(sock_, buffer_.data(), buffer_.size(), 0);
    } while (received < 0 && errno == EINTR);
    if (received <= 0) {
      return received;
    }
    begin_ = 0;
    end_ = static_cast<std::size_t>(received);
  }
  const std::size_t count = std::min(size, end_ - begin_);
  std::memcpy(ptr, buffer_.data() + begin_, count);
  begin_ += count;
  return static_cast<ssize_t>(count);
}

ssize_t ConnectionStream::write(const char* ptr, std::size_t size) {
  if (reset_ || !is_writable()) {
    return -1;
  }
  ssize_t sent = 0;
  do {
    sent = ::send(sock_, ptr, size, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent;
}

void ConnectionStream::get_remote_ip_and_port(std::string& ip, int& port) const {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  if (::getpeername(sock_, reinterpret_cast<sockaddr*>(&address), &length) == 0) {
    describe(address, ip, port);
  }
}

void ConnectionStream::get_local_ip_and_port(std::string& ip, int& port) const {
  sockaddr_storage address{};
  socklen_t length = sizeof address;
  if (::getsockname(sock_, reinterpret_cast<sockaddr*>(&address), &length) == 0) {
    describe(address, ip, port);
  }
}

}  // namespace quorvix::sandbox
