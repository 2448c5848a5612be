#include "quorvix/platform/Platform.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>

#include "platform/EngineThreads.h"
#include "platform/Log.h"
#include "platform/SerialExecutor.h"
#include "platform/TimerScheduler.h"

namespace quorvix::platform {
namespace {

// The seams live for the whole process: nothing that runs late at exit (a
// timer, a completion) may find them destroyed, so the state is never freed.
struct State {
  std::mutex mutex;
  std::shared_ptr<MainExecutor> mainExecutor;
  std::shared_ptr<Scheduler> scheduler;
  std::shared_ptr<const LogSink> logSink;
  std::optional<QXHostInfo> hostInfo;
  QXServiceHosts serviceHosts;
  std::optional<std::string> storageRoot;
  // The default threads, kept apart so they can be ended at exit whether or
  // not they are still installed.
  std::weak_ptr<detail::SerialExecutor> defaultExecutor;
  std::weak_ptr<detail::TimerScheduler> defaultScheduler;
  // Set once the process is ending: defaults made afterwards start stopped.
  bool ending = false;
  // Read without the lock on every log call.
  std::atomic<bool> discarding{false};
};

State& state() {
  static State* instance = new State;
  return *instance;
}

std::string executableName() {
  std::ifstream comm("/proc/self/comm");
  std::string name;
  if (comm && std::getline(comm, name) && !name.empty()) return name;
  return "quorvix-host";
}

// Ends the default threads when the process exits. Registered when the first
// one starts; the default transport also calls `stopDefaultThreads` before it
// shuts down, whichever of the two comes first.
void registerExitHook() {
  static const bool registered = [] {
    std::atexit([] { detail::stopDefaultThreads(); });
    return true;
  }();
  (void)registered;
}

}  // namespace

std::shared_ptr<MainExecutor> mainExecutor() {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  if (!s.mainExecutor) {
    auto executor = std::make_shared<detail::SerialExecutor>();
    if (s.ending) executor->stop();
    registerExitHook();
    s.defaultExecutor = executor;
    s.mainExecutor = std::move(executor);
  }
  return s.mainExecutor;
}

void setMainExecutor(std::shared_ptr<MainExecutor> executor) {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  s.mainExecutor = std::move(executor);
}

std::shared_ptr<Scheduler> scheduler() {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  if (!s.scheduler) {
    auto timer = std::make_shared<detail::TimerScheduler>();
    if (s.ending) timer->stop();
    registerExitHook();
    s.defaultScheduler = timer;
    s.scheduler = std::move(timer);
  }
  return s.scheduler;
}

void setScheduler(std::shared_ptr<Scheduler> scheduler) {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  s.scheduler = std::move(scheduler);
}

void setLogSink(LogSink sink) {
  auto& s = state();
  auto shared = sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr;
  std::lock_guard lock(s.mutex);
  s.logSink = std::move(shared);
  s.discarding.store(false, std::memory_order_relaxed);
}

void discardLog() {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  s.logSink = nullptr;
  s.discarding.store(true, std::memory_order_relaxed);
}

void log(std::string_view line) {
  std::shared_ptr<const LogSink> sink;
  {
    auto& s = state();
    if (s.discarding.load(std::memory_order_relaxed)) return;
    std::lock_guard lock(s.mutex);
    if (s.discarding.load(std::memory_order_relaxed)) return;
    sink = s.logSink;
  }
  // Reply text can be megabytes: a line without secrets is passed on as it is.
  const std::optional<std::string> redacted = detail::redactedSecrets(line);
  const std::string_view shown = redacted ? std::string_view(*redacted) : line;
  if (sink) {
    (*sink)(shown);
  } else {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(std::min<std::size_t>(shown.size(), INT_MAX)), shown.data());
  }
}

QXHostInfo hostInfo() {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  if (!s.hostInfo) s.hostInfo = QXHostInfo{executableName(), "0"};
  return *s.hostInfo;
}

void setHostInfo(QXHostInfo info) {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  s.hostInfo = std::move(info);
}

QXServiceHosts serviceHosts() {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  return s.serviceHosts;
}

std::optional<QXError> setServiceHosts(QXServiceHosts hosts) {
  if (auto error = hosts.validate()) return error;
  auto& s = state();
  std::lock_guard lock(s.mutex);
  s.serviceHosts = std::move(hosts);
  return std::nullopt;
}

std::string storageRoot() {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  if (s.storageRoot) return *s.storageRoot;
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr && *xdg != '\0') return xdg;
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return std::string(home) + "/.local/share";
  return ".";
}

void setStorageRoot(std::string path) {
  auto& s = state();
  std::lock_guard lock(s.mutex);
  s.storageRoot = std::move(path);
}

}  // namespace quorvix::platform

namespace quorvix::detail {

void stopDefaultThreads() {
  std::shared_ptr<SerialExecutor> executor;
  std::shared_ptr<TimerScheduler> timer;
  {
    auto& s = platform::state();
    std::lock_guard lock(s.mutex);
    s.ending = true;
    executor = s.defaultExecutor.lock();
    timer = s.defaultScheduler.lock();
  }
  // Joined outside the lock: the task under way may still read a seam.
  if (timer) timer->stop();
  if (executor) executor->stop();
}

bool logWanted() { return !platform::state().discarding.load(std::memory_order_relaxed); }

}  // namespace quorvix::detail
