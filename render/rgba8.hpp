#pragma once
// Conversion between pictures and 8-bit RGBA buffers: the output of frames
// (PNG files, previews, video frames) and the input of decoded pictures.
// 8-bit buffers run from the top row down, as image files and toolkits store
// them; the y-up picture is flipped on the way. Any thread may call these.

#include <cstddef>
#include <cstdint>
#include <expected>
#include <span>
#include <vector>

#include "render/image.hpp"

namespace orvane::render {

enum class AlphaForm { straight, premultiplied };
enum class ChannelOrder { rgba, bgra };

struct Rgba8Format {
  AlphaForm alpha = AlphaForm::straight;
  ChannelOrder order = ChannelOrder::rgba;
};

// One component as a byte: clamped to 0 ... 1 (NaN as 0), × 255, rounded to
// nearest.
inline std::uint8_t toByte(float component) {
  const float c = component > 0 ? (component < 1.0f ? component : 1.0f) : 0.0f;
  return static_cast<std::uint8_t>(c * 255.0f + 0.5f);
}

// Whether height rows of width 4-byte pixels, bytesPerRow apart, fit in a
// buffer of size bytes.
bool rgba8Fits(std::size_t size, int width, int height, std::size_t bytesPerRow);

// Writes the values of image over region into out, 4 bytes a pixel, rows
// bytesPerRow apart from the top of region down. Where the image has no
// pixels they come out transparent. Fails with bufferTooSmall when out can't
// hold them, unbounded for an infinite region, tooLarge past kMaxImageSide.
std::expected<void, ImageError> writeRgba8(const Image& image, const PixelRect& region, std::span<std::uint8_t> out,
                                           std::size_t bytesPerRow, Rgba8Format format = {},
                                           WorkerPool& pool = WorkerPool::shared());

// One row of pixels as count 4-byte pixels at out.
void writeRgba8Row(const Rgba* pixels, int count, std::uint8_t* out, Rgba8Format format = {});

// The same into a new tightly packed buffer.
std::expected<std::vector<std::uint8_t>, ImageError> toRgba8(const Image& image, const PixelRect& region,
                                                             Rgba8Format format = {},
                                                             WorkerPool& pool = WorkerPool::shared());

// A picture of width × height at the origin from an 8-bit buffer whose rows
// run from the top down, bytesPerRow apart.
std::expected<Image, ImageError> imageFromRgba8(std::span<const std::uint8_t> data, int width, int height,
                                                std::size_t bytesPerRow, Rgba8Format format = {},
                                                WorkerPool& pool = WorkerPool::shared());

}  // namespace orvane::render
