#include "surfaces/timeline_track_row.hpp"

#include <algorithm>
#include <cmath>

#include "Commands/layer_edits.hpp"
#include "Commands/track_edits.hpp"

namespace orvane::surfaces {

using core::Composition;
using core::Layer;
using core::OVTime;
using core::Uuid;
using SnapResult = TimelineMetrics::SnapResult;
using SnapTarget = TimelineMetrics::SnapTarget;

namespace {

double travelled(const DragValue& value) {
  const double d = std::hypot(value.translation.width, value.translation.height);
  return std::isfinite(d) ? d : 0;
}

}  // namespace

TimelineMetrics timelineMetrics(const Composition& composition, const EditorState& editor) {
  TimelineMetrics m;
  m.pixelsPerSecond = editor.pixelsPerSecond();
  m.duration = composition.duration;
  m.frameRate = composition.frameRate;
  return m;
}

std::string_view actionName(std::optional<TimelineTrackRow::DragMode> mode) {
  if (!mode) return "Edit Layer";
  switch (*mode) {
    case TimelineTrackRow::DragMode::move: return "Move Layer";
    case TimelineTrackRow::DragMode::trimStart:
    case TimelineTrackRow::DragMode::trimEnd: return "Trim Layer";
    case TimelineTrackRow::DragMode::fadeIn: return "Set Fade In";
    case TimelineTrackRow::DragMode::fadeOut: return "Set Fade Out";
  }
  return "Edit Layer";
}

TimelineTrackRow::TimelineTrackRow(document::ProjectDocument& document, EditorState& editor, const Uuid& layerID,
                                   document::UndoStack* undoManager)
    : document_(document), editor_(editor), layerID_(layerID), undoManager_(undoManager) {}

TimelineTrackRow::~TimelineTrackRow() {
  if (interacting_) document_.cancelInteraction();
}

const Layer* TimelineTrackRow::layer() const {
  const Composition* c = document_.activeComposition();
  return c ? c->layer(layerID_) : nullptr;
}

TimelineMetrics TimelineTrackRow::metrics() const {
  const Composition* c = document_.activeComposition();
  if (c == nullptr) {
    TimelineMetrics m;
    m.pixelsPerSecond = editor_.pixelsPerSecond();
    return m;
  }
  return timelineMetrics(*c, editor_);
}

// --- Gestures ---

void TimelineTrackRow::barDragChanged(const DragValue& value, double barWidth) {
  if (!interacting_) {
    if (travelled(value) < barDragThreshold) return;
    beginDrag(value.startLocation.x, barWidth);
    if (!interacting_) return;
  }
  if (!dragMode_ || *dragMode_ == DragMode::fadeIn || *dragMode_ == DragMode::fadeOut) return;
  const OVTime delta = metrics().timeDeltaForWidth(value.translation.width);
  switch (*dragMode_) {
    case DragMode::trimStart: {
      const SnapResult snapped = snapping(dragOriginStart_ + delta);
      commands::trimLayerStart(document_, layerID_, snapped.time, true, undoManager_);
      reportSnap(snapped);
      break;
    }
    case DragMode::trimEnd: {
      const SnapResult snapped = snapping(dragOriginEnd_ + delta);
      commands::trimLayerEnd(document_, layerID_, snapped.time, true, undoManager_);
      reportSnap(snapped);
      break;
    }
    default:
      moveTick(value, delta);
      break;
  }
}

void TimelineTrackRow::moveTick(const DragValue& value, const OVTime& delta) {
  const SnapResult snapped = snappingEitherEdge(delta);
  const OVTime corrected = snapped.time - dragOriginStart_;
  std::unordered_map<Uuid, OVTime> targets;
  for (const auto& [id, start] : dragOriginStarts_) targets.emplace(id, start + corrected);
  commands::moveLayersInteractively(document_, dragMovingIDs_, targets);
  reportSnap(snapped);
  changeTrackTick(value);
}

// In a sequence a lone clip follows the pointer across tracks; a group
// keeps its tracks, and a composition's stacking changes only in the list.
void TimelineTrackRow::changeTrackTick(const DragValue& value) {
  const Composition* c = document_.activeComposition();
  const Layer* l = layer();
  if (c == nullptr || l == nullptr || !c->isSequence() || dragMovingIDs_.size() != 1 || !dragOriginTrackIndex_ ||
      c->tracks.empty()) {
    return;
  }
  const double rowHeight = editor_.timelineRowHeight();
  const double rows = rowHeight > 0 ? value.translation.height / rowHeight : 0;
  const double offset = std::isfinite(rows) ? std::round(std::clamp(rows, -1e6, 1e6)) : 0;
  const double wanted = static_cast<double>(*dragOriginTrackIndex_) + offset;
  const auto index = static_cast<std::size_t>(std::clamp(wanted, 0.0, static_cast<double>(c->tracks.size() - 1)));
  const Uuid target = c->tracks[index].id;
  if (l->trackID != target) commands::moveLayerToTrack(document_, layerID_, target, true, undoManager_);
}

void TimelineTrackRow::fadeDragChanged(DragMode handle, const DragValue& value) {
  if (handle != DragMode::fadeIn && handle != DragMode::fadeOut) return;
  if (!interacting_) {
    if (travelled(value) < fadeDragThreshold) return;
    beginFadeDrag(handle);
    if (!interacting_) return;
  }
  if (dragMode_ != handle) return;
  const OVTime delta = metrics().timeDeltaForWidth(value.translation.width);
  if (handle == DragMode::fadeIn) {
    commands::setLayerFadeIn(document_, layerID_, dragOriginFade_ + delta, true, undoManager_);
  } else {
    // The handle sits at the clip's end: dragging left lengthens the fade.
    commands::setLayerFadeOut(document_, layerID_, dragOriginFade_ - delta, true, undoManager_);
  }
}

void TimelineTrackRow::dragEnded() {
  if (interacting_) document_.endInteraction(actionName(dragMode_), undoManager_);
  clearDrag();
}

void TimelineTrackRow::dragCancelled() {
  if (interacting_) document_.cancelInteraction();
  clearDrag();
}

void TimelineTrackRow::clearDrag() {
  const bool wasDragging = interacting_;
  interacting_ = false;
  dragMode_.reset();
  dragOriginStarts_.clear();
  dragMovingIDs_.clear();
  dragOriginTrackIndex_.reset();
  dragOriginStart_ = dragOriginEnd_ = dragOriginFade_ = OVTime::zero;
  if (wasDragging && onSnap) onSnap(std::nullopt);
}

// --- Steps ---

TimelineTrackRow::DragMode TimelineTrackRow::modeForPress(double contentX, double width) const {
  const Layer* l = layer();
  const double local = contentX - (l ? metrics().xFor(l->timeRange.start) : 0.0);
  if (local <= edgeHitWidth) return DragMode::trimStart;
  if (width - local <= edgeHitWidth) return DragMode::trimEnd;
  return DragMode::move;
}

void TimelineTrackRow::selectIfNeeded() {
  if (!editor_.selectedLayerIDs().contains(layerID_)) editor_.selectLayer(layerID_, false);
}

void TimelineTrackRow::beginDrag(double contentX, double width) {
  if (interacting_) return;
  const Layer* l = layer();
  if (l == nullptr) return;
  dragMode_ = modeForPress(contentX, width);
  dragOriginStart_ = l->timeRange.start;
  dragOriginEnd_ = l->timeRange.end();
  selectIfNeeded();
  dragMovingIDs_ = targetIDs();
  const Composition& c = *document_.activeComposition();
  for (const Uuid& id : dragMovingIDs_) dragOriginStarts_.emplace(id, c.layer(id)->timeRange.start);
  dragOriginTrackIndex_ = l->trackID ? c.trackIndexOf(*l->trackID) : std::nullopt;
  document_.beginInteraction();
  interacting_ = true;
}

void TimelineTrackRow::beginFadeDrag(DragMode handle) {
  const Layer* l = layer();
  if (l == nullptr) return;
  dragMode_ = handle;
  selectIfNeeded();
  dragOriginFade_ = handle == DragMode::fadeIn ? l->fadeIn : l->fadeOut;
  document_.beginInteraction();
  interacting_ = true;
}

std::vector<Uuid> TimelineTrackRow::targetIDs() const {
  const Composition* c = document_.activeComposition();
  if (c == nullptr) return {};
  const auto& selected = editor_.selectedLayerIDs();
  if (!selected.contains(layerID_)) return c->layer(layerID_) ? std::vector<Uuid>{layerID_} : std::vector<Uuid>{};
  std::vector<Uuid> ids;
  for (const Layer& l : c->layers) {
    if (selected.contains(l.id)) ids.push_back(l.id);
  }
  return ids;
}

std::vector<Uuid> TimelineTrackRow::movingIDs() const { return interacting_ ? dragMovingIDs_ : targetIDs(); }

std::vector<SnapTarget> TimelineTrackRow::snapTargets() const {
  const Composition* c = document_.activeComposition();
  if (c == nullptr) return {};
  const std::vector<Uuid> moving = movingIDs();
  std::vector<SnapTarget> targets;
  targets.push_back({OVTime::zero, SnapTarget::Kind::start});
  targets.push_back({c->duration, SnapTarget::Kind::end});
  targets.push_back({c->playheadTime, SnapTarget::Kind::playhead});
  for (const core::Marker& marker : c->markers) targets.push_back({marker.time, SnapTarget::Kind::marker});
  for (const Layer& l : c->layers) {
    if (std::find(moving.begin(), moving.end(), l.id) != moving.end()) continue;
    targets.push_back({l.timeRange.start, SnapTarget::Kind::layerEdge});
    targets.push_back({l.timeRange.end(), SnapTarget::Kind::layerEdge});
  }
  if (c->workArea) {
    targets.push_back({c->workArea->start, SnapTarget::Kind::workArea});
    targets.push_back({c->workArea->end(), SnapTarget::Kind::workArea});
  }
  return targets;
}

SnapResult TimelineTrackRow::snapping(const OVTime& time) const {
  return metrics().snap(time, snapTargets(), editor_.isSnappingEnabled());
}

SnapResult TimelineTrackRow::snappingEitherEdge(const OVTime& delta) const {
  const OVTime rawStart = dragOriginStart_ + delta;
  const OVTime rawEnd = dragOriginEnd_ + delta;
  const SnapResult a = snapping(rawStart);
  const SnapResult b = snapping(rawEnd);
  const auto byEnd = [&] { return SnapResult{dragOriginStart_ + (b.time - dragOriginEnd_), b.target}; };
  if (!b.target) return a;  // the start edge's result, snapped or merely on a frame
  if (!a.target) return byEnd();
  const double pullA = std::abs((a.time - rawStart).seconds());
  const double pullB = std::abs((b.time - rawEnd).seconds());
  return pullB < pullA ? byEnd() : a;
}

void TimelineTrackRow::reportSnap(const SnapResult& result) {
  if (!onSnap) return;
  onSnap(result.target ? std::optional<OVTime>(result.target->time) : std::nullopt);
}

}  // namespace orvane::surfaces
