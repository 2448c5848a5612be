// The engine against the sandbox in TLS mode, through the real transport on
// loopback, with certificates made up for the test: a certificate nobody
// vouches for and one for another host are refused, one issued by the CA
// the transport is given is accepted.
#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <sstream>
#include <vector>
#include <string>

#include "platform/TransportTestSupport.h"
#include "platform/curl/CurlTransport.h"
#include "quorvix/engine/QXDefaultConnectionHandler.h"
#include "quorvix/channeling/QXChanneling.h"
#include "quorvix/engine/Quorvix.h"
#include "quorvix/sandbox/SandboxService.h"
#include "quorvix/search/QXQueryResult.h"
#include "support/SandboxFixture.h"
#include "tool/CliApp.h"

namespace quorvix {
namespace {

namespace fs = std::filesystem;

/// The names the engine reaches the loopback service by: the account's host too.
const std::string kServiceNames = "DNS:localhost,DNS:acme.localhost";

struct KeyFree {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct CertificateFree {
  void operator()(X509* certificate) const { X509_free(certificate); }
};
using Key = std::unique_ptr<EVP_PKEY, KeyFree>;
using Certificate = std::unique_ptr<X509, CertificateFree>;

/// A key and a certificate for `commonName` with the subject names
/// `altNames` ("DNS:localhost"), signed by `issuer` (itself when null). A CA
/// certificate may sign others.
struct Identity {
  Key key;
  Certificate certificate;

  static Identity make(const std::string& commonName, const std::string& altNames, const Identity* issuer,
                       bool authority) {
    Identity made{Key(EVP_EC_gen("P-256")), Certificate(X509_new())};
    X509* cert = made.certificate.get();
    static long serial = 1;
    X509_set_version(cert, 2);
    ASN1_INTEGER_set(X509_get_serialNumber(cert), ++serial);
    X509_gmtime_adj(X509_getm_notBefore(cert), -3600);
    X509_gmtime_adj(X509_getm_notAfter(cert), 24 * 3600);
    X509_set_pubkey(cert, made.key.get());
    X509_NAME_add_entry_by_txt(X509_get_subject_name(cert), "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char*>(commonName.c_str()), -1, -1, 0);
    X509* signer = issuer ? issuer->certificate.get() : cert;
    X509_set_issuer_name(cert, X509_get_subject_name(signer));
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, signer, cert, nullptr, nullptr, 0);
    const auto add = [&](int nid, const std::string& value) {
      X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str());
      if (extension != nullptr) {
        X509_add_ext(cert, extension, -1);
        X509_EXTENSION_free(extension);
      }
    };
    if (authority) {
      add(NID_basic_constraints, "critical,CA:TRUE");
      add(NID_key_usage, "critical,keyCertSign,cRLSign");
    } else {
      add(NID_basic_constraints, "CA:FALSE");
      add(NID_subject_alt_name, altNames);
    }
    X509_sign(cert, issuer ? issuer->key.get() : made.key.get(), EVP_sha256());
    return made;
  }
};

class SandboxTlsTest : public testing::PlatformFixture {
 protected:
  void SetUp() override {
    PlatformFixture::SetUp();
    folder_ = fs::temp_directory_path() / ("quorvix-tls-" + std::to_string(::getpid()) + "-" +
                                           ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(folder_);
    authority_ = Identity::make("Quorvix Test CA", "", nullptr, true);
    caFile_ = write("ca.pem", authority_, false);
  }
  void TearDown() override {
    if (engine_) engine_->stop();
    if (service_) service_->stop();
    detail::CurlTransport::setCAFile("");
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
    PlatformFixture::TearDown();
  }

  /// Writes the certificate (and with `withKey`, the key next to it); returns its path.
  std::string write(const std::string& name, const Identity& identity, bool withKey) {
    const fs::path path = folder_ / name;
    std::FILE* file = std::fopen(path.c_str(), "w");
    EXPECT_NE(file, nullptr);
    if (file == nullptr) return path;
    PEM_write_X509(file, identity.certificate.get());
    std::fclose(file);
    if (withKey) {
      std::FILE* keyFile = std::fopen((path.string() + ".key").c_str(), "w");
      EXPECT_NE(keyFile, nullptr);
      if (keyFile == nullptr) return path;
      PEM_write_PrivateKey(keyFile, identity.key.get(), nullptr, nullptr, 0, nullptr, nullptr);
      std::fclose(keyFile);
    }
    return path;
  }

  /// Starts the sandbox in TLS mode presenting `identity` and points an engine at it.
  void serve(const Identity& identity) {
    const std::string certificate = write("server.pem", identity, true);
    sandbox::SandboxOptions options;
    options.tlsCertificateFile = certificate;
    options.tlsKeyFile = certificate + ".key";
    service_ = std::make_unique<sandbox::SandboxService>(options);
    ASSERT_NE(service_->start(), 0);
    ASSERT_EQ(service_->baseURL().rfind("https://", 0), 0u);
    auto hosts = QXServiceHosts::fromServiceBase(service_->baseURL());
    ASSERT_TRUE(std::holds_alternative<QXServiceHosts>(hosts));
    ASSERT_FALSE(platform::setServiceHosts(std::get<QXServiceHosts>(hosts)).has_value());
    auto params = std::make_shared<AccountParams>();
    params->setAccount(sandbox::SandboxService::kDemoAccount);
    params->setKnowledgeBase(sandbox::SandboxService::kDemoKnowledgeBase);
    params->setApiKey(sandbox::SandboxService::kDemoApiKey);
    engine_ = Quorvix::create();
    engine_->setAccountParams(params);
  }

  /// The channels of an article (a request without a session): its list or its error.
  std::pair<bool, std::optional<QXError>> channels() {
    auto result = std::make_shared<QXQueryResult>();
    result->setResultId("1002");
    testing::Delivery<std::pair<bool, std::optional<QXError>>> delivery;
    engine_->channels(result, std::nullopt, [&](auto list, auto error) { delivery.deliver({list.has_value(), error}); });
    auto outcome = delivery.take();
    EXPECT_TRUE(outcome) << "the completion never ran";
    return outcome.value_or(std::make_pair(false, std::nullopt));
  }

  /// The transport's own verdict on the sandbox's address: the engine's
  /// caller hears a service error, the transport says why.
  std::optional<QXError> transportError() {
    QXDefaultConnectionHandler handler;
    const auto outcome = testing::openAndWait(handler, testing::getRequest(service_->baseURL() + "/api/channeling/v1/get"));
    EXPECT_TRUE(outcome);
    return outcome ? outcome->error : std::nullopt;
  }
  long transportCode() {
    const auto error = transportError();
    return error ? error->code : 0;
  }

  fs::path folder_;
  Identity authority_;
  std::string caFile_;
  std::unique_ptr<sandbox::SandboxService> service_;
  std::shared_ptr<Quorvix> engine_;
};

TEST_F(SandboxTlsTest, ACertificateFromTheGivenAuthorityIsAccepted) {
  serve(Identity::make("localhost", kServiceNames, &authority_, false));
  detail::CurlTransport::setCAFile(caFile_);
  const auto [listed, error] = channels();
  if (error) {
    const auto why = transportError();
    ADD_FAILURE() << describe(*error) << " / " << (why ? describe(*why) : "the transport succeeds");
  }
  EXPECT_TRUE(listed);
  EXPECT_FALSE(service_->requestsFor("/api/channeling/v1/get").empty());
}

TEST_F(SandboxTlsTest, ASelfSignedCertificateIsRefused) {
  serve(Identity::make("localhost", kServiceNames, nullptr, false));
  // Neither the system store nor the test authority vouches for it.
  for (const bool withAuthority : {false, true}) {
    detail::CurlTransport::setCAFile(withAuthority ? caFile_ : "");
    const auto [listed, error] = channels();
    ASSERT_TRUE(error) << "accepted with authority " << withAuthority;
    EXPECT_FALSE(listed);
    EXPECT_EQ(transportCode(), errors::kServerCertificateUntrusted);
  }
  EXPECT_TRUE(service_->requestsFor("/api/channeling/v1/get").empty());
}

TEST_F(SandboxTlsTest, ACertificateForAnotherHostIsRefused) {
  serve(Identity::make("files.example", "DNS:files.example", &authority_, false));
  detail::CurlTransport::setCAFile(caFile_);
  const auto [listed, error] = channels();
  ASSERT_TRUE(error);
  EXPECT_FALSE(listed);
  EXPECT_EQ(transportCode(), errors::kServerCertificateUntrusted);
  EXPECT_TRUE(service_->requestsFor("/api/channeling/v1/get").empty());
}

TEST_F(SandboxTlsTest, TheToolTrustsTheAuthorityOfCaFileAndNothingElse) {
  serve(Identity::make("localhost", kServiceNames, &authority_, false));
  const std::string service = service_->baseURL();
  const auto run = [&](std::vector<std::string> arguments) {
    std::istringstream in;
    std::ostringstream out, err;
    const int code = cli::runTool(arguments, cli::Streams{in, out, err, cli::TerminalInfo{}});
    return std::make_pair(code, err.str());
  };
  const auto refused = run({"--service", service, "--timeout", "20", "channels", "1002"});
  EXPECT_EQ(refused.first, 1) << refused.second;
  EXPECT_NE(refused.second.find("description"), std::string::npos) << "the refusal says why: " << refused.second;

  const auto trusted = run({"--service", service, "--ca-file", caFile_, "--timeout", "20", "channels", "1002"});
  EXPECT_EQ(trusted.first, 0) << trusted.second;

  const auto missing = run({"--ca-file", (folder_ / "absent.pem").string(), "channels", "1002"});
  EXPECT_EQ(missing.first, 2) << "a bundle that does not exist is a usage error: " << missing.second;
}

}  // namespace
}  // namespace quorvix
