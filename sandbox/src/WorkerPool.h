#pragma once
/// @file
/// The threads that serve the connections.

#include <httplib.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quorvix::sandbox {

/// A thread pool that starts threads only when every existing one is busy, up to
/// a limit. A kept-alive connection occupies its thread until it closes, so a
/// fixed small pool would leave later clients waiting; an idle service costs no
/// threads.
class WorkerPool : public httplib::TaskQueue {
 public:
  explicit WorkerPool(std::size_t maxThreads);
  ~WorkerPool() override;
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  /// Runs `job` on an idle thread, a new one, or the first to become idle.
  void enqueue(std::function<void()> job) override;
  /// Runs the queued jobs, then ends every thread; idempotent.
  void shutdown() override;

 private:
  void work();

  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> jobs_;
  std::vector<std::thread> threads_;
  std::size_t idle_ = 0;
  std::size_t maxThreads_;
  bool stopping_ = false;
};

}  // namespace quorvix::sandbox
