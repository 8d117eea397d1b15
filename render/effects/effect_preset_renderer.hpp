#pragma once
// Thumbnails of effect presets: the effect run with the preset's values over
// a small copy of the layer's picture, on a plain backdrop, as the preset
// strip shows them. Getting the layer's picture (its poster, or the layer
// drawn alone) is the caller's part. Stateless; any thread.

#include <map>
#include <string>

#include "core/effect_catalog.hpp"
#include "render/effects/effect_stack.hpp"
#include "render/image.hpp"

namespace orvane::render {

struct EffectPresetRenderer {
  // Width of a thumbnail in pixels; the height keeps the source's aspect,
  // between 1 and kThumbnailMaxHeight.
  static constexpr int kThumbnailWidth = 160;
  static constexpr int kThumbnailMaxHeight = 320;
  // The plain colour the effect's result is drawn over (opaque, straight).
  static constexpr core::OVColor kBackdrop{0.16, 0.16, 0.17, 1};

  // The descriptor's defaults with the preset's values over them; ids the
  // descriptor does not know are left out.
  static EffectValues mergedValues(const core::EffectDescriptor& descriptor,
                                   const std::map<std::string, core::PropertyValue>& presetValues);

  // The thumbnail, kThumbnailWidth wide at the origin: source scaled to that
  // width, the effect run over it at time zero with the merged values and a
  // render scale of thumbnail width / layerWidth (so pixel-sized values look
  // as they would on the layer; the source's own width stands in for a
  // layerWidth that is not above 0), the result drawn over kBackdrop and
  // cropped to the thumbnail. An empty or infinite source gives an empty
  // picture; an effect the renderer does not know shows the source as it is.
  static Image render(const Image& source, const core::EffectDescriptor& descriptor,
                      const std::map<std::string, core::PropertyValue>& values, double layerWidth,
                      WorkerPool& pool = WorkerPool::shared());
};

}  // namespace orvane::render
