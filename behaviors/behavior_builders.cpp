#include "behaviors/behavior_builders.hpp"

#include <utility>

namespace orvane::behaviors::builders {

using core::LayerTransform;

namespace {

BehaviorTrack track(BehaviorChannel channel, Keys keys, BehaviorValueMode mode = BehaviorValueMode::absolute) {
  return {channel, mode, std::move(keys)};
}

BehaviorChannel transform(LayerTransform::Channel c) { return BehaviorChannel::transform(c); }

}  // namespace

BehaviorTrack opacity(Keys keys) { return track(transform(LayerTransform::Channel::opacity), std::move(keys)); }

BehaviorTrack positionOffset(Keys keys) {
  return track(transform(LayerTransform::Channel::position), std::move(keys), BehaviorValueMode::offset);
}

BehaviorTrack scale(Keys keys) {
  for (BehaviorKey& key : keys)
    if (key.value.kind() == core::PropertyValue::Kind::double_) {
      const double s = *key.value.doubleValue();
      key.value = core::PropertyValue::point(s, s);
    }
  return track(transform(LayerTransform::Channel::scale), std::move(keys));
}

BehaviorTrack rotation(Keys keys) { return track(transform(LayerTransform::Channel::rotation), std::move(keys)); }
BehaviorTrack skew(Keys keys) { return track(transform(LayerTransform::Channel::skew), std::move(keys)); }

BehaviorTrack crop(core::LayerCrop::Edge edge, Keys keys) { return track(BehaviorChannel::crop(edge), std::move(keys)); }

BehaviorTrack cropOffset(core::LayerCrop::Edge edge, Keys keys) {
  return track(BehaviorChannel::crop(edge), std::move(keys), BehaviorValueMode::offset);
}

BehaviorTrack audioVolume(Keys keys) { return track(BehaviorChannel::audioVolume(), std::move(keys)); }
BehaviorTrack audioPan(Keys keys) { return track(BehaviorChannel::audioPan(), std::move(keys)); }
BehaviorTrack textReveal(Keys keys) { return track(BehaviorChannel::textReveal(), std::move(keys)); }

BehaviorEffect effect(std::string effectID, std::string parameterID, Keys keys) {
  BehaviorEffect e;
  e.effectID = std::move(effectID);
  e.parameters.emplace(std::move(parameterID), std::move(keys));
  return e;
}

Behavior make(BehaviorCategory category, std::string id, std::string name, std::string summary,
              BehaviorTiming timing, std::vector<BehaviorTrack> tracks, std::vector<BehaviorEffect> effects) {
  Behavior b;
  b.id = std::move(id);
  b.name = std::move(name);
  b.summary = std::move(summary);
  b.category = category;
  b.systemImage = std::string(symbolName(category));
  if (category == BehaviorCategory::audio)
    b.applicableKinds = {core::LayerKind::audio, core::LayerKind::video};
  else if (category == BehaviorCategory::text)
    b.applicableKinds = {core::LayerKind::text};
  b.timing = timing;
  b.tracks = std::move(tracks);
  b.effects = std::move(effects);
  return b;
}

}  // namespace orvane::behaviors::builders
