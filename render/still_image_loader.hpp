#pragma once
// Reading one still image file into a picture: SVG through
// VectorImageRasterizer, PDF (by its "%PDF" signature) as its first page
// through poppler at 72 dpi (one pixel a point), everything else through
// QImageReader with the EXIF orientation applied, and once more without it
// when that fails. Colours are converted to sRGB when the file carries a
// profile. A picture with a side above kMaxImageSide is refused from its
// header, before its pixels are decoded. Any thread.
//
// QImageReader's allocation limit is process-wide; the first load raises it
// to 1024 MB, what a 16384 × 16384 8-bit picture needs.

#include <optional>
#include <string>

#include "core/geometry.hpp"
#include "render/image.hpp"

namespace orvane::render {

// The picture at path with its extent at the origin; none when the file is
// missing, can't be decoded or is too large.
std::optional<Image> loadStillImage(const std::string& path);

// The size loadStillImage's picture would have, read from the file's header
// (a vector file's own size, a PDF page in points, a raster with its
// orientation applied) without decoding it; none when it can't be told.
std::optional<core::OVSize> stillImageSize(const std::string& path);

}  // namespace orvane::render
