#include "surfaces/stage_transform_controller.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <utility>

#include "Commands/keyframe_edits.hpp"
#include "core/log.hpp"
#include "surfaces/stage_layer_geometry.hpp"

namespace orvane::surfaces {

namespace {

using Channel = core::LayerTransform::Channel;

bool isFinite(const core::OVPoint& p) { return std::isfinite(p.x) && std::isfinite(p.y); }
bool isFinite(const StageTransformController::DragTick& t) { return isFinite(t.startLocation) && isFinite(t.location); }

// A press that has not moved yet writes nothing, so that a click on a
// handle leaves no edit behind.
bool hasMoved(const StageTransformController::DragTick& t) { return !(t.location == t.startLocation); }

}  // namespace

StageTransformController::StageTransformController(document::ProjectDocument& document, document::UndoStack* undo,
                                                   EditorState& editor, StageInteraction& interaction,
                                                   Services services)
    : document_(document), undo_(undo), editor_(editor), interaction_(interaction), services_(std::move(services)) {}

std::string_view StageTransformController::actionName(DragKind kind) {
  switch (kind) {
    case DragKind::move: return "Move Layer";
    case DragKind::scale: return "Scale Layer";
    case DragKind::rotate: return "Rotate Layer";
    case DragKind::none: break;
  }
  return {};
}

core::OVTime StageTransformController::now() const {
  if (services_.currentTime) return services_.currentTime();
  const core::Composition* composition = document_.activeComposition();
  return composition ? composition->playheadTime : core::OVTime::zero;
}

const core::Layer* StageTransformController::layer(const core::Uuid& id) const {
  const core::Composition* composition = document_.activeComposition();
  return composition ? composition->layer(id) : nullptr;
}

bool StageTransformController::beginDrag(DragKind kind, const core::Uuid& layerID) {
  if (isDragging()) return activeDrag_ == kind && draggedLayerID_ == layerID;
  const core::Layer* target = layer(layerID);
  if (!target) return false;
  dragTime_ = now();
  const core::LayerTransform& transform = target->transform;
  switch (kind) {
    case DragKind::move: dragStartValue_ = transform.position.pointValueAt(dragTime_); break;
    case DragKind::scale: dragStartValue_ = transform.scale.pointValueAt(dragTime_, {100, 100}); break;
    case DragKind::rotate: dragStartAngle_ = transform.rotation.doubleValueAt(dragTime_); break;
    case DragKind::none: return false;
  }
  if (kind == DragKind::move) {
    const core::Composition& composition = *document_.activeComposition();
    dragStartBox_ = layerBox(*target, composition, document_.project(), dragTime_, services_.measure);
    captureGuideBoxes(layerID);
  }
  activeDrag_ = kind;
  draggedLayerID_ = layerID;
  document_.beginInteraction();
  core::logDebug("stage", "drag began: " + std::string(actionName(kind)));
  return true;
}

void StageTransformController::resetDrag() {
  activeDrag_ = DragKind::none;
  draggedLayerID_.reset();
  activeCorner_.reset();
  dragStartBox_.reset();
  guideBoxes_.clear();
}

void StageTransformController::captureGuideBoxes(const core::Uuid& dragging) {
  guideBoxes_.clear();
  const core::Composition* composition = document_.activeComposition();
  if (!composition) return;
  guideBoxes_ = surfaces::guideBoxes(*composition, document_.project(), now(), dragging, services_.measure);
}

void StageTransformController::publishGuides(SmartGuides::Result result) {
  guides_ = std::move(result);
  if (services_.publishGuides) services_.publishGuides(guides_);
}

core::OVPoint StageTransformController::applyingSmartGuides(const core::OVPoint& position,
                                                            const core::OVPoint& translation) {
  const core::Composition* composition = document_.activeComposition();
  if (!dragStartBox_ || !composition) {
    publishGuides({});
    return position;
  }
  const SmartGuides::Box moving = dragStartBox_->offsetBy(translation.x, translation.y);
  SmartGuides::Result result = SmartGuides::resolve(moving, guideBoxes_, composition->size,
                                                    geometry_.compositionLength(SmartGuides::threshold));
  const core::OVPoint snapped = position + result.offset;
  publishGuides(std::move(result));
  return snapped;
}

void StageTransformController::write(const core::PropertyValue& value, const commands::PropertyAddress& address) {
  interaction_.write(value, address, dragTime_, editor_.isAnimationModeEnabled());
}

void StageTransformController::moveGesture(const core::Uuid& layerID, const DragTick& tick, bool bypassGuides) {
  if (!isFinite(tick) || !beginDrag(DragKind::move, layerID) || !hasMoved(tick)) return;
  // View y grows downwards, composition y upwards.
  const core::OVPoint translation{geometry_.compositionLength(tick.location.x - tick.startLocation.x),
                                  -geometry_.compositionLength(tick.location.y - tick.startLocation.y)};
  core::OVPoint position = dragStartValue_ + translation;
  if (smartGuidesEnabled_ && !bypassGuides) {
    position = applyingSmartGuides(position, translation);
  } else if (!guides_.isEmpty()) {
    publishGuides({});
  }
  write(core::PropertyValue::point(position), commands::PropertyAddress::transform(layerID, Channel::position));
}

void StageTransformController::scaleGesture(const core::Uuid& layerID, Corner corner, const core::OVPoint& anchor,
                                            const DragTick& tick) {
  if (!isFinite(tick) || !isFinite(anchor) || !beginDrag(DragKind::scale, layerID)) return;
  activeCorner_ = corner;
  if (!hasMoved(tick)) return;
  const double startDistance =
      std::max(1.0, std::hypot(tick.startLocation.x - anchor.x, tick.startLocation.y - anchor.y));
  const double factor = std::hypot(tick.location.x - anchor.x, tick.location.y - anchor.y) / startDistance;
  const core::OVPoint scale{std::max(1.0, dragStartValue_.x * factor), std::max(1.0, dragStartValue_.y * factor)};
  write(core::PropertyValue::point(scale), commands::PropertyAddress::transform(layerID, Channel::scale));
}

void StageTransformController::rotateGesture(const core::Uuid& layerID, const core::OVPoint& anchor,
                                             const DragTick& tick) {
  if (!isFinite(tick) || !isFinite(anchor) || !beginDrag(DragKind::rotate, layerID) || !hasMoved(tick)) return;
  const double start = std::atan2(tick.startLocation.y - anchor.y, tick.startLocation.x - anchor.x);
  const double current = std::atan2(tick.location.y - anchor.y, tick.location.x - anchor.x);
  // On screen y points down: turning clockwise there is a negative angle.
  const double degrees = dragStartAngle_ - (current - start) * 180 / std::numbers::pi;
  write(core::PropertyValue::double_(degrees), commands::PropertyAddress::transform(layerID, Channel::rotation));
}

void StageTransformController::endGesture() {
  if (isDragging()) commitDrag(actionName(activeDrag_));
}

void StageTransformController::commitDrag(std::string_view name) {
  if (!isDragging()) return;
  if (interaction_.isActive()) {
    if (const core::Composition* composition = document_.activeComposition(); composition && services_.showStageScene) {
      services_.showStageScene(liveComposition(*composition, interaction_), interaction_.time());
    }
    // A copy: writing may notify observers that look at the interaction.
    const StageInteraction::Edits edits = interaction_.edits();
    const core::OVTime time = interaction_.time();
    for (const auto& [address, value] : edits) {
      commands::setPropertyValue(document_, value, address, time, editor_.isAnimationModeEnabled(), true, undo_);
    }
    interaction_.clear();
  }
  document_.endInteraction(name, undo_);
  resetDrag();
  publishGuides({});
}

void StageTransformController::finishCancelledDrag() {
  interaction_.clear();
  publishGuides({});
  if (!isDragging()) return;
  document_.cancelInteraction();
  resetDrag();
}

void StageTransformController::handleCanvasClick(const core::OVPoint& location, SelectionModifiers modifiers) {
  const CanvasClick::TimePoint at = services_.clock ? services_.clock() : std::chrono::steady_clock::now();
  if (!lastClick_.shouldHandle(location, at)) return;
  const core::Composition* composition = document_.activeComposition();
  const std::optional<core::Uuid> hit =
      composition ? layerAt(location, *composition, document_.project(), now(), geometry_, services_.measure)
                  : std::nullopt;
  if (hit) {
    editor_.click(*hit, *composition, modifiers);
    return;
  }
  editor_.clearLayerSelection();
  editor_.setSelectedMaskVertexIndex(std::nullopt);
  editor_.endCropping();
  editor_.endEditingText();
}

}  // namespace orvane::surfaces
