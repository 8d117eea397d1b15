#include "surfaces/timeline_ruler.hpp"

#include <algorithm>

#include "Commands/composition_edits.hpp"

namespace orvane::surfaces {

using core::Composition;
using core::OVTime;
using core::OVTimeRange;

OVTimeRange shiftWorkArea(const OVTimeRange& range, const OVTime& by, const OVTime& duration) {
  const OVTime latest = std::max(duration - range.duration, OVTime::zero);
  return {OVTime::clamp(range.start + by, OVTime::zero, latest), range.duration};
}

OVTimeRange draggedWorkArea(WorkAreaPart part, const OVTimeRange& origin, const OVTime& delta, const Composition& c) {
  const OVTime frame = c.minimumLayerDuration();
  switch (part) {
    case WorkAreaPart::startHandle: {
      const OVTime start = OVTime::clamp(c.frameRate.snapped(origin.start + delta), OVTime::zero, origin.end() - frame);
      return OVTimeRange::fromStartEnd(start, origin.end());
    }
    case WorkAreaPart::endHandle: {
      // min wins when bounds cross: a range already past the end keeps a frame.
      const OVTime end = OVTime::clamp(c.frameRate.snapped(origin.end() + delta), origin.start + frame,
                                       std::max(c.duration, origin.start + frame));
      return OVTimeRange::fromStartEnd(origin.start, end);
    }
    case WorkAreaPart::body:
      break;
  }
  const OVTime snappedDelta = c.frameRate.snapped(origin.start + delta) - origin.start;
  return shiftWorkArea(origin, snappedDelta, c.duration);
}

TimelineWorkAreaDrag::~TimelineWorkAreaDrag() {
  if (origin_) document_.cancelInteraction();
}

void TimelineWorkAreaDrag::dragChanged(WorkAreaPart part, double translationWidth, const TimelineMetrics& metrics) {
  const Composition* c = document_.activeComposition();
  if (c == nullptr) return;
  if (!origin_) {
    origin_ = c->renderRange();
    part_ = part;
    document_.beginInteraction();
  }
  const OVTimeRange range = draggedWorkArea(part_, *origin_, metrics.timeDeltaForWidth(translationWidth), *c);
  commands::setWorkAreaInteractively(document_, range);
}

void TimelineWorkAreaDrag::dragEnded() {
  if (!origin_) return;
  origin_.reset();
  document_.endInteraction("Set Work Area", undoManager_);
}

void TimelineWorkAreaDrag::dragCancelled() {
  if (!origin_) return;
  origin_.reset();
  document_.cancelInteraction();
}

void scrubTo(document::ProjectDocument& document, const TimelineMetrics& metrics, double contentX) {
  const Composition* c = document.activeComposition();
  if (c == nullptr) return;
  commands::setPlayhead(document, std::min(metrics.timeForX(contentX), c->frameRate.snapped(c->duration)));
}

}  // namespace orvane::surfaces
