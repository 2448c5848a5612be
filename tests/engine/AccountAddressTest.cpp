// Names that become hosts, and account parameters shared between threads.
#include <gtest/gtest.h>

#include <vector>

#include "quorvix/engine/AccountParams.h"
#include "quorvix/search/QXSearchResponse.h"
#include "support/RecordedEngineFixture.h"

namespace quorvix {
namespace {

using AccountAddressTest = testing::PlatformFixture;
using EngineAddressTest = testing::RecordedEngineFixture;

TEST_F(AccountAddressTest, NamesThatAreNotHostLabelsBuildNoAddress) {
  struct Case {
    std::optional<std::string> account;
    std::optional<std::string> server;
  };
  const std::vector<Case> refused{
      {"127.0.0.1/#", std::nullopt}, {"evil.com?", std::nullopt}, {"acme.other", std::nullopt},
      {"", std::nullopt},            {"ac me", std::nullopt},     {"acme:8080", std::nullopt},
      {"user@acme", std::nullopt},   {"ac%2Fme", std::nullopt},   {std::string("ac\0me", 5), std::nullopt},
      {"acme", "eu1..prod"},         {"acme", ".eu1"},            {"acme", "eu1."},
      {"acme", "eu1/x#"},            {"acme/../x", "eu1"},        {"acme", "evil.com:443@eu1"},
  };
  for (const auto& c : refused) {
    AccountParams params;
    params.setAccount(c.account);
    params.setServer(c.server);
    const std::string label = c.account.value_or("-") + " / " + c.server.value_or("-");
    EXPECT_FALSE(params.baseUrlComp().has_value()) << label;
    auto error = params.addressError();
    ASSERT_TRUE(error.has_value()) << label;
    EXPECT_EQ(error->domain, errors::kEngineDomain);
    EXPECT_EQ(error->code, errors::kBadAccountName) << label;
  }

  AccountParams good;
  good.setAccount("Acme-2");
  good.setServer("eu-1.prod");
  EXPECT_FALSE(good.addressError().has_value());
  ASSERT_TRUE(good.baseUrlComp().has_value());
  EXPECT_EQ(good.baseUrlComp()->host(), "eu-1.prod.quorvix.com");
  AccountParams none;
  EXPECT_EQ(none.addressError()->code, errors::kNoAccount);
}

TEST_F(EngineAddressTest, EngineRefusesABadAccountBeforeAnyRequest) {
  params->setAccount("127.0.0.1/#");
  params->setApiKey("secret");
  engine->setAccountParams(params);

  engine->startSession([] { ADD_FAILURE() << "no session can open"; });
  ASSERT_TRUE(engine->sessionError());
  EXPECT_EQ(engine->sessionError()->code, errors::kBadAccountName);
  EXPECT_NE(engine->sessionError()->userInfo.at("Description").find("127.0.0.1/#"), std::string::npos);

  std::optional<QXError> searchError;
  engine->searchText("reset", [&](std::shared_ptr<QXSearchResponse>, std::optional<QXError> error) { searchError = error; });
  ASSERT_TRUE(searchError);
  EXPECT_EQ(searchError->code, errors::kBadAccountName);

  // Without an account the engine's error has a code of its own.
  auto bare = Quorvix::create();
  bare->setConnectionHandler(handler);
  bare->startSession([] { ADD_FAILURE() << "no session can open"; });
  ASSERT_TRUE(bare->sessionError());
  EXPECT_EQ(bare->sessionError()->domain, errors::kEngineDomain);
  EXPECT_EQ(bare->sessionError()->code, errors::kNoAccount);
  EXPECT_TRUE(handler->requests().empty()) << "nothing may leave with a name that moves the host, or without one";
}

TEST_F(AccountAddressTest, ServiceHostSuffixesMustBeHostNames) {
  for (const char* suffix : {".quorvix.com/x#", "quorvix.com", ".quorvix..com", ".quorvix.com@evil"}) {
    QXServiceHosts hosts;
    hosts.mainSuffix = suffix;
    auto error = hosts.validate();
    ASSERT_TRUE(error.has_value()) << suffix;
    EXPECT_EQ(error->code, errors::kBadServiceHosts) << suffix;
  }
  QXServiceHosts hosts;
  hosts.fixedHost = "cdn.quorvix.com/x?";
  EXPECT_EQ(hosts.validate().value_or(QXError{}).code, errors::kBadServiceHosts);
  hosts = QXServiceHosts{};
  hosts.scheme = "ftp";
  EXPECT_EQ(hosts.validate().value_or(QXError{}).code, errors::kUnsupportedServiceScheme);
  EXPECT_FALSE(QXServiceHosts{}.validate().has_value());
}

}  // namespace
}  // namespace quorvix
