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

 private:
  std::mutex mutex_;
  std::map<std::string, std::deque<Fault>> pending_;
};

}  // namespace quorvix::sandbox
