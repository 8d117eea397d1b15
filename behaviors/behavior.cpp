#include "behaviors/behavior.hpp"

#include <algorithm>
#include <cmath>

#include "core/effect_catalog.hpp"

namespace orvane::behaviors {

using core::AnimatedProperty;
using core::Layer;
using core::LayerKind;
using core::OVTime;
using core::PropertyValue;

namespace {

// The shortest run and the shortest layer a behavior assumes: one frame at
// 30 fps whatever the composition's rate, so that timing does not depend on it.
constexpr double kMinimumSpan = 1.0 / 30.0;

}  // namespace

std::string_view symbolName(BehaviorCategory category) {
  switch (category) {
    case BehaviorCategory::entrance: return "arrow.right.to.line";
    case BehaviorCategory::exit: return "arrow.right.to.line.compact";
    case BehaviorCategory::emphasis: return "sparkles";
    case BehaviorCategory::motion: return "wind";
    case BehaviorCategory::opacity: return "circle.lefthalf.filled";
    case BehaviorCategory::scale: return "arrow.up.left.and.arrow.down.right";
    case BehaviorCategory::rotation: return "rotate.right";
    case BehaviorCategory::crop: return "crop";
    case BehaviorCategory::effects: return "camera.filters";
    case BehaviorCategory::audio: return "speaker.wave.2";
    case BehaviorCategory::text: return "textformat";
  }
  return {};
}

// ----------------------------------------------------------------- behavior

std::set<LayerKind> Behavior::visualKinds() {
  std::set<LayerKind> kinds = allKinds();
  kinds.erase(LayerKind::audio);
  return kinds;
}

std::set<LayerKind> Behavior::allKinds() {
  const auto cases = core::allCases<LayerKind>();
  return {cases.begin(), cases.end()};
}

bool Behavior::applies(LayerKind kind) const { return applicableKinds.empty() || applicableKinds.contains(kind); }

OVTime Behavior::timeForProgress(double p, const Layer& layer) const {
  p = std::isnan(p) ? 0.0 : std::clamp(p, 0.0, 1.0);
  const double layerSeconds = layer.timeRange.duration.seconds();
  // Written so that a NaN picks the floor.
  const double duration = layerSeconds > kMinimumSpan ? layerSeconds : kMinimumSpan;
  const OVTime start = layer.timeRange.start;
  if (timing.kind == BehaviorTiming::Kind::fullLayer) return start + OVTime::fromSeconds(p * duration);

  const double requested = timing.seconds > kMinimumSpan ? timing.seconds : kMinimumSpan;
  const double span = std::min(requested, duration);
  if (timing.kind == BehaviorTiming::Kind::leading) return start + OVTime::fromSeconds(p * span);
  return layer.timeRange.end() - OVTime::fromSeconds(span) + OVTime::fromSeconds(p * span);
}

// -------------------------------------------------------------------- rules

PropertyValue resolve(const PropertyValue& value, BehaviorValueMode mode, const PropertyValue& reference) {
  if (mode == BehaviorValueMode::absolute || value.kind() != reference.kind()) return value;
  switch (value.kind()) {
    case PropertyValue::Kind::double_: return PropertyValue::double_(*value.doubleValue() + *reference.doubleValue());
    case PropertyValue::Kind::point: return PropertyValue::point(*value.pointValue() + *reference.pointValue());
    case PropertyValue::Kind::size: {
      const core::OVSize a = *value.sizeValue();
      const core::OVSize b = *reference.sizeValue();
      return PropertyValue::size(a.width + b.width, a.height + b.height);
    }
    case PropertyValue::Kind::integer:
      return PropertyValue::integer(*value.integerValue() + *reference.integerValue());
    default: return value;
  }
}

std::vector<core::Keyframe> makeKeyframes(const std::vector<BehaviorKey>& keys, const Behavior& behavior,
                                          const Layer& layer, BehaviorValueMode valueMode,
                                          const PropertyValue& reference, const core::FrameRate& frameRate) {
  std::vector<core::Keyframe> keyframes;
  keyframes.reserve(keys.size());
  for (const BehaviorKey& key : keys) {
    std::optional<core::BezierHandles> handles = key.handles;
    if (key.mode == core::InterpolationMode::bezier && !handles) handles = core::BezierHandles::smooth;
    keyframes.emplace_back(frameRate.snapped(behavior.timeForProgress(key.progress, layer)),
                           resolve(key.value, valueMode, reference), key.mode, handles);
  }
  return keyframes;
}

namespace {

// One switch for both constnesses of the layer.
template <class L>
auto& channelProperty(const BehaviorChannel& channel, L& layer) {
  switch (channel.kind) {
    case BehaviorChannel::Kind::transform: return layer.transform[channel.transformChannel];
    case BehaviorChannel::Kind::crop: return layer.crop[channel.cropEdge];
    case BehaviorChannel::Kind::audioVolume: return layer.audio.volume;
    case BehaviorChannel::Kind::audioPan: return layer.audio.pan;
    case BehaviorChannel::Kind::textReveal: break;
  }
  return layer.textReveal;
}

}  // namespace

AnimatedProperty& property(const BehaviorChannel& channel, Layer& layer) { return channelProperty(channel, layer); }

const AnimatedProperty& property(const BehaviorChannel& channel, const Layer& layer) {
  return channelProperty(channel, layer);
}

// ------------------------------------------------------------------ stamping

namespace {

void stampTrack(const BehaviorTrack& track, const Behavior& behavior, Layer& layer, const core::FrameRate& rate) {
  AnimatedProperty& target = property(track.channel, layer);
  const PropertyValue reference = target.valueAt(layer.timeRange.start);
  // The new keys replace the channel's animation; the base value stays as the
  // value the property falls back to once its keys are deleted.
  target = AnimatedProperty(target.baseValue,
                            makeKeyframes(track.keys, behavior, layer, track.valueMode, reference, rate));
}

void stampEffect(const BehaviorEffect& effect, const Behavior& behavior, Layer& layer, const core::FrameRate& rate) {
  const core::EffectDescriptor* descriptor = core::EffectCatalog::descriptorFor(effect.effectID);
  if (descriptor == nullptr) return;
  core::EffectInstance instance = descriptor->makeInstance();
  for (const auto& [parameterID, keys] : effect.parameters) {
    if (keys.empty()) continue;
    const core::EffectParameterDescriptor* parameter = descriptor->parameter(parameterID);
    if (parameter == nullptr) continue;
    const AnimatedProperty defaultProperty(parameter->defaultValue);
    const PropertyValue reference = defaultProperty.valueAt(layer.timeRange.start);
    instance.parameters[parameterID] =
        AnimatedProperty(parameter->defaultValue,
                         makeKeyframes(keys, behavior, layer, BehaviorValueMode::absolute, reference, rate));
  }
  layer.effects.mutate().push_back(std::move(instance));
}

// Limited to the layer before conversion, so that an absurd length cannot
// overflow the time; the layer limits fades to its duration anyway.
OVTime fadeTime(double seconds, const Layer& layer) {
  const double limit = std::max(0.0, layer.timeRange.duration.seconds());
  return OVTime::fromSeconds(std::isnan(seconds) ? 0.0 : std::clamp(seconds, 0.0, limit));
}

}  // namespace

void stamp(const Behavior& behavior, Layer& layer, const core::FrameRate& frameRate) {
  for (const BehaviorTrack& track : behavior.tracks) stampTrack(track, behavior, layer, frameRate);
  for (const BehaviorEffect& effect : behavior.effects) stampEffect(effect, behavior, layer, frameRate);
  if (behavior.fadeInSeconds) layer.setFadeIn(fadeTime(*behavior.fadeInSeconds, layer));
  if (behavior.fadeOutSeconds) layer.setFadeOut(fadeTime(*behavior.fadeOutSeconds, layer));
  layer.alignKeyframesTo(frameRate);
}

}  // namespace orvane::behaviors
