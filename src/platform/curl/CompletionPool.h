#pragma once
/// @file
/// The threads on which transfer completions run.

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace quorvix::detail {

/// Worker threads running posted tasks in order of posting. The pool starts
/// empty and grows when a task arrives while every worker is busy, up to a
/// bound; a worker idle for a while ends. A task may therefore block (for
/// instance on a synchronous fetch) without keeping other tasks waiting: it
/// only occupies its own worker.
class CompletionPool {
 public:
  /// How the pool sizes itself.
  struct Limits {
    /// The most workers alive at once; tasks queue beyond that.
    std::size_t maxThreads = 64;
    /// How long a worker waits for a task before it ends.
    std::chrono::milliseconds idleTimeout{5000};
  };

  /// An empty pool (`maxThreads` is at least one).
  explicit CompletionPool(Limits limits);
  /// Shuts the pool down (see `shutdown`).
  ~CompletionPool();

  CompletionPool(const CompletionPool&) = delete;
  CompletionPool& operator=(const CompletionPool&) = delete;

  /// Queues a task for a worker, starting one when none is free. Once the pool
  /// has been shut down the task runs at once on the calling thread, so that it
  /// still runs exactly once.
  void post(std::function<void()> task);

  /// Runs every queued task (including tasks those tasks post), then joins the
  /// workers. Safe to call more than once and from a worker itself.
  void shutdown();

  /// The workers alive now (for tests and diagnostics).
  std::size_t threadCount() const;

 private:
  /// What the workers share with the pool. Workers hold it too, so a worker
  /// left running by a shutdown from inside one of its own tasks stays valid.
  struct State {
    Limits limits;
    mutable std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::function<void()>> tasks;
    std::vector<std::thread> workers;        // alive or ended but not yet joined
    std::vector<std::thread::id> ended;      // workers that left their loop
    std::size_t alive = 0;                   // workers still in their loop
    std::size_t idle = 0;                    // of those, waiting for a task
    bool stopping = false;
    bool closed = false;
  };

  /// The loop of one worker.
  static void work(const std::shared_ptr<State>& state);
  /// Runs one task, keeping the worker alive if it throws.
  static void run(std::function<void()>& task) noexcept;
  /// Takes the threads of ended workers out of `state` (lock held) for joining.
  static std::vector<std::thread> takeEnded(State& state);

  std::shared_ptr<State> state_ = std::make_shared<State>();
};

}  // namespace quorvix::detail
