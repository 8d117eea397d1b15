#include "core/layer.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/project.hpp"

namespace orvane::core {

namespace {

// A fade scaled by ratio, rebuilt from seconds at the default timescale. A
// product that is not finite (only possible with a negative duration read
// from a file) becomes zero rather than stopping the program.
OVTime scaledFade(const OVTime& fade, double ratio) {
  const double seconds = fade.seconds() * ratio;
  return OVTime::fromSeconds(std::isfinite(seconds) ? seconds : 0);
}

}  // namespace

Layer::Layer(std::string name, LayerContent content, OVTimeRange timeRange)
    : name(std::move(name)),
      content(std::move(content)),
      timeRange(timeRange),
      labelColor(suggestedLabelColorFor(this->content.kind())) {}

// --- Queries ---

bool Layer::contributesAudio() const {
  if (!content.canProduceAudio() || audio.isMuted) return false;
  return kind() != LayerKind::video || usesSourceAudio;
}

std::string Layer::displayNameIn(const OVProject& project) const {
  if (const auto compositionID = content.compositionID()) {
    if (const Composition* nested = project.composition(*compositionID)) return nested->name;
  }
  return name;
}

double Layer::fadeMultiplierAt(const OVTime& t) const {
  if (!timeRange.contains(t)) return 0;
  double in = 1;
  if (fadeIn.isPositive()) {
    const double local = (t - timeRange.start).seconds();
    if (local < fadeIn.seconds()) in = std::clamp(local / fadeIn.seconds(), 0.0, 1.0);
  }
  if (fadeOut.isPositive()) {
    const double rest = (timeRange.end() - t).seconds();
    if (rest < fadeOut.seconds()) return in * std::clamp(rest / fadeOut.seconds(), 0.0, 1.0);
  }
  return in;
}

bool Layer::affectsCompositionStructure() const {
  switch (kind()) {
    case LayerKind::video:
    case LayerKind::audio:
    case LayerKind::image:
    case LayerKind::precomposition: return true;
    case LayerKind::text:
    case LayerKind::shape:
    case LayerKind::solid:
    case LayerKind::adjustment: return false;
  }
  return true;
}

// --- Moving and keyframes ---

void Layer::moveBy(const OVTime& delta, const OVTime& notBefore) {
  const OVTime proposed = timeRange.start + delta;
  const OVTime newStart = proposed < notBefore ? notBefore : proposed;
  const OVTime actual = newStart - timeRange.start;
  if (actual.isZero()) return;
  timeRange.start = newStart;
  shiftKeyframesBy(actual);
}

void Layer::moveTo(const OVTime& t, const OVTime& notBefore) { moveBy(t - timeRange.start, notBefore); }

void Layer::shiftKeyframesBy(const OVTime& delta) {
  if (delta.isZero()) return;
  forEachAnimatedProperty([&](AnimatedProperty& p) {
    if (p.isAnimated()) p.shiftKeyframesBy(delta);
  });
}

void Layer::alignKeyframesTo(const FrameRate& rate) {
  forEachAnimatedProperty([&](AnimatedProperty& p) {
    if (p.isAnimated()) p.alignKeyframesTo(rate);
  });
}

void Layer::forEachAnimatedProperty(const std::function<void(AnimatedProperty&)>& body) {
  for (auto channel : allCases<LayerTransform::Channel>()) body(transform[channel]);
  for (auto edge : allCases<LayerCrop::Edge>()) body(crop[edge]);
  // mutate() copies shared storage, so lists with nothing to visit stay shared.
  if (!masks.empty()) {
    for (LayerMask& mask : masks.mutate()) {
      body(mask.path);
      body(mask.feather);
    }
  }
  if (!effects.empty()) {
    for (EffectInstance& effect : effects.mutate())
      for (auto& [key, parameter] : effect.parameters) body(parameter);
  }
  body(audio.volume);
  body(audio.pan);
  body(textReveal);
}

void Layer::forEachAnimatedProperty(const std::function<void(const AnimatedProperty&)>& body) const {
  for (auto channel : allCases<LayerTransform::Channel>()) body(transform[channel]);
  for (auto edge : allCases<LayerCrop::Edge>()) body(crop[edge]);
  for (const LayerMask& mask : masks) {
    body(mask.path);
    body(mask.feather);
  }
  for (const EffectInstance& effect : effects)
    for (const auto& [key, parameter] : effect.parameters) body(parameter);
  body(audio.volume);
  body(audio.pan);
  body(textReveal);
}

// --- Trims, fades and cuts ---

void Layer::trimStartTo(const OVTime& t, const OVTime& minimumDuration) {
  const OVTime limit = timeRange.end() - minimumDuration;
  const OVTime newStart = OVTime::clamp(t, OVTime::zero, limit);
  const OVTime delta = newStart - timeRange.start;
  timeRange.duration = timeRange.duration - delta;
  sourceStart = sourceStart + delta;
  timeRange.start = newStart;
  if (sourceStart < OVTime::zero) {
    // Pulled past the head of the source: give back what the source lacks.
    const OVTime overflow = sourceStart * -1;
    timeRange.start = timeRange.start + overflow;
    timeRange.duration = timeRange.duration - overflow;
    sourceStart = OVTime::zero;
  }
  clampFadesToDuration();
}

void Layer::trimEndTo(const OVTime& t, const OVTime& minimumDuration,
                      const std::optional<OVTime>& maximumSource) {
  const OVTime start = timeRange.start;
  const OVTime shortest = start + minimumDuration;
  OVTime newEnd = std::max(t, shortest);
  if (maximumSource) {
    const OVTime sourceEnd = sourceStart + (newEnd - start);
    if (sourceEnd > *maximumSource) newEnd = std::max(start + (*maximumSource - sourceStart), shortest);
  }
  timeRange.duration = newEnd - start;
  clampFadesToDuration();
}

void Layer::setFadeIn(const OVTime& v) {
  fadeIn = OVTime::clamp(v, OVTime::zero, std::max(OVTime::zero, timeRange.duration - fadeOut));
}

void Layer::setFadeOut(const OVTime& v) {
  fadeOut = OVTime::clamp(v, OVTime::zero, std::max(OVTime::zero, timeRange.duration - fadeIn));
}

void Layer::clampFadesToDuration() {
  const OVTime duration = timeRange.duration;
  const OVTime total = fadeIn + fadeOut;
  if (total > duration) {
    const double ratio =
        duration.seconds() / std::max(total.seconds(), std::numeric_limits<double>::denorm_min());
    fadeIn = scaledFade(fadeIn, ratio);
    fadeOut = scaledFade(fadeOut, ratio);
  }
  if (fadeIn > duration) fadeIn = duration;
  if (fadeOut > duration) fadeOut = duration;
}

std::optional<std::pair<Layer, Layer>> Layer::splitAt(const OVTime& t, const OVTime& minimumDuration) const {
  const OVTime start = timeRange.start;
  const OVTime end = timeRange.end();
  if (!(t > start + minimumDuration && t < end - minimumDuration)) return std::nullopt;

  Layer head = *this;
  head.timeRange.duration = t - start;
  head.fadeOut = OVTime::zero;
  head.clampFadesToDuration();

  Layer tail = *this;
  tail.id = Uuid::make();
  tail.timeRange = OVTimeRange::fromStartEnd(t, end);
  tail.sourceStart = sourceStart + (t - start);
  tail.fadeIn = OVTime::zero;
  tail.clampFadesToDuration();
  return std::pair{std::move(head), std::move(tail)};
}

std::size_t hashValue(const Layer& l) {
  return hashAll(l.id, l.name, l.content, l.timeRange, l.sourceStart, l.isEnabled, l.isLocked,
                 l.isSolo, l.usesSourceAudio, l.fadeIn, l.fadeOut, l.blendMode, l.transform, l.crop,
                 l.masks, l.effects, l.audio, l.parentLayerID, l.labelColor, l.markers,
                 l.isExpandedInTimeline, l.trackID, l.textReveal, l.crossfadeIn, l.crossfadeOut);
}

}  // namespace orvane::core
