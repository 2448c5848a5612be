#pragma once
// A loopback HTTP/1.1 server answering every request at once with a fixed
// reply, in a process of its own so that the benchmarks' CPU time is the
// client's alone and the baseline is not the sandbox's search ranking.

#include <sys/types.h>

#include <optional>
#include <string>

namespace quorvix::bench {

/// The replies: the session body for a path holding "hello.js", the search body for any other.
struct FixedReplies {
  std::string sessionBody;
  std::string searchBody;
};

/// PEM files of the certificate and key a TLS server presents.
struct TlsFiles {
  std::string certificatePath;
  std::string keyPath;
};

/// Runs the server in a child process (this executable started again with
/// `kServeArgument`); kills it when destroyed. Keep-alive connections, one
/// thread per connection, TCP_NODELAY.
class FixedReplyServer {
 public:
  FixedReplyServer(const FixedReplies& replies, std::optional<TlsFiles> tls);
  ~FixedReplyServer();
  FixedReplyServer(const FixedReplyServer&) = delete;
  FixedReplyServer& operator=(const FixedReplyServer&) = delete;

  /// The bound loopback port; 0 when the server did not start.
  int port() const { return port_; }

  /// The first argument that makes this executable serve instead of benchmarking.
  static constexpr const char* kServeArgument = "--fixed-reply-server";
  /// The child's entry point: `argv` is SESSION_FILE SEARCH_FILE [CERT_FILE KEY_FILE]
  /// after `kServeArgument`. Prints the port on standard output, then serves until killed.
  static int serve(int argc, char** argv);

 private:
  pid_t child_ = -1;
  int port_ = 0;
  std::string sessionFile_;
  std::string searchFile_;
};

}  // namespace quorvix::bench
