#pragma once
// What rendering one composition needs, frozen: the composition, every
// composition that nesting reaches, where each video layer's frames arrive
// and how its footage is oriented, the file of each still, and the output
// scale. Built by whoever starts a render (the media engine, the command
// line, the stage) from a project snapshot, then read-only: renders never
// look at the live document. Plain value; copied freely; any thread.

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/affine.hpp"
#include "core/composition.hpp"
#include "core/geometry.hpp"
#include "core/project.hpp"
#include "core/uuid.hpp"
#include "render/image.hpp"

namespace orvane::render {

// The geometry of a source video track as the file reports it.
struct FootageGeometry {
  core::OVSize naturalSize;
  core::Affine2D preferredTransform;

  // The size of the upright picture.
  core::OVSize displaySize() const;
  // preferredTransform, then moved so that the upright picture starts at
  // the origin.
  core::Affine2D uprightTransform() const;

  friend bool operator==(const FootageGeometry&, const FootageGeometry&) = default;
};

// Output size in whole pixels.
struct PixelSize {
  int width = 0;
  int height = 0;
  friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

// A composition of size drawn at scale, in whole pixels: rounded half away
// from zero, never below 2 × 2 (nor above the largest picture).
PixelSize renderSizeFor(const core::OVSize& size, double scale);

struct RenderPlan {
  core::Composition composition;
  std::unordered_map<core::Uuid, core::Composition> compositionsByID;
  // Video layer id (at any nesting level) to the track carrying its frames.
  std::unordered_map<core::Uuid, std::int32_t> videoTrackIDs;
  std::optional<std::int32_t> canvasTrackID;
  std::unordered_map<core::Uuid, FootageGeometry> footageGeometry;
  // Image layer id to the file of its picture.
  std::unordered_map<core::Uuid, std::string> stillImagePaths;
  // Output pixels per composition unit.
  double renderScale = 1;

  // renderSizeFor the composition at renderScale.
  PixelSize renderSize() const;
  // Every track of videoTrackIDs, then the canvas track when present.
  std::vector<std::int32_t> allVideoTrackIDs() const;
};

// The plan of a project's composition for pictures without footage: every
// composition that nesting reaches, and the file of every still (from its
// asset's path). Video layers get no track; the media engine adds those.
// None when the composition is not in the project.
std::optional<RenderPlan> stillsPlan(const core::OVProject& project, const core::Uuid& compositionID,
                                     double renderScale = 1);

// Source frames by track id, as the media engine decodes them for one time.
using SourceFrames = std::unordered_map<std::int32_t, Image>;

}  // namespace orvane::render
