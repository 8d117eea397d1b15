#pragma once
// The pictures of still image files by path, decoded once (EXIF orientation
// applied; SVG rasterised sharp, sized as the file says) and kept in a
// bounded cache. A file that fails to load is remembered as failed, so it is
// tried once rather than at every frame. One shared instance; any thread;
// the lock is never held while a file is read.

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "render/image.hpp"

namespace orvane::render {

class StillImageCache {
 public:
  static constexpr std::size_t countLimit = 64;

  static StillImageCache& shared();

  // The picture at path, its extent at the origin; none when it cannot be
  // read (missing, corrupt, or a side above kMaxImageSide).
  std::optional<Image> imageAtPath(const std::string& path);
  // Loads the paths in the background, so the first frame finds them.
  void prewarm(const std::vector<std::string>& paths);
  void removeAll();
};

}  // namespace orvane::render
