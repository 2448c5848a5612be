// One session-bound request on loopback: through the engine, against the raw
// baseline (libcurl + Boost.JSON) with one reused handle and with a new
// connection per request. Prints the ratios after the table.
#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <boost/json/parse.hpp>
#include <condition_variable>
#include <cstdio>
#include <map>
#include <mutex>

#include "quorvix/engine/Quorvix.h"
#include "quorvix/platform/Platform.h"
#include "quorvix/sandbox/SandboxService.h"

namespace {

using quorvix::sandbox::SandboxService;

// The sandbox, an engine with an open session, and the URL of a keep-alive call.
struct Loopback {
  SandboxService service;
  std::shared_ptr<quorvix::Quorvix> engine = quorvix::Quorvix::create();
  std::string keepAliveURL;

  Loopback() {
    service.start();
    quorvix::platform::setLogSink([](std::string_view) {});
    quorvix::platform::setServiceHosts(std::get<quorvix::QXServiceHosts>(quorvix::QXServiceHosts::fromServiceBase(service.baseURL())));
    auto params = std::make_shared<quorvix::AccountParams>();
    params->setAccount(SandboxService::kDemoAccount);
    params->setKnowledgeBase(SandboxService::kDemoKnowledgeBase);
    engine->prepareWithAccountParams(params);
    std::mutex mutex;
    std::condition_variable opened;
    bool done = false;
    engine->startSession([&] {
      std::lock_guard lock(mutex);
      done = true;
      opened.notify_one();
    });
    std::unique_lock lock(mutex);
    opened.wait(lock, [&] { return done; });
    auto url = keepAlive();
    url.appendQueryItem("sid", engine->sessionId());
    keepAliveURL = url.string();
  }

  quorvix::URLComponents keepAlive() const {
    auto url = engine->accountParams()->baseUrlComp().value();
    url.appendPath("/api/widget/v1/keepAlive.js");
    return url;
  }
};

Loopback& loopback() {
  static Loopback instance;
  return instance;
}

void BM_EngineSessionRequest(benchmark::State& state) {
  auto& lb = loopback();
  std::mutex mutex;
  std::condition_variable answered;
  for (auto _ : state) {
    bool done = false;
    bool ok = false;
    lb.engine->executeRequest(lb.keepAlive(), [&](quorvix::QXResponse response) {
      std::lock_guard lock(mutex);
      ok = !response.error();
      done = true;
      answered.notify_one();
    });
    std::unique_lock lock(mutex);
    answered.wait(lock, [&] { return done; });
    if (!ok) state.SkipWithError("request failed");
  }
}

size_t collect(char* data, size_t size, size_t count, void* body) {
  static_cast<std::string*>(body)->append(data, size * count);
  return size * count;
}

// One GET and a parse of its body, as a host would do it without the engine.
bool rawRequest(CURL* curl, const std::string& url, curl_slist* headers) {
  std::string body;
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, collect);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  if (curl_easy_perform(curl) != CURLE_OK) return false;
  boost::system::error_code ec;
  auto value = boost::json::parse(body, ec);
  benchmark::DoNotOptimize(value);
  return !ec;
}

curl_slist* refererHeader() { return curl_slist_append(nullptr, "Referer: app/bench/iOS/0/iOS"); }

void BM_RawCurlReusedHandle(benchmark::State& state) {
  auto& lb = loopback();
  CURL* curl = curl_easy_init();
  curl_slist* headers = refererHeader();
  for (auto _ : state) {
    if (!rawRequest(curl, lb.keepAliveURL, headers)) state.SkipWithError("request failed");
  }
  curl_slist_free_all(headers);
  curl_easy_cleanup(curl);
}

void BM_RawCurlNewConnection(benchmark::State& state) {
  auto& lb = loopback();
  curl_slist* headers = refererHeader();
  for (auto _ : state) {
    CURL* curl = curl_easy_init();
    if (!rawRequest(curl, lb.keepAliveURL, headers)) state.SkipWithError("request failed");
    curl_easy_cleanup(curl);
  }
  curl_slist_free_all(headers);
}

BENCHMARK(BM_EngineSessionRequest)->UseRealTime();
BENCHMARK(BM_RawCurlReusedHandle)->UseRealTime();
BENCHMARK(BM_RawCurlNewConnection)->UseRealTime();

// Prints the table as usual, then each benchmark's time against the raw reused handle.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& run : runs) {
      if (run.run_type == Run::RT_Iteration && run.iterations > 0) {
        perRequest_[run.benchmark_name()] = run.GetAdjustedRealTime();
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    auto base = perRequest_.find("BM_RawCurlReusedHandle/real_time");
    if (base == perRequest_.end() || base->second <= 0) return;
    std::printf("\nper request, against the raw reused libcurl handle:\n");
    for (const auto& [name, time] : perRequest_) std::printf("  %-40s %6.2fx\n", name.c_str(), time / base->second);
  }

 private:
  std::map<std::string, double> perRequest_;
};

}  // namespace

int main(int argc, char** argv) {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  loopback().engine->stop();
  return 0;
}
