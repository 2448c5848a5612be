// The engine against the sandbox in TLS mode, through the real transport on
// loopback, with certificates made up for the test: a certificate nobody
// vouches for and one for another host are refused, one issued by the CA
// the transport is given is accepted.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <vector>
#include <string>

#include "platform/TransportTestSupport.h"
#include "platform/curl/CurlTransport.h"
#include "quorvix/channeling/QXChanneling.h"
#include "quorvix/engine/Quorvix.h"
#include "quorvix/platform/QXDefaultConnectionHandler.h"
#include "quorvix/sandbox/SandboxService.h"
#include "quorvix/search/QXQueryResult.h"
#include "support/SandboxFixture.h"
#include "support/TestCertificates.h"
#include "support/ToolRun.h"

namespace quorvix {
namespace {

namespace fs = std::filesystem;

/// The names the engine reaches the loopback service by: the account's host too.
const std::string kServiceNames = "DNS:localhost,DNS:acme.localhost";

using testing::Identity;

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
    const std::string path = (folder_ / name).string();
    EXPECT_TRUE(identity.writeCertificate(path)) << path;
    if (withKey) {
      EXPECT_TRUE(identity.writeKey(path + ".key")) << path;
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
  const auto refused = testing::runTool({"--service", service, "--timeout", "20", "channels", "1002"});
  EXPECT_EQ(refused.code, 1) << refused.err;
  EXPECT_NE(refused.err.find("description"), std::string::npos) << "the refusal says why: " << refused.err;

  const auto trusted = testing::runTool({"--service", service, "--ca-file", caFile_, "--timeout", "20", "channels", "1002"});
  EXPECT_EQ(trusted.code, 0) << trusted.err;

  const auto missing = testing::runTool({"--ca-file", (folder_ / "absent.pem").string(), "channels", "1002"});
  EXPECT_EQ(missing.code, 2) << "a bundle that does not exist is a usage error: " << missing.err;
}

}  // namespace
}  // namespace quorvix
