#include "surfaces/stage_interaction.hpp"

namespace orvane::surfaces {

const core::PropertyValue* StageInteraction::overrideFor(const commands::PropertyAddress& address) const {
  const auto found = edits_.find(address);
  return found == edits_.end() ? nullptr : &found->second;
}

void StageInteraction::write(const core::PropertyValue& value, const commands::PropertyAddress& address,
                             const core::OVTime& time, bool animationEnabled) {
  edits_.insert_or_assign(address, value);
  time_ = time;
  animationEnabled_ = animationEnabled;
  changed();
}

void StageInteraction::clear() {
  if (edits_.empty()) return;
  edits_.clear();
  changed();
}

core::Composition liveComposition(const core::Composition& composition, const StageInteraction& interaction) {
  core::Composition live = composition;
  if (!interaction.isActive()) return live;
  const core::OVTime t = composition.frameRate.snapped(interaction.time());
  for (const auto& [address, value] : interaction.edits()) {
    live.update(address.layerID, [&](core::Layer& layer) {
      commands::mutateProperty(layer, address, [&](core::AnimatedProperty& property) {
        property.setValue(value, t, interaction.animationEnabled());
      });
    });
  }
  return live;
}

}  // namespace orvane::surfaces
