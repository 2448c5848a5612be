#include "RequestLog.h"

#include <utility>

namespace quorvix::sandbox {

std::optional<std::string> RecordedRequest::queryValue(const std::string& name) const {
  for (const auto& [key, value] : query) {
    if (key == name) {
      return value;
    }
  }
  return std::nullopt;
}

RequestLog::RequestLog(std::size_t capacity) : capacity_(capacity) {}

void RequestLog::record(RecordedRequest request) {
  std::lock_guard lock(mutex_);
  if (requests_.size() >= capacity_) {
    requests_.pop_front();
  }
  requests_.push_back(std::move(request));
}

std::vector<RecordedRequest> RequestLog::all() const {
  std::lock_guard lock(mutex_);
  return {requests_.begin(), requests_.end()};
}

std::vector<RecordedRequest> RequestLog::forEndpoint(const std::string& endpoint) const {
  std::lock_guard lock(mutex_);
  std::vector<RecordedRequest> matching;
  for (const RecordedRequest& request : requests_) {
    if (request.endpoint == endpoint) {
      matching.push_back(request);
    }
  }
  return matching;
}

void RequestLog::clear() {
  std::lock_guard lock(mutex_);
  requests_.clear();
}

}  // namespace quorvix::sandbox
