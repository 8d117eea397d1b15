#include "render/stage_scene.hpp"

#include <cctype>
#include <unordered_set>

#include "core/hashing.hpp"
#include "render/frame_compositor.hpp"
#include "render/text_layout_builder.hpp"

namespace orvane::render {

using core::Layer;
using core::LayerKind;
using core::OVTime;

std::optional<std::string> stageFilterName(std::string_view filterName) {
  if (filterName.empty()) return std::nullopt;
  std::string name(filterName);
  if (name.starts_with("CI")) name.erase(0, 2);
  if (!name.empty()) name[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[0])));
  return name;
}

StageSceneBuilder& StageSceneBuilder::shared() {
  static StageSceneBuilder builder;
  return builder;
}

bool StageSceneBuilder::isEnabled(const core::SettingsStore& settings) {
  return settings.boolValue(preferenceKey).value_or(true);
}

bool StageSceneBuilder::canRepresent(const core::Composition& composition, const RenderPlan& plan,
                                     const OVTime& t) {
  if (!plan.videoTrackIDs.empty()) return false;
  if (composition.motionBlurEnabled && composition.motionBlurShutterAngle > 1.0) return false;
  for (const Layer& layer : composition.layers) {
    if (layer.kind() == LayerKind::adjustment && layer.isActiveAt(t)) return false;
  }
  return true;
}

namespace {

bool pixelsAnimate(const Layer& layer) {
  for (const core::EffectInstance& effect : layer.effects) {
    if (effect.isEnabled && effect.isAnimated()) return true;
  }
  for (const core::LayerMask& mask : layer.masks) {
    if (mask.path.isAnimated() || mask.feather.isAnimated()) return true;
  }
  const core::LayerCrop& crop = layer.crop;
  return crop.left.isAnimated() || crop.top.isAnimated() || crop.right.isAnimated() || crop.bottom.isAnimated();
}

}  // namespace

std::size_t StageSceneBuilder::signature(const Layer& layer, const RenderPlan& plan, const OVTime& t) {
  Layer unplaced = layer;
  unplaced.transform = core::LayerTransform::centeredIn(plan.composition.size);
  std::size_t hash = hashValue(unplaced);
  if (pixelsAnimate(layer)) hash = core::hashAll(hash, t);
  if (layer.kind() == LayerKind::precomposition) hash = core::hashAll(hash, layer.sourceTimeForComposition(t));
  if (const core::TextContent* text = layer.content.textContent()) {
    const int revealed = TextLayoutBuilder::revealedCount(layer.textReveal.doubleValueAt(t, 100), text->string);
    hash = core::hashAll(hash, revealed);
  }
  // A relinked still keeps its layer but shows another file.
  if (const auto path = plan.stillImagePaths.find(layer.id); path != plan.stillImagePaths.end()) {
    hash = core::hashAll(hash, path->second);
  }
  return hash;
}

std::optional<StageSceneBuilder::CachedSprite> StageSceneBuilder::rasterise(const Layer& layer,
                                                                            const RenderPlan& plan,
                                                                            const OVTime& t) {
  // Sprites are drawn at layer resolution, whatever the output scale.
  const EffectRenderContext context{plan.composition.size, t, 1};
  const std::optional<GeneratedImage> generated = FrameCompositor::layerImage(layer, plan, t, {}, context, 0);
  if (!generated) return std::nullopt;
  // Extents are whole pixels and already hold what effects spread past the
  // layer (a shadow, a glow), so the picture keeps its place by its origin.
  const PixelRect extent = generated->image.extent();
  if (extent.isEmpty() || extent.isInfinite()) return std::nullopt;
  ++rasterised_;
  return CachedSprite{0, generated->image, {static_cast<double>(extent.x), static_cast<double>(extent.y)},
                      generated->size};
}

std::optional<StageScene> StageSceneBuilder::scene(const RenderPlan& plan, const OVTime& t) {
  const core::Composition& composition = plan.composition;
  if (!canRepresent(composition, plan, t)) return std::nullopt;
  StageScene scene;
  scene.compositionSize = composition.size;
  if (!composition.isTransparent) scene.backgroundColor = composition.backgroundColor;
  const bool solo = composition.hasSoloedVisualLayers();
  std::unordered_set<core::Uuid> present;
  for (std::size_t i = composition.layers.size(); i-- > 0;) {
    const Layer& layer = composition.layers[i];
    if (!FrameCompositor::isDrawn(layer, t, solo)) continue;
    present.insert(layer.id);
    const std::size_t sig = signature(layer, plan, t);
    auto cached = cache_.find(layer.id);
    if (cached == cache_.end() || cached->second.signature != sig) {
      std::optional<CachedSprite> drawn = rasterise(layer, plan, t);
      if (!drawn) {
        if (cached != cache_.end()) cache_.erase(cached);
        continue;
      }
      drawn->signature = sig;
      cached = cache_.insert_or_assign(layer.id, std::move(*drawn)).first;
    }
    const CachedSprite& sprite = cached->second;
    scene.sprites.push_back(StageSprite{
        layer.id, sprite.image, sprite.imageOrigin,
        FrameCompositor::placementTransform(layer, composition, t, sprite.layerSize, 1.0),
        FrameCompositor::effectiveOpacity(layer, composition, t), stageFilterName(blendFilterName(layer.blendMode))});
  }
  std::erase_if(cache_, [&](const auto& entry) { return !present.contains(entry.first); });
  return scene;
}

}  // namespace orvane::render
