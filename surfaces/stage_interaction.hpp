#pragma once
// The values a drag on the stage has produced so far, before they reach the
// document. While the pointer moves, each tick overwrites the property's
// entry here and the stage draws the composition with these overrides; the
// document changes once, when the drag commits. One per stage, owned by the
// window's stage; main thread only.

#include <functional>
#include <optional>
#include <unordered_map>

#include "Commands/property_address.hpp"
#include "core/composition.hpp"
#include "core/ov_time.hpp"
#include "core/property_value.hpp"

namespace orvane::surfaces {

class StageInteraction {
 public:
  using Edits = std::unordered_map<commands::PropertyAddress, core::PropertyValue>;

  const Edits& edits() const { return edits_; }
  // The composition time the values are meant for.
  const core::OVTime& time() const { return time_; }
  // Whether animation mode was on when the last value came in.
  bool animationEnabled() const { return animationEnabled_; }
  bool isActive() const { return !edits_.empty(); }

  // The pending value of address, if a drag has set one.
  const core::PropertyValue* overrideFor(const commands::PropertyAddress& address) const;

  // Stores value as address's override and records the time and mode.
  void write(const core::PropertyValue& value, const commands::PropertyAddress& address, const core::OVTime& time,
             bool animationEnabled);
  void clear();

  // Called after every change, so that the stage redraws.
  void setOnChange(std::function<void()> onChange) { onChange_ = std::move(onChange); }

 private:
  void changed() const {
    if (onChange_) onChange_();
  }

  Edits edits_;
  core::OVTime time_;
  bool animationEnabled_ = false;
  std::function<void()> onChange_;
};

// composition as the stage shows it mid-drag: each override set at the
// interaction's time (snapped to the composition's frames) the way the
// commit will write it, a key when animated or in animation mode, else the
// static value. Overrides of layers or properties that are gone are left
// out. The copy shares everything the overrides do not touch.
core::Composition liveComposition(const core::Composition& composition, const StageInteraction& interaction);

}  // namespace orvane::surfaces
