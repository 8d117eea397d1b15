#pragma once
// A stand-in for the main thread's event loop in the tests of the
// background services: closures posted "to the main thread" wait here until
// the test drains them on its own thread.

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

#include "media/serial_worker.hpp"

namespace orvane::media::testing {

class MainQueue {
 public:
  MainThreadPost poster() {
    return [this](std::function<void()> job) {
      {
        std::lock_guard guard(lock_);
        jobs_.push_back(std::move(job));
      }
      wake_.notify_all();
    };
  }

  // Runs posted closures until done() holds; false if it still does not
  // after a generous wait (a hang, not a timing check).
  bool drainUntil(const std::function<bool()>& done) {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!done()) {
      std::function<void()> job;
      {
        std::unique_lock guard(lock_);
        if (!wake_.wait_until(guard, giveUp, [&] { return !jobs_.empty(); })) return false;
        job = std::move(jobs_.front());
        jobs_.pop_front();
      }
      job();
    }
    return true;
  }

 private:
  std::mutex lock_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> jobs_;
};

}  // namespace orvane::media::testing
