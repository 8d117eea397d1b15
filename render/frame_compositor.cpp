#include "render/frame_compositor.hpp"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <vector>

#include "core/layer_placement.hpp"
#include "render/draw_layer.hpp"
#include "render/generated_image_factory.hpp"
#include "render/image_ops.hpp"
#include "render/mask_rasterizer.hpp"
#include "render/mip_level.hpp"
#include "render/still_image_cache.hpp"

namespace orvane::render {

using core::Affine2D;
using core::Composition;
using core::Layer;
using core::LayerKind;
using core::OVSize;
using core::OVTime;

namespace {

// The whole pixels that cover a rectangle, within the range pictures may
// take; empty for a degenerate or non-finite one.
PixelRect coveringPixels(const core::OVRect& r) {
  const double minX = r.x, minY = r.y, maxX = r.maxX(), maxY = r.maxY();
  const double limit = kMaxImagePosition;
  if (!(minX < maxX && minY < maxY) || !(minX > -limit && maxX < limit && minY > -limit && maxY < limit)) return {};
  const int x0 = static_cast<int>(std::floor(minX)), y0 = static_cast<int>(std::floor(minY));
  const int x1 = static_cast<int>(std::ceil(maxX)), y1 = static_cast<int>(std::ceil(maxY));
  return {x0, y0, x1 - x0, y1 - y0};
}

// The pixels nearest to a rectangle's edges: what a crop keeps.
PixelRect nearestPixels(const core::OVRect& r) {
  const double limit = kMaxImagePosition;
  if (r.isEmpty() || !(std::abs(r.x) < limit && std::abs(r.y) < limit && r.maxX() < limit && r.maxY() < limit)) {
    return {};
  }
  const int x0 = static_cast<int>(std::round(r.x)), y0 = static_cast<int>(std::round(r.y));
  const int x1 = static_cast<int>(std::round(r.maxX())), y1 = static_cast<int>(std::round(r.maxY()));
  return {x0, y0, x1 - x0, y1 - y0};
}

// The picture moved so that its extent starts at the origin.
Image movedToOrigin(const Image& image) {
  const PixelRect e = image.extent();
  if (image.isEmpty() || image.isInfinite() || (e.x == 0 && e.y == 0)) return image;
  auto moved = transformed(image, Affine2D::makeTranslation(-e.x, -e.y));
  return moved ? std::move(*moved) : Image{};
}

std::optional<GeneratedImage> footageImage(const Layer& layer, const RenderPlan& plan, const SourceFrames& frames) {
  const auto track = plan.videoTrackIDs.find(layer.id);
  if (track == plan.videoTrackIDs.end()) return std::nullopt;
  const auto frame = frames.find(track->second);
  if (frame == frames.end() || frame->second.isEmpty() || frame->second.isInfinite()) return std::nullopt;
  const auto geometry = plan.footageGeometry.find(layer.id);
  if (geometry == plan.footageGeometry.end()) {
    const PixelRect e = frame->second.extent();
    return GeneratedImage{frame->second, {static_cast<double>(e.width), static_cast<double>(e.height)}};
  }
  auto upright = transformed(frame->second, geometry->second.uprightTransform());
  if (!upright) return std::nullopt;
  return GeneratedImage{std::move(*upright), geometry->second.displaySize()};
}

std::optional<GeneratedImage> stillImage(const Layer& layer, const RenderPlan& plan) {
  const auto path = plan.stillImagePaths.find(layer.id);
  if (path == plan.stillImagePaths.end()) return std::nullopt;
  const std::optional<Image> picture = StillImageCache::shared().imageAtPath(path->second);
  if (!picture || picture->isEmpty() || picture->isInfinite()) return std::nullopt;
  const PixelRect e = picture->extent();
  return GeneratedImage{*picture, {static_cast<double>(e.width), static_cast<double>(e.height)}};
}

// One level of a composition at a scale: the top level at the plan's scale,
// nested ones at 1. The plan is shared by all levels; only the composition
// and the scale change, so nesting copies nothing.
Image composeLevel(const Composition& composition, const RenderPlan& plan, double scale, const OVTime& t,
                   const SourceFrames& frames, int depth);

std::optional<GeneratedImage> nestedImage(const Layer& layer, const RenderPlan& plan, const OVTime& t,
                                          const SourceFrames& frames, int depth) {
  if (depth >= FrameCompositor::maxNestingDepth) return std::nullopt;
  const auto nested = plan.compositionsByID.find(*layer.content.compositionID());
  if (nested == plan.compositionsByID.end()) return std::nullopt;
  const Composition& composition = nested->second;
  Image image = composeLevel(composition, plan, 1.0, layer.sourceTimeForComposition(t), frames, depth + 1);
  return GeneratedImage{std::move(image), composition.size};
}

// One placed layer of a frame: its picture (at a reduced level when it is
// drawn much smaller), where it goes, how strongly, how it blends.
struct DrawStep {
  Image image;
  Affine2D placement;
  double opacity = 1;
  core::OVBlendMode mode = core::OVBlendMode::normal;
};

// Everything of an ordinary layer's drawing but the drawing itself: its
// picture made (masks, crop, effects), placed and faded. None when it has
// no picture.
std::optional<DrawStep> drawStep(const Layer& layer, const Composition& composition, const RenderPlan& plan,
                                 double scale, const OVTime& t, const SourceFrames& frames,
                                 const EffectRenderContext& context, int depth) {
  std::optional<GeneratedImage> generated = FrameCompositor::layerImage(layer, plan, t, frames, context, depth);
  if (!generated || generated->image.isEmpty()) return std::nullopt;
  const double opacity = FrameCompositor::effectiveOpacity(layer, composition, t);
  // Near-opaque layers are drawn opaque: no fade for rounding noise.
  DrawStep step{std::move(generated->image),
                FrameCompositor::placementTransform(layer, composition, t, generated->size, scale),
                opacity >= 0.999 ? 1.0 : opacity, layer.blendMode};
  reduceForPlacement(step.image, step.placement);
  return step;
}

Image composeLevel(const Composition& composition, const RenderPlan& plan, double scale, const OVTime& t,
                   const SourceFrames& frames, int depth) {
  const PixelSize size = renderSizeFor(composition.size, scale);
  const PixelRect renderRect{0, 0, size.width, size.height};
  const Rgba background = composition.isTransparent ? Rgba{} : premultiplied(composition.backgroundColor);
  auto made = Canvas::make(renderRect, background);
  if (!made) return {};
  Canvas canvas = std::move(*made);
  const EffectRenderContext context{composition.size, t, scale};
  const bool solo = composition.hasSoloedVisualLayers();
  for (std::size_t i = composition.layers.size(); i-- > 0;) {
    const Layer& layer = composition.layers[i];
    if (!FrameCompositor::isDrawn(layer, t, solo)) continue;
    if (layer.kind() != LayerKind::adjustment) {
      if (const auto step = drawStep(layer, composition, plan, scale, t, frames, context, depth)) {
        drawLayer(canvas, renderRect, step->image, step->placement, step->opacity, step->mode);
      }
      continue;
    }
    if (layer.effects.empty()) continue;
    Image beneath = std::move(canvas).image();
    Image adjusted = FrameCompositor::applyAdjustment(layer, beneath, context, renderRect);
    auto next = Canvas::from(std::move(adjusted), renderRect);
    if (!next) next = Canvas::from(std::move(beneath), renderRect);
    if (!next) return {};
    canvas = std::move(*next);
  }
  return std::move(canvas).image();
}

// Rows composed together: the band's pixels (1920 × 16 in floats, half a
// megabyte) stay in the core's cache from background to 8-bit output.
constexpr int kBandRows = 16;

// Whether every layer of the frame can be drawn band by band: nothing needs
// the whole picture beneath it (an adjustment layer) and no moment other
// than t is drawn (motion blur).
bool composesInBands(const Composition& composition, const OVTime& t) {
  if (composition.motionBlurEnabled && composition.motionBlurShutterAngle > 1.0) return false;
  const bool solo = composition.hasSoloedVisualLayers();
  for (const Layer& layer : composition.layers) {
    if (layer.kind() == LayerKind::adjustment && !layer.effects.empty() && FrameCompositor::isDrawn(layer, t, solo)) {
      return false;
    }
  }
  return true;
}

// The layers of the frame bottom first, each with its picture made (masks,
// crop, effects), placed and faded: everything but the drawing itself.
std::vector<DrawStep> drawSteps(const RenderPlan& plan, const OVTime& t, const SourceFrames& frames) {
  const Composition& composition = plan.composition;
  const EffectRenderContext context{composition.size, t, plan.renderScale};
  const bool solo = composition.hasSoloedVisualLayers();
  std::vector<DrawStep> steps;
  steps.reserve(composition.layers.size());
  for (std::size_t i = composition.layers.size(); i-- > 0;) {
    const Layer& layer = composition.layers[i];
    if (!FrameCompositor::isDrawn(layer, t, solo) || layer.kind() == LayerKind::adjustment) continue;
    if (auto step = drawStep(layer, composition, plan, plan.renderScale, t, frames, context, 0)) {
      steps.push_back(std::move(*step));
    }
  }
  return steps;
}

// The frame band by band, the bands spread over the worker threads, each
// thread with a scratch band of its own that it keeps between frames.
std::expected<void, ImageError> composeBandsInto(const RenderPlan& plan, const OVTime& t, const SourceFrames& frames,
                                                 std::span<std::uint8_t> out, std::size_t bytesPerRow,
                                                 Rgba8Format format) {
  const PixelSize size = plan.renderSize();
  if (!rgba8Fits(out.size(), size.width, size.height, bytesPerRow)) return std::unexpected(ImageError::bufferTooSmall);
  std::vector<DrawStep> steps = drawSteps(plan, t, frames);
  const Composition& composition = plan.composition;
  Rgba background = composition.isTransparent ? Rgba{} : premultiplied(composition.backgroundColor);
  // Beneath a layer that covers the frame in one opaque colour (a backdrop
  // solid) nothing shows: the bands start from its colour instead.
  const PixelRect frame{0, 0, size.width, size.height};
  for (std::size_t i = steps.size(); i-- > 0;) {
    const DrawStep& step = steps[i];
    if (const auto colour = coveringColour(step.image, step.placement, step.opacity, step.mode, frame)) {
      background = *colour;
      steps.erase(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(i) + 1);
      break;
    }
  }
  std::atomic<bool> failed{false};
  WorkerPool& pool = WorkerPool::shared();
  pool.forEachBand(0, size.height, std::int64_t{size.width} * static_cast<std::int64_t>(steps.size() + 2),
                   [&](int first, int last) {
    thread_local Canvas scratch;
    for (int y = first; y < last; y += kBandRows) {
      const PixelRect band{0, y, size.width, std::min(kBandRows, last - y)};
      if (!scratch.reuseFor(band)) {
        failed = true;
        return;
      }
      std::fill(scratch.row(band.y), scratch.row(band.y) + band.area(), background);
      // Called from inside a band, these run on this thread alone.
      for (const DrawStep& step : steps) drawLayer(scratch, band, step.image, step.placement, step.opacity, step.mode);
      for (int row = band.y; row < band.maxY(); ++row) {
        writeRgba8Row(scratch.row(row), size.width,
                      out.data() + static_cast<std::size_t>(size.height - 1 - row) * bytesPerRow, format);
      }
    }
  });
  if (failed) return std::unexpected(ImageError::outOfMemory);
  return {};
}

}  // namespace

Image FrameCompositor::composeFrame(const RenderPlan& plan, const OVTime& t, const SourceFrames& frames) {
  const Composition& c = plan.composition;
  if (c.motionBlurEnabled && c.motionBlurShutterAngle > 1.0) return composeWithMotionBlur(plan, t, frames);
  return composeSingleFrame(plan, t, frames, 0);
}

std::expected<void, ImageError> FrameCompositor::composeFrameInto(const RenderPlan& plan, const OVTime& t,
                                                                  const SourceFrames& frames,
                                                                  std::span<std::uint8_t> out,
                                                                  std::size_t bytesPerRow, Rgba8Format format) {
  if (composesInBands(plan.composition, t)) return composeBandsInto(plan, t, frames, out, bytesPerRow, format);
  const PixelSize size = plan.renderSize();
  return writeRgba8(composeFrame(plan, t, frames), {0, 0, size.width, size.height}, out, bytesPerRow, format);
}

std::array<OVTime, FrameCompositor::motionBlurSamples> FrameCompositor::motionBlurSampleTimes(
    const Composition& composition, const OVTime& t) {
  const double shutter =
      composition.frameRate.frameDuration().seconds() * (composition.motionBlurShutterAngle / 360.0);
  const double half = shutter * 0.5;
  std::array<OVTime, motionBlurSamples> times;
  for (int i = 0; i < motionBlurSamples; ++i) {
    const double offset = -half + shutter * ((i + 0.5) / motionBlurSamples);
    times[static_cast<std::size_t>(i)] =
        OVTime::clamp(t + OVTime::fromSeconds(offset), OVTime::zero, composition.duration);
  }
  return times;
}

Image FrameCompositor::composeWithMotionBlur(const RenderPlan& plan, const OVTime& t, const SourceFrames& frames) {
  std::optional<Image> accumulator;
  for (const OVTime& sampleTime : motionBlurSampleTimes(plan.composition, t)) {
    auto weighted = applyOpacity(composeSingleFrame(plan, sampleTime, frames, 0), 1.0 / motionBlurSamples);
    if (!weighted) continue;
    if (!accumulator) {
      accumulator = std::move(*weighted);
      continue;
    }
    auto sum = added(*weighted, std::move(*accumulator));
    if (!sum) sum = compositedOver(*weighted, std::move(*accumulator));
    accumulator = sum ? std::move(*sum) : Image{};
  }
  const PixelSize size = plan.renderSize();
  return accumulator ? crop(*accumulator, {0, 0, size.width, size.height}) : Image{};
}

Image FrameCompositor::composeSingleFrame(const RenderPlan& plan, const OVTime& t, const SourceFrames& frames,
                                          int nestingDepth) {
  return composeLevel(plan.composition, plan, plan.renderScale, t, frames, nestingDepth);
}

bool FrameCompositor::isDrawn(const Layer& layer, const OVTime& t, bool solo) {
  return layer.isVisual() && layer.isEnabled && layer.timeRange.contains(t) && (!solo || layer.isSolo);
}

Image FrameCompositor::applyAdjustment(const Layer& layer, const Image& image, const EffectRenderContext& context,
                                       const PixelRect& renderRect) {
  if (layer.effects.empty()) return image;
  Image filtered = EffectStack::apply(layer.effects, image, context);
  const std::optional<OVSize> size = layer.content.intrinsicSize();
  if (!size) return filtered;
  const Affine2D m = Affine2D::concatenating(layer.transform.affineTransformAt(context.time, *size),
                                             Affine2D::makeScale(context.renderScale, context.renderScale));
  const PixelRect rect = coveringPixels(core::mappedBounds(*size, m)).intersection(renderRect);
  if (rect.isEmpty()) return image;
  auto result = compositedOver(crop(filtered, rect), image);
  return result ? std::move(*result) : image;
}

std::optional<GeneratedImage> FrameCompositor::layerImage(const Layer& layer, const RenderPlan& plan,
                                                          const OVTime& t, const SourceFrames& frames,
                                                          const EffectRenderContext& context, int nestingDepth) {
  std::optional<GeneratedImage> source = sourceImage(layer, plan, t, frames, nestingDepth);
  if (!source || source->image.isEmpty()) return std::nullopt;
  Image image = movedToOrigin(source->image);
  const OVSize size = source->size;
  image = crop(image, coveringPixels({0, 0, size.width, size.height}));
  if (!layer.masks.empty()) {
    if (const std::optional<Image> matte = MaskRasterizer::image(layer.masks, t, size)) {
      image = MaskRasterizer::apply(*matte, image);
    }
  }
  if (layer.crop.isActiveAt(t)) image = crop(image, nearestPixels(layer.crop.sourceRectAt(t, size)));
  // No crop after the effects: what they spread past the layer is drawn.
  if (!layer.effects.empty()) image = EffectStack::apply(layer.effects, image, context);
  return GeneratedImage{std::move(image), size};
}

std::optional<GeneratedImage> FrameCompositor::sourceImage(const Layer& layer, const RenderPlan& plan,
                                                           const OVTime& t, const SourceFrames& frames,
                                                           int nestingDepth) {
  switch (layer.kind()) {
    case LayerKind::video:
      return footageImage(layer, plan, frames);
    case LayerKind::image:
      return stillImage(layer, plan);
    case LayerKind::text:
    case LayerKind::shape:
    case LayerKind::solid:
      return GeneratedImageFactory::shared().imageFor(layer.content, layer.textReveal.doubleValueAt(t, 100));
    case LayerKind::precomposition:
      return nestedImage(layer, plan, t, frames, nestingDepth);
    case LayerKind::audio:
    case LayerKind::adjustment:
      return std::nullopt;
  }
  return std::nullopt;
}

Affine2D FrameCompositor::placementTransform(const Layer& layer, const Composition& composition, const OVTime& t,
                                             const OVSize& layerSize, double scale) {
  Affine2D m = core::layerPlacement(layer, composition, t, layerSize);
  if (scale != 1.0) m = Affine2D::concatenating(m, Affine2D::makeScale(scale, scale));
  return m;
}

double FrameCompositor::effectiveOpacity(const Layer& layer, const Composition& composition, const OVTime& t) {
  double o = layer.transform.opacity.doubleValueAt(t, 100) / 100 * layer.fadeMultiplierAt(t);
  if (layer.parentLayerID) {
    for (const Layer* parent : composition.parentChainFor(layer.id)) {
      o *= parent->transform.opacity.doubleValueAt(t, 100) / 100 * parent->fadeMultiplierAt(t);
    }
  }
  return o > 0 ? std::min(o, 1.0) : 0.0;  // NaN counts as transparent
}

}  // namespace orvane::render
