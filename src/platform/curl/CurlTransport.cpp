/// @file
/// The transport's request queue and I/O thread.

#include "platform/curl/CurlTransport.h"

#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <utility>
#include <variant>

#include "platform/EngineThreads.h"
#include "platform/curl/CurlErrors.h"

namespace quorvix::detail {

namespace {

/// How long the I/O thread sleeps at most when nothing happens: libcurl
/// shortens the wait to its own next time-out, and a new request or the
/// shutdown wakes it, so this only bounds the sleep.
constexpr int kIdleWaitMs = 24 * 60 * 60 * 1000;

/// The text reported for a URL the transport refuses to use.
const char* refusalText(long code) {
  return code == errors::kBadURL ? "The URL could not be parsed"
                                 : "Only https, or http to this machine, is supported";
}

/// The process-wide CA bundle setting.
struct CAFileSetting {
  std::mutex mutex;
  std::string path;
};

/// The one CA bundle setting of the process.
CAFileSetting& caFileSetting() {
  static CAFileSetting setting;
  return setting;
}

}  // namespace

std::shared_ptr<CurlTransport> CurlTransport::shared() {
  // Owns the process-wide transport and shuts it down at exit, even while
  // handlers elsewhere still hold it (they then get -999 for new requests).
  struct Owner {
    std::shared_ptr<CurlTransport> transport = std::make_shared<CurlTransport>(Options{});
    ~Owner() {
      // The engine's own threads go first: a delayed call or a main-queue task
      // must never reach the transport once it shuts down.
      stopDefaultThreads();
      transport->shutdown();
    }
  };
  static Owner owner;
  return owner.transport;
}

void CurlTransport::setCAFile(std::string path) {
  CAFileSetting& setting = caFileSetting();
  std::lock_guard lock(setting.mutex);
  setting.path = std::move(path);
}

std::string CurlTransport::caFile() {
  CAFileSetting& setting = caFileSetting();
  std::lock_guard lock(setting.mutex);
  return setting.path;
}

CurlTransport::CurlTransport(Options options)
    : multi_(curl_multi_init()),
      share_(curl_share_init()),
      handles_(options.idleHandles),
      connectionsPerHost_(std::max(options.connectionsPerHost, 1L)),
      completions_(options.completions) {
  if (!multi_) {
    stopping_ = true;  // libcurl could not start: every request fails as cancelled
    return;
  }
  curl_multi_setopt(multi_.get(), CURLMOPT_MAX_HOST_CONNECTIONS, options.connectionsPerHost);
  curl_multi_setopt(multi_.get(), CURLMOPT_MAX_TOTAL_CONNECTIONS, options.connections);
  curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, options.connections);
  if (share_) {
    // Only the I/O thread touches the share, so it needs no lock callbacks.
    curl_share_setopt(share_.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS);
    curl_share_setopt(share_.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
  }
  io_ = std::thread([this] { run(); });
  ioThreadId_ = io_.get_id();
}

CurlTransport::~CurlTransport() { shutdown(); }

void CurlTransport::submit(QXURLRequest request, QXOpenCompletion completion) {
  // The completion is moved along, so only the completion thread ever drops it.
  enqueue(std::move(request), [pool = &completions_, completion = std::move(completion)](TransferResult result) mutable {
    pool->post([completion = std::move(completion), result = std::move(result)]() mutable {
      if (completion) {
        completion(std::move(result.body), std::move(result.response), std::move(result.error));
      }
    });
  });
}

std::optional<std::string> CurlTransport::fetch(const QXURLRequest& request, std::optional<QXError>* error) {
  if (std::this_thread::get_id() == ioThreadId_) {
    if (error != nullptr) {
      *error = urlError(errors::kUnknown, "A synchronous fetch cannot run on the transport's own thread", request.url);
    }
    return std::nullopt;
  }
  struct Waiter {
    std::mutex mutex;
    std::condition_variable done;
    std::optional<TransferResult> result;
  };
  auto waiter = std::make_shared<Waiter>();
  enqueue(request, [waiter](TransferResult result) {
    {
      std::lock_guard lock(waiter->mutex);
      waiter->result = std::move(result);
    }
    waiter->done.notify_all();
  });
  std::unique_lock lock(waiter->mutex);
  waiter->done.wait(lock, [&] { return waiter->result.has_value(); });
  if (error != nullptr) {
    *error = std::move(waiter->result->error);
  }
  if (!waiter->result->response) {
    return std::nullopt;
  }
  return std::move(waiter->result->body);
}

void CurlTransport::shutdown() {
  std::call_once(shutdownOnce_, [this] {
    {
      std::lock_guard lock(mutex_);
      stopping_ = true;
      if (multi_) {
        curl_multi_wakeup(multi_.get());
      }
    }
    if (io_.joinable()) {
      io_.join();
    }
    completions_.shutdown();
  });
}

void CurlTransport::enqueue(QXURLRequest request, TransferSink sink) {
  std::variant<URLTarget, long> checked = checkRequestURL(request.url);
  if (const long* refusal = std::get_if<long>(&checked)) {
    sink(failedTransfer(*refusal, refusalText(*refusal), request.url));
    return;
  }
  {
    std::lock_guard lock(mutex_);
    if (!stopping_) {
      queue_.push_back(Job{std::move(request), std::get<URLTarget>(std::move(checked)), std::move(sink)});
      // Only a sleeping I/O thread needs the wake-up (a system call); a busy
      // one looks at the queue before it sleeps. Under the lock: the multi
      // handle outlives every wake-up made before stopping_.
      if (ioWaiting_.load()) {
        curl_multi_wakeup(multi_.get());
      }
      return;
    }
  }
  sink(failedTransfer(kCancelled, "cancelled", request.url));
}

void CurlTransport::run() {
  ioSystemId_ = static_cast<long>(::gettid());
  while (startQueuedJobs()) {
    int stillRunning = 0;
    curl_multi_perform(multi_.get(), &stillRunning);
    collectFinished();
    // Announce the sleep before the last look at the queue: a request queued
    // after that look sees the announcement and wakes the poll.
    ioWaiting_.store(true);
    bool queued = false;
    {
      std::lock_guard lock(mutex_);
      queued = !queue_.empty() || stopping_;
    }
    if (!queued) {
      curl_multi_poll(multi_.get(), nullptr, 0, kIdleWaitMs, nullptr);
    }
    ioWaiting_.store(false);
  }
  cancelEverything();
}

bool CurlTransport::startQueuedJobs() {
  std::deque<Job> jobs;
  {
    std::lock_guard lock(mutex_);
    if (stopping_) {
      return false;
    }
    jobs.swap(queue_);
  }
  for (Job& job : jobs) {
    admit(std::move(job));
  }
  return true;
}

void CurlTransport::admit(Job job) {
  const std::string origin = job.target.origin;
  OriginLoad& load = origins_[origin];
  if (load.inFlight >= connectionsPerHost_) {
    load.waiting.push_back(std::move(job));  // its time-out starts once it is sent
    return;
  }
  ++load.inFlight;
  if (!start(std::move(job))) {
    release(origin);
  }
}

void CurlTransport::release(const std::string& origin) {
  const auto found = origins_.find(origin);
  if (found == origins_.end()) {
    return;
  }
  OriginLoad& load = found->second;
  --load.inFlight;
  while (load.inFlight < connectionsPerHost_ && !load.waiting.empty()) {
    Job next = std::move(load.waiting.front());
    load.waiting.pop_front();
    ++load.inFlight;
    if (!start(std::move(next))) {
      --load.inFlight;
    }
  }
  if (load.inFlight <= 0 && load.waiting.empty()) {
    origins_.erase(found);
  }
}

bool CurlTransport::start(Job job) {
  auto request = std::make_unique<CurlRequest>(std::move(job.request), std::move(job.target), std::move(job.sink));
  std::string bundle = caFile();
  auto [handle, prepared] = handles_.acquire(bundle);
  CURLcode code = request->configure(std::move(handle), prepared, share_.get(), bundle);
  if (code == CURLE_OK && curl_multi_add_handle(multi_.get(), request->easy()) != CURLM_OK) {
    code = CURLE_FAILED_INIT;
  }
  if (code != CURLE_OK) {
    TransferResult result = request->finish(code);
    handles_.release(request->takeHandle(), false, std::string());
    request->deliver(std::move(result));
    return false;
  }
  CURL* easy = request->easy();
  running_.emplace(easy, std::move(request));
  return true;
}

void CurlTransport::collectFinished() {
  int queued = 0;
  while (CURLMsg* message = curl_multi_info_read(multi_.get(), &queued)) {
    if (message->msg != CURLMSG_DONE) {
      continue;
    }
    const CURLcode code = message->data.result;  // the message dies with the removal below
    const auto found = running_.find(message->easy_handle);
    if (found == running_.end()) {
      continue;
    }
    std::unique_ptr<CurlRequest> request = std::move(found->second);
    running_.erase(found);
    TransferResult result = request->finish(code);
    retire(*request);
    release(request->target().origin);
    request->deliver(std::move(result));
  }
}

void CurlTransport::cancelEverything() {
  for (auto& entry : running_) {
    CurlRequest& request = *entry.second;
    TransferResult result = request.cancelled();
    retire(request);
    request.deliver(std::move(result));
  }
  running_.clear();
  for (auto& [origin, load] : origins_) {
    for (Job& job : load.waiting) {
      job.sink(failedTransfer(kCancelled, "cancelled", job.request.url));
    }
  }
  origins_.clear();
  std::deque<Job> queued;
  {
    std::lock_guard lock(mutex_);
    queued.swap(queue_);  // stopping_ is set: nothing is queued after this
  }
  for (Job& job : queued) {
    job.sink(failedTransfer(kCancelled, "cancelled", job.request.url));
  }
}

void CurlTransport::retire(CurlRequest& request) {
  curl_multi_remove_handle(multi_.get(), request.easy());
  handles_.release(request.takeHandle(), request.prepared(), request.caFile());
}

}  // namespace quorvix::detail
