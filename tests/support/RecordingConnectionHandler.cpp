#include "support/RecordingConnectionHandler.h"

namespace quorvix::testing {

void RecordingConnectionHandler::open(const QXURLRequest& request, QXOpenCompletion completion) {
  std::optional<Reply> immediate;
  {
    std::lock_guard lock(mutex_);
    immediate = takeAutoReply(request.url);
    calls_.push_back(Call{request, immediate ? QXOpenCompletion() : completion, immediate.has_value()});
  }
  if (immediate) deliver(request, completion, *immediate);
}

std::optional<std::string> RecordingConnectionHandler::fetchDataAtRequest(const QXURLRequest& request,
                                                                          std::optional<QXError>* error) {
  std::optional<Reply> reply;
  {
    std::lock_guard lock(mutex_);
    calls_.push_back(Call{request, {}, true});
    reply = takeAutoReply(request.url);
  }
  if (!reply || reply->transportError) {
    if (error != nullptr) *error = reply ? reply->transportError : QXError{"NSURLErrorDomain", -1, {}};
    return std::nullopt;
  }
  return reply->body;
}

std::optional<Reply> RecordingConnectionHandler::takeAutoReply(const std::string& url) {
  const auto path = URLComponents::parse(url).value_or(URLComponents()).path();
  for (auto& [suffix, replies] : autoReplies_) {
    if (!replies.empty() && path.ends_with(suffix)) {
      Reply reply = replies.front();
      if (replies.size() > 1) replies.pop_front();
      return reply;
    }
  }
  return std::nullopt;
}

void RecordingConnectionHandler::autoReply(const std::string& pathSuffix, std::vector<Reply> replies) {
  std::lock_guard lock(mutex_);
  autoReplies_[pathSuffix] = std::deque<Reply>(replies.begin(), replies.end());
}

std::vector<QXURLRequest> RecordingConnectionHandler::requests() const {
  std::lock_guard lock(mutex_);
  std::vector<QXURLRequest> out;
  for (const auto& call : calls_) out.push_back(call.request);
  return out;
}

std::size_t RecordingConnectionHandler::pendingCount() const {
  std::lock_guard lock(mutex_);
  std::size_t count = 0;
  for (const auto& call : calls_) count += call.answered ? 0 : 1;
  return count;
}

URLComponents RecordingConnectionHandler::components(std::size_t index) const {
  std::lock_guard lock(mutex_);
  return URLComponents::parse(calls_.at(index).request.url).value();
}

std::vector<URLComponents> RecordingConnectionHandler::sentTo(std::string_view path) const {
  std::lock_guard lock(mutex_);
  std::vector<URLComponents> sent;
  for (const auto& call : calls_) {
    auto url = URLComponents::parse(call.request.url).value();
    if (url.path() == path) sent.push_back(std::move(url));
  }
  return sent;
}

bool RecordingConnectionHandler::answer(const std::string& pathSuffix, const Reply& reply) {
  QXURLRequest request;
  QXOpenCompletion completion;
  {
    std::lock_guard lock(mutex_);
    for (auto& call : calls_) {
      if (call.answered) continue;
      const auto path = URLComponents::parse(call.request.url).value_or(URLComponents()).path();
      if (!path.ends_with(pathSuffix)) continue;
      call.answered = true;
      request = call.request;
      completion = std::move(call.completion);
      break;
    }
  }
  if (!completion) return false;
  deliver(request, completion, reply);
  return true;
}

void RecordingConnectionHandler::deliver(const QXURLRequest& request, const QXOpenCompletion& completion, const Reply& reply) {
  if (reply.transportError) {
    completion(reply.body, std::nullopt, reply.transportError);
  } else {
    completion(reply.body, QXHTTPURLResponse{request.url, reply.status}, std::nullopt);
  }
}

std::vector<std::string> queryNames(const URLComponents& components) {
  std::vector<std::string> names;
  for (const auto& item : components.queryItems()) names.push_back(item.name);
  return names;
}

}  // namespace quorvix::testing
