#include "render/still_image_cache.hpp"

#include <QImageReader>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <thread>
#include <vector>

#include "render/qimage_bridge.hpp"
#include "render/still_image_loader.hpp"

namespace orvane::render {

// One thread that loads queued paths through the cache. It starts with the
// first paths and runs until its cache goes or the process exits; an exit
// handler stops every such thread after the file in hand, so that no
// decoder runs while the process tears down.
class StillImageCache::Prewarmer {
 public:
  explicit Prewarmer(StillImageCache& cache) : cache_(cache) {
    Registry& registry = live();
    std::lock_guard lock(registry.mutex);
    registry.prewarmers.push_back(this);
  }

  ~Prewarmer() {
    stop();
    Registry& registry = live();
    std::lock_guard lock(registry.mutex);
    std::erase(registry.prewarmers, this);
  }

  void enqueue(const std::vector<std::string>& paths) {
    std::lock_guard lock(mutex_);
    if (stopping_) return;
    pending_.insert(pending_.end(), paths.begin(), paths.end());
    if (!thread_.joinable()) thread_ = std::thread([this] { run(); });
    wake_.notify_one();
  }

  void stop() {
    {
      std::lock_guard lock(mutex_);
      stopping_ = true;
      pending_.clear();
    }
    wake_.notify_all();
    if (thread_.joinable()) thread_.join();
  }

 private:
  struct Registry {
    std::mutex mutex;
    std::vector<Prewarmer*> prewarmers;  // guarded by mutex
  };

  // Never destroyed, as the exit handler uses it. The image plug-ins'
  // registry is made before the handler is registered, so that it is torn
  // down only after the threads have stopped.
  static Registry& live() {
    static Registry* registry = [] {
      auto* made = new Registry();
      QImageReader::supportedImageFormats();
      std::atexit([] {
        Registry& r = live();
        std::lock_guard lock(r.mutex);
        for (Prewarmer* prewarmer : r.prewarmers) prewarmer->stop();
      });
      return made;
    }();
    return *registry;
  }

  void run() {
    for (;;) {
      std::string path;
      {
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [this] { return stopping_ || !pending_.empty(); });
        if (stopping_) return;
        path = std::move(pending_.front());
        pending_.pop_front();
      }
      cache_.imageAtPath(path);
    }
  }

  StillImageCache& cache_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<std::string> pending_;  // guarded by mutex_
  bool stopping_ = false;            // guarded by mutex_
  std::thread thread_;               // started by the first enqueue, under mutex_
};

StillImageCache::StillImageCache() = default;

StillImageCache::~StillImageCache() = default;

StillImageCache& StillImageCache::shared() {
  // Never destroyed: render threads may still ask while the process exits.
  static auto* cache = new StillImageCache();
  return *cache;
}

std::optional<Image> StillImageCache::imageAtPath(const std::string& path) {
  std::uint64_t generation = 0;
  {
    std::lock_guard lock(mutex_);
    if (auto hit = cache_.find(path)) return *hit;
    generation = generation_;
  }
  std::optional<Image> loaded = loadStillImage(path);
  std::lock_guard lock(mutex_);
  if (generation == generation_) cache_.store(path, loaded, loaded ? pictureCost(*loaded) : 0);
  return loaded;
}

void StillImageCache::prewarm(const std::vector<std::string>& paths) {
  if (paths.empty()) return;
  Prewarmer* prewarmer = nullptr;
  {
    std::lock_guard lock(mutex_);
    if (!prewarmer_) prewarmer_ = std::make_unique<Prewarmer>(*this);
    prewarmer = prewarmer_.get();
  }
  prewarmer->enqueue(paths);
}

void StillImageCache::removeAll() {
  std::lock_guard lock(mutex_);
  cache_.clear();
  ++generation_;
}

std::size_t StillImageCache::cachedCount() const {
  std::lock_guard lock(mutex_);
  return cache_.count();
}

}  // namespace orvane::render
