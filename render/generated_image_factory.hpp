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
#include <unordered_map>

#include "core/layer_content.hpp"
#include "render/generated_image.hpp"

namespace orvane::render {

class GeneratedImageFactory {
 public:
  static constexpr std::size_t countLimit = 256;

  static GeneratedImageFactory& shared();

  // The picture of text, shape or solid content; none for other kinds and
  // when drawing fails. textReveal is the percentage of a text that shows.
  std::optional<GeneratedImage> imageFor(const core::LayerContent& content, double textReveal = 100);
  void clearCache();
  // How many pictures are cached now.
  std::size_t cachedCount() const;
};

}  // namespace orvane::render
