#pragma once
// Operations that make a new picture from others: compositing two pictures,
// colour matrix and opacity. Together with crop, clampToExtent (image.hpp) and
// transformed (draw_layer.hpp) these are the imaging operations the
// compositor, masks and effects build on.
//
// Each returns a new image and leaves its inputs alone; an input passed by
// value whose pixels have no other owner is rewritten in place instead of
// copied (pass it with std::move). Pictures with an infinite extent are
// refused with ImageError::unbounded except by the pointwise operations,
// which keep the extent. Any thread may call these.

#include <array>
#include <expected>

#include "core/layer_style.hpp"
#include "render/image.hpp"

namespace orvane::render {

// top composited with the blend mode onto bottom (top as the source, bottom
// as the backdrop); the extent is the union of both. Where top is
// transparent, bottom shows unchanged.
std::expected<Image, ImageError> blended(const Image& top, Image bottom, core::OVBlendMode mode,
                                         WorkerPool& pool = WorkerPool::shared());

// Porter-Duff source-over: top + bottom × (1 − top alpha).
std::expected<Image, ImageError> compositedOver(const Image& top, Image bottom,
                                                WorkerPool& pool = WorkerPool::shared());

// Sum of both premultiplied pictures, all four components, clamped to 0 ... 1.
std::expected<Image, ImageError> added(const Image& top, Image bottom, WorkerPool& pool = WorkerPool::shared());

// A 4 × 5 colour matrix: each output component is the dot product of its
// vector with the straight (unpremultiplied) input (r, g, b, a), plus its
// bias. The result is premultiplied again, its alpha clamped to 0 ... 1 so
// that it can be.
struct ColorMatrix {
  std::array<float, 4> r{1, 0, 0, 0};
  std::array<float, 4> g{0, 1, 0, 0};
  std::array<float, 4> b{0, 0, 1, 0};
  std::array<float, 4> a{0, 0, 0, 1};
  std::array<float, 4> bias{0, 0, 0, 0};

  friend bool operator==(const ColorMatrix&, const ColorMatrix&) = default;
};

// The matrix applied to every pixel.
Rgba applyColorMatrix(const ColorMatrix& matrix, Rgba pixel);
std::expected<Image, ImageError> colorMatrix(Image image, const ColorMatrix& matrix,
                                             WorkerPool& pool = WorkerPool::shared());

// The colour matrix with only the alpha vector (0, 0, 0, opacity): straight
// colour stays, so all four premultiplied components scale by opacity
// (clamped to 0 ... 1). An opacity of 1 returns image itself.
std::expected<Image, ImageError> applyOpacity(Image image, double opacity, WorkerPool& pool = WorkerPool::shared());

}  // namespace orvane::render
