#include "render/render_plan.hpp"

#include <algorithm>
#include <cmath>

namespace orvane::render {

namespace {

struct Bounds {
  double minX, minY, maxX, maxY;
};

// The rectangle (0, 0, size) mapped through m, as a bounding box.
Bounds mappedBounds(const core::OVSize& size, const core::Affine2D& m) {
  const core::OVPoint corners[] = {m.apply({0, 0}), m.apply({size.width, 0}), m.apply({0, size.height}),
                                   m.apply({size.width, size.height})};
  Bounds b{corners[0].x, corners[0].y, corners[0].x, corners[0].y};
  for (const core::OVPoint& p : corners) {
    b.minX = std::min(b.minX, p.x), b.minY = std::min(b.minY, p.y);
    b.maxX = std::max(b.maxX, p.x), b.maxY = std::max(b.maxY, p.y);
  }
  return b;
}

int roundedSide(double units, double scale) {
  const double pixels = std::round(units * scale);  // halves away from zero
  if (!(pixels >= 2)) return 2;                     // also for NaN
  return static_cast<int>(std::min(pixels, static_cast<double>(kMaxImageSide)));
}

}  // namespace

core::OVSize FootageGeometry::displaySize() const {
  const Bounds b = mappedBounds(naturalSize, preferredTransform);
  return {std::abs(b.maxX - b.minX), std::abs(b.maxY - b.minY)};
}

core::Affine2D FootageGeometry::uprightTransform() const {
  const Bounds b = mappedBounds(naturalSize, preferredTransform);
  return core::Affine2D::concatenating(preferredTransform, core::Affine2D::makeTranslation(-b.minX, -b.minY));
}

PixelSize RenderPlan::renderSize() const {
  return {roundedSide(composition.size.width, renderScale), roundedSide(composition.size.height, renderScale)};
}

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
