#include "assistant/main_thread_executor.hpp"

#include <utility>

namespace orvane::assistant {

void LoopExecutor::post(Closure closure) {
  {
    std::lock_guard lock(mutex_);
    queue_.push_back(std::move(closure));
  }
  arrived_.notify_all();
}

int LoopExecutor::runPending() {
  std::deque<Closure> batch;
  {
    std::lock_guard lock(mutex_);
    batch.swap(queue_);
  }
  int ran = 0;
  // Closures run outside the lock: they may post again.
  for (Closure& closure : batch) {
    if (closure) closure();
    ++ran;
  }
  return ran;
}

bool LoopExecutor::runUntil(const std::function<bool()>& done) { return run(done, std::nullopt); }

bool LoopExecutor::runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
  return run(done, std::chrono::steady_clock::now() + timeout);
}

bool LoopExecutor::run(const std::function<bool()>& done,
                       std::optional<std::chrono::steady_clock::time_point> deadline) {
  const auto ready = [this] { return !queue_.empty(); };
  while (!done()) {
    Closure next;
    {
      std::unique_lock lock(mutex_);
      if (!deadline) {
        arrived_.wait(lock, ready);
      } else if (!arrived_.wait_until(lock, *deadline, ready)) {
        return done();
      }
      next = std::move(queue_.front());
      queue_.pop_front();
    }
    if (next) next();
  }
  return true;
}

std::size_t LoopExecutor::pendingCount() const {
  std::lock_guard lock(mutex_);
  return queue_.size();
}

}  // namespace orvane::assistant
