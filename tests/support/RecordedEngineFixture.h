#pragma once
// An engine for account "acme" and knowledge base "support" whose requests
// go to a recording handler that the test answers.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "quorvix/engine/Quorvix.h"
#include "support/PlatformFixture.h"
#include "support/RecordingConnectionHandler.h"

namespace quorvix::testing {

/// The paths of the service endpoints most tests watch.
namespace paths {
inline constexpr const char* kHello = "/api/widget/v1/hello.js";
inline constexpr const char* kKeepAlive = "/api/widget/v1/keepAlive.js";
inline constexpr const char* kSearch = "/api/widget/v1/q.js";
inline constexpr const char* kCnf = "/widget/scripts/cnf.json";
inline constexpr const char* kList = "/api/faq/v1/list.json";
inline constexpr const char* kGroup = "/api/kb/v1/faq";
}  // namespace paths

/// A "hello.js" answer opening session `id` with the service's time-out in seconds.
inline Reply helloReply(const std::string& id, int timeout = 600) {
  return Reply::json(R"({"sessionId":")" + id + R"(","timeout":)" + std::to_string(timeout) + R"(,"status":200})");
}

class RecordedEngineFixture : public PlatformFixture {
 protected:
  /// Names the account in `params` and routes the engine to `handler`; each
  /// test decides whether to set the parameters or to prepare.
  void SetUp() override {
    PlatformFixture::SetUp();
    params->setAccount("acme");
    params->setKnowledgeBase("support");
    engine->setConnectionHandler(handler);
  }

  /// The newest request to `path`; a test failure when there is none.
  URLComponents last(std::string_view path) const {
    auto sent = handler->sentTo(path);
    if (sent.empty()) {
      ADD_FAILURE() << "nothing sent to " << path;
      return {};
    }
    return sent.back();
  }
  /// How many requests went to `path`.
  std::size_t count(std::string_view path) const { return handler->sentTo(path).size(); }

  std::shared_ptr<AccountParams> params = std::make_shared<AccountParams>();
  std::shared_ptr<Quorvix> engine = Quorvix::create();
  std::shared_ptr<RecordingConnectionHandler> handler = std::make_shared<RecordingConnectionHandler>();
};

}  // namespace quorvix::testing
