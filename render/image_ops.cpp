#include "render/image_ops.hpp"

#include <algorithm>

#include "render/draw_layer.hpp"
#include "render/vec4.hpp"

namespace orvane::render {

using core::OVBlendMode;

std::expected<Image, ImageError> blended(const Image& top, Image bottom, OVBlendMode mode, WorkerPool& pool) {
  if (top.isInfinite() || bottom.isInfinite()) return std::unexpected(ImageError::unbounded);
  if (top.isEmpty()) return bottom;
  // Every mode but the clamping sum gives the source itself over nothing.
  if (bottom.isEmpty() && mode != OVBlendMode::add) return top;
  const PixelRect rect = top.extent().united(bottom.extent());
  auto canvas = Canvas::from(std::move(bottom), rect, pool);
  if (!canvas) return std::unexpected(canvas.error());
  drawLayer(*canvas, rect, top, core::Affine2D::identity(), 1.0, mode, pool);
  return std::move(*canvas).image();
}

std::expected<Image, ImageError> compositedOver(const Image& top, Image bottom, WorkerPool& pool) {
  return blended(top, std::move(bottom), OVBlendMode::normal, pool);
}

std::expected<Image, ImageError> added(const Image& top, Image bottom, WorkerPool& pool) {
  return blended(top, std::move(bottom), OVBlendMode::add, pool);
}

Rgba applyColorMatrix(const ColorMatrix& m, Rgba p) {
  const float inverse = p.a > 0 ? 1.0f / p.a : 0.0f;
  const float in[4] = {p.r * inverse, p.g * inverse, p.b * inverse, p.a};
  const auto dot = [&](const std::array<float, 4>& v, float bias) {
    return v[0] * in[0] + v[1] * in[1] + v[2] * in[2] + v[3] * in[3] + bias;
  };
  const float alpha = std::clamp(dot(m.a, m.bias[3]), 0.0f, 1.0f);
  return {dot(m.r, m.bias[0]) * alpha, dot(m.g, m.bias[1]) * alpha, dot(m.b, m.bias[2]) * alpha, alpha};
}

std::expected<Image, ImageError> colorMatrix(Image image, const ColorMatrix& matrix, WorkerPool& pool) {
  return mapPixels(
      std::move(image),
      [&matrix](Rgba* pixels, int count) {
        for (int i = 0; i < count; ++i) pixels[i] = applyColorMatrix(matrix, pixels[i]);
      },
      pool);
}

std::expected<Image, ImageError> applyOpacity(Image image, double opacity, WorkerPool& pool) {
  if (opacity >= 1) return image;
  const detail::Vec4 scale = detail::splat(opacity > 0 ? static_cast<float>(opacity) : 0.0f);
  return mapPixels(
      std::move(image),
      [scale](Rgba* pixels, int count) {
        for (int i = 0; i < count; ++i) detail::store(pixels[i], detail::load(pixels[i]) * scale);
      },
      pool);
}

}  // namespace orvane::render
