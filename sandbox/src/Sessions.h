#pragma once
/// @file
/// The sessions opened by "hello.js": who opened them, for which knowledge base
/// and context, and when they were last used.

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quorvix::sandbox {

/// A session as endpoints see it.
struct Session {
  std::string id;
  std::string account;
  std::string knowledgeBase;
  /// The "context" pairs given to "hello.js" ("k1:v1,k2:v2"), in order.
  std::vector<std::pair<std::string, std::string>> context;
  /// How long the session survives without being used.
  double timeoutSeconds = 0;
};

/// The live sessions of every account. Thread-safe.
class Sessions {
 public:
  using Clock = std::chrono::steady_clock;

  explicit Sessions(double timeoutSeconds);

  /// Opens a session with a fresh, hard to guess id and the current time-out.
  Session open(std::string account, std::string knowledgeBase,
               std::vector<std::pair<std::string, std::string>> context);
  /// The session `id` of `account` if it is alive; using it restarts its time-out.
  std::optional<Session> use(const std::string& id, const std::string& account);
  /// Replaces the context of the live session `id` of `account` ("setParams");
  /// false when there is no such session.
  bool setContext(const std::string& id, const std::string& account,
                  std::vector<std::pair<std::string, std::string>> context);

  /// The time-out given to sessions opened from now on.
  void setTimeout(double seconds);
  /// The time-out given to new sessions.
  double timeout() const;
  /// Forgets every session.
  void clear();
  /// The number of sessions not yet expired.
  std::size_t alive() const;

 private:
  struct Entry {
    Session session;
    Clock::time_point lastUsed;
  };

  static bool expired(const Entry& entry, Clock::time_point now);
  void dropExpired(Clock::time_point now);
  std::string freshId();

  mutable std::mutex mutex_;
  std::unordered_map<std::string, Entry> entries_;
  double timeoutSeconds_;
  std::random_device random_;
};

}  // namespace quorvix::sandbox
