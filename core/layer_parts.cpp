#include "core/layer_parts.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace orvane::core {

// ---------------------------------------------------------------- transform

LayerTransform LayerTransform::centeredIn(const OVSize& size) {
  LayerTransform t;
  t.position = AnimatedProperty::point(size.width / 2, size.height / 2);
  return t;
}

AnimatedProperty& LayerTransform::operator[](Channel c) {
  return const_cast<AnimatedProperty&>(std::as_const(*this)[c]);
}

const AnimatedProperty& LayerTransform::operator[](Channel c) const {
  switch (c) {
    case Channel::position: return position;
    case Channel::scale: return scale;
    case Channel::rotation: return rotation;
    case Channel::anchorPoint: return anchorPoint;
    case Channel::opacity: return opacity;
    case Channel::skew: return skew;
  }
  return position;
}

bool LayerTransform::isAnimated() const {
  for (Channel c : allCases<Channel>())
    if ((*this)[c].isAnimated()) return true;
  return false;
}

LayerTransform::Resolved LayerTransform::resolvedAt(const OVTime& t) const {
  Resolved r;
  r.position = position.pointValueAt(t, OVPoint::zero);
  r.scale = scale.pointValueAt(t, {100, 100});
  r.rotationDegrees = rotation.doubleValueAt(t, 0);
  r.anchorPoint = anchorPoint.pointValueAt(t, {0.5, 0.5});
  r.opacity = opacity.doubleValueAt(t, 100);
  r.skewDegrees = skew.doubleValueAt(t, 0);
  r.flipHorizontally = flipHorizontally;
  r.flipVertically = flipVertically;
  return r;
}

namespace {

// Translate by position, rotate, skew, then scale with the flips; each later
// step applies to points first.
Affine2D pivotFrom(const LayerTransform::Resolved& r) {
  constexpr double kRadiansPerDegree = std::numbers::pi / 180;
  Affine2D m = Affine2D::identity().translatedBy(r.position.x, r.position.y);
  m = m.rotatedBy(r.rotationDegrees * kRadiansPerDegree);
  // tan is only evaluated for a real skew, so a plain rotation never meets
  // tan's poles.
  if (r.skewDegrees != 0) {
    const Affine2D shear{1, 0, std::tan(r.skewDegrees * kRadiansPerDegree), 1, 0, 0};
    m = Affine2D::concatenating(shear, m);
  }
  const double sx = (r.flipHorizontally ? -1.0 : 1.0) * (r.scale.x / 100);
  const double sy = (r.flipVertically ? -1.0 : 1.0) * (r.scale.y / 100);
  return m.scaledBy(sx, sy);
}

}  // namespace

Affine2D LayerTransform::pivotTransformAt(const OVTime& t) const { return pivotFrom(resolvedAt(t)); }

Affine2D LayerTransform::affineTransformAt(const OVTime& t, const OVSize& layerSize) const {
  const Resolved r = resolvedAt(t);
  return pivotFrom(r).translatedBy(-layerSize.width * r.anchorPoint.x,
                                   -layerSize.height * r.anchorPoint.y);
}

std::size_t hashValue(const LayerTransform& t) {
  return hashAll(t.position, t.scale, t.rotation, t.anchorPoint, t.opacity, t.skew,
                 t.flipHorizontally, t.flipVertically);
}

// --------------------------------------------------------------------- crop

AnimatedProperty& LayerCrop::operator[](Edge e) {
  return const_cast<AnimatedProperty&>(std::as_const(*this)[e]);
}

const AnimatedProperty& LayerCrop::operator[](Edge e) const {
  switch (e) {
    case Edge::left: return left;
    case Edge::top: return top;
    case Edge::right: return right;
    case Edge::bottom: return bottom;
  }
  return left;
}

bool LayerCrop::isActiveAt(const OVTime& t) const {
  // Half a unit or less cuts nothing visible, so the renderer skips it.
  for (Edge e : allCases<Edge>())
    if ((*this)[e].doubleValueAt(t, 0) > 0.5) return true;
  return false;
}

OVRect LayerCrop::sourceRectAt(const OVTime& t, const OVSize& layerSize) const {
  const auto edge = [&](Edge e) { return std::max((*this)[e].doubleValueAt(t, 0), 0.0); };
  const double l = edge(Edge::left), tp = edge(Edge::top), r = edge(Edge::right), b = edge(Edge::bottom);
  const double width = std::max(1.0, layerSize.width - l - r);
  const double height = std::max(1.0, layerSize.height - tp - b);
  // Top counts from the upper edge and the space is y-up, so y is measured
  // from the far end; edges that pass each other leave a strip of 1 unit.
  return {l, std::max(0.0, layerSize.height - tp - height), width, height};
}

std::size_t hashValue(const LayerCrop& c) { return hashAll(c.left, c.top, c.right, c.bottom); }

// -------------------------------------------------------------------- masks

MaskPath LayerMask::pathValueAt(const OVTime& t) const {
  if (auto p = path.valueAt(t).maskPathValue()) return std::move(*p);
  return MaskPath{};
}

std::size_t hashValue(const LayerMask& m) {
  return hashAll(m.id, m.name, m.isEnabled, m.inverted, m.path, m.feather);
}

// ------------------------------------------------------------------ effects

bool EffectInstance::isAnimated() const {
  for (const auto& [key, property] : parameters)
    if (property.isAnimated()) return true;
  return false;
}

std::size_t hashValue(const EffectInstance& e) {
  return hashAll(e.id, e.effectID, e.isEnabled, e.parameters);
}

// -------------------------------------------------------------------- audio

std::string_view helpText(AudioPitchMode mode) {
  switch (mode) {
    case AudioPitchMode::keepDuration: return "Shifts pitch and keeps the clip length (like a pitch plugin).";
    case AudioPitchMode::linked: return {};
  }
  return {};
}

double AudioProperties::pitchRatio() const {
  return std::pow(2.0, (pitchSemitones + pitchCents / 100) / 12);
}

bool AudioProperties::hasPitchShift() const {
  return std::abs(pitchSemitones) > 0.01 || std::abs(pitchCents) > 0.5;
}

bool AudioProperties::needsProcessingTap() const {
  return echoMix > 0.5 || reverbMix > 0.5 || hasPitchShift();
}

std::size_t hashValue(const AudioProperties& a) {
  return hashAll(a.volume, a.pan, a.isMuted, a.normalizeGain, a.echoMix, a.echoDelayMs,
                 a.echoFeedback, a.reverbMix, a.reverbDecay, a.pitchSemitones, a.pitchCents,
                 a.pitchMode);
}

}  // namespace orvane::core
