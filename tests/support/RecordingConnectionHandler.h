#pragma once
// A connection handler that records every request and lets the test answer
// each one when and how it likes (or answers some endpoints at once).

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quorvix/core/URLComponents.h"
#include "quorvix/platform/QXConnectionHandler.h"

namespace quorvix::testing {

/// A canned answer: HTTP status and body, or a transport error.
struct Reply {
  long status = 200;
  std::string body;
  std::optional<QXError> transportError;

  static Reply json(std::string body, long status = 200) { return Reply{status, std::move(body), std::nullopt}; }
  static Reply failure(long code) {
    return Reply{0, "", QXError{"NSURLErrorDomain", code, {{"NSLocalizedDescription", "transport failure"}}}};
  }
};

class RecordingConnectionHandler : public QXConnectionHandler {
 public:
  struct Call {
    QXURLRequest request;
    QXOpenCompletion completion;
    bool answered = false;
  };

  void open(const QXURLRequest& request, QXOpenCompletion completion) override;
  std::optional<std::string> fetchDataAtRequest(const QXURLRequest& request, std::optional<QXError>* error) override;

  /// Answers every later request whose path ends with `pathSuffix` at once, in turn
  /// with the given replies (the last one repeats).
  void autoReply(const std::string& pathSuffix, std::vector<Reply> replies);

  /// Every request so far.
  std::vector<QXURLRequest> requests() const;
  /// Requests still waiting for an answer, oldest first.
  std::size_t pendingCount() const;
  /// The parsed URL of request `index`.
  URLComponents components(std::size_t index) const;
  /// The parsed URLs of the requests whose path is `path`, oldest first.
  std::vector<URLComponents> sentTo(std::string_view path) const;
  /// Answers the oldest unanswered request whose path ends with `pathSuffix`;
  /// false when there is none.
  bool answer(const std::string& pathSuffix, const Reply& reply);

 private:
  /// The next automatic reply for `url`, if one is set up; call with `mutex_` held.
  std::optional<Reply> takeAutoReply(const std::string& url);
  static void deliver(const QXURLRequest& request, const QXOpenCompletion& completion, const Reply& reply);

  mutable std::mutex mutex_;
  std::vector<Call> calls_;
  std::map<std::string, std::deque<Reply>> autoReplies_;
};

/// The names of a URL's query items, in order.
std::vector<std::string> queryNames(const URLComponents& components);

}  // namespace quorvix::testing
