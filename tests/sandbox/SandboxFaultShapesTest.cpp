// The faults that act on the connection or produce hostile bodies, as a plain
// HTTP client sees them.

#include <boost/json.hpp>
#include <chrono>

#include "sandbox/SandboxTestSupport.h"

namespace quorvix::sandbox::testing {
namespace {

using namespace std::chrono_literals;

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

}  // namespace
}  // namespace quorvix::sandbox::testing
