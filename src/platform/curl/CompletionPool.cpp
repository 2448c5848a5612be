/// @file
/// The completion worker threads.

#include "platform/curl/CompletionPool.h"

#include <exception>
#include <string>
#include <utility>

#include "quorvix/platform/Platform.h"

namespace quorvix::detail {

CompletionPool::CompletionPool(std::size_t threadCount) {
  if (threadCount == 0) {
    threadCount = 1;
  }
  workers_.reserve(threadCount);
  for (std::size_t i = 0; i < threadCount; ++i) {
    workers_.emplace_back([state = state_] { work(state); });
  }
}

CompletionPool::~CompletionPool() { shutdown(); }

void CompletionPool::post(std::function<void()> task) {
  {
    std::lock_guard lock(state_->mutex);
    if (!state_->closed) {
      state_->tasks.push_back(std::move(task));
      state_->wake.notify_one();
      return;
    }
  }
  run(task);
}

void CompletionPool::shutdown() {
  std::vector<std::thread> workers;
  {
    std::lock_guard lock(state_->mutex);
    state_->stopping = true;
    workers.swap(workers_);
  }
  state_->wake.notify_all();
  for (std::thread& worker : workers) {
    if (worker.get_id() == std::this_thread::get_id()) {
      worker.detach();  // shut down from inside a task: this worker ends after it
    } else {
      worker.join();
    }
  }
  // Tasks posted after the last worker left still run, here.
  std::deque<std::function<void()>> leftovers;
  {
    std::lock_guard lock(state_->mutex);
    state_->closed = true;
    leftovers.swap(state_->tasks);
  }
  for (std::function<void()>& task : leftovers) {
    run(task);
  }
}

void CompletionPool::work(const std::shared_ptr<State>& state) {
  std::unique_lock lock(state->mutex);
  for (;;) {
    state->wake.wait(lock, [&] { return state->stopping || !state->tasks.empty(); });
    if (state->tasks.empty()) {
      return;  // stopping and nothing left to run
    }
    std::function<void()> task = std::move(state->tasks.front());
    state->tasks.pop_front();
    lock.unlock();
    run(task);
    task = nullptr;  // release what the task captured before taking the lock again
    lock.lock();
  }
}

void CompletionPool::run(std::function<void()>& task) noexcept {
  try {
    task();
  } catch (const std::exception& e) {
    platform::log(std::string("Transport completion threw: ") + e.what());
  } catch (...) {
    platform::log("Transport completion threw an unknown exception");
  }
}

}  // namespace quorvix::detail
