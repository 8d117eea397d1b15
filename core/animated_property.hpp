#pragma once
// An animatable quantity: a base value plus keyframes kept sorted by time.
// With no keyframes the property is constant at its base value; once a key
// exists the base value plays no part in evaluation. The keyframe list is
// shared copy-on-write, so copying a property is O(1).
//
// Evaluation is pure and allocates nothing for number, point, size, colour and
// bool values: a render thread evaluates its own copy while the document edits
// another.

#include <functional>
#include <optional>
#include <unordered_set>
#include <vector>

#include "core/frame_rate.hpp"
#include "core/keyframe.hpp"
#include "core/ov_time.hpp"
#include "core/property_value.hpp"
#include "core/shared_vector.hpp"
#include "core/uuid.hpp"

namespace orvane::core {

class AnimatedProperty {
 public:
  AnimatedProperty() = default;
  explicit AnimatedProperty(PropertyValue base, std::vector<Keyframe> keyframes = {});

  // Short constructors with no keyframes.
  static AnimatedProperty double_(double v) { return AnimatedProperty(PropertyValue::double_(v)); }
  static AnimatedProperty point(double x, double y) { return AnimatedProperty(PropertyValue::point(x, y)); }
  static AnimatedProperty size(double w, double h) { return AnimatedProperty(PropertyValue::size(w, h)); }
  static AnimatedProperty color(OVColor c) { return AnimatedProperty(PropertyValue::color(c)); }
  static AnimatedProperty bool_(bool b) { return AnimatedProperty(PropertyValue::bool_(b)); }
  static AnimatedProperty choice(std::string c) { return AnimatedProperty(PropertyValue::choice(std::move(c))); }

  PropertyValue baseValue;

  const SharedVector<Keyframe>& keyframes() const { return keyframes_; }
  bool isAnimated() const { return !keyframes_.empty(); }

  // --- Evaluation (time on the composition clock) ---
  PropertyValue valueAt(const OVTime& t) const;
  double doubleValueAt(const OVTime& t, double fallback = 0) const;
  OVPoint pointValueAt(const OVTime& t, OVPoint fallback = OVPoint::zero) const;
  OVSize sizeValueAt(const OVTime& t, OVSize fallback = OVSize::zero) const;
  OVColor colorValueAt(const OVTime& t, OVColor fallback = OVColor::white) const;
  bool boolValueAt(const OVTime& t, bool fallback = false) const;

  // --- Look-up; null or no value when absent ---
  const Keyframe* keyframeAt(const OVTime& t) const;      // first with time == t
  bool hasKeyframeAt(const OVTime& t) const { return keyframeAt(t) != nullptr; }
  const Keyframe* keyframeBefore(const OVTime& t) const;  // last with time < t
  const Keyframe* keyframeAfter(const OVTime& t) const;   // first with time > t
  const Keyframe* keyframe(const Uuid& id) const;

  // --- Edits ---
  // Writes a key at t when animated or animationEnabled (and on the first key
  // the value becomes the base too); otherwise changes the base value.
  void setValue(const PropertyValue& v, const OVTime& t, bool animationEnabled);
  void upsertKeyframe(const PropertyValue& v, const OVTime& t,
                      std::optional<InterpolationMode> mode = std::nullopt,
                      std::optional<BezierHandles> handles = std::nullopt);
  // A key holding the current value at t: the curve does not change there.
  void addKeyframeAt(const OVTime& t);
  // Remove every match; neither sorts nor recomputes auto tangents.
  void removeKeyframe(const Uuid& id);
  void removeKeyframeAt(const OVTime& t);
  // With t on an animated property, the base first takes the value at t.
  void removeAllKeyframes(std::optional<OVTime> freezingValueAt = std::nullopt);
  // Applies change to the key with this id, then sorts.
  void updateKeyframe(const Uuid& id, const std::function<void(Keyframe&)>& change);
  // Removes other keys at exactly t (a moved key wins), then moves and sorts.
  void moveKeyframe(const Uuid& id, const OVTime& t);
  // Every time + delta; order and tangents untouched.
  void shiftKeyframesBy(const OVTime& delta);
  // Every time snapped to the rate's frame at or before it, then sorts.
  void alignKeyframesTo(const FrameRate& rate);
  // Replaces the list, sorted by time; auto tangents are taken as given.
  void setKeyframes(std::vector<Keyframe> keyframes);
  void applySpatialInterpolation(const std::unordered_set<Uuid>& ids, SpatialInterpolation mode);
  // Stable sort by time, then recomputes auto tangents.
  void sort();
  void recomputeAutoSpatialTangents();

  friend bool operator==(const AnimatedProperty&, const AnimatedProperty&) = default;
  friend std::size_t hashValue(const AnimatedProperty& p) { return hashAll(p.baseValue, p.keyframes_); }

 private:
  SharedVector<Keyframe> keyframes_;
};

}  // namespace orvane::core
