#pragma once
// Pictures of generated content: text, shapes and solids, drawn with Qt Gui
// into 8-bit premultiplied bitmaps and kept in a bounded cache keyed by the
// content's value hash (and, for text, the revealed character count), so a
// frame asks for a picture many times and draws it once. One shared
// instance; any thread. The lock is held only around a cache look-up or
// store, never while drawing; two threads may draw one key at once, and the
// later store wins.

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>

#include "core/layer_content.hpp"
#include "render/bounded_cache.hpp"
#include "render/generated_image.hpp"

namespace orvane::render {

class GeneratedImageFactory {
 public:
  static constexpr std::size_t countLimit = 256;
  // The cache also lets go of the least recently used pictures once their
  // float pixels pass this many bytes, as a memory-pressure stand-in.
  static constexpr std::size_t costLimit = std::size_t{512} << 20;

  static GeneratedImageFactory& shared();

  // The picture of text, shape or solid content; none for other kinds and
  // when drawing fails. textReveal is the percentage of a text that shows.
  std::optional<GeneratedImage> imageFor(const core::LayerContent& content, double textReveal = 100);
  void clearCache();
  // How many pictures are cached now.
  std::size_t cachedCount() const;

  // The cache key of content at textReveal: "text:<hash>:<revealed count>"
  // or "shape:<hash>", the hash in decimal; none for content that isn't
  // cached (solids and the rest).
  static std::optional<std::string> cacheKeyFor(const core::LayerContent& content, double textReveal = 100);

  // A solid: its colour cropped to at least 1 × 1, with no bitmap. None for
  // a size that isn't finite or is too large, or a colour that isn't a number.
  static std::optional<GeneratedImage> solidImage(const core::SolidContent& content);

 private:
  template <class Build>
  std::optional<GeneratedImage> cached(const std::string& key, Build&& build);

  mutable std::mutex mutex_;
  BoundedCache<GeneratedImage> cache_{countLimit, costLimit};  // guarded by mutex_
};

}  // namespace orvane::render
