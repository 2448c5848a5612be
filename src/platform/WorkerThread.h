#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace quorvix::detail {

/// The thread under the default executor and scheduler, with the lock and the
/// wake-up its loop waits on and the flag that ends the loop. The owner keeps
/// its queue under `mutex`, starts the thread once that queue exists, and calls
/// `stop` before the queue goes away.
class WorkerThread {
 public:
  WorkerThread() = default;
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;
  ~WorkerThread() { stop(); }

  /// Runs `loop` on the thread; the loop returns once `stopping` is set.
  void start(std::function<void()> loop) { thread_ = std::thread(std::move(loop)); }

  /// Sets `stopping`, wakes the loop and waits for it to end: a task under way
  /// finishes first. Called from the thread itself (a task that ends the
  /// process), it cannot wait for itself and lets the thread go instead.
  /// Idempotent and callable from any thread.
  void stop() {
    std::lock_guard once(stopMutex_);
    {
      std::lock_guard lock(mutex);
      stopping = true;
    }
    wake.notify_one();
    if (!thread_.joinable()) return;
    if (std::this_thread::get_id() == thread_.get_id()) {
      thread_.detach();
    } else {
      thread_.join();
    }
  }

  std::mutex mutex;
  std::condition_variable wake;
  bool stopping = false;  // guarded by `mutex`

 private:
  std::mutex stopMutex_;  // serialises `stop`
  std::thread thread_;
};

}  // namespace quorvix::detail
