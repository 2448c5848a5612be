/// @file
/// The default connection handler against throwaway loopback servers.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <condition_variable>
#include <future>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/TransportTestSupport.h"
#include "quorvix/engine/QXConnection.h"
#include "quorvix/platform/QXDefaultConnectionHandler.h"
#include "support/LoopbackPorts.h"

namespace quorvix {
namespace {

using testing::closedPort;
using testing::getRequest;
using testing::kHangGuard;
using testing::LoopbackServer;
using testing::openAndWait;
using testing::Outcome;

constexpr std::size_t kMiB = 1024 * 1024;

/// A body with bytes that text handling would damage.
std::string binaryBody() {
  std::string body = std::string("head") + '\0' + "mid\xff\xfe tail";
  for (int i = 0; i < 1000; ++i) body += static_cast<char>(i % 256);
  return body;
}

/// Sends every request through the default transport with a short time-out.
class HurriedHandler : public QXConnectionHandler {
 public:
  void open(const QXURLRequest& request, QXOpenCompletion completion) override {
    QXURLRequest hurried = request;
    hurried.timeoutInterval = 0.3;
    inner_.open(hurried, std::move(completion));
  }
  std::optional<std::string> fetchDataAtRequest(const QXURLRequest& request, std::optional<QXError>* error) override {
    return inner_.fetchDataAtRequest(request, error);
  }

 private:
  QXDefaultConnectionHandler inner_;
};

/// The error `QXConnection` reports to hosts for a request to `url` through `handler`.
std::optional<QXError> connectionError(const std::shared_ptr<QXConnectionHandler>& handler, const std::string& url) {
  auto promise = std::make_shared<std::promise<std::optional<QXError>>>();
  auto future = promise->get_future();
  QXConnection::openConnection(handler, URLComponents::parse(url).value(),
                               [promise](QXResponse response) { promise->set_value(response.error()); });
  if (future.wait_for(kHangGuard) != std::future_status::ready) return QXError{"hung", 0, {}};
  return future.get();
}

/// The lowercased transport reason of a service error of code 0 (empty for any other error).
std::string reason(const std::optional<QXError>& error) {
  if (!error || error->domain != errors::kServiceDomain || error->code != 0) return {};
  const auto found = error->userInfo.find("description");
  std::string text = found != error->userInfo.end() ? found->second : std::string();
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

TEST(DefaultTransportAnswers, DeliversBodyStatusAndEffectiveURL) {
  LoopbackServer server;
  server.http().Get("/data", [](const httplib::Request&, httplib::Response& res) {
    res.set_content(binaryBody(), "application/octet-stream");
  });
  server.http().Get("/broken", [](const httplib::Request&, httplib::Response& res) {
    res.status = 500;
    res.set_content("server trouble", "text/plain");
  });
  server.http().Get("/moved", [](const httplib::Request&, httplib::Response& res) { res.set_redirect("/data"); });
  ASSERT_TRUE(server.start());
  QXDefaultConnectionHandler handler;

  const std::optional<Outcome> plain = openAndWait(handler, getRequest(server.url("/data")));
  ASSERT_TRUE(plain);
  EXPECT_FALSE(plain->error);
  ASSERT_TRUE(plain->response);
  EXPECT_EQ(plain->response->statusCode, 200);
  EXPECT_EQ(plain->response->url, server.url("/data"));
  EXPECT_EQ(plain->body, binaryBody());

  // A server error is still an answer at this level.
  const std::optional<Outcome> failing = openAndWait(handler, getRequest(server.url("/broken")));
  ASSERT_TRUE(failing);
  EXPECT_FALSE(failing->error);
  ASSERT_TRUE(failing->response);
  EXPECT_EQ(failing->response->statusCode, 500);
  EXPECT_EQ(failing->body, "server trouble");

  const std::optional<Outcome> moved = openAndWait(handler, getRequest(server.url("/moved")));
  ASSERT_TRUE(moved);
  EXPECT_FALSE(moved->error);
  ASSERT_TRUE(moved->response);
  EXPECT_EQ(moved->response->statusCode, 200);
  EXPECT_EQ(moved->response->url, server.url("/data"));
  EXPECT_EQ(moved->body, binaryBody());

  std::optional<QXError> error = QXError{"stale", 1, {}};
  EXPECT_EQ(handler.fetchDataAtRequest(getRequest(server.url("/data")), &error), binaryBody());
  EXPECT_FALSE(error);
}

TEST(DefaultTransportAnswers, SendsRequestHeadersAndDecodesCompressedText) {
  std::mutex mutex;
  std::string referer;
  std::string custom;
  std::string acceptEncoding;
  const std::string text(200000, 'q');
  LoopbackServer server;
  server.http().Get("/text", [&](const httplib::Request& req, httplib::Response& res) {
    std::lock_guard lock(mutex);
    referer = req.get_header_value("Referer");
    custom = req.get_header_value("X-Quorvix-Test");
    acceptEncoding = req.get_header_value("Accept-Encoding");
    res.set_content(text, "text/plain");
  });
  ASSERT_TRUE(server.start());
  QXDefaultConnectionHandler handler;

  QXURLRequest request = getRequest(server.url("/text"));
  request.setValue("https://host.example/widget", "Referer");
  request.setValue("yes", "X-Quorvix-Test");
  const std::optional<Outcome> outcome = openAndWait(handler, request);
  ASSERT_TRUE(outcome);
  EXPECT_FALSE(outcome->error);
  EXPECT_EQ(outcome->body, text);
  std::lock_guard lock(mutex);
  EXPECT_EQ(referer, "https://host.example/widget");
  EXPECT_EQ(custom, "yes");
  EXPECT_NE(acceptEncoding.find("gzip"), std::string::npos) << acceptEncoding;
}

TEST(DefaultTransportThreads, CompletionsRunOffTheCallerAndMayBlockOrFetch) {
  LoopbackServer server;
  server.http().Get("/data", [](const httplib::Request&, httplib::Response& res) {
    res.set_content("payload", "text/plain");
  });
  ASSERT_TRUE(server.start());
  QXDefaultConnectionHandler handler;

  const std::optional<Outcome> outcome = openAndWait(handler, getRequest(server.url("/data")));
  ASSERT_TRUE(outcome);
  EXPECT_NE(outcome->thread, std::this_thread::get_id());

  // The first completion blocks until the second one has run: that only ends
  // if a blocked completion stalls neither the transfers nor other completions.
  std::promise<void> secondDone;
  std::shared_future<void> secondDoneFuture = secondDone.get_future().share();
  std::promise<bool> firstSawSecond;
  handler.open(getRequest(server.url("/data")), [&](std::string, std::optional<QXHTTPURLResponse>,
                                                    std::optional<QXError>) {
    firstSawSecond.set_value(secondDoneFuture.wait_for(kHangGuard) == std::future_status::ready);
  });
  handler.open(getRequest(server.url("/data")),
               [&](std::string, std::optional<QXHTTPURLResponse>, std::optional<QXError>) { secondDone.set_value(); });
  std::future<bool> first = firstSawSecond.get_future();
  ASSERT_EQ(first.wait_for(2 * kHangGuard), std::future_status::ready);
  EXPECT_TRUE(first.get());

  // A completion may read synchronously through the same handler.
  std::promise<std::optional<std::string>> nested;
  handler.open(getRequest(server.url("/data")), [&](std::string, std::optional<QXHTTPURLResponse>,
                                                    std::optional<QXError>) {
    nested.set_value(handler.fetchDataAtRequest(getRequest(server.url("/data")), nullptr));
  });
  std::future<std::optional<std::string>> nestedResult = nested.get_future();
  ASSERT_EQ(nestedResult.wait_for(kHangGuard), std::future_status::ready);
  EXPECT_EQ(nestedResult.get(), std::optional<std::string>("payload"));
}

TEST(DefaultTransportThreads, EveryConcurrentRequestCompletesExactlyOnce) {
  LoopbackServer server;
  server.http().Get(R"(/echo/(\d+))", [](const httplib::Request& req, httplib::Response& res) {
    res.set_content(req.matches[1].str(), "text/plain");
  });
  ASSERT_TRUE(server.start());
  QXDefaultConnectionHandler handler;

  constexpr int kThreads = 4;
  constexpr int kPerThread = 50;
  std::vector<std::atomic<int>> calls(kThreads * kPerThread);
  std::atomic<int> wrongBodies{0};
  std::atomic<int> finished{0};
  std::vector<std::thread> callers;
  for (int t = 0; t < kThreads; ++t) {
    callers.emplace_back([&, t] {
      for (int i = t * kPerThread; i < (t + 1) * kPerThread; ++i) {
        handler.open(getRequest(server.url("/echo/" + std::to_string(i))),
                     [&, i](std::string body, std::optional<QXHTTPURLResponse>, std::optional<QXError> error) {
                       if (error || body != std::to_string(i)) ++wrongBodies;
                       ++calls[i];
                       ++finished;
                     });
      }
    });
  }
  for (std::thread& caller : callers) caller.join();
  const auto deadline = std::chrono::steady_clock::now() + 3 * kHangGuard;
  while (finished < kThreads * kPerThread && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // room for a duplicate call to show up
  EXPECT_EQ(wrongBodies, 0);
  for (int i = 0; i < kThreads * kPerThread; ++i) EXPECT_EQ(calls[i], 1) << "request " << i;
}

TEST(DefaultTransportConnections, SequentialRequestsShareOneConnection) {
  std::mutex mutex;
  std::set<int> clientPorts;
  int served = 0;
  LoopbackServer server;
  server.http().set_keep_alive_max_count(1000);
  server.http().Get("/data", [&](const httplib::Request& req, httplib::Response& res) {
    std::lock_guard lock(mutex);
    clientPorts.insert(req.remote_port);
    ++served;
    res.set_content("x", "text/plain");
  });
  ASSERT_TRUE(server.start());
  QXDefaultConnectionHandler handler;

  for (int i = 0; i < 20; ++i) {
    ASSERT_TRUE(handler.fetchDataAtRequest(getRequest(server.url("/data")), nullptr)) << "request " << i;
    const std::optional<Outcome> outcome = openAndWait(handler, getRequest(server.url("/data")));
    ASSERT_TRUE(outcome && !outcome->error) << "request " << i;
  }
  std::lock_guard lock(mutex);
  EXPECT_EQ(served, 40);
  EXPECT_EQ(clientPorts.size(), 1u);
}

TEST(DefaultTransportFailures, ReportsTransportErrorsWithURLLoadingCodes) {
  std::mutex mutex;
  std::condition_variable released;
  bool release = false;
  LoopbackServer server;
  server.http().Get("/slow", [&](const httplib::Request&, httplib::Response& res) {
    std::unique_lock lock(mutex);
    released.wait_for(lock, kHangGuard, [&] { return release; });
    res.set_content("late", "text/plain");
  });
  server.http().Get("/cut", [](const httplib::Request&, httplib::Response& res) {
    res.set_content_provider(1000, "application/octet-stream",
                             [](std::size_t, std::size_t, httplib::DataSink& sink) {
                               sink.write("only part", 9);
                               return false;  // drop the connection mid-body
                             });
  });
  ASSERT_TRUE(server.start());
  QXDefaultConnectionHandler handler;

  const std::string slowURL = server.url("/slow");
  const std::optional<Outcome> timedOut = openAndWait(handler, getRequest(slowURL, 0.3));
  // Hosts hear a transfer failure as the service error of code 0, which keeps
  // libcurl's reason and the address.
  const auto hurried = std::make_shared<HurriedHandler>();
  const std::optional<QXError> timedOutForHosts = connectionError(hurried, slowURL);
  {
    std::lock_guard lock(mutex);
    release = true;
  }
  released.notify_all();
  ASSERT_TRUE(timedOut);
  ASSERT_TRUE(timedOut->error);
  EXPECT_FALSE(timedOut->response);
  EXPECT_EQ(timedOut->error->domain, "NSURLErrorDomain");
  EXPECT_EQ(timedOut->error->code, errors::kTimedOut);
  EXPECT_EQ(timedOut->error->userInfo.at("NSErrorFailingURLStringKey"), slowURL);
  EXPECT_FALSE(timedOut->error->userInfo.at("NSLocalizedDescription").empty());
  ASSERT_TRUE(timedOutForHosts);
  EXPECT_NE(reason(timedOutForHosts).find("timed out"), std::string::npos) << describe(*timedOutForHosts);
  EXPECT_EQ(timedOutForHosts->userInfo.at("url"), slowURL);

  const std::optional<Outcome> cut = openAndWait(handler, getRequest(server.url("/cut")));
  ASSERT_TRUE(cut);
  EXPECT_EQ(cut->code(), errors::kNetworkConnectionLost);
  EXPECT_FALSE(cut->response);

  const std::string refusedURL = "http://127.0.0.1:" + std::to_string(closedPort()) + "/api/q.js?apiKey=k3y&text=a&sid=s1d";
  const std::optional<Outcome> refused = openAndWait(handler, getRequest(refusedURL));
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->code(), errors::kCannotConnectToHost);
  const std::optional<QXError> refusedForHosts = connectionError(hurried, refusedURL);
  ASSERT_TRUE(refusedForHosts);
  EXPECT_NE(reason(refusedForHosts).find("connection refused"), std::string::npos) << describe(*refusedForHosts);
  // The address shown keeps the path and the plain items, never the secrets.
  const std::string shown = refusedForHosts->userInfo.at("url");
  EXPECT_NE(shown.find("/api/q.js?apiKey=***&text=a&sid=***"), std::string::npos) << shown;
  EXPECT_EQ(shown.find("k3y"), std::string::npos);
  EXPECT_EQ(shown.find("s1d"), std::string::npos);

  const std::optional<Outcome> unknown = openAndWait(handler, getRequest("https://nosuchhost.invalid/"));
  ASSERT_TRUE(unknown);
  EXPECT_EQ(unknown->code(), errors::kCannotFindHost);

  std::optional<QXError> error;
  EXPECT_FALSE(handler.fetchDataAtRequest(getRequest(server.url("/cut")), &error));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code, errors::kNetworkConnectionLost);
}

TEST(DefaultTransportFailures, RefusesRepliesOver32MiB) {
  const std::string chunk(kMiB, 'z');
  LoopbackServer server;
  const auto serve = [&chunk](std::size_t offset, httplib::DataSink& sink) {
    return offset >= 33 * kMiB || sink.write(chunk.data(), chunk.size());
  };
  server.http().Get("/announced", [&](const httplib::Request&, httplib::Response& res) {
    res.set_content_provider(33 * kMiB, "application/octet-stream",
                             [&](std::size_t offset, std::size_t, httplib::DataSink& sink) { return serve(offset, sink); });
  });
  server.http().Get("/chunked", [&](const httplib::Request&, httplib::Response& res) {
    res.set_chunked_content_provider("application/octet-stream", [&](std::size_t offset, httplib::DataSink& sink) {
      if (offset >= 33 * kMiB) {
        sink.done();
        return true;
      }
      return serve(offset, sink);
    });
  });
  server.http().Get("/exact", [&](const httplib::Request&, httplib::Response& res) {
    res.set_content(std::string(32 * kMiB, 'e'), "application/octet-stream");
  });
  ASSERT_TRUE(server.start());
  QXDefaultConnectionHandler handler;

  for (const char* path : {"/announced", "/chunked"}) {
    const std::optional<Outcome> outcome = openAndWait(handler, getRequest(server.url(path)));
    ASSERT_TRUE(outcome) << path;
    EXPECT_EQ(outcome->code(), errors::kDataLengthExceedsMaximum) << path;
    EXPECT_FALSE(outcome->response) << path;
  }
  const std::optional<Outcome> atLimit = openAndWait(handler, getRequest(server.url("/exact")));
  ASSERT_TRUE(atLimit);
  EXPECT_FALSE(atLimit->error);
  EXPECT_EQ(atLimit->body.size(), 32 * kMiB);
}

TEST(DefaultTransportURLs, RefusesURLsItMustNotSendTo) {
  QXDefaultConnectionHandler handler;
  const struct {
    const char* url;
    long code;
  } cases[] = {
      {"http://example.com/", errors::kUnsupportedURL},
      {"ftp://127.0.0.1/file", errors::kUnsupportedURL},
      {"not a url", errors::kBadURL},
      {"", errors::kBadURL},
  };
  for (const auto& c : cases) {
    const std::optional<Outcome> outcome = openAndWait(handler, getRequest(c.url));
    ASSERT_TRUE(outcome) << c.url;
    EXPECT_EQ(outcome->code(), c.code) << c.url;
    EXPECT_EQ(outcome->error->domain, "NSURLErrorDomain");
    EXPECT_NE(outcome->thread, std::this_thread::get_id()) << c.url;
    std::optional<QXError> error;
    EXPECT_FALSE(handler.fetchDataAtRequest(getRequest(c.url), &error)) << c.url;
    EXPECT_EQ(error ? error->code : 0, c.code) << c.url;
  }
}

TEST(DefaultTransportURLs, PlainHttpRedirectsStayOnThisMachine) {
  std::atomic<int> outsideHits{0};
  LoopbackServer outside(std::make_unique<httplib::Server>(), "127.0.0.2");  // loopback, but not a loopback name
  outside.http().Get("/target", [&](const httplib::Request&, httplib::Response& res) {
    ++outsideHits;
    res.set_content("should not be read", "text/plain");
  });
  ASSERT_TRUE(outside.start());
  LoopbackServer server;
  server.http().Get("/data", [](const httplib::Request&, httplib::Response& res) { res.set_content("here", "text/plain"); });
  server.http().Get("/away", [&](const httplib::Request&, httplib::Response& res) {
    res.set_redirect(outside.url("/target", "127.0.0.2"));
  });
  server.http().Get("/local", [&](const httplib::Request&, httplib::Response& res) {
    res.set_redirect(server.url("/data", "localhost"));
  });
  ASSERT_TRUE(server.start());
  QXDefaultConnectionHandler handler;

  const std::optional<Outcome> local = openAndWait(handler, getRequest(server.url("/local")));
  ASSERT_TRUE(local);
  EXPECT_FALSE(local->error);
  EXPECT_EQ(local->body, "here");

  const std::optional<Outcome> away = openAndWait(handler, getRequest(server.url("/away")));
  ASSERT_TRUE(away);
  EXPECT_EQ(away->code(), errors::kUnsupportedURL);
  EXPECT_EQ(outsideHits, 0);
}

}  // namespace
}  // namespace quorvix
