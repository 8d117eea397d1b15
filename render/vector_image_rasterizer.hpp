#pragma once
// SVG files as pictures: rasterised large with Qt Svg, then scaled so that
// the picture's extent is the file's own size, as a layer's geometry takes
// it from there. Stateless; any thread.

#include <QImage>
#include <optional>
#include <string>

#include "core/geometry.hpp"
#include "render/image.hpp"

namespace orvane::render {

struct VectorImageRasterizer {
  // The raster size of the longest side before scaling.
  static constexpr int targetPixels = 2048;

  // Whether the path names an SVG file: its extension, in any case, is
  // "svg". Nothing else counts (PDF files are read as images).
  static bool isVector(const std::string& path);

  // The size the file declares (width and height, else its view box);
  // 512 × 512 when a side is 0 or less; none when it can't be read.
  static std::optional<core::OVSize> intrinsicSize(const std::string& path);

  // The file drawn into a transparent bitmap whose longest side is
  // longestSide pixels, the other side in proportion (rounded to nearest).
  // None when it can't be read or a side comes out below 1 or above
  // kMaxImageSide.
  static std::optional<QImage> rasterise(const std::string& path, int longestSide = targetPixels);

  // The raster at targetPixels, scaled uniformly (with area averaging) to
  // the intrinsic size: a picture at the origin whose extent is that size,
  // rounded to whole pixels.
  static std::optional<Image> imageFor(const std::string& path);
};

}  // namespace orvane::render
