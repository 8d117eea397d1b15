#pragma once
// The pictures of still image files by path, decoded once (EXIF orientation
// applied; SVG rasterised sharp, sized as the file says) and kept in a
// bounded cache. A file that fails to load is remembered as failed, so it is
// tried once rather than at every frame. One shared instance; any thread;
// the lock is never held while a file is read.
//
// prewarm hands paths to one background thread of the cache, which loads
// them in order; at exit it finishes the file in hand and stops.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "render/bounded_cache.hpp"
#include "render/image.hpp"

namespace orvane::render {

class StillImageCache {
 public:
  static constexpr std::size_t countLimit = 64;
  // The least recently used pictures also go once their float pixels pass
  // this many bytes, as a memory-pressure stand-in; the newest one stays.
  static constexpr std::size_t costLimit = std::size_t{1} << 30;

  StillImageCache();
  ~StillImageCache();
  StillImageCache(const StillImageCache&) = delete;
  StillImageCache& operator=(const StillImageCache&) = delete;

  static StillImageCache& shared();

  // The picture at path, its extent at the origin; none when it cannot be
  // read (missing, corrupt, or a side above kMaxImageSide).
  std::optional<Image> imageAtPath(const std::string& path);
  // Loads the paths in the background, so the first frame finds them.
  void prewarm(const std::vector<std::string>& paths);
  // Forgets every picture and failure. A load that was under way when this
  // ran doesn't store its result, so a relinked file is read afresh.
  void removeAll();
  // How many paths are cached now, failures included.
  std::size_t cachedCount() const;

 private:
  class Prewarmer;

  mutable std::mutex mutex_;
  // An absent image records a failed load.
  BoundedCache<std::optional<Image>> cache_{countLimit, costLimit};  // guarded by mutex_
  std::uint64_t generation_ = 0;                                      // guarded by mutex_; moved by removeAll
  std::unique_ptr<Prewarmer> prewarmer_;                              // made once, under mutex_
};

}  // namespace orvane::render
