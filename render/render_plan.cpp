#include "render/render_plan.hpp"

#include <algorithm>
#include <cmath>

namespace orvane::render {

namespace {

int roundedSide(double units, double scale) {
  const double pixels = std::round(units * scale);  // halves away from zero
  if (!(pixels >= 2)) return 2;                     // also for NaN
  return static_cast<int>(std::min(pixels, static_cast<double>(kMaxImageSide)));
}

}  // namespace

core::OVSize FootageGeometry::displaySize() const {
  const core::OVRect b = core::mappedBounds(naturalSize, preferredTransform);
  return {b.width, b.height};
}

core::Affine2D FootageGeometry::uprightTransform() const {
  const core::OVRect b = core::mappedBounds(naturalSize, preferredTransform);
  return core::Affine2D::concatenating(preferredTransform, core::Affine2D::makeTranslation(-b.x, -b.y));
}

PixelSize renderSizeFor(const core::OVSize& size, double scale) {
  return {roundedSide(size.width, scale), roundedSide(size.height, scale)};
}

PixelSize RenderPlan::renderSize() const { return renderSizeFor(composition.size, renderScale); }

std::vector<std::int32_t> RenderPlan::allVideoTrackIDs() const {
  std::vector<std::int32_t> ids;
  ids.reserve(videoTrackIDs.size() + 1);
  for (const auto& [layer, track] : videoTrackIDs) ids.push_back(track);
  if (canvasTrackID) ids.push_back(*canvasTrackID);
  return ids;
}

std::optional<RenderPlan> stillsPlan(const core::OVProject& project, const core::Uuid& compositionID,
                                     double renderScale) {
  const core::Composition* root = project.composition(compositionID);
  if (root == nullptr) return std::nullopt;
  RenderPlan plan;
  plan.composition = *root;
  plan.renderScale = renderScale;
  for (const auto& [id, composition] : project.reachableCompositionsFrom(compositionID)) {
    plan.compositionsByID.emplace(id, *composition);
    for (const core::Layer& layer : composition->layers) {
      if (layer.kind() != core::LayerKind::image) continue;
      if (const core::MediaAsset* asset = project.asset(*layer.content.assetID())) {
        plan.stillImagePaths.emplace(layer.id, asset->path);
      }
    }
  }
  return plan;
}

}  // namespace orvane::render
