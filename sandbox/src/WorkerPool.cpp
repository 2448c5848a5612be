#include "WorkerPool.h"

#include <utility>

namespace quorvix::sandbox {

WorkerPool::WorkerPool(std::size_t maxThreads) : maxThreads_(maxThreads < 1 ? 1 : maxThreads) {}

WorkerPool::~WorkerPool() { shutdown(); }

void WorkerPool::enqueue(std::function<void()> job) {
  std::lock_guard lock(mutex_);
  jobs_.push_back(std::move(job));
  if (idle_ < jobs_.size() && threads_.size() < maxThreads_) {
    threads_.emplace_back([this] { work(); });
  }
  wake_.notify_one();
}

void WorkerPool::shutdown() {
  std::vector<std::thread> threads;
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
    threads.swap(threads_);
  }
  wake_.notify_all();
  for (std::thread& thread : threads) {
    thread.join();
  }
}

void WorkerPool::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    ++idle_;
    wake_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
    --idle_;
    if (jobs_.empty()) {
      return;
    }
    std::function<void()> job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    job();
    lock.lock();
  }
}

}  // namespace quorvix::sandbox
