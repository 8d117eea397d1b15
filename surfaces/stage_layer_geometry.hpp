#pragma once
// Where the layers of a composition lie on the stage at one time: the boxes
// the smart guides snap to and the quads a click is tested against. Sizes
// come from core::LayerBounds with the text measure the caller passes (the
// renderer's on the desktop), so this folder needs no renderer. Pure
// functions; main thread in practice, but any thread may call them.

#include <array>
#include <optional>
#include <vector>

#include "core/affine.hpp"
#include "core/composition.hpp"
#include "core/layer.hpp"
#include "core/layer_bounds.hpp"
#include "core/ov_time.hpp"
#include "core/project.hpp"
#include "core/uuid.hpp"
#include "surfaces/smart_guides.hpp"
#include "surfaces/viewer_geometry.hpp"

namespace orvane::surfaces {

// The box around the layer's placed rectangle at t; none for a layer
// without a natural size.
std::optional<SmartGuides::Box> layerBox(const core::Layer& layer, const core::Composition& composition,
                                         const core::OVProject& project, const core::OVTime& t,
                                         const core::TextMeasure& measure);

// The boxes of the layers other than dragging that show at t (visual,
// enabled, in their time range), in list order.
std::vector<SmartGuides::Box> guideBoxes(const core::Composition& composition, const core::OVProject& project,
                                         const core::OVTime& t, const core::Uuid& dragging,
                                         const core::TextMeasure& measure);

// The layer's placed corners at t in view points (lower left, lower right,
// upper right, upper left of the layer), where the overlay draws its
// handles; none for a layer without a natural size.
std::optional<std::array<core::OVPoint, 4>> layerCorners(const core::Layer& layer,
                                                         const core::Composition& composition,
                                                         const core::OVProject& project, const core::OVTime& t,
                                                         const ViewerGeometry& geometry,
                                                         const core::TextMeasure& measure);

// The topmost layer whose placed quad holds viewPoint. Layers that are not
// visual, disabled, locked or outside their time range are passed over, so a
// click goes through a locked layer to what lies beneath.
std::optional<core::Uuid> layerAt(const core::OVPoint& viewPoint, const core::Composition& composition,
                                  const core::OVProject& project, const core::OVTime& t,
                                  const ViewerGeometry& geometry, const core::TextMeasure& measure);

}  // namespace orvane::surfaces
