#pragma once
// Installs test doubles for every platform seam and restores the defaults afterwards.

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "quorvix/platform/ManualExecutor.h"
#include "quorvix/platform/Platform.h"
#include "quorvix/platform/VirtualScheduler.h"

namespace quorvix::testing {

/// Captures log lines.
class LogCapture {
 public:
  void add(std::string_view line) {
    std::lock_guard lock(mutex_);
    lines_.emplace_back(line);
  }
  std::vector<std::string> lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
  }
  std::size_t countStartingWith(std::string_view prefix) const {
    std::lock_guard lock(mutex_);
    std::size_t count = 0;
    for (const auto& line : lines_) count += line.starts_with(prefix) ? 1 : 0;
    return count;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

class PlatformFixture : public ::testing::Test {
 protected:
  void SetUp() override {
    platform::setMainExecutor(mainQueue);
    platform::setScheduler(clock);
    platform::setLogSink([log = log](std::string_view line) { log->add(line); });
    platform::setHostInfo(QXHostInfo{"com.example.host", "42"});
    ASSERT_FALSE(platform::setServiceHosts(QXServiceHosts{}).has_value());
  }
  void TearDown() override {
    platform::setMainExecutor(nullptr);
    platform::setScheduler(nullptr);
    platform::setLogSink(nullptr);
    platform::setServiceHosts(QXServiceHosts{});
  }

  std::shared_ptr<ManualExecutor> mainQueue = std::make_shared<ManualExecutor>();
  std::shared_ptr<VirtualScheduler> clock = std::make_shared<VirtualScheduler>();
  std::shared_ptr<LogCapture> log = std::make_shared<LogCapture>();
};

}  // namespace quorvix::testing
