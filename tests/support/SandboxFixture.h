#pragma once
// An engine of its own, prepared with the sandbox's demo account, talking to
// the sandbox service on loopback through the real transport.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

#include "quorvix/engine/Quorvix.h"
#include "quorvix/sandbox/SandboxService.h"
#include "support/Eventually.h"
#include "support/PlatformFixture.h"

namespace quorvix::testing {

/// Holds what a completion hands over on a transport thread until the test reads it.
template <class T>
class Delivery {
 public:
  void deliver(T value) {
    std::lock_guard lock(mutex_);
    value_ = std::move(value);
    ready_.notify_all();
  }
  /// Waits for the value; the limit only keeps a broken test from hanging.
  std::optional<T> take(std::chrono::seconds limit = std::chrono::seconds(20)) {
    std::unique_lock lock(mutex_);
    ready_.wait_for(lock, limit, [this] { return value_.has_value(); });
    return std::move(value_);
  }

 private:
  std::mutex mutex_;
  std::condition_variable ready_;
  std::optional<T> value_;
};

class SandboxFixture : public PlatformFixture {
 protected:
  SandboxFixture() = default;
  explicit SandboxFixture(sandbox::SandboxOptions options) : service(std::move(options)) {}

  void SetUp() override {
    startService();
    params->setApiKey(sandbox::SandboxService::kDemoApiKey);
    engine->setAccountParams(params);
  }
  void TearDown() override {
    engine->stop();
    service.stop();
    PlatformFixture::TearDown();
  }

  /// Installs the platform doubles, starts the service, routes every service
  /// host to it and names the demo account and knowledge base in `params`:
  /// for fixtures that go on differently (another key, preparing).
  void startService() {
    PlatformFixture::SetUp();
    ASSERT_NE(service.start(), 0);
    auto hosts = QXServiceHosts::fromServiceBase(service.baseURL());
    ASSERT_FALSE(platform::setServiceHosts(std::get<QXServiceHosts>(hosts)).has_value());
    params->setAccount(sandbox::SandboxService::kDemoAccount);
    params->setKnowledgeBase(sandbox::SandboxService::kDemoKnowledgeBase);
  }

  sandbox::SandboxService service;
  std::shared_ptr<AccountParams> params = std::make_shared<AccountParams>();
  std::shared_ptr<Quorvix> engine = Quorvix::create();
};

}  // namespace quorvix::testing
