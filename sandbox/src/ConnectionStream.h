#pragma once
/// @file
/// A buffered stream over one accepted connection.

#include <httplib.h>

#include <array>
#include <cstddef>
#include <string>

namespace quorvix::sandbox {

/// The stream httplib reads a request from and writes the answer to. It lives as
/// long as the connection, so bytes of a pipelined next request that were read
/// with the current one are not lost.
class ConnectionStream : public httplib::Stream {
 public:
  /// `wakeFd` becomes readable when the server shuts down (-1: never).
  ConnectionStream(socket_t sock, int readTimeoutMs, int writeTimeoutMs, int wakeFd = -1);

  /// The stream whose request the calling thread is answering, set by the
  /// server around each request; nullptr elsewhere (a TLS connection included).
  static ConnectionStream* current();
  /// Makes `stream` the calling thread's current stream until destroyed.
  class Current {
   public:
    explicit Current(ConnectionStream& stream);
    ~Current();
    Current(const Current&) = delete;
    Current& operator=(const Current&) = delete;
  };

  /// Nothing more is written and the connection ends with a reset (RST)
  /// instead of an orderly close.
  void reset() { reset_ = true; }
  bool wasReset() const { return reset_; }
  /// Waits up to `timeoutMs` without answering; ends early when the client
  /// closes its side or the server shuts down.
  void stall(int timeoutMs) const;

  /// Whether bytes already read are waiting to be consumed.
  bool hasBuffered() const { return begin_ < end_; }

  // httplib::Stream: reads are served from the buffer first; every wait is
  // bounded by the read or write time-out.
  bool is_readable() const override;
  bool is_writable() const override;
  ssize_t read(char* ptr, std::size_t size) override;
  ssize_t write(const char* ptr, std::size_t size) override;
  void get_remote_ip_and_port(std::string& ip, int& port) const override;
  void get_local_ip_and_port(std::string& ip, int& port) const override;
  socket_t socket() const override { return sock_; }

 private:
  socket_t sock_;
  int readTimeoutMs_;
  int writeTimeoutMs_;
  int wakeFd_;
  bool reset_ = false;
  std::array<char, 4096> buffer_{};
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace quorvix::sandbox
