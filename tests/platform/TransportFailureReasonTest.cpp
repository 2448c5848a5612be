/// @file
/// Transport failures as hosts see them: the service error of code 0 keeps
/// libcurl's reason and the address, secrets masked.

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <condition_variable>
#include <future>
#include <mutex>

#include "platform/TransportTestSupport.h"
#include "quorvix/engine/QXConnection.h"
#include "quorvix/engine/QXDefaultConnectionHandler.h"

namespace quorvix {
namespace {

using testing::kHangGuard;
using testing::LoopbackServer;

/// Sends every request through the default transport with a short time-out.
class HurriedHandler : public QXConnectionHandler {
 public:
  void open(const QXURLRequest& request, QXOpenCompletion completion) override {
    QXURLRequest hurried = request;
    hurried.timeoutInterval = 0.3;
    inner_.open(hurried, std::move(completion));
  }
  std::optional<std::string> fetchDataAtRequest(const QXURLRequest& request, std::optional<QXError>* error) override {
    return inner_.fetchDataAtRequest(request, error);
  }

 private:
  QXDefaultConnectionHandler inner_;
};

/// A loopback port nothing listens on (bound, then released).
int closedPort() {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address);
  ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
  ::close(fd);
  return ntohs(address.sin_port);
}

/// A user-information value, empty when absent.
std::string field(const QXError& error, const std::string& key) {
  const auto found = error.userInfo.find(key);
  return found != error.userInfo.end() ? found->second : std::string();
}

std::string lowercased(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

/// The error `QXConnection` reports for a request to `url` through `handler`.
std::optional<QXError> errorOf(const std::shared_ptr<QXConnectionHandler>& handler, const std::string& url) {
  auto promise = std::make_shared<std::promise<std::optional<QXError>>>();
  auto future = promise->get_future();
  QXConnection::openConnection(handler, URLComponents::parse(url).value(),
                               [promise](QXResponse response) { promise->set_value(response.error()); });
  if (future.wait_for(kHangGuard) != std::future_status::ready) return QXError{"hung", 0, {}};
  return future.get();
}

TEST(TransportFailureReasons, RefusedAndTimedOutRequestsSayWhyAndWhere) {
  std::mutex mutex;
  std::condition_variable released;
  bool release = false;
  LoopbackServer server;
  server.http().Get("/slow", [&](const httplib::Request&, httplib::Response& res) {
    std::unique_lock lock(mutex);
    released.wait_for(lock, kHangGuard, [&] { return release; });
    res.set_content("{}", "application/json");
  });
  ASSERT_TRUE(server.start());
  const auto handler = std::make_shared<HurriedHandler>();

  const std::string refusedURL = "http://127.0.0.1:" + std::to_string(closedPort()) + "/api/q.js?apiKey=k3y&text=a&sid=s1d";
  const std::optional<QXError> refused = errorOf(handler, refusedURL);
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->domain, errors::kServiceDomain);
  EXPECT_EQ(refused->code, 0);
  EXPECT_NE(lowercased(field(*refused, "description")).find("connection refused"), std::string::npos)
      << field(*refused, "description");
  const std::string shown = field(*refused, "url");
  EXPECT_NE(shown.find("/api/q.js?apiKey=***&text=a&sid=***"), std::string::npos) << shown;
  EXPECT_EQ(shown.find("k3y"), std::string::npos);
  EXPECT_EQ(shown.find("s1d"), std::string::npos);

  const std::optional<QXError> timedOut = errorOf(handler, server.url("/slow"));
  {
    std::lock_guard lock(mutex);
    release = true;
  }
  released.notify_all();
  ASSERT_TRUE(timedOut);
  EXPECT_EQ(timedOut->domain, errors::kServiceDomain);
  EXPECT_EQ(timedOut->code, 0);
  EXPECT_NE(lowercased(field(*timedOut, "description")).find("timed out"), std::string::npos)
      << field(*timedOut, "description");
  EXPECT_EQ(field(*timedOut, "url"), server.url("/slow"));
  EXPECT_NE(field(*refused, "description"), field(*timedOut, "description"));
}

}  // namespace
}  // namespace quorvix
