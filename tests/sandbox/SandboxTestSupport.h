#pragma once
// A started sandbox and helpers to talk to it with httplib on loopback.

#include <gtest/gtest.h>
#include <httplib.h>

#include <boost/json.hpp>
#include <memory>
#include <string>

#include "quorvix/sandbox/SandboxService.h"

namespace quorvix::sandbox::testing {

inline constexpr const char* kHelloEndpoint = "/api/widget/v1/hello.js";
inline constexpr const char* kKeepAliveEndpoint = "/api/widget/v1/keepAlive.js";

class SandboxServiceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    port_ = sandbox_.start();
    ASSERT_GT(port_, 0);
  }

  /// A client that sends the target as written (no re-encoding) with `host` as
  /// its Host header.
  std::unique_ptr<httplib::Client> client(const std::string& host) const {
    auto made = std::make_unique<httplib::Client>("127.0.0.1", port_);
    made->set_url_encode(false);
    made->set_default_headers({{"Host", host + ":" + std::to_string(port_)}});
    return made;
  }

  httplib::Result get(const std::string& host, const std::string& target) const { return client(host)->Get(target); }

  /// The session id of a fresh session of `account`.
  std::string openSession(const std::string& account = SandboxService::kDemoAccount) const {
    httplib::Result result = get(account + ".localhost", kHelloEndpoint);
    if (!result || result->status != 200) {
      ADD_FAILURE() << "hello.js failed";
      return {};
    }
    return std::string(boost::json::parse(result->body).at("sessionId").as_string());
  }

  int keepAliveStatus(const std::string& sid) const {
    httplib::Result result = get("acme.localhost", std::string(kKeepAliveEndpoint) + "?sid=" + sid);
    return result ? result->status : -1;
  }

  SandboxService sandbox_;
  int port_ = 0;
};

}  // namespace quorvix::sandbox::testing
