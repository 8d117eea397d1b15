#include "render/effects/effect_preset_renderer.hpp"

#include <algorithm>
#include <cmath>

#include "render/draw_layer.hpp"
#include "render/image_ops.hpp"

namespace orvane::render {

EffectValues EffectPresetRenderer::mergedValues(const core::EffectDescriptor& descriptor,
                                                const std::map<std::string, core::PropertyValue>& presetValues) {
  EffectValues values;
  for (const core::EffectParameterDescriptor& parameter : descriptor.parameters) {
    const auto preset = presetValues.find(parameter.id);
    values.emplace(parameter.id, preset == presetValues.end() ? parameter.defaultValue : preset->second);
  }
  return values;
}

Image EffectPresetRenderer::render(const Image& source, const core::EffectDescriptor& descriptor,
                                   const std::map<std::string, core::PropertyValue>& values, double layerWidth,
                                   WorkerPool& pool) {
  if (source.isEmpty() || source.isInfinite()) return {};
  PixelRect from = source.extent();
  const double scale = static_cast<double>(kThumbnailWidth) / from.width;
  const long fitted = std::lround(from.height * scale);
  const int height = static_cast<int>(std::clamp<long>(fitted, 1, kThumbnailMaxHeight));
  const PixelRect frame{0, 0, kThumbnailWidth, height};
  // A picture too tall for the frame keeps its aspect and shows its lower
  // part; only that part is scaled. Otherwise it fills the frame.
  double scaleY = static_cast<double>(height) / from.height;
  if (fitted != height) {
    scaleY = scale;
    from.height = std::min(from.height, static_cast<int>(std::ceil(height / scale)) + 1);
  }
  const core::Affine2D placement = core::Affine2D::concatenating(core::Affine2D::makeTranslation(-from.x, -from.y),
                                                                 core::Affine2D::makeScale(scale, scaleY));
  auto small = transformed(crop(source, from), placement, pool);
  if (!small) return {};
  const Image picture = crop(*small, frame);

  EffectRenderContext context;
  context.compositionSize = {static_cast<double>(kThumbnailWidth), static_cast<double>(height)};
  context.time = core::OVTime{};
  context.renderScale = kThumbnailWidth / (layerWidth > 0 && std::isfinite(layerWidth) ? layerWidth : from.width);
  const EffectKernel kernel = effectKernel(descriptor.id);
  const Image affected = kernel ? kernel(picture, mergedValues(descriptor, values), context, pool) : picture;

  auto backdrop = Canvas::make(frame, premultiplied(kBackdrop), pool);
  if (!backdrop) return {};
  drawLayer(*backdrop, frame, affected, core::Affine2D::identity(), 1.0, core::OVBlendMode::normal, pool);
  return std::move(*backdrop).image();
}

}  // namespace orvane::render
