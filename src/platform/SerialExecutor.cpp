#include "platform/SerialExecutor.h"

#include "platform/Log.h"

namespace quorvix::detail {

SerialExecutor::SerialExecutor() { worker_.start([this] { run(); }); }

SerialExecutor::~SerialExecutor() { stop(); }

void SerialExecutor::stop() { worker_.stop(); }

void SerialExecutor::post(std::function<void()> task) {
  {
    std::lock_guard lock(worker_.mutex);
    if (worker_.stopping) return;  // dropped, as queued tasks are at the end
    tasks_.push_back(std::move(task));
  }
  worker_.wake.notify_one();
}

void SerialExecutor::run() {
  std::unique_lock lock(worker_.mutex);
  for (;;) {
    worker_.wake.wait(lock, [this] { return worker_.stopping || !tasks_.empty(); });
    if (worker_.stopping) return;
    auto task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    runCatching("A task on the main executor", task);
    task = nullptr;  // its captures are released outside the lock
    lock.lock();
  }
}

}  // namespace quorvix::detail
