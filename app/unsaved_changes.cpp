#include "app/unsaved_changes.hpp"

namespace orvane::app {

bool hasUnsavedChanges(const core::OVProject& current, const core::OVProject& saved) {
  if (current == saved) return false;
  // Copies share their trees; setting a playhead copies one composition
  // record, not its layers.
  core::OVProject aligned = current;
  for (const core::Composition& c : saved.compositions) {
    if (const core::Composition* mine = current.composition(c.id); mine && mine->playheadTime != c.playheadTime) {
      aligned.updateComposition(c.id, [&](core::Composition& m) { m.playheadTime = c.playheadTime; });
    }
  }
  return !(aligned == saved);
}

}  // namespace orvane::app
