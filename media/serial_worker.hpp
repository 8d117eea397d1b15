#pragma once
// The threading pieces shared by the background services of the media
// browser and the timeline (thumbnails, clip frames, waveforms, the audio
// normaliser): a way back to the main thread, one background thread that
// runs jobs in order, and the observers of a service's published results.

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace orvane::media {

// Runs a closure on the main thread, later.
using MainThreadPost = std::function<void(std::function<void()>)>;

// One thread that runs posted jobs in order, started by the first post.
// The destructor drops the jobs that have not started and waits for the
// running one. Any thread may post.
class SerialWorker {
 public:
  SerialWorker() = default;
  ~SerialWorker();
  SerialWorker(const SerialWorker&) = delete;
  SerialWorker& operator=(const SerialWorker&) = delete;

  void post(std::function<void()> job);

 private:
  void run();

  std::mutex lock_;
  std::condition_variable wake_;
  std::deque<std::function<void()>> jobs_;  // guarded by lock_
  bool stopping_ = false;                   // guarded by lock_
  std::thread thread_;                      // started under lock_
};

// Observers of a service's published map, by token; main thread only.
template <class Key>
class ChangeObservers {
 public:
  int add(std::function<void(const Key&)> observer) {
    observers_.emplace_back(++last_, std::move(observer));
    return last_;
  }
  void remove(int token) { std::erase_if(observers_, [&](const auto& o) { return o.first == token; }); }
  void notify(const Key& key) const {
    const auto copy = observers_;  // an observer may remove itself
    for (const auto& o : copy) o.second(key);
  }

 private:
  int last_ = 0;
  std::vector<std::pair<int, std::function<void(const Key&)>>> observers_;
};

}  // namespace orvane::media
