#include "platform/SerialExecutor.h"

#include "platform/Log.h"

namespace quorvix::detail {

SerialExecutor::SerialExecutor() : thread_([this] { run(); }) {}

SerialExecutor::~SerialExecutor() { stop(); }

void SerialExecutor::stop() {
  std::lock_guard once(stopMutex_);
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_one();
  if (!thread_.joinable()) return;
  // A task that ends the process from this very thread cannot wait for itself.
  if (std::this_thread::get_id() == thread_.get_id()) {
    thread_.detach();
  } else {
    thread_.join();
  }
}

void SerialExecutor::post(std::function<void()> task) {
  {
    std::lock_guard lock(mutex_);
    if (stopping_) return;  // dropped, as queued tasks are at the end
    tasks_.push_back(std::move(task));
  }
  wake_.notify_one();
}

void SerialExecutor::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    wake_.wait(lock, [this] { return stopping_ || !tasks_.empty(); });
    if (stopping_) return;
    auto task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    runCatching("A task on the main executor", task);
    task = nullptr;  // its captures are released outside the lock
    lock.lock();
  }
}

}  // namespace quorvix::detail
