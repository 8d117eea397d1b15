#pragma once
// The helpers the built-in catalog is written with, so that each row reads
// like its table: keys as (progress, value, curve), one helper per channel.
// Internal to the behaviors library.

#include <string>
#include <vector>

#include "behaviors/behavior.hpp"

namespace orvane::behaviors::builders {

// The pace of a key: an interpolation mode, or a Bézier preset (mode bezier).
struct Curve {
  core::InterpolationMode mode = core::InterpolationMode::linear;
  std::optional<core::BezierHandles> handles;
};

inline const Curve linear{core::InterpolationMode::linear, std::nullopt};
inline const Curve hold{core::InterpolationMode::hold, std::nullopt};
inline const Curve easeIn{core::InterpolationMode::easeIn, std::nullopt};
inline const Curve easeOut{core::InterpolationMode::easeOut, std::nullopt};
inline const Curve easeInOut{core::InterpolationMode::easeInOut, std::nullopt};
inline const Curve smooth{core::InterpolationMode::bezier, core::BezierHandles::smooth};
inline const Curve decelerate{core::InterpolationMode::bezier, core::BezierHandles::decelerate};
inline const Curve glide{core::InterpolationMode::bezier, core::BezierHandles::glide};
inline const Curve accelerate{core::InterpolationMode::bezier, core::BezierHandles::accelerate};
inline const Curve overshoot{core::InterpolationMode::bezier, core::BezierHandles::overshoot};
inline const Curve anticipate{core::InterpolationMode::bezier, core::BezierHandles::anticipate};

using Keys = std::vector<BehaviorKey>;

inline BehaviorKey k(double progress, double value, const Curve& c) {
  return {progress, core::PropertyValue::double_(value), c.mode, c.handles};
}
inline BehaviorKey k(double progress, core::OVPoint value, const Curve& c) {
  return {progress, core::PropertyValue::point(value), c.mode, c.handles};
}

BehaviorTrack opacity(Keys keys);
BehaviorTrack positionOffset(Keys keys);
// A single number means the same percentage on both axes.
BehaviorTrack scale(Keys keys);
BehaviorTrack rotation(Keys keys);
BehaviorTrack skew(Keys keys);
BehaviorTrack crop(core::LayerCrop::Edge edge, Keys keys);
BehaviorTrack cropOffset(core::LayerCrop::Edge edge, Keys keys);
BehaviorTrack audioVolume(Keys keys);
BehaviorTrack audioPan(Keys keys);
BehaviorTrack textReveal(Keys keys);
BehaviorEffect effect(std::string effectID, std::string parameterID, Keys keys);

inline BehaviorTiming leading(double s) { return BehaviorTiming::leading(s); }
inline BehaviorTiming trailing(double s) { return BehaviorTiming::trailing(s); }
inline const BehaviorTiming wholeLayer = BehaviorTiming::fullLayer();

// A row of the catalog; kinds and icon follow from the category.
Behavior make(BehaviorCategory category, std::string id, std::string name, std::string summary,
              BehaviorTiming timing, std::vector<BehaviorTrack> tracks, std::vector<BehaviorEffect> effects = {});

// The rows of each category, in panel order.
std::vector<Behavior> entranceBehaviors();
std::vector<Behavior> exitBehaviors();
std::vector<Behavior> emphasisBehaviors();
std::vector<Behavior> motionBehaviors();
std::vector<Behavior> opacityBehaviors();
std::vector<Behavior> scaleBehaviors();
std::vector<Behavior> rotationBehaviors();
std::vector<Behavior> cropBehaviors();
std::vector<Behavior> effectsBehaviors();
std::vector<Behavior> audioBehaviors();
std::vector<Behavior> textBehaviors();

}  // namespace orvane::behaviors::builders
