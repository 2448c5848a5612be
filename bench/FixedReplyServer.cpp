#include "FixedReplyServer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

namespace quorvix::bench {
namespace {

std::string readFile(const char* path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string writeTemporary(const std::string& name, const std::string& text) {
  const auto path = std::filesystem::temp_directory_path() / (name + "-" + std::to_string(::getpid()));
  std::ofstream(path, std::ios::binary) << text;
  return path.string();
}

std::string httpReply(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: application/json; charset=utf-8\r\nContent-Length: " +
         std::to_string(body.size()) + "\r\nConnection: keep-alive\r\n\r\n" + body;
}

/// One connection, plain or TLS.
class Connection {
 public:
  Connection(int fd, SSL_CTX* tls) : fd_(fd) {
    if (tls != nullptr) {
      ssl_ = SSL_new(tls);
      SSL_set_fd(ssl_, fd_);
      if (SSL_accept(ssl_) != 1) ok_ = false;
    }
  }
  ~Connection() {
    if (ssl_ != nullptr) {
      SSL_shutdown(ssl_);
      SSL_free(ssl_);
    }
    ::close(fd_);
  }
  bool ok() const { return ok_; }
  long read(char* buffer, int size) { return ssl_ != nullptr ? SSL_read(ssl_, buffer, size) : ::read(fd_, buffer, size); }
  bool write(const std::string& data) {
    std::size_t sent = 0;
    while (sent < data.size()) {
      const int left = static_cast<int>(data.size() - sent);
      const long n = ssl_ != nullptr ? SSL_write(ssl_, data.data() + sent, left) : ::write(fd_, data.data() + sent, left);
      if (n <= 0) return false;
      sent += static_cast<std::size_t>(n);
    }
    return true;
  }

 private:
  int fd_;
  SSL* ssl_ = nullptr;
  bool ok_ = true;
};

void serveConnection(int fd, SSL_CTX* tls, const std::string* sessionReply, const std::string* searchReply) {
  const int one = 1;
  ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
  Connection connection(fd, tls);
  if (!connection.ok()) return;
  std::string pending;
  char buffer[16384];
  for (;;) {
    std::size_t end;
    while ((end = pending.find("\r\n\r\n")) == std::string::npos) {
      const long n = connection.read(buffer, sizeof buffer);
      if (n <= 0) return;
      pending.append(buffer, static_cast<std::size_t>(n));
    }
    const std::string requestLine = pending.substr(0, pending.find("\r\n"));
    pending.erase(0, end + 4);  // GET requests carry no body
    const bool hello = requestLine.find("hello.js") != std::string::npos;
    if (!connection.write(hello ? *sessionReply : *searchReply)) return;
  }
}

}  // namespace

FixedReplyServer::FixedReplyServer(const FixedReplies& replies, std::optional<TlsFiles> tls) {
  sessionFile_ = writeTemporary(std::string("quorvix-bench-session") + (tls ? "-tls" : ""), replies.sessionBody);
  searchFile_ = writeTemporary(std::string("quorvix-bench-search") + (tls ? "-tls" : ""), replies.searchBody);
  std::vector<std::string> arguments{"/proc/self/exe", kServeArgument, sessionFile_, searchFile_};
  if (tls) {
    arguments.push_back(tls->certificatePath);
    arguments.push_back(tls->keyPath);
  }
  std::vector<char*> argv;
  for (auto& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);

  int out[2];
  if (::pipe(out) != 0) return;
  child_ = ::fork();
  if (child_ == 0) {
    ::dup2(out[1], STDOUT_FILENO);
    ::close(out[0]);
    ::close(out[1]);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  ::close(out[1]);
  char line[32] = {};
  std::size_t got = 0;
  while (got < sizeof line - 1) {
    const long n = ::read(out[0], line + got, 1);
    if (n <= 0 || line[got] == '\n') break;
    ++got;
  }
  ::close(out[0]);
  port_ = std::atoi(line);
}

FixedReplyServer::~FixedReplyServer() {
  if (child_ > 0) {
    ::kill(child_, SIGTERM);
    ::waitpid(child_, nullptr, 0);
  }
  std::error_code ignored;
  std::filesystem::remove(sessionFile_, ignored);
  std::filesystem::remove(searchFile_, ignored);
}

int FixedReplyServer::serve(int argc, char** argv) {
  ::prctl(PR_SET_PDEATHSIG, SIGTERM);
  ::signal(SIGPIPE, SIG_IGN);
  if (argc < 2) return 2;
  const std::string sessionReply = httpReply(readFile(argv[0]));
  const std::string searchReply = httpReply(readFile(argv[1]));
  SSL_CTX* tls = nullptr;
  if (argc >= 4) {
    tls = SSL_CTX_new(TLS_server_method());
    if (SSL_CTX_use_certificate_file(tls, argv[2], SSL_FILETYPE_PEM) != 1 ||
        SSL_CTX_use_PrivateKey_file(tls, argv[3], SSL_FILETYPE_PEM) != 1) {
      ERR_print_errors_fp(stderr);
      return 1;
    }
  }
  const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
  const int one = 1;
  ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || ::listen(listener, 256) != 0) {
    return 1;
  }
  ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length);
  std::printf("%d\n", ntohs(address.sin_port));
  std::fflush(stdout);
  for (;;) {
    const int fd = ::accept(listener, nullptr, nullptr);
    if (fd < 0) continue;
    std::thread(serveConnection, fd, tls, &sessionReply, &searchReply).detach();
  }
}

}  // namespace quorvix::bench
