#pragma once
// Where work that must run on the main thread is sent from other threads:
// the assistant's model calls run on worker threads and hand their results
// back through post(). The desktop backs it with its event loop; the command
// line and the tests use LoopExecutor, whose queue the main thread drains
// itself. post() may be called from any thread; the closures run on the
// main thread, in the order posted.

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

namespace orvane::assistant {

class MainThreadExecutor {
 public:
  using Closure = std::function<void()>;
  virtual ~MainThreadExecutor() = default;
  // Runs closure later on the main thread, never inside this call.
  virtual void post(Closure closure) = 0;
};

// A queue of closures run by the thread that calls runPending or runUntil
// (the thread that owns it, standing in for an event loop). Anything posted
// and never run is dropped with the executor.
class LoopExecutor final : public MainThreadExecutor {
 public:
  void post(Closure closure) override;

  // Runs what is queued now (not what those closures post); returns how
  // many ran.
  int runPending();
  // Runs closures as they arrive, waiting for more, until done() is true
  // (checked before each closure); without a timeout it waits for ever.
  // Returns done().
  bool runUntil(const std::function<bool()>& done);
  bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);
  std::size_t pendingCount() const;

 private:
  bool run(const std::function<bool()>& done, std::optional<std::chrono::steady_clock::time_point> deadline);

  mutable std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<Closure> queue_;
};

}  // namespace orvane::assistant
