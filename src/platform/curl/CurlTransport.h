#pragma once
/// @file
/// The process-wide HTTP client behind the default connection handler.

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>

#include "platform/curl/CompletionPool.h"
#include "platform/curl/CurlHandles.h"
#include "platform/curl/CurlRequest.h"
#include "quorvix/platform/QXConnectionHandler.h"

namespace quorvix::detail {

/// An HTTP client: one I/O thread drives every transfer through a libcurl
/// multi handle, which keeps connections alive between requests, caps how
/// many it opens (requests beyond the cap wait for a connection) and shares
/// DNS answers and TLS sessions; results go to a completion pool that grows
/// while its workers are busy, never to the caller's thread nor to the I/O
/// thread. Idle, the I/O thread sleeps until a request arrives.
class CurlTransport {
 public:
  /// Settings of a transport.
  struct Options {
    /// How many threads run completions and how long an idle one stays.
    CompletionPool::Limits completions;
    /// Idle easy handles kept for reuse.
    std::size_t idleHandles = 16;
    /// Connections open at once to one host, and so requests in flight to it;
    /// further requests to it wait in the transport, and their time-out starts
    /// when they are sent.
    long connectionsPerHost = 6;
    /// Connections open at once in all.
    long connections = 24;
  };

  /// The process-wide transport, created on first use and shut down when the
  /// process exits.
  static std::shared_ptr<CurlTransport> shared();

  /// Uses the PEM bundle at `path` instead of the system CA store for requests
  /// set up from now on; an empty path restores the system store. A bundle is
  /// loaded once per path and kept, so a changed file needs a new path.
  static void setCAFile(std::string path);

  /// Starts a transport of its own (the process normally uses `shared`).
  explicit CurlTransport(Options options);
  /// Shuts down (see `shutdown`).
  ~CurlTransport();

  CurlTransport(const CurlTransport&) = delete;
  CurlTransport& operator=(const CurlTransport&) = delete;

  /// Sends `request` and calls `completion` exactly once on a completion
  /// thread. Refused URLs (-1000, -1002) fail without anything being sent.
  void submit(QXURLRequest request, QXOpenCompletion completion);

  /// Sends `request` and waits for the answer: the body of any HTTP answer, or
  /// nothing with the reason in `error` (when given). May be called from a
  /// completion; on the I/O thread it fails instead of waiting forever.
  std::optional<std::string> fetch(const QXURLRequest& request, std::optional<QXError>* error);

  /// Stops the I/O thread, failing unfinished requests with -999 (cancelled),
  /// then runs the remaining completions and joins the pool. Requests made
  /// afterwards fail with -999. Idempotent.
  void shutdown();

 private:
  /// A request waiting for the I/O thread.
  struct Job {
    QXURLRequest request;
    URLTarget target;
    TransferSink sink;
  };

  /// Checks the request's URL and queues it, or fails it through `sink`.
  void enqueue(QXURLRequest request, TransferSink sink);
  /// The I/O thread's loop.
  void run();
  /// Moves queued jobs onto the multi handle. Returns false once shutting down.
  bool startQueuedJobs();
  /// Starts `job`, or keeps it waiting while its origin has every connection busy (I/O thread).
  void admit(Job job);
  /// Sets up and starts one job; false when it failed at once (and was delivered). I/O thread.
  bool start(Job job);
  /// A request to `origin` ended: starts the next one waiting for it (I/O thread).
  void release(const std::string& origin);
  /// Delivers the results of the transfers libcurl reports done (I/O thread).
  void collectFinished();
  /// Fails every queued and running request with -999 (I/O thread, at its end).
  void cancelEverything();
  /// Takes a request off the multi handle and returns its easy handle to the pool.
  void retire(CurlRequest& request);

 public:
  /// The completion workers alive now (for tests).
  std::size_t completionThreads() const { return completions_.threadCount(); }
  /// The system's id of the I/O thread once it runs, 0 before (for tests).
  long ioThreadSystemId() const { return ioSystemId_.load(); }

 private:

  /// The CA bundle set with `setCAFile` (empty: the system store).
  static std::string caFile();

  CurlGlobal global_;  // first member: outlives every libcurl handle below
  MultiHandle multi_;
  ShareHandle share_;
  EasyHandlePool handles_;
  std::unordered_map<CURL*, std::unique_ptr<CurlRequest>> running_;  // I/O thread only
  /// Per origin, the requests in flight and the jobs waiting for one to end (I/O thread only).
  struct OriginLoad {
    long inFlight = 0;
    std::deque<Job> waiting;
  };
  std::unordered_map<std::string, OriginLoad> origins_;
  long connectionsPerHost_;

  std::mutex mutex_;  // guards queue_ and stopping_
  std::deque<Job> queue_;
  bool stopping_ = false;

  std::once_flag shutdownOnce_;
  CompletionPool completions_;
  std::thread io_;
  std::thread::id ioThreadId_;
  std::atomic<long> ioSystemId_{0};
  std::atomic<bool> ioWaiting_{false};  // the I/O thread is about to sleep or sleeps in its poll
};

}  // namespace quorvix::detail
