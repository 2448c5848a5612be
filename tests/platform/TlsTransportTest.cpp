/// @file
/// The default connection handler against a loopback TLS server with a
/// certificate made up for the test.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <mutex>
#include <set>

#include "platform/TransportTestSupport.h"
#include "platform/curl/CurlTransport.h"
#include "quorvix/engine/QXConnection.h"
#include "quorvix/platform/QXDefaultConnectionHandler.h"
#include "support/TestCertificates.h"

namespace quorvix {
namespace {

using testing::getRequest;
using testing::LoopbackServer;
using testing::openAndWait;
using testing::Outcome;

/// A self-signed certificate for "localhost" only, its key, and the
/// certificate as a PEM file usable as a CA bundle.
class TlsTransportTest : public ::testing::Test {
 protected:
  void SetUp() override {
    identity_ = testing::Identity::make("localhost", "DNS:localhost", nullptr, false);
    ASSERT_TRUE(identity_);
    // A new name for each certificate: the transport caches a bundle by its path.
    static int serial = 0;
    pemPath_ = std::filesystem::temp_directory_path() /
               ("quorvix-transport-" + std::to_string(::getpid()) + "-" + std::to_string(++serial) + ".pem");
    ASSERT_TRUE(identity_.writeCertificate(pemPath_.string()));
  }

  void TearDown() override {
    detail::CurlTransport::setCAFile("");
    std::error_code ignored;
    std::filesystem::remove(pemPath_, ignored);
  }

  /// A TLS server presenting the test certificate.
  std::unique_ptr<httplib::Server> tlsServer() const {
    return std::make_unique<httplib::SSLServer>(identity_.certificate.get(), identity_.key.get());
  }

  testing::Identity identity_;
  std::filesystem::path pemPath_;
};

TEST_F(TlsTransportTest, VerifiesPeerAndHostAndTrustsTheConfiguredBundle) {
  std::mutex mutex;
  std::set<int> clientPorts;
  LoopbackServer server(tlsServer());
  server.http().set_keep_alive_max_count(1000);
  server.http().Get("/data", [&](const httplib::Request& req, httplib::Response& res) {
    std::lock_guard lock(mutex);
    clientPorts.insert(req.remote_port);
    res.set_content("secret", "text/plain");
  });
  ASSERT_TRUE(server.start());
  QXDefaultConnectionHandler handler;
  const std::string url = server.url("/data", "localhost", "https");

  // The system store does not know this certificate.
  const std::optional<Outcome> untrusted = openAndWait(handler, getRequest(url));
  ASSERT_TRUE(untrusted);
  EXPECT_EQ(untrusted->code(), errors::kServerCertificateUntrusted);
  EXPECT_FALSE(untrusted->response);

  detail::CurlTransport::setCAFile(pemPath_.string());
  for (int i = 0; i < 5; ++i) {
    const std::optional<Outcome> trusted = openAndWait(handler, getRequest(url));
    ASSERT_TRUE(trusted);
    EXPECT_FALSE(trusted->error) << trusted->error->userInfo.at("NSLocalizedDescription");
    EXPECT_EQ(trusted->body, "secret");
  }
  {
    std::lock_guard lock(mutex);
    EXPECT_EQ(clientPorts.size(), 1u);  // one TLS connection for all five
  }

  // Trusted certificate, wrong name: the host check still refuses it.
  const std::optional<Outcome> wrongHost = openAndWait(handler, getRequest(server.url("/data", "127.0.0.1", "https")));
  ASSERT_TRUE(wrongHost);
  EXPECT_EQ(wrongHost->code(), errors::kServerCertificateUntrusted);
}

TEST_F(TlsTransportTest, ARejectedCertificateIsTheReasonTheServiceErrorGives) {
  LoopbackServer server(tlsServer());
  server.http().Get("/api/q.js", [](const httplib::Request&, httplib::Response& res) {
    res.set_content("{}", "application/json");
  });
  ASSERT_TRUE(server.start());
  // The system store does not know the certificate.
  const std::string url = server.url("/api/q.js?sid=s1d", "localhost", "https");
  std::promise<std::optional<QXError>> reported;
  QXConnection::openConnection(std::make_shared<QXDefaultConnectionHandler>(), URLComponents::parse(url).value(),
                               [&](QXResponse response) { reported.set_value(response.error()); });
  auto future = reported.get_future();
  ASSERT_EQ(future.wait_for(testing::kHangGuard), std::future_status::ready);
  const std::optional<QXError> error = future.get();
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain, errors::kServiceDomain);
  EXPECT_EQ(error->code, 0);
  EXPECT_NE(error->userInfo.at("description").find("certificate"), std::string::npos)
      << error->userInfo.at("description");
  EXPECT_EQ(error->userInfo.at("url"), server.url("/api/q.js?sid=***", "localhost", "https"));
}

TEST_F(TlsTransportTest, DoesNotFollowRedirectsFromHttpsToPlainHttp) {
  std::atomic<int> plainHits{0};
  LoopbackServer plain;
  plain.http().Get("/data", [&](const httplib::Request&, httplib::Response& res) {
    ++plainHits;
    res.set_content("plain", "text/plain");
  });
  ASSERT_TRUE(plain.start());
  LoopbackServer server(tlsServer());
  server.http().Get("/down", [&](const httplib::Request&, httplib::Response& res) {
    res.set_redirect(plain.url("/data", "localhost"));
  });
  ASSERT_TRUE(server.start());
  detail::CurlTransport::setCAFile(pemPath_.string());
  QXDefaultConnectionHandler handler;

  const std::optional<Outcome> outcome = openAndWait(handler, getRequest(server.url("/down", "localhost", "https")));
  ASSERT_TRUE(outcome);
  EXPECT_EQ(outcome->code(), errors::kUnsupportedURL);
  EXPECT_EQ(plainHits, 0);
}

}  // namespace
}  // namespace quorvix
