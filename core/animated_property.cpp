#include "core/animated_property.hpp"

#include <algorithm>

#include "core/easing.hpp"
#include "core/spatial_path.hpp"

namespace orvane::core {

namespace {

bool earlier(const Keyframe& a, const Keyframe& b) { return a.time < b.time; }

// The segment leaving a towards b at progress eased, for two point values.
PropertyValue spatialValue(const Keyframe& a, const Keyframe& b, const OVPoint& pa, const OVPoint& pb,
                           double eased) {
  const bool aLinear = a.spatialMode == SpatialInterpolation::linear;
  const bool bLinear = b.spatialMode == SpatialInterpolation::linear;
  if (aLinear && bLinear) return PropertyValue::point(pa + (pb - pa) * eased);
  const OVPoint outT = aLinear ? OVPoint::zero : a.spatialHandles.outTangent;
  const OVPoint inT = bLinear ? OVPoint::zero : b.spatialHandles.inTangent;
  return PropertyValue::point(SpatialPath::pointFrom(pa, outT, pb, inT, eased));
}

}  // namespace

AnimatedProperty::AnimatedProperty(PropertyValue base, std::vector<Keyframe> keyframes)
    : baseValue(std::move(base)) {
  if (!keyframes.empty()) setKeyframes(std::move(keyframes));
}

// ------------------------------------------------------------- evaluation

PropertyValue AnimatedProperty::valueAt(const OVTime& t) const {
  const std::vector<Keyframe>& keys = keyframes_.items();
  if (keys.empty()) return baseValue;
  if (keys.size() == 1 || t <= keys.front().time) return keys.front().value;
  if (t >= keys.back().time) return keys.back().value;

  // The last key at or before t leads; among keys at equal times the last one.
  // first < t < last, so the index lies in 0 ... count − 2.
  const auto after = std::upper_bound(keys.begin(), keys.end(), t,
                                      [](const OVTime& time, const Keyframe& k) { return time < k.time; });
  const Keyframe& a = *(after - 1);
  const Keyframe& b = *after;

  const double span = (b.time - a.time).seconds();
  if (!(span > 0)) return b.value;
  const double progress = (t - a.time).seconds() / span;
  const double eased = Easing::apply(a.mode, a.handles, progress);

  const auto pa = a.value.pointValue();
  const auto pb = b.value.pointValue();
  if (pa && pb) return spatialValue(a, b, *pa, *pb, eased);
  return a.value.interpolatedTo(b.value, eased);
}

double AnimatedProperty::doubleValueAt(const OVTime& t, double fallback) const {
  return valueAt(t).doubleValue().value_or(fallback);
}

OVPoint AnimatedProperty::pointValueAt(const OVTime& t, OVPoint fallback) const {
  return valueAt(t).pointValue().value_or(fallback);
}

OVSize AnimatedProperty::sizeValueAt(const OVTime& t, OVSize fallback) const {
  return valueAt(t).sizeValue().value_or(fallback);
}

OVColor AnimatedProperty::colorValueAt(const OVTime& t, OVColor fallback) const {
  return valueAt(t).colorValue().value_or(fallback);
}

bool AnimatedProperty::boolValueAt(const OVTime& t, bool fallback) const {
  return valueAt(t).boolValue().value_or(fallback);
}

// ---------------------------------------------------------------- look-up

const Keyframe* AnimatedProperty::keyframeAt(const OVTime& t) const {
  for (const Keyframe& k : keyframes_)
    if (k.time == t) return &k;
  return nullptr;
}

const Keyframe* AnimatedProperty::keyframeBefore(const OVTime& t) const {
  const Keyframe* found = nullptr;
  for (const Keyframe& k : keyframes_)
    if (k.time < t) found = &k;
  return found;
}

const Keyframe* AnimatedProperty::keyframeAfter(const OVTime& t) const {
  for (const Keyframe& k : keyframes_)
    if (k.time > t) return &k;
  return nullptr;
}

const Keyframe* AnimatedProperty::keyframe(const Uuid& id) const {
  for (const Keyframe& k : keyframes_)
    if (k.id == id) return &k;
  return nullptr;
}

// ------------------------------------------------------------------ edits

void AnimatedProperty::setValue(const PropertyValue& v, const OVTime& t, bool animationEnabled) {
  if (!isAnimated() && !animationEnabled) {
    baseValue = v;
    return;
  }
  const bool wasAnimated = isAnimated();
  upsertKeyframe(v, t);
  if (!wasAnimated) baseValue = v;
}

void AnimatedProperty::upsertKeyframe(const PropertyValue& v, const OVTime& t,
                                      std::optional<InterpolationMode> mode,
                                      std::optional<BezierHandles> handles) {
  const std::vector<Keyframe>& keys = keyframes_.items();
  const auto existing = std::find_if(keys.begin(), keys.end(), [&](const Keyframe& k) { return k.time == t; });
  if (existing != keys.end()) {
    Keyframe& k = keyframes_.mutate()[static_cast<std::size_t>(existing - keys.begin())];
    k.value = v;
    if (mode) k.mode = *mode;
    if (handles) k.handles = handles;
    recomputeAutoSpatialTangents();
    return;
  }
  const Keyframe* before = keyframeBefore(t);
  const InterpolationMode newMode = mode ? *mode : before ? before->mode : InterpolationMode::linear;
  const std::optional<BezierHandles> newHandles = handles ? handles : before ? before->handles : std::nullopt;
  keyframes_.mutate().push_back(Keyframe(t, v, newMode, newHandles));
  sort();
}

void AnimatedProperty::addKeyframeAt(const OVTime& t) { upsertKeyframe(valueAt(t), t); }

void AnimatedProperty::removeKeyframe(const Uuid& id) {
  if (!keyframe(id)) return;
  std::erase_if(keyframes_.mutate(), [&](const Keyframe& k) { return k.id == id; });
}

void AnimatedProperty::removeKeyframeAt(const OVTime& t) {
  if (!hasKeyframeAt(t)) return;
  std::erase_if(keyframes_.mutate(), [&](const Keyframe& k) { return k.time == t; });
}

void AnimatedProperty::removeAllKeyframes(std::optional<OVTime> freezingValueAt) {
  if (freezingValueAt && isAnimated()) baseValue = valueAt(*freezingValueAt);
  keyframes_ = SharedVector<Keyframe>();
}

void AnimatedProperty::updateKeyframe(const Uuid& id, const std::function<void(Keyframe&)>& change) {
  if (!keyframe(id)) return;
  for (Keyframe& k : keyframes_.mutate())
    if (k.id == id) {
      change(k);
      break;
    }
  sort();
}

void AnimatedProperty::moveKeyframe(const Uuid& id, const OVTime& t) {
  const auto collides = [&](const Keyframe& k) { return k.id != id && k.time == t; };
  if (std::any_of(keyframes_.begin(), keyframes_.end(), collides)) std::erase_if(keyframes_.mutate(), collides);
  if (!keyframe(id)) return;
  for (Keyframe& k : keyframes_.mutate())
    if (k.id == id) {
      k.time = t;
      break;
    }
  sort();
}

void AnimatedProperty::shiftKeyframesBy(const OVTime& delta) {
  if (delta.isZero() || !isAnimated()) return;
  for (Keyframe& k : keyframes_.mutate()) k.time = k.time + delta;
}

void AnimatedProperty::alignKeyframesTo(const FrameRate& rate) {
  if (!isAnimated()) return;
  for (Keyframe& k : keyframes_.mutate()) k.time = rate.snapped(k.time);
  sort();
}

void AnimatedProperty::setKeyframes(std::vector<Keyframe> keyframes) {
  std::stable_sort(keyframes.begin(), keyframes.end(), earlier);
  keyframes_ = SharedVector<Keyframe>(std::move(keyframes));
}

void AnimatedProperty::applySpatialInterpolation(const std::unordered_set<Uuid>& ids, SpatialInterpolation mode) {
  if (ids.empty() || !isAnimated()) return;
  for (Keyframe& k : keyframes_.mutate()) {
    if (!ids.contains(k.id)) continue;
    k.spatialMode = mode;
    if (mode == SpatialInterpolation::linear) k.spatialHandles = SpatialHandles::zero;
  }
  recomputeAutoSpatialTangents();
}

void AnimatedProperty::sort() {
  if (!isAnimated()) return;
  const auto& keys = keyframes_.items();
  if (!std::is_sorted(keys.begin(), keys.end(), earlier)) {
    auto& mutableKeys = keyframes_.mutate();
    std::stable_sort(mutableKeys.begin(), mutableKeys.end(), earlier);
  }
  recomputeAutoSpatialTangents();
}

void AnimatedProperty::recomputeAutoSpatialTangents() {
  const std::vector<Keyframe>& keys = keyframes_.items();
  const bool anyAuto = std::any_of(keys.begin(), keys.end(), [](const Keyframe& k) {
    return k.spatialMode == SpatialInterpolation::autoBezier;
  });
  if (!anyAuto) return;
  std::vector<std::optional<OVPoint>> points;
  points.reserve(keys.size());
  for (const Keyframe& k : keys) points.push_back(k.value.pointValue());

  std::vector<Keyframe>& out = keyframes_.mutate();
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (out[i].spatialMode != SpatialInterpolation::autoBezier || !points[i]) continue;
    const std::optional<OVPoint> previous = i > 0 ? points[i - 1] : std::nullopt;
    const std::optional<OVPoint> next = i + 1 < points.size() ? points[i + 1] : std::nullopt;
    out[i].spatialHandles = SpatialPath::autoHandlesAt(*points[i], previous, next);
  }
}

}  // namespace orvane::core
