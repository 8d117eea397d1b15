#include "Commands/composition_edits.hpp"

#include <algorithm>

#include "core/text_util.hpp"

namespace orvane::commands {

using core::Composition;
using core::OVProject;
using core::OVTime;
using core::OVTimeRange;
using core::Uuid;
using document::ProjectDocument;
using document::UndoStack;

core::Uuid createComposition(ProjectDocument& doc, const core::CompositionPreset& preset,
                             const std::optional<std::string>& name, core::EditingMode editingMode,
                             UndoStack* undo) {
  const std::string fallback = doc.project().uniqueCompositionName("Composition");
  Composition composition = preset.makeComposition(core::orIfBlank(name.value_or(""), fallback), editingMode);
  if (editingMode == core::EditingMode::sequence) composition.tracks = Composition::defaultTracks();
  const Uuid id = composition.id;
  doc.perform("New Composition", undo, [&](OVProject& p) { p.addComposition(composition, true); });
  return id;
}

void setActiveComposition(ProjectDocument& doc, const Uuid& id, UndoStack* undo) {
  if (doc.project().composition(id) == nullptr) return;
  doc.perform("Switch Composition", undo, [&](OVProject& p) { p.activeCompositionID = id; });
}

void updateCompositionSettings(ProjectDocument& doc, const CompositionSettings& settings, UndoStack* undo) {
  const Composition* active = doc.activeComposition();
  if (active == nullptr) return;
  const Uuid id = active->id;
  const std::string oldName = active->name;
  const std::string newName = core::orIfBlank(settings.name, oldName);
  doc.perform("Composition Settings", undo, [&](OVProject& p) {
    p.updateComposition(id, [&](Composition& c) {
      c.name = newName;
      c.size = settings.size;
      c.frameRate = settings.frameRate;
      c.duration = std::max(settings.duration, settings.frameRate.frameDuration());
      c.backgroundColor = settings.backgroundColor;
      c.isTransparent = settings.isTransparent;
    });
    p.syncPrecompositionLayerNamesFor(id, oldName, newName);
  });
}

void setMotionBlur(ProjectDocument& doc, bool enabled, double shutterAngle, UndoStack* undo) {
  const double angle = std::clamp(shutterAngle, 1.0, 360.0);
  const ProjectDocument::Change change = [&](OVProject& p) {
    p.updateActiveComposition([&](Composition& c) {
      c.motionBlurEnabled = enabled;
      c.motionBlurShutterAngle = angle;
    });
  };
  if (doc.isInteracting()) {
    doc.updateInteraction(change);
  } else {
    doc.perform("Motion Blur", undo, change);
  }
}

void fitCompositionToContent(ProjectDocument& doc, UndoStack* undo) {
  doc.updateActiveComposition("Fit Composition to Layers", undo, [](Composition& c) {
    const OVTime end = c.contentEnd();
    if (!end.isPositive()) return;
    c.duration = end;
    if (c.workArea && c.workArea->end() > end) c.workArea = OVTimeRange::fromStartEnd(c.workArea->start, end);
  });
}

void setWorkArea(ProjectDocument& doc, const std::optional<OVTimeRange>& range, UndoStack* undo) {
  doc.updateActiveComposition("Set Work Area", undo, [&](Composition& c) { c.workArea = range; });
}

void setWorkAreaInteractively(ProjectDocument& doc, const std::optional<OVTimeRange>& range) {
  doc.updateInteraction([&](OVProject& p) { p.updateActiveComposition([&](Composition& c) { c.workArea = range; }); });
}

void setWorkAreaStart(ProjectDocument& doc, const OVTime& time, UndoStack* undo) {
  doc.updateActiveComposition("Set In Point", undo, [&](Composition& c) {
    const OVTime end = c.workArea ? c.workArea->end() : c.duration;
    const OVTime start = std::max(std::min(time, end - c.minimumLayerDuration()), OVTime::zero);
    c.workArea = OVTimeRange::fromStartEnd(start, end);
  });
}

void setWorkAreaEnd(ProjectDocument& doc, const OVTime& time, UndoStack* undo) {
  doc.updateActiveComposition("Set Out Point", undo, [&](Composition& c) {
    const OVTime start = c.workArea ? c.workArea->start : OVTime::zero;
    const OVTime end = std::min(std::max(time, start + c.minimumLayerDuration()), c.duration);
    c.workArea = OVTimeRange::fromStartEnd(start, end);
  });
}

void setPlayhead(ProjectDocument& doc, const OVTime& time) {
  doc.performWithoutUndo([&](OVProject& p) {
    p.updateActiveComposition([&](Composition& c) { c.playheadTime = OVTime::clamp(time, OVTime::zero, c.duration); });
  });
}

}  // namespace orvane::commands
