#pragma once
// Helpers shared by the autosave tests: a timer whose clock the test moves
// by hand, and a temporary support folder removed afterwards.

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/uuid.hpp"
#include "document/autosave_service.hpp"
#include "tests/document/temp_folder.hpp"

namespace orvane::document::testing_support {

// One-shot timers on a clock that moves only by advance(). Callbacks run
// inside advance, in deadline order.
class ManualTimerFactory : public OneShotTimerFactory {
 public:
  std::unique_ptr<OneShotTimer> start(std::chrono::milliseconds delay,
                                      std::function<void()> callback) override {
    auto entry = std::make_shared<Entry>(Entry{now_ + delay, std::move(callback)});
    entries_.push_back(entry);
    return std::make_unique<Handle>(entry);
  }

  void advance(std::chrono::milliseconds by) {
    const auto until = now_ + by;
    while (auto entry = nextDue(until)) {
      now_ = entry->deadline;
      entry->done = true;
      auto callback = entry->callback;  // the handle may go while it runs
      callback();
    }
    now_ = until;
    std::erase_if(entries_, [](const auto& e) { return e->done; });
  }

 private:
  struct Entry {
    std::chrono::milliseconds deadline;
    std::function<void()> callback;
    bool done = false;
  };
  struct Handle : OneShotTimer {
    explicit Handle(std::weak_ptr<Entry> e) : entry(std::move(e)) {}
    ~Handle() override { cancel(); }
    void cancel() override {
      if (auto e = entry.lock()) e->done = true;
    }
    std::weak_ptr<Entry> entry;
  };

  std::shared_ptr<Entry> nextDue(std::chrono::milliseconds until) const {
    std::shared_ptr<Entry> best;
    for (const auto& e : entries_) {
      if (!e->done && e->deadline <= until && (!best || e->deadline < best->deadline)) best = e;
    }
    return best;
  }

  std::chrono::milliseconds now_{0};
  std::vector<std::shared_ptr<Entry>> entries_;
};

inline std::string fileText(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

}  // namespace orvane::document::testing_support
