#pragma once
// The drag logic of one layer's row in the timeline, apart from its
// drawing. The row's widget forwards its pointer gestures here tick by
// tick, in the timeline's content coordinates (so scrolling does not
// disturb a drag); each tick becomes one live edit of the document, and the
// end of the gesture one undo step: "Move Layer", "Trim Layer",
// "Set Fade In" or "Set Fade Out". A bar drag moves the clip (with its
// selected companions) or trims an edge, snapping to the composition's
// edges, the playhead, markers, the work area and other layers; a fade
// handle drag sets a fade without snapping.
//
// One per row, owned by the row's widget; it refers to the window's
// document, editor state and undo stack, which outlive it. Main thread only.

#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

#include "core/composition.hpp"
#include "core/geometry.hpp"
#include "core/ov_time.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"
#include "surfaces/editor_state.hpp"
#include "surfaces/timeline_metrics.hpp"

namespace orvane::surfaces {

// One tick of a pointer drag: where it started and how far it has gone,
// both in the timeline's content coordinates (x right, y down).
struct DragValue {
  core::OVPoint startLocation;
  core::OVSize translation;
};

// The metrics of the composition at the window's zoom.
TimelineMetrics timelineMetrics(const core::Composition& composition, const EditorState& editor);

class TimelineTrackRow {
 public:
  enum class DragMode { move, trimStart, trimEnd, fadeIn, fadeOut };

  static constexpr double edgeHitWidth = 12;
  static constexpr double fadeHandleSize = 10;
  // Movement before a press on the bar, or on a fade handle, counts as a drag.
  static constexpr double barDragThreshold = 3;
  static constexpr double fadeDragThreshold = 1;

  TimelineTrackRow(document::ProjectDocument& document, EditorState& editor, const core::Uuid& layerID,
                   document::UndoStack* undoManager);
  TimelineTrackRow(const TimelineTrackRow&) = delete;
  TimelineTrackRow& operator=(const TimelineTrackRow&) = delete;
  // A drag still running when the row goes away is cancelled.
  ~TimelineTrackRow();

  // Told the time of the snap target that holds the dragged edge, or none;
  // the timeline draws its snap guide there.
  std::function<void(std::optional<core::OVTime>)> onSnap;

  const core::Uuid& layerID() const { return layerID_; }

  // --- The gestures, as the widget feeds them ---
  // A tick of a drag on the bar, whose width on screen is barWidth. Ticks
  // before the pointer has gone barDragThreshold points are ignored.
  void barDragChanged(const DragValue& value, double barWidth);
  // A tick of a drag on the fade-in or fade-out handle (other modes are
  // ignored); it starts after fadeDragThreshold points.
  void fadeDragChanged(DragMode handle, const DragValue& value);
  // Mouse-up: the drag's one undo step. Nothing when no drag started.
  void dragEnded();
  // Escape or a lost gesture: back to the state at the drag's start, no step.
  void dragCancelled();

  // --- The steps behind them ---
  // Picks the mode from where the press lies on the bar, selects the layer
  // if it was not, notes the origins and begins the interaction.
  void beginDrag(double contentX, double width);
  // The mode a press at contentX on a bar of this width starts.
  DragMode modeForPress(double contentX, double width) const;
  // time through the window's snapping, with the default threshold.
  TimelineMetrics::SnapResult snapping(const core::OVTime& time) const;
  // The dragged clip's move by delta, corrected by whichever of its two
  // edges snaps; the result's time is the new start.
  TimelineMetrics::SnapResult snappingEitherEdge(const core::OVTime& delta) const;
  // In this order, which breaks ties: composition start, end, playhead,
  // each marker, each other layer's start and end, the work area.
  std::vector<TimelineMetrics::SnapTarget> snapTargets() const;
  // The layers a drag started now would move: the selection when this
  // layer is in it, else this layer alone; in the composition's order.
  std::vector<core::Uuid> targetIDs() const;
  // The layers the running drag moves; targetIDs() when none runs.
  std::vector<core::Uuid> movingIDs() const;

  std::optional<DragMode> dragMode() const { return dragMode_; }
  bool isDragging() const { return interacting_; }

 private:
  void beginFadeDrag(DragMode handle);
  void moveTick(const DragValue& value, const core::OVTime& delta);
  void changeTrackTick(const DragValue& value);
  void reportSnap(const TimelineMetrics::SnapResult& result);
  void selectIfNeeded();
  void clearDrag();
  const core::Layer* layer() const;
  TimelineMetrics metrics() const;

  document::ProjectDocument& document_;
  EditorState& editor_;
  core::Uuid layerID_;
  document::UndoStack* undoManager_;

  // Per-drag state.
  std::optional<DragMode> dragMode_;
  bool interacting_ = false;
  core::OVTime dragOriginStart_;
  core::OVTime dragOriginEnd_;
  core::OVTime dragOriginFade_;
  std::unordered_map<core::Uuid, core::OVTime> dragOriginStarts_;
  std::vector<core::Uuid> dragMovingIDs_;  // the keys of dragOriginStarts_, in list order
  std::optional<std::size_t> dragOriginTrackIndex_;
};

// The undo name that ends a drag of this mode; "Edit Layer" for none.
std::string_view actionName(std::optional<TimelineTrackRow::DragMode> mode);

}  // namespace orvane::surfaces
