/// @file
/// The transport's pieces on their own: error codes, URL checks, shutdown.

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <variant>

#include "platform/TransportTestSupport.h"
#include "platform/curl/CurlErrors.h"
#include "platform/curl/CurlTransport.h"
#include "platform/curl/URLPolicy.h"

namespace quorvix::detail {
namespace {

using testing::getRequest;
using testing::kHangGuard;
using testing::LoopbackServer;

TEST(CurlErrorCodes, MapsCurlResultsOntoURLLoadingCodes) {
  const struct {
    CURLcode code;
    long osErrno;
    long expected;
  } cases[] = {
      {CURLE_COULDNT_RESOLVE_HOST, 0, errors::kCannotFindHost},
      {CURLE_COULDNT_RESOLVE_PROXY, 0, errors::kCannotFindHost},
      {CURLE_COULDNT_CONNECT, ECONNREFUSED, errors::kCannotConnectToHost},
      {CURLE_COULDNT_CONNECT, ENETUNREACH, errors::kNotConnectedToInternet},
      {CURLE_COULDNT_CONNECT, EHOSTUNREACH, errors::kNotConnectedToInternet},
      {CURLE_OPERATION_TIMEDOUT, 0, errors::kTimedOut},
      {CURLE_GOT_NOTHING, 0, errors::kNetworkConnectionLost},
      {CURLE_PARTIAL_FILE, 0, errors::kNetworkConnectionLost},
      {CURLE_RECV_ERROR, ECONNRESET, errors::kNetworkConnectionLost},
      {CURLE_UNSUPPORTED_PROTOCOL, 0, errors::kUnsupportedURL},
      {CURLE_URL_MALFORMAT, 0, errors::kBadURL},
      {CURLE_PEER_FAILED_VERIFICATION, 0, errors::kServerCertificateUntrusted},
      {CURLE_SSL_CONNECT_ERROR, 0, kSecureConnectionFailed},
      {CURLE_FILESIZE_EXCEEDED, 0, errors::kDataLengthExceedsMaximum},
      {CURLE_TOO_MANY_REDIRECTS, 0, kTooManyRedirects},
      {CURLE_ABORTED_BY_CALLBACK, 0, kCancelled},
      {CURLE_WEIRD_SERVER_REPLY, 0, errors::kUnknown},
      {CURLE_OUT_OF_MEMORY, 0, errors::kUnknown},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(urlErrorCode(c.code, c.osErrno), c.expected) << curl_easy_strerror(c.code) << " errno " << c.osErrno;
  }

  const QXError error = urlError(errors::kTimedOut, "Operation timed out", "https://a.example/x");
  EXPECT_EQ(error.domain, "NSURLErrorDomain");
  EXPECT_EQ(error.code, errors::kTimedOut);
  EXPECT_EQ(error.userInfo.at("NSLocalizedDescription"), "Operation timed out");
  EXPECT_EQ(error.userInfo.at("NSErrorFailingURLStringKey"), "https://a.example/x");
}

TEST(CurlURLPolicy, AcceptsHttpsAnywhereAndPlainHttpOnlyOnThisMachine) {
  const struct {
    const char* url;
    long refusal;  // 0: accepted
    bool plainHttp;
  } cases[] = {
      {"https://cdn.quorvix.com/a/b.json?x=1", 0, false},
      {"HTTPS://Cdn.Quorvix.com/", 0, false},
      {"https://localhost:8443/", 0, false},
      {"http://localhost:8080/path", 0, true},
      {"http://api.localhost/", 0, true},
      {"http://127.0.0.1:1/", 0, true},
      {"http://[::1]:80/", 0, true},
      {"http://example.com/", errors::kUnsupportedURL, false},
      {"http://localhost.example.com/", errors::kUnsupportedURL, false},
      {"http://127.0.0.2/", errors::kUnsupportedURL, false},
      {"ftp://localhost/file", errors::kUnsupportedURL, false},
      {"file:///etc/passwd", errors::kUnsupportedURL, false},
      {"not a url", errors::kBadURL, false},
      {"https://exa mple.com/", errors::kBadURL, false},
      {"", errors::kBadURL, false},
  };
  for (const auto& c : cases) {
    const std::variant<URLTarget, long> checked = checkRequestURL(c.url);
    if (c.refusal == 0) {
      ASSERT_TRUE(std::holds_alternative<URLTarget>(checked)) << c.url;
      EXPECT_EQ(std::get<URLTarget>(checked).plainHttp, c.plainHttp) << c.url;
    } else {
      ASSERT_TRUE(std::holds_alternative<long>(checked)) << c.url;
      EXPECT_EQ(std::get<long>(checked), c.refusal) << c.url;
    }
  }
}

TEST(CurlTransportShutdown, CancelsUnfinishedRequestsExactlyOnce) {
  std::mutex mutex;
  std::condition_variable changed;
  int arrived = 0;
  bool release = false;
  LoopbackServer server;
  server.http().Get("/hang", [&](const httplib::Request&, httplib::Response& res) {
    std::unique_lock lock(mutex);
    ++arrived;
    changed.notify_all();
    changed.wait_for(lock, kHangGuard, [&] { return release; });
    res.set_content("late", "text/plain");
  });
  ASSERT_TRUE(server.start());
  auto transport = std::make_shared<CurlTransport>(CurlTransport::Options{});

  constexpr int kOpen = 3;
  std::atomic<int> calls[kOpen + 2] = {};
  std::atomic<long> codes[kOpen + 2] = {};
  const auto record = [&](int slot) {
    return [&, slot](std::string, std::optional<QXHTTPURLResponse>, std::optional<QXError> error) {
      codes[slot] = error ? error->code : 0;
      ++calls[slot];
    };
  };
  for (int i = 0; i < kOpen; ++i) {
    if (i == 0) {
      // This completion sends a new request while the transport is going away.
      transport->submit(getRequest(server.url("/hang")), [&, transport, again = record(kOpen)](
                                                             std::string body, std::optional<QXHTTPURLResponse> response,
                                                             std::optional<QXError> error) {
        record(0)(std::move(body), std::move(response), std::move(error));
        transport->submit(getRequest(server.url("/hang")), again);
      });
    } else {
      transport->submit(getRequest(server.url("/hang")), record(i));
    }
  }
  std::optional<std::string> fetched = std::string("untouched");
  std::optional<QXError> fetchError;
  std::thread fetcher([&] { fetched = transport->fetch(getRequest(server.url("/hang")), &fetchError); });
  {
    std::unique_lock lock(mutex);
    ASSERT_TRUE(changed.wait_for(lock, kHangGuard, [&] { return arrived == kOpen + 1; }));
  }

  transport->shutdown();
  fetcher.join();
  // shutdown() has run every completion before returning.
  for (int i = 0; i <= kOpen; ++i) {
    EXPECT_EQ(calls[i], 1) << "slot " << i;
    EXPECT_EQ(codes[i], kCancelled) << "slot " << i;
  }
  EXPECT_FALSE(fetched);
  ASSERT_TRUE(fetchError);
  EXPECT_EQ(fetchError->code, kCancelled);

  // After shutdown a request still gets its one completion.
  transport->submit(getRequest(server.url("/hang")), record(kOpen + 1));
  EXPECT_EQ(calls[kOpen + 1], 1);
  EXPECT_EQ(codes[kOpen + 1], kCancelled);
  {
    std::lock_guard lock(mutex);
    EXPECT_EQ(arrived, kOpen + 1);  // nothing was sent after shutdown
    release = true;
  }
  changed.notify_all();
}

}  // namespace
}  // namespace quorvix::detail
