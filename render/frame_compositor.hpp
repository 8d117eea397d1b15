#pragma once
// One moment of one composition as one picture: the same function serves
// playback, export, the live preview, the stage and the command line, so a
// plan, a time and a set of source frames always give the same picture.
//
// Per frame, bottom layer first: each visible layer's picture (footage,
// still, generated content or nested composition) is cut by its masks and
// crop and run through its effects in its own space, then placed, faded and
// blended onto the frame in one pass; adjustment layers filter what lies
// beneath them. Every failure degrades: a layer without a picture is left
// out. Stateless; any number of threads may compose at once (the shared
// state is the locked caches of generated content and stills).

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>

#include "core/affine.hpp"
#include "core/composition.hpp"
#include "core/layer.hpp"
#include "core/ov_time.hpp"
#include "render/effects/effect_stack.hpp"
#include "render/generated_image.hpp"
#include "render/image.hpp"
#include "render/render_plan.hpp"
#include "render/rgba8.hpp"

namespace orvane::render {

struct FrameCompositor {
  // Nested compositions deeper than this are left out.
  static constexpr int maxNestingDepth = 8;
  // Motion blur averages this many moments of the shutter.
  static constexpr int motionBlurSamples = 8;

  // The picture at t over (0, 0, renderSize): with motion blur when the
  // composition has it on and a shutter angle above 1 degree.
  static Image composeFrame(const RenderPlan& plan, const core::OVTime& t, const SourceFrames& frames);
  // The same written into an 8-bit buffer of renderSize (rows from the top,
  // bytesPerRow apart).
  static std::expected<void, ImageError> composeFrameInto(const RenderPlan& plan, const core::OVTime& t,
                                                          const SourceFrames& frames, std::span<std::uint8_t> out,
                                                          std::size_t bytesPerRow, Rgba8Format format = {});
  // Eight moments spread over the shutter, centred on t and clamped to the
  // composition, each weighing 1/8. Footage is not resampled: frames are
  // the ones decoded for t.
  static Image composeWithMotionBlur(const RenderPlan& plan, const core::OVTime& t, const SourceFrames& frames);
  // The moments that motion blur averages at t, in sample order.
  static std::array<core::OVTime, motionBlurSamples> motionBlurSampleTimes(const core::Composition& composition,
                                                                           const core::OVTime& t);
  // One moment, without motion blur.
  static Image composeSingleFrame(const RenderPlan& plan, const core::OVTime& t, const SourceFrames& frames,
                                  int nestingDepth = 0);

  // --- The steps, for the stage scene and tests ---
  // Whether the layer is painted at t: visual, enabled, in its time range,
  // and soloed when solo (some visual layer of the composition is).
  static bool isDrawn(const core::Layer& layer, const core::OVTime& t, bool solo);
  // The adjustment layer's effects over what lies beneath, kept to the
  // bounding box of its placed rectangle; the unfiltered picture stays under.
  static Image applyAdjustment(const core::Layer& layer, const Image& image, const EffectRenderContext& context,
                               const PixelRect& renderRect);
  // The layer's picture in its own space (origin at 0, 0; its size is the
  // layer rectangle): source, masks, crop, effects. None when it has none.
  static std::optional<GeneratedImage> layerImage(const core::Layer& layer, const RenderPlan& plan,
                                                  const core::OVTime& t, const SourceFrames& frames,
                                                  const EffectRenderContext& context, int nestingDepth);
  static std::optional<GeneratedImage> sourceImage(const core::Layer& layer, const RenderPlan& plan,
                                                   const core::OVTime& t, const SourceFrames& frames,
                                                   int nestingDepth);
  // Layer space to output pixels: the layer's transform, its parents' pivot
  // transforms nearest first, then the output scale.
  static core::Affine2D placementTransform(const core::Layer& layer, const core::Composition& composition,
                                           const core::OVTime& t, const core::OVSize& layerSize, double scale);
  // Opacity times fades, times every parent's opacity and fades, in 0 ... 1.
  static double effectiveOpacity(const core::Layer& layer, const core::Composition& composition,
                                 const core::OVTime& t);
};

}  // namespace orvane::render
