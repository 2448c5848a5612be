#pragma once
/// @file
/// The log of every request the service received.

#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "quorvix/sandbox/SandboxService.h"

namespace quorvix::sandbox {

/// Requests in arrival order. Thread-safe. Keeps the most recent `capacity`
/// requests so a long benchmark does not grow it without bound.
class RequestLog {
 public:
  explicit RequestLog(std::size_t capacity = 50000);

  /// Appends `request`, dropping the oldest one when full.
  void record(RecordedRequest request);
  /// Every kept request, oldest first.
  std::vector<RecordedRequest> all() const;
  /// The requests whose endpoint is `endpoint`.
  std::vector<RecordedRequest> forEndpoint(const std::string& endpoint) const;
  /// Forgets every request.
  void clear();

 private:
  mutable std::mutex mutex_;
  std::deque<RecordedRequest> requests_;
  std::size_t capacity_;
};

}  // namespace quorvix::sandbox
