// The engine's own threads: host code that throws on them, and a process that
// exits while they are busy.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <stdexcept>
#include <thread>

#include "platform/SerialExecutor.h"
#include "platform/TimerScheduler.h"
#include "quorvix/engine/Quorvix.h"
#include "quorvix/platform/Platform.h"
#include "quorvix/platform/QXDefaultConnectionHandler.h"
#include "support/PlatformFixture.h"

namespace quorvix {
namespace {

TEST(EngineThreadsTest, TasksThatThrowAreLoggedAndTheThreadGoesOn) {
  auto log = std::make_shared<testing::LogCapture>();
  platform::setLogSink([log](std::string_view line) { log->add(line); });
  {
    detail::SerialExecutor executor;
    std::promise<void> after;
    executor.post([] { throw std::runtime_error("completion failed"); });
    executor.post([] { throw 7; });
    executor.post([&after] { after.set_value(); });
    ASSERT_EQ(after.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);

    detail::TimerScheduler timer;
    std::promise<void> later;
    timer.schedule(&timer, 0, [] { throw std::logic_error("delayed call failed"); });
    timer.schedule(&timer, 0.001, [&later] { later.set_value(); });
    ASSERT_EQ(later.get_future().wait_for(std::chrono::seconds(10)), std::future_status::ready);
  }
  platform::setLogSink(nullptr);
  const auto lines = log->lines();
  auto mentions = [&lines](std::string_view text) {
    return std::any_of(lines.begin(), lines.end(), [text](const std::string& l) { return l.find(text) != std::string::npos; });
  };
  EXPECT_TRUE(mentions("completion failed"));
  EXPECT_TRUE(mentions("delayed call failed"));
  EXPECT_TRUE(mentions("unknown exception"));
}

// A loopback port that takes connections and never answers them.
int silentPort(int* socketOut) {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (fd < 0 || ::bind(fd, reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(fd, 64) != 0 ||
      ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    return 0;
  }
  *socketOut = fd;
  return ntohs(address.sin_port);
}

// Counts the tasks the engine's threads run while the process ends.
std::atomic<int> ticks = 0;

// Keeps the default timer and main executor busy sending through the default
// transport until the process ends.
void keepThreadsBusy(std::shared_ptr<Quorvix> engine, std::string url) {
  ++ticks;
  auto handler = std::make_shared<QXDefaultConnectionHandler>();
  QXURLRequest request;
  request.url = url;
  request.timeoutInterval = 1.0;
  handler->open(request, [](std::string, std::optional<QXHTTPURLResponse>, std::optional<QXError>) {});
  engine->searchText("again", nullptr);
  platform::scheduler()->schedule(&ticks, 0.0005, [engine, url] { keepThreadsBusy(engine, url); });
  platform::mainExecutor()->post([engine] {
    ++ticks;
    engine->stop();
  });
}

[[noreturn]] void exitWithEngineBusy() {
  // Registered before the transport exists, so it runs after the transport has
  // shut down at exit: by then no thread of the engine may still run tasks.
  std::atexit([] {
    const int before = ticks.load();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (ticks.load() != before) std::_Exit(3);
  });
  int listener = -1;
  const int port = silentPort(&listener);
  if (port == 0) std::_Exit(10);
  auto hosts = QXServiceHosts::fromServiceBase("http://localhost:" + std::to_string(port));
  if (!std::holds_alternative<QXServiceHosts>(hosts) || platform::setServiceHosts(std::get<QXServiceHosts>(hosts))) {
    std::_Exit(11);
  }
  platform::setLogSink([](std::string_view) {});
  // Held for the whole process, as a host's engine is.
  static auto* engine = new std::shared_ptr<Quorvix>(Quorvix::create());
  auto params = std::make_shared<AccountParams>();
  params->setAccount("acme");
  (*engine)->prepareWithAccountParams(params);
  (*engine)->searchText("in flight", nullptr);
  keepThreadsBusy(*engine, "http://127.0.0.1:" + std::to_string(port) + "/slow");
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  std::exit(0);
}

TEST(EngineThreadsDeathTest, ProcessExitsCleanlyWithAnEngineMidRequest) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (int run = 0; run < 3; ++run) {
    EXPECT_EXIT(exitWithEngineBusy(), ::testing::ExitedWithCode(0), "") << "run " << run;
  }
}

}  // namespace
}  // namespace quorvix
