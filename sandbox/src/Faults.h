#pragma once
/// @file
/// Faults waiting to be applied to the next requests of an endpoint.

#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "Reply.h"
#include "quorvix/sandbox/SandboxService.h"

namespace httplib {
struct Response;
}  // namespace httplib

namespace quorvix::sandbox {

/// Per endpoint, a queue of faults; each request of that endpoint consumes one
/// use of the fault at the front. Thread-safe.
class Faults {
 public:
  /// Queues `fault` behind the faults already waiting for `endpoint`; a fault
  /// with a count below 1 is ignored.
  void inject(const std::string& endpoint, Fault fault);
  /// The fault for the next request of `endpoint`, if any; counts it down.
  std::optional<Fault> take(const std::string& endpoint);
  /// Drops every pending fault.
  void clear();

  /// The answer of a fault that replaces the normal answer (Http500,
  /// BodyStatus400, GarbageBody, EmptyBody); nothing for the others.
  static std::optional<Reply> replyFor(FaultKind kind);

  /// Answers (or fails to answer) in place of the normal answer for every
  /// fault but Delay and TruncatedBody, which need the normal answer; true
  /// when `fault` took the answer over.
  static bool answerInstead(const Fault& fault, httplib::Response& response);
  /// Sends `reply`'s header and the first half of its body, then ends the
  /// connection.
  static void truncate(const Reply& reply, httplib::Response& response);

  /// Body sizes of the Oversized and DeepNesting faults.
  static constexpr std::size_t kOversizedBytes = std::size_t{33} * 1024 * 1024;
  static constexpr int kDeepNestingLevels = 100;

 private:
  std::mutex mutex_;
  std::map<std::string, std::deque<Fault>> pending_;
};

}  // namespace quorvix::sandbox
