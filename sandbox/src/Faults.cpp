#include "Faults.h"

#include <httplib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <thread>
#include <utility>

#include "ConnectionStream.h"

namespace quorvix::sandbox {

namespace {

/// How long a Stall with no delay of its own holds the request.
constexpr std::chrono::milliseconds kDefaultStall{2000};

/// Announces a body, then fails to produce it: httplib closes the connection
/// after the header, so the client sees a truncated answer.
void dropConnection(httplib::Response& response) {
  response.status = 200;
  response.set_content_provider(
      64, std::string(kJsonContentType), [](std::size_t, std::size_t, httplib::DataSink&) { return false; });
}

/// Ends the connection with a reset and no answer; without a stream of our own
/// (TLS) it falls back to a connection closed after the header.
void resetConnection(httplib::Response& response) {
  if (ConnectionStream* stream = ConnectionStream::current()) {
    stream->reset();
    return;
  }
  dropConnection(response);
}

/// {"status":200,"pad":"xxx...x"} of exactly `Faults::kOversizedBytes`,
/// produced piece by piece so no copy of the whole body is ever held.
void oversized(httplib::Response& response) {
  static constexpr std::string_view kHead = R"({"status":200,"pad":")";
  static constexpr std::string_view kTail = R"("})";
  response.status = 200;
  response.set_content_provider(
      Faults::kOversizedBytes, std::string(kJsonContentType),
      [](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
        std::array<char, 64 * 1024> chunk{};
        const std::size_t count = std::min(length, chunk.size());
        std::fill_n(chunk.begin(), count, 'x');
        // Only the first and the last chunk hold more than padding.
        for (std::size_t at = offset; at < std::min(offset + count, kHead.size()); ++at) {
          chunk[at - offset] = kHead[at];
        }
        const std::size_t tailStart = Faults::kOversizedBytes - kTail.size();
        for (std::size_t at = std::max(offset, tailStart); at < offset + count; ++at) {
          chunk[at - offset] = kTail[at - tailStart];
        }
        return sink.write(chunk.data(), count);
      });
}

std::string deeplyNested() {
  std::string body = R"({"status":200,"data":)";
  body.append(Faults::kDeepNestingLevels, '[');
  body.append(Faults::kDeepNestingLevels, ']');
  body.push_back('}');
  return body;
}

}  // namespace

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
    case FaultKind::DeepNesting:
      return Reply{200, deeplyNested(), std::string(kJsonContentType)};
    case FaultKind::DropConnection:
    case FaultKind::Delay:
    case FaultKind::Reset:
    case FaultKind::TruncatedBody:
    case FaultKind::Stall:
    case FaultKind::Oversized:
      break;
  }
  return std::nullopt;
}

bool Faults::answerInstead(const Fault& fault, httplib::Response& response) {
  switch (fault.kind) {
    case FaultKind::Delay:
    case FaultKind::TruncatedBody:
      return false;
    case FaultKind::DropConnection:
      dropConnection(response);
      return true;
    case FaultKind::Reset:
      resetConnection(response);
      return true;
    case FaultKind::Stall:
      if (ConnectionStream* stream = ConnectionStream::current()) {
        stream->stall(static_cast<int>((fault.delay.count() > 0 ? fault.delay : kDefaultStall).count()));
      } else {
        std::this_thread::sleep_for(fault.delay.count() > 0 ? fault.delay : kDefaultStall);
      }
      resetConnection(response);
      return true;
    case FaultKind::Oversized:
      oversized(response);
      return true;
    default:
      break;
  }
  const std::optional<Reply> reply = replyFor(fault.kind);
  response.status = reply->status;
  response.set_content(reply->body, reply->contentType);
  return true;
}

void Faults::truncate(const Reply& reply, httplib::Response& response) {
  response.status = reply.status;
  auto body = std::make_shared<const std::string>(reply.body);
  const std::size_t half = body->size() / 2;
  response.set_content_provider(body->size(), reply.contentType,
                                [body, half](std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                  if (offset >= half) {
                                    return false;
                                  }
                                  return sink.write(body->data() + offset, half - offset);
                                });
}

}  // namespace quorvix::sandbox
