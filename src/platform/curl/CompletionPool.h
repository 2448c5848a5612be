#pragma once
/// @file
/// The threads on which transfer completions run.

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace quorvix::detail {

/// A fixed set of worker threads running posted tasks in order of posting.
/// A task may block (for instance on a synchronous fetch) without stalling the
/// transport; it only occupies one worker.
class CompletionPool {
 public:
  /// Starts `threadCount` workers (at least one).
  explicit CompletionPool(std::size_t threadCount);
  /// Shuts the pool down (see `shutdown`).
  ~CompletionPool();

  CompletionPool(const CompletionPool&) = delete;
  CompletionPool& operator=(const CompletionPool&) = delete;

  /// Queues a task for a worker. Once the pool has been shut down the task runs
  /// at once on the calling thread, so that it still runs exactly once.
  void post(std::function<void()> task);

  /// Runs every queued task (including tasks those tasks post), then joins the
  /// workers. Safe to call more than once and from a worker itself.
  void shutdown();

 private:
  /// What the workers share with the pool. Workers hold it too, so a worker
  /// left running by a shutdown from inside one of its own tasks stays valid.
  struct State {
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::function<void()>> tasks;
    bool stopping = false;
    bool closed = false;
  };

  /// The loop of one worker.
  static void work(const std::shared_ptr<State>& state);
  /// Runs one task, keeping the worker alive if it throws.
  static void run(std::function<void()>& task) noexcept;

  std::shared_ptr<State> state_ = std::make_shared<State>();
  std::vector<std::thread> workers_;
};

}  // namespace quorvix::detail
