// A session-bound search on loopback against a fixed-reply keep-alive server
// (in a process of its own, so CPU time is the client's): through the engine,
// against the raw baseline of one reused libcurl handle plus a Boost.JSON
// parse; and over TLS, through the engine's reused connections against a new
// connection per request. Prints the ratios after the table. bench/compare.py
// runs two builds of this program in interleaved rounds.
#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include <boost/json/parse.hpp>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "BenchCertificate.h"
#include "FixedReplyServer.h"
#include "platform/curl/CurlTransport.h"
#include "quorvix/engine/Quorvix.h"
#include "quorvix/platform/Platform.h"
#include "quorvix/sandbox/SandboxService.h"
#include "quorvix/search/QXSearchResponse.h"

namespace {

using quorvix::bench::FixedReplies;
using quorvix::bench::FixedReplyServer;
using quorvix::sandbox::SandboxService;

constexpr const char* kQuery = "reset password";
constexpr const char* kReferer = "Referer: app/bench/iOS/0/iOS";

size_t collect(char* data, size_t size, size_t count, void* body) {
  static_cast<std::string*>(body)->append(data, size * count);
  return size * count;
}

/// A GET with the client identification header; the body, or nothing.
std::optional<std::string> rawGet(CURL* curl, const std::string& url, curl_slist* headers) {
  std::string body;
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, collect);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  if (curl_easy_perform(curl) != CURLE_OK) return std::nullopt;
  return body;
}

quorvix::QXServiceHosts hostsFor(const std::string& base) {
  return std::get<quorvix::QXServiceHosts>(quorvix::QXServiceHosts::fromServiceBase(base));
}

std::shared_ptr<quorvix::AccountParams> demoParams() {
  auto params = std::make_shared<quorvix::AccountParams>();
  params->setAccount(SandboxService::kDemoAccount);
  params->setKnowledgeBase(SandboxService::kDemoKnowledgeBase);
  params->setApiKey(SandboxService::kDemoApiKey);
  return params;
}

/// Runs one search through `engine` and waits for it; whether it succeeded.
bool engineSearch(quorvix::Quorvix& engine) {
  std::mutex mutex;
  std::condition_variable answered;
  bool done = false;
  bool ok = false;
  engine.searchText(kQuery, [&](std::shared_ptr<quorvix::QXSearchResponse> response, std::optional<quorvix::QXError> error) {
    std::lock_guard lock(mutex);
    ok = response && !error;
    done = true;
    answered.notify_one();
  });
  std::unique_lock lock(mutex);
  answered.wait(lock, [&] { return done; });
  return ok;
}

/// The replies the sandbox gives one engine search, the target it was sent
/// to, and the fixed-reply servers (plain and TLS) answering with them.
struct Setup {
  std::optional<quorvix::bench::TlsFiles> certificate = quorvix::bench::makeCertificate();
  std::string searchTarget;
  std::unique_ptr<FixedReplyServer> plain;
  std::unique_ptr<FixedReplyServer> tls;
  std::shared_ptr<quorvix::Quorvix> engine;

  Setup() {
#ifdef QUORVIX_BENCH_NO_DISCARD_LOG  // an engine built before discardLog existed
    quorvix::platform::setLogSink([](std::string_view) {});
#else
    quorvix::platform::discardLog();
#endif
    FixedReplies replies = capture();
    plain = std::make_unique<FixedReplyServer>(replies, std::nullopt);
    if (certificate) {
      tls = std::make_unique<FixedReplyServer>(replies, certificate);
      quorvix::detail::CurlTransport::setCAFile(certificate->certificatePath);
    }
    engine = quorvix::Quorvix::create();
    engine->setAccountParams(demoParams());
  }

  ~Setup() {
    engine->stop();
    if (certificate) {
      std::remove(certificate->certificatePath.c_str());
      std::remove(certificate->keyPath.c_str());
    }
  }

  std::string plainBase() const { return "http://localhost:" + std::to_string(plain->port()); }
  std::string tlsBase() const { return "https://localhost:" + std::to_string(tls ? tls->port() : 0); }
  /// The address of the search as the engine sends it, on the account's host.
  std::string searchURL(bool overTls) const {
    return (overTls ? "https://acme.localhost:" + std::to_string(tls->port())
                    : "http://acme.localhost:" + std::to_string(plain->port())) +
           searchTarget;
  }

  /// One engine search against the sandbox, and the replies to its two requests.
  FixedReplies capture() {
    SandboxService service;
    service.start();
    quorvix::platform::setServiceHosts(hostsFor(service.baseURL()));
    auto probe = quorvix::Quorvix::create();
    probe->setAccountParams(demoParams());
    engineSearch(*probe);
    probe->stop();
    const std::string helloTarget = service.requestsFor("/api/widget/v1/hello.js").at(0).target;
    searchTarget = service.requestsFor("/api/widget/v1/q.js").at(0).target;
    const std::string base = "http://acme.localhost:" + std::to_string(service.port());
    CURL* curl = curl_easy_init();
    curl_slist* headers = curl_slist_append(nullptr, kReferer);
    FixedReplies replies{rawGet(curl, base + helloTarget, headers).value_or("{}"),
                         rawGet(curl, base + searchTarget, headers).value_or("{}")};
    curl_slist_free_all(headers);
    curl_easy_cleanup(curl);
    return replies;
  }
};

Setup& setup() {
  static Setup instance;
  return instance;
}

void engineSearches(benchmark::State& state, bool overTls) {
  auto& s = setup();
  if (overTls && !s.tls) {
    state.SkipWithError("no TLS server");
    return;
  }
  quorvix::platform::setServiceHosts(hostsFor(overTls ? s.tlsBase() : s.plainBase()));
  if (!engineSearch(*s.engine)) state.SkipWithError("warm-up search failed");  // opens the session
  for (auto _ : state) {
    if (!engineSearch(*s.engine)) state.SkipWithError("search failed");
  }
}

void BM_EngineSearch(benchmark::State& state) { engineSearches(state, false); }
void BM_EngineSearchTls(benchmark::State& state) { engineSearches(state, true); }

/// A GET and a parse of its body, as a host would do it without the engine.
bool rawSearch(CURL* curl, const std::string& url, curl_slist* headers) {
  const std::optional<std::string> body = rawGet(curl, url, headers);
  if (!body) return false;
  boost::system::error_code ec;
  auto value = boost::json::parse(*body, ec);
  benchmark::DoNotOptimize(value);
  return !ec;
}

void trustBenchCertificate(CURL* curl) {
  curl_easy_setopt(curl, CURLOPT_CAINFO, setup().certificate->certificatePath.c_str());
  curl_easy_setopt(curl, CURLOPT_CAPATH, static_cast<const char*>(nullptr));
}

void BM_RawSearchReusedHandle(benchmark::State& state) {
  const std::string url = setup().searchURL(false);
  CURL* curl = curl_easy_init();
  curl_slist* headers = curl_slist_append(nullptr, kReferer);
  for (auto _ : state) {
    if (!rawSearch(curl, url, headers)) state.SkipWithError("request failed");
  }
  curl_slist_free_all(headers);
  curl_easy_cleanup(curl);
}

void BM_RawSearchTlsNewConnection(benchmark::State& state) {
  if (!setup().tls) {
    state.SkipWithError("no TLS server");
    return;
  }
  const std::string url = setup().searchURL(true);
  curl_slist* headers = curl_slist_append(nullptr, kReferer);
  for (auto _ : state) {
    CURL* curl = curl_easy_init();
    trustBenchCertificate(curl);
    if (!rawSearch(curl, url, headers)) state.SkipWithError("request failed");
    curl_easy_cleanup(curl);
  }
  curl_slist_free_all(headers);
}

BENCHMARK(BM_EngineSearch)->UseRealTime()->MeasureProcessCPUTime();
BENCHMARK(BM_RawSearchReusedHandle)->UseRealTime()->MeasureProcessCPUTime();
BENCHMARK(BM_EngineSearchTls)->UseRealTime()->MeasureProcessCPUTime();
BENCHMARK(BM_RawSearchTlsNewConnection)->UseRealTime()->MeasureProcessCPUTime();

/// Prints the table as usual, then the ratios the goals are stated in.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& run : runs) {
      if (run.run_type == Run::RT_Iteration && run.iterations > 0 && !run.error_occurred) {
        const std::string name = run.benchmark_name().substr(0, run.benchmark_name().find('/'));
        wall_[name] = run.GetAdjustedRealTime();
        cpu_[name] = run.GetAdjustedCPUTime();
      }
    }
    ConsoleReporter::ReportRuns(runs);
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    const auto ratio = [](std::map<std::string, double>& times, const char* a, const char* b) {
      return times.count(a) && times.count(b) && times[b] > 0 ? times[a] / times[b] : 0.0;
    };
    std::printf("\nengine search / raw reused libcurl + parse: %.2fx wall, %.2fx CPU\n",
                ratio(wall_, "BM_EngineSearch", "BM_RawSearchReusedHandle"),
                ratio(cpu_, "BM_EngineSearch", "BM_RawSearchReusedHandle"));
    std::printf("TLS: new connection per request / engine's reused connections: %.2fx wall\n",
                ratio(wall_, "BM_RawSearchTlsNewConnection", "BM_EngineSearchTls"));
  }

 private:
  std::map<std::string, double> wall_;
  std::map<std::string, double> cpu_;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], FixedReplyServer::kServeArgument) == 0) {
    return FixedReplyServer::serve(argc - 2, argv + 2);
  }
  curl_global_init(CURL_GLOBAL_DEFAULT);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  setup();
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
