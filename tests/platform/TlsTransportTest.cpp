/// @file
/// The default connection handler against a loopback TLS server with a
/// certificate made up for the test.

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <mutex>
#include <set>

#include "platform/TransportTestSupport.h"
#include "platform/curl/CurlTransport.h"
#include "quorvix/engine/QXConnection.h"
#include "quorvix/engine/QXDefaultConnectionHandler.h"

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
    key_ = EVP_EC_gen("P-256");
    ASSERT_NE(key_, nullptr);
    cert_ = X509_new();
    X509_set_version(cert_, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(cert_), 1);
    X509_gmtime_adj(X509_getm_notBefore(cert_), -3600);
    X509_gmtime_adj(X509_getm_notAfter(cert_), 24 * 3600);
    X509_set_pubkey(cert_, key_);
    X509_NAME* name = X509_get_subject_name(cert_);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("localhost"), -1, -1, 0);
    X509_set_issuer_name(cert_, name);
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, cert_, cert_, nullptr, nullptr, 0);
    X509_EXTENSION* altNames = X509V3_EXT_conf_nid(nullptr, &context, NID_subject_alt_name, "DNS:localhost");
    ASSERT_NE(altNames, nullptr);
    X509_add_ext(cert_, altNames, -1);
    X509_EXTENSION_free(altNames);
    ASSERT_GT(X509_sign(cert_, key_, EVP_sha256()), 0);

    // A new name for each certificate: the transport caches a bundle by its path.
    static int serial = 0;
    pemPath_ = std::filesystem::temp_directory_path() /
               ("quorvix-transport-" + std::to_string(::getpid()) + "-" + std::to_string(++serial) + ".pem");
    std::FILE* file = std::fopen(pemPath_.c_str(), "w");
    ASSERT_NE(file, nullptr);
    const int written = PEM_write_X509(file, cert_);
    std::fclose(file);
    ASSERT_EQ(written, 1);
  }

  void TearDown() override {
    detail::CurlTransport::setCAFile("");
    std::error_code ignored;
    std::filesystem::remove(pemPath_, ignored);
    X509_free(cert_);
    EVP_PKEY_free(key_);
  }

  /// A TLS server presenting the test certificate.
  std::unique_ptr<httplib::Server> tlsServer() const { return std::make_unique<httplib::SSLServer>(cert_, key_); }

  EVP_PKEY* key_ = nullptr;
  X509* cert_ = nullptr;
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
