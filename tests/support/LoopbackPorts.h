#pragma once
// Loopback ports for the failures a service address can meet.

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quorvix::testing {

/// A loopback port nothing listens on (bound, then released): connecting is refused.
inline int closedPort() {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  const bool bound = fd >= 0 && ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                     ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0;
  if (fd >= 0) ::close(fd);
  return bound ? ntohs(address.sin_port) : 0;
}

}  // namespace quorvix::testing
