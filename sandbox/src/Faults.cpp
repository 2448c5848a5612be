#include "Faults.h"

#include <utility>

namespace quorvix::sandbox {

void Faults::inject(const std::string& endpoint, Fault fault) {
  if (fault.count < 1) {
    return;
  }
  std::lock_guard lock(mutex_);
  pending_[endpoint].push_back(fault);
}

std::optional<Fault> Faults::take(const std::string& endpoint) {
  std::lock_guard lock(mutex_);
  auto it = pending_.find(endpoint);
  if (it == pending_.end()) {
    return std::nullopt;
  }
  std::deque<Fault>& queue = it->second;
  Fault fault = queue.front();
  if (--queue.front().count == 0) {
    queue.pop_front();
  }
  if (queue.empty()) {
    pending_.erase(it);
  }
  return fault;
}

void Faults::clear() {
  std::lock_guard lock(mutex_);
  pending_.clear();
}

std::optional<Reply> Faults::replyFor(FaultKind kind) {
  switch (kind) {
    case FaultKind::Http500:
      return Reply::error(500, "Internal error");
    case FaultKind::BodyStatus400:
      return Reply{200, R"({"status":400})", std::string(kJsonContentType)};
    case FaultKind::GarbageBody:
      return Reply{200, "<html><body>Bad gateway</body></html>", "text/html"};
    case FaultKind::EmptyBody:
      return Reply{200, "", std::string(kJsonContentType)};
    case FaultKind::DropConnection:
    case FaultKind::Delay:
      break;
  }
  return std::nullopt;
}

}  // namespace quorvix::sandbox
