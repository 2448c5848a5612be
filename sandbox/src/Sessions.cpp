#include "Sessions.h"

#include <algorithm>
#include <cstdint>

namespace quorvix::sandbox {

namespace {

/// 96 random bits, written as 24 hex digits.
constexpr int kIdWords = 3;

}  // namespace

Sessions::Sessions(double timeoutSeconds) : timeoutSeconds_(timeoutSeconds) {}

Session Sessions::open(std::string account, std::string knowledgeBase,
                       std::vector<std::pair<std::string, std::string>> context) {
  std::lock_guard lock(mutex_);
  const Clock::time_point now = Clock::now();
  dropExpired(now);
  std::string id = freshId();
  while (entries_.count(id) != 0) {
    id = freshId();
  }
  Session session{id, std::move(account), std::move(knowledgeBase), std::move(context), timeoutSeconds_};
  entries_.emplace(id, Entry{session, now});
  return session;
}

std::optional<Session> Sessions::use(const std::string& id, const std::string& account) {
  std::lock_guard lock(mutex_);
  auto it = entries_.find(id);
  if (it == entries_.end()) {
    return std::nullopt;
  }
  const Clock::time_point now = Clock::now();
  if (expired(it->second, now)) {
    entries_.erase(it);
    return std::nullopt;
  }
  if (it->second.session.account != account) {
    return std::nullopt;
  }
  it->second.lastUsed = now;
  return it->second.session;
}

bool Sessions::setContext(const std::string& id, const std::string& account,
                          std::vector<std::pair<std::string, std::string>> context) {
  std::lock_guard lock(mutex_);
  auto it = entries_.find(id);
  if (it == entries_.end() || expired(it->second, Clock::now()) || it->second.session.account != account) {
    return false;
  }
  it->second.session.context = std::move(context);
  return true;
}

void Sessions::setTimeout(double seconds) {
  std::lock_guard lock(mutex_);
  timeoutSeconds_ = seconds;
}

double Sessions::timeout() const {
  std::lock_guard lock(mutex_);
  return timeoutSeconds_;
}

void Sessions::clear() {
  std::lock_guard lock(mutex_);
  entries_.clear();
}

std::size_t Sessions::alive() const {
  std::lock_guard lock(mutex_);
  const Clock::time_point now = Clock::now();
  return static_cast<std::size_t>(
      std::count_if(entries_.begin(), entries_.end(), [&](const auto& item) { return !expired(item.second, now); }));
}

bool Sessions::expired(const Entry& entry, Clock::time_point now) {
  return now - entry.lastUsed >= std::chrono::duration<double>(entry.session.timeoutSeconds);
}

void Sessions::dropExpired(Clock::time_point now) {
  std::erase_if(entries_, [&](const auto& item) { return expired(item.second, now); });
}

std::string Sessions::freshId() {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string id;
  id.reserve(kIdWords * 8);
  for (int word = 0; word < kIdWords; ++word) {
    std::uint32_t bits = random_();
    for (int nibble = 0; nibble < 8; ++nibble) {
      id.push_back(kDigits[bits & 0xFU]);
      bits >>= 4U;
    }
  }
  return id;
}

}  // namespace quorvix::sandbox
