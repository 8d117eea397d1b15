#include "media/serial_worker.hpp"

namespace orvane::media {

SerialWorker::~SerialWorker() {
  {
    std::lock_guard guard(lock_);
    stopping_ = true;
    jobs_.clear();
  }
  wake_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void SerialWorker::post(std::function<void()> job) {
  {
    std::lock_guard guard(lock_);
    if (stopping_) return;
    jobs_.push_back(std::move(job));
    if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
  }
  wake_.notify_one();
}

void SerialWorker::run() {
  for (;;) {
    std::function<void()> job;
    {
      std::unique_lock guard(lock_);
      wake_.wait(guard, [&] { return stopping_ || !jobs_.empty(); });
      if (stopping_) return;
      job = std::move(jobs_.front());
      jobs_.pop_front();
    }
    job();
  }
}

}  // namespace orvane::media
