/// @file
/// The completion worker threads.

#include "platform/curl/CompletionPool.h"

#include <algorithm>
#include <exception>
#include <string>
#include <utility>

#include "quorvix/platform/Platform.h"

namespace quorvix::detail {

CompletionPool::CompletionPool(Limits limits) {
  limits.maxThreads = std::max<std::size_t>(limits.maxThreads, 1);
  state_->limits = limits;
}

CompletionPool::~CompletionPool() { shutdown(); }

void CompletionPool::post(std::function<void()> task) {
  std::vector<std::thread> ended;
  {
    std::unique_lock lock(state_->mutex);
    if (!state_->closed) {
      State& state = *state_;
      state.tasks.push_back(std::move(task));
      ended = takeEnded(state);
      if (state.idle >= state.tasks.size()) {
        state.wake.notify_one();  // a worker waiting for a task takes it
      } else if (!state.stopping && state.alive < state.limits.maxThreads) {
        ++state.alive;
        state.workers.emplace_back([shared = state_] { work(shared); });
      }
      lock.unlock();
      for (std::thread& thread : ended) thread.join();
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
    workers.swap(state_->workers);
    state_->ended.clear();
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

std::size_t CompletionPool::threadCount() const {
  std::lock_guard lock(state_->mutex);
  return state_->alive;
}

std::vector<std::thread> CompletionPool::takeEnded(State& state) {
  std::vector<std::thread> ended;
  for (const std::thread::id id : state.ended) {
    const auto found = std::find_if(state.workers.begin(), state.workers.end(),
                                    [id](const std::thread& worker) { return worker.get_id() == id; });
    if (found != state.workers.end()) {
      ended.push_back(std::move(*found));
      state.workers.erase(found);
    }
  }
  state.ended.clear();
  return ended;
}

void CompletionPool::work(const std::shared_ptr<State>& state) {
  std::unique_lock lock(state->mutex);
  for (;;) {
    if (state->tasks.empty() && !state->stopping) {
      ++state->idle;
      const bool woken = state->wake.wait_for(lock, state->limits.idleTimeout,
                                              [&] { return state->stopping || !state->tasks.empty(); });
      --state->idle;
      if (!woken) {
        break;  // idle long enough: make room, a new worker starts when needed
      }
    }
    if (state->tasks.empty()) {
      break;  // stopping and nothing left to run
    }
    std::function<void()> task = std::move(state->tasks.front());
    state->tasks.pop_front();
    lock.unlock();
    run(task);
    task = nullptr;  // release what the task captured before taking the lock again
    lock.lock();
  }
  --state->alive;
  if (!state->stopping) {
    state->ended.push_back(std::this_thread::get_id());  // joined by the next post
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
