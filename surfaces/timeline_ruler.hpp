#pragma once
// The drag logic of the timeline's ruler, apart from its drawing: the work
// area's two handles and its body, and scrubbing the playhead. A work-area
// drag changes the composition live on each tick and ends as one undo step
// "Set Work Area"; scrubbing moves the playhead, which never enters the
// history. Owned by the ruler's widget; it refers to the window's document
// and undo stack, which outlive it. Main thread only.

#include <optional>

#include "core/composition.hpp"
#include "core/ov_time.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"
#include "surfaces/timeline_metrics.hpp"

namespace orvane::surfaces {

// What of the work area a ruler drag holds.
enum class WorkAreaPart { body, startHandle, endHandle };

// range moved by delta as a whole, keeping its length, stopping at zero and
// at duration (a range longer than duration starts at zero).
core::OVTimeRange shiftWorkArea(const core::OVTimeRange& range, const core::OVTime& by, const core::OVTime& duration);

// The work area after dragging part of origin by delta in composition c:
// on frames; a handle keeps the range at least a frame long and within
// zero and the composition's end.
core::OVTimeRange draggedWorkArea(WorkAreaPart part, const core::OVTimeRange& origin, const core::OVTime& delta,
                                  const core::Composition& c);

class TimelineWorkAreaDrag {
 public:
  TimelineWorkAreaDrag(document::ProjectDocument& document, document::UndoStack* undoManager)
      : document_(document), undoManager_(undoManager) {}
  TimelineWorkAreaDrag(const TimelineWorkAreaDrag&) = delete;
  TimelineWorkAreaDrag& operator=(const TimelineWorkAreaDrag&) = delete;
  ~TimelineWorkAreaDrag();

  // One tick: part dragged translationWidth points from where it was
  // pressed. The first tick notes the work area (the whole composition when
  // it has none) and begins the interaction.
  void dragChanged(WorkAreaPart part, double translationWidth, const TimelineMetrics& metrics);
  // The drag's one undo step, "Set Work Area".
  void dragEnded();
  void dragCancelled();

  bool isDragging() const { return origin_.has_value(); }

 private:
  document::ProjectDocument& document_;
  document::UndoStack* undoManager_;
  std::optional<core::OVTimeRange> origin_;
  WorkAreaPart part_ = WorkAreaPart::body;
};

// The playhead under contentX, within the composition; never undoable.
void scrubTo(document::ProjectDocument& document, const TimelineMetrics& metrics, double contentX);

}  // namespace orvane::surfaces
