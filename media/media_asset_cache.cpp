#include "media/media_asset_cache.hpp"

#include <mutex>
#include <unordered_map>
#include <vector>

namespace orvane::media {

struct MediaAssetCache::Store {
  struct AudioIdle {
    AudioFormat format;
    std::unique_ptr<AudioDecoder> decoder;
  };
  struct Entry {
    std::uint64_t generation = 0;
    std::optional<std::expected<MediaProbe, MediaError>> probe;
    std::vector<std::unique_ptr<VideoDecoder>> idleVideo;
    std::vector<AudioIdle> idleAudio;
  };

  mutable std::mutex lock;
  std::unordered_map<std::string, Entry> entries;  // guarded by lock
  std::uint64_t nextGeneration = 1;                // guarded by lock

  // The generation of the file's entry, made when missing.
  std::uint64_t generationFor(const std::string& key) {
    Entry& entry = entries[key];
    if (entry.generation == 0) entry.generation = nextGeneration++;
    return entry.generation;
  }
  Entry* entryFor(const std::string& key, std::uint64_t generation) {
    const auto found = entries.find(key);
    return found != entries.end() && found->second.generation == generation ? &found->second : nullptr;
  }
};

namespace {

std::string keyFor(const std::filesystem::path& path) { return path.lexically_normal().string(); }

}  // namespace

MediaAssetCache::MediaAssetCache() : store_(std::make_shared<Store>()) {}
MediaAssetCache::~MediaAssetCache() = default;

MediaAssetCache& MediaAssetCache::shared() {
  static MediaAssetCache* const cache = new MediaAssetCache();  // lives as long as the process
  return *cache;
}

std::expected<MediaProbe, MediaError> MediaAssetCache::probe(const std::filesystem::path& path) {
  const std::string key = keyFor(path);
  std::uint64_t generation;
  {
    std::lock_guard guard(store_->lock);
    generation = store_->generationFor(key);
    if (const auto& known = store_->entries[key].probe; known && *known) return **known;
  }
  auto probed = probeMediaFile(path);
  // Failures are not kept: a file being written or mounted may open later.
  if (probed) {
    std::lock_guard guard(store_->lock);
    if (Store::Entry* entry = store_->entryFor(key, generation)) entry->probe = probed;
  }
  return probed;
}

std::expected<VideoDecoderLease, MediaError> MediaAssetCache::videoDecoder(const std::filesystem::path& path) {
  const std::string key = keyFor(path);
  std::unique_ptr<VideoDecoder> decoder;
  std::uint64_t generation;
  {
    std::lock_guard guard(store_->lock);
    generation = store_->generationFor(key);
    auto& idle = store_->entries[key].idleVideo;
    if (!idle.empty()) {
      decoder = std::move(idle.back());
      idle.pop_back();
    }
  }
  if (!decoder) {
    auto opened = VideoDecoder::open(path);
    if (!opened) return std::unexpected(opened.error());
    decoder = std::move(*opened);
  }
  std::weak_ptr<Store> weak = store_;
  return VideoDecoderLease(decoder.release(), [weak, key, generation](VideoDecoder* returned) {
    std::unique_ptr<VideoDecoder> owned(returned);
    if (auto store = weak.lock()) {
      std::lock_guard guard(store->lock);
      Store::Entry* entry = store->entryFor(key, generation);
      if (entry && entry->idleVideo.size() < idleLimitPerFile) entry->idleVideo.push_back(std::move(owned));
    }
    // Otherwise closed here, outside the lock.
  });
}

std::expected<AudioDecoderLease, MediaError> MediaAssetCache::audioDecoder(const std::filesystem::path& path,
                                                                          AudioFormat output) {
  const std::string key = keyFor(path);
  std::unique_ptr<AudioDecoder> decoder;
  std::uint64_t generation;
  {
    std::lock_guard guard(store_->lock);
    generation = store_->generationFor(key);
    auto& idle = store_->entries[key].idleAudio;
    for (auto it = idle.begin(); it != idle.end(); ++it) {
      if (it->format == output) {
        decoder = std::move(it->decoder);
        idle.erase(it);
        break;
      }
    }
  }
  if (!decoder) {
    auto opened = AudioDecoder::open(path, output);
    if (!opened) return std::unexpected(opened.error());
    decoder = std::move(*opened);
  }
  std::weak_ptr<Store> weak = store_;
  return AudioDecoderLease(decoder.release(), [weak, key, generation, output](AudioDecoder* returned) {
    std::unique_ptr<AudioDecoder> owned(returned);
    if (auto store = weak.lock()) {
      std::lock_guard guard(store->lock);
      Store::Entry* entry = store->entryFor(key, generation);
      if (entry && entry->idleAudio.size() < idleLimitPerFile) {
        entry->idleAudio.push_back({output, std::move(owned)});
      }
    }
  });
}

void MediaAssetCache::remove(const std::filesystem::path& path) {
  Store::Entry gone;
  {
    std::lock_guard guard(store_->lock);
    const auto found = store_->entries.find(keyFor(path));
    if (found == store_->entries.end()) return;
    gone = std::move(found->second);
    store_->entries.erase(found);
  }
  // gone's decoders close here, outside the lock.
}

void MediaAssetCache::removeAll() {
  std::unordered_map<std::string, Store::Entry> gone;
  {
    std::lock_guard guard(store_->lock);
    gone.swap(store_->entries);
  }
}

std::size_t MediaAssetCache::idleDecoderCount() const {
  std::lock_guard guard(store_->lock);
  std::size_t count = 0;
  for (const auto& [key, entry] : store_->entries) count += entry.idleVideo.size() + entry.idleAudio.size();
  return count;
}

}  // namespace orvane::media
