#pragma once
// The stage's sprite scene: while the user drags, a layer's pixels do not
// change, only its placement does. Each visual layer becomes one cached
// picture (a sprite) with a placement, an opacity and a compositing filter,
// and the stage composites the sprites itself, so a drag costs a transform
// per layer and no rendering. A scene stands in for the rendered frame only
// while the composition has no footage, no motion blur and no active
// adjustment layer; otherwise the stage shows a rendered frame.
//
// The builder and its cache belong to the main thread.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/affine.hpp"
#include "core/composition.hpp"
#include "core/layer.hpp"
#include "core/layer_style.hpp"
#include "core/ov_time.hpp"
#include "core/settings_store.hpp"
#include "render/image.hpp"
#include "render/render_plan.hpp"

namespace orvane::render {

struct StageSprite {
  core::Uuid id;          // the layer's
  Image image;            // at layer resolution
  core::OVPoint imageOrigin;  // where the picture's lower left corner lies in layer space
  core::Affine2D placement;   // layer space to composition space
  double opacity = 1;
  std::optional<std::string> compositingFilter;  // none: source-over
};

struct StageScene {
  std::vector<StageSprite> sprites;  // back to front
  core::OVSize compositionSize;
  std::optional<core::OVColor> backgroundColor;  // none when transparent
};

// The compositing filter name of a stage layer for a blend filter name
// (core::blendFilterName): without its "CI" prefix and with a lower-case
// first letter ("multiplyBlendMode"); none for no filter.
std::optional<std::string> stageFilterName(std::string_view filterName);

class StageSceneBuilder {
 public:
  static constexpr std::string_view preferenceKey = "stagePreview.gpu";

  static StageSceneBuilder& shared();

  // On unless the user stored false.
  static bool isEnabled(const core::SettingsStore& settings);
  // Whether sprites can show the composition at t.
  static bool canRepresent(const core::Composition& composition, const RenderPlan& plan, const core::OVTime& t);
  // What changes a layer's pixels but not its placement; time enters only
  // where something that reaches the pixels animates.
  static std::size_t signature(const core::Layer& layer, const RenderPlan& plan, const core::OVTime& t);

  // The scene of the plan's composition at t; none when sprites can't show it.
  std::optional<StageScene> scene(const RenderPlan& plan, const core::OVTime& t);
  void clear() { cache_.clear(); }
  // How many sprites were drawn since the builder was made.
  std::size_t rasterisedCount() const { return rasterised_; }

 private:
  struct CachedSprite {
    std::size_t signature = 0;
    Image image;
    core::OVPoint imageOrigin;
    core::OVSize layerSize;
  };

  std::optional<CachedSprite> rasterise(const core::Layer& layer, const RenderPlan& plan, const core::OVTime& t);

  std::unordered_map<core::Uuid, CachedSprite> cache_;
  std::size_t rasterised_ = 0;
};

}  // namespace orvane::render
