// Injected faults of the sandbox service (the ones that act on the connection
// or produce hostile bodies too, as a plain HTTP client sees them), connection
// reuse and its life cycle.

#include <boost/json.hpp>
#include <chrono>

#include "sandbox/SandboxTestSupport.h"

namespace quorvix::sandbox::testing {
namespace {

using namespace std::chrono_literals;

TEST_F(SandboxServiceTest, EachFaultKindShapesTheAnswer) {
  const std::string sid = openSession();
  const std::string target = std::string(kKeepAliveEndpoint) + "?sid=" + sid;
  auto faulted = [&](FaultKind kind) {
    sandbox_.injectFault(kKeepAliveEndpoint, Fault{kind, 1, std::chrono::milliseconds(0)});
    return get("acme.localhost", target);
  };

  httplib::Result http500 = faulted(FaultKind::Http500);
  ASSERT_TRUE(http500);
  EXPECT_EQ(http500->status, 500);
  EXPECT_EQ(boost::json::parse(http500->body), boost::json::parse(R"({"status":500,"message":"Internal error"})"));

  httplib::Result status400 = faulted(FaultKind::BodyStatus400);
  ASSERT_TRUE(status400);
  EXPECT_EQ(status400->status, 200);
  EXPECT_EQ(boost::json::parse(status400->body).at("status"), 400);

  httplib::Result garbage = faulted(FaultKind::GarbageBody);
  ASSERT_TRUE(garbage);
  EXPECT_EQ(garbage->status, 200);
  EXPECT_EQ(garbage->get_header_value("Content-Type"), "text/html");
  boost::system::error_code parseError;
  boost::json::parse(garbage->body, parseError);
  EXPECT_TRUE(parseError);

  httplib::Result empty = faulted(FaultKind::EmptyBody);
  ASSERT_TRUE(empty);
  EXPECT_EQ(empty->status, 200);
  EXPECT_TRUE(empty->body.empty());

  httplib::Result dropped = faulted(FaultKind::DropConnection);
  EXPECT_FALSE(dropped);

  httplib::Result delayed = faulted(FaultKind::Delay);
  ASSERT_TRUE(delayed);
  EXPECT_EQ(delayed->body, R"({"status":200})");

  // Faulted requests are logged like the others.
  EXPECT_EQ(sandbox_.requestsFor(kKeepAliveEndpoint).size(), 6U);
}

TEST_F(SandboxServiceTest, FaultsCountDownInTheOrderInjected) {
  const std::string sid = openSession();
  sandbox_.injectFault(kKeepAliveEndpoint, Fault{FaultKind::Http500, 2});
  sandbox_.injectFault(kKeepAliveEndpoint, Fault{FaultKind::EmptyBody, 1});
  // Another endpoint's requests leave the faults alone.
  EXPECT_FALSE(openSession().empty());

  EXPECT_EQ(keepAliveStatus(sid), 500);
  EXPECT_EQ(keepAliveStatus(sid), 500);
  httplib::Result empty = get("acme.localhost", std::string(kKeepAliveEndpoint) + "?sid=" + sid);
  ASSERT_TRUE(empty);
  EXPECT_TRUE(empty->body.empty());
  EXPECT_EQ(keepAliveStatus(sid), 200);

  sandbox_.injectFault(kKeepAliveEndpoint, Fault{FaultKind::Http500, 1});
  sandbox_.clearFaults();
  EXPECT_EQ(keepAliveStatus(sid), 200);
}

TEST_F(SandboxServiceTest, ConnectionFaultsLeaveNoCompleteAnswer) {
  const std::string sid = openSession();
  const std::string target = std::string(kKeepAliveEndpoint) + "?sid=" + sid;
  auto faulted = [&](Fault fault) {
    sandbox_.injectFault(kKeepAliveEndpoint, fault);
    auto connection = client("acme.localhost");
    connection->set_read_timeout(5, 0);
    return connection->Get(target);
  };

  const httplib::Result reset = faulted({FaultKind::Reset, 1, 0ms});
  EXPECT_FALSE(reset);

  const httplib::Result truncated = faulted({FaultKind::TruncatedBody, 1, 0ms});
  EXPECT_FALSE(truncated);

  // The client gives up first; the stall ends with it, not after its ten seconds.
  auto impatient = client("acme.localhost");
  impatient->set_read_timeout(0, 300'000);
  sandbox_.injectFault(kKeepAliveEndpoint, {FaultKind::Stall, 1, 10s});
  EXPECT_FALSE(impatient->Get(target));

  // Every fault is used up: the same request is answered again.
  const httplib::Result healthy = get("acme.localhost", target);
  ASSERT_TRUE(healthy);
  EXPECT_EQ(healthy->status, 200);
  EXPECT_EQ(sandbox_.requestsFor(kKeepAliveEndpoint).size(), 4U);
}

TEST_F(SandboxServiceTest, HostileBodiesAreWellFormedJson) {
  const std::string sid = openSession();
  const std::string target = std::string(kKeepAliveEndpoint) + "?sid=" + sid;

  sandbox_.injectFault(kKeepAliveEndpoint, {FaultKind::Oversized, 1, 0ms});
  const httplib::Result oversized = get("acme.localhost", target);
  ASSERT_TRUE(oversized);
  EXPECT_EQ(oversized->body.size(), std::size_t{33} * 1024 * 1024);
  const boost::json::value big = boost::json::parse(oversized->body);
  EXPECT_EQ(big.at("status"), 200);

  sandbox_.injectFault(kKeepAliveEndpoint, {FaultKind::DeepNesting, 1, 0ms});
  const httplib::Result deep = get("acme.localhost", target);
  ASSERT_TRUE(deep);
  boost::json::parse_options options;
  options.max_depth = 1000;
  const boost::json::value nested = boost::json::parse(deep->body, {}, options);
  int depth = 0;
  for (const boost::json::value* level = &nested.at("data"); level->is_array() && !level->as_array().empty();
       level = &level->as_array().front()) {
    ++depth;
  }
  EXPECT_EQ(depth + 1, 100);  // the innermost array is empty
}

TEST_F(SandboxServiceTest, ServesManyRequestsPerConnectionAndStopsWhileOneIsIdle) {
  EXPECT_EQ(sandbox_.start(), port_);
  EXPECT_EQ(sandbox_.baseURL(), "http://localhost:" + std::to_string(port_));

  auto keptAlive = client("acme.localhost");
  keptAlive->set_keep_alive(true);
  constexpr int kRequests = 12;
  for (int i = 0; i < kRequests; ++i) {
    ASSERT_TRUE(keptAlive->Get(kHelloEndpoint));
  }
  const std::vector<RecordedRequest> recorded = sandbox_.requestsFor(kHelloEndpoint);
  ASSERT_EQ(recorded.size(), static_cast<std::size_t>(kRequests));
  for (const RecordedRequest& request : recorded) {
    EXPECT_EQ(request.remotePort, recorded.front().remotePort);
  }

  // The connection is now idle and kept alive; stopping must not wait for it.
  sandbox_.stop();
  sandbox_.stop();
  EXPECT_FALSE(get("acme.localhost", kHelloEndpoint));
}

}  // namespace
}  // namespace quorvix::sandbox::testing
