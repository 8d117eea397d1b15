#pragma once
// A behavior: a ready-made animation kept as a small table of keys in
// normalised progress (0 at its start, 1 at its end). Stamping turns the keys
// into ordinary keyframes on a layer; afterwards nothing remembers the
// behavior. Plain values and pure functions; any thread may use them, though
// stamping into the document happens on the main thread (apply_behavior.hpp).

#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/easing.hpp"
#include "core/enum_text.hpp"
#include "core/frame_rate.hpp"
#include "core/keyframe.hpp"
#include "core/layer.hpp"
#include "core/layer_content.hpp"
#include "core/layer_parts.hpp"
#include "core/ov_time.hpp"
#include "core/property_value.hpp"

namespace orvane::behaviors {

// The groups of the behavior panel, in the order of the catalog and panel.
enum class BehaviorCategory { entrance, exit, emphasis, motion, opacity, scale, rotation, crop, effects, audio, text };

}  // namespace orvane::behaviors

namespace orvane::core {
template <>
struct EnumTable<behaviors::BehaviorCategory> {
  using C = behaviors::BehaviorCategory;
  static constexpr std::array<EnumEntry<C>, 11> entries{{
      {C::entrance, "entrance", "Entrance"},
      {C::exit, "exit", "Exit"},
      {C::emphasis, "emphasis", "Emphasis"},
      {C::motion, "motion", "Motion"},
      {C::opacity, "opacity", "Opacity"},
      {C::scale, "scale", "Scale"},
      {C::rotation, "rotation", "Rotation"},
      {C::crop, "crop", "Crop"},
      {C::effects, "effects", "Effects"},
      {C::audio, "audio", "Audio"},
      {C::text, "text", "Text"},
  }};
};
}  // namespace orvane::core

namespace orvane::behaviors {

// "Entrance", "Exit", … as the panel shows them.
inline std::string_view displayName(BehaviorCategory c) { return core::displayName(c); }
// Every category in catalog order.
inline constexpr auto allBehaviorCategories() { return core::allCases<BehaviorCategory>(); }
// The icon a behavior of this category shows when it names none of its own.
std::string_view symbolName(BehaviorCategory category);

// Where on its layer a behavior runs.
struct BehaviorTiming {
  enum class Kind { leading, trailing, fullLayer };
  Kind kind = Kind::leading;
  double seconds = 0.7;  // unused for fullLayer

  // The first `s` seconds of the layer.
  static BehaviorTiming leading(double s) { return {Kind::leading, s}; }
  // The last `s` seconds of the layer.
  static BehaviorTiming trailing(double s) { return {Kind::trailing, s}; }
  // The whole layer.
  static BehaviorTiming fullLayer() { return {Kind::fullLayer, 0}; }

  friend bool operator==(const BehaviorTiming&, const BehaviorTiming&) = default;
};

// The animated property of a layer that a track writes.
struct BehaviorChannel {
  enum class Kind { transform, crop, audioVolume, audioPan, textReveal };
  Kind kind = Kind::transform;
  core::LayerTransform::Channel transformChannel = core::LayerTransform::Channel::position;  // transform only
  core::LayerCrop::Edge cropEdge = core::LayerCrop::Edge::left;                             // crop only

  static BehaviorChannel transform(core::LayerTransform::Channel c) { return {Kind::transform, c}; }
  static BehaviorChannel crop(core::LayerCrop::Edge e) {
    return {Kind::crop, core::LayerTransform::Channel::position, e};
  }
  static BehaviorChannel audioVolume() { return {Kind::audioVolume}; }
  static BehaviorChannel audioPan() { return {Kind::audioPan}; }
  static BehaviorChannel textReveal() { return {Kind::textReveal}; }

  friend bool operator==(const BehaviorChannel&, const BehaviorChannel&) = default;
};

// How a key's value meets the property it lands on.
enum class BehaviorValueMode {
  absolute,  // the key's value as it stands
  offset,    // added to the property's value at the layer's start
};

// One key of a behavior: where in its run, what value, and the pace of the
// segment that leaves it.
struct BehaviorKey {
  double progress = 0;  // 0 … 1
  core::PropertyValue value;
  core::InterpolationMode mode = core::InterpolationMode::linear;
  std::optional<core::BezierHandles> handles;

  friend bool operator==(const BehaviorKey&, const BehaviorKey&) = default;
};

struct BehaviorTrack {
  BehaviorChannel channel;
  BehaviorValueMode valueMode = BehaviorValueMode::absolute;
  std::vector<BehaviorKey> keys;

  friend bool operator==(const BehaviorTrack&, const BehaviorTrack&) = default;
};

// An effect the behavior adds to the layer, with keys per parameter id.
struct BehaviorEffect {
  std::string effectID;  // an effect catalog id
  std::map<std::string, std::vector<BehaviorKey>> parameters;

  friend bool operator==(const BehaviorEffect&, const BehaviorEffect&) = default;
};

struct Behavior {
  std::string id;  // "category.name"; stable, never reused
  std::string name;
  std::string summary;  // one line for the panel
  BehaviorCategory category = BehaviorCategory::entrance;
  std::string systemImage;  // icon name; the catalog fills in the category's
  std::set<core::LayerKind> applicableKinds = visualKinds();
  BehaviorTiming timing = BehaviorTiming::leading(0.7);
  std::vector<BehaviorTrack> tracks;
  std::vector<BehaviorEffect> effects;
  std::optional<double> fadeInSeconds;
  std::optional<double> fadeOutSeconds;

  // Every kind but audio.
  static std::set<core::LayerKind> visualKinds();
  static std::set<core::LayerKind> allKinds();

  // True when applicableKinds is empty or holds kind.
  bool applies(core::LayerKind kind) const;
  // The composition time of progress p (limited to 0 … 1) on layer; a run
  // longer than the layer is compressed into it, never past its ends.
  core::OVTime timeForProgress(double p, const core::Layer& layer) const;

  friend bool operator==(const Behavior&, const Behavior&) = default;
};

// The payload of a behavior dragged from the panel onto the timeline.
struct BehaviorDrag {
  static constexpr std::string_view contentType = "com.brightfold.orvane.behavior";
  std::string behaviorID;

  friend bool operator==(const BehaviorDrag&, const BehaviorDrag&) = default;
};

// --- The stamping rules ---

// absolute: value. offset: value + reference for two doubles, points, sizes
// or integers; value alone for any other pair.
core::PropertyValue resolve(const core::PropertyValue& value, BehaviorValueMode mode,
                            const core::PropertyValue& reference);

// One keyframe per key, with a fresh id, at the key's time snapped to
// frameRate; a bezier key without handles gets the smooth ones.
std::vector<core::Keyframe> makeKeyframes(const std::vector<BehaviorKey>& keys, const Behavior& behavior,
                                          const core::Layer& layer, BehaviorValueMode valueMode,
                                          const core::PropertyValue& reference, const core::FrameRate& frameRate);

// The property of layer that channel names.
core::AnimatedProperty& property(const BehaviorChannel& channel, core::Layer& layer);
const core::AnimatedProperty& property(const BehaviorChannel& channel, const core::Layer& layer);

// Writes behavior onto layer: each track replaces its channel's keyframes,
// each effect is appended as a new instance (unknown effects and parameters
// skipped), fades are set, and every keyframe is aligned to frameRate.
// Does not look at applicableKinds or isLocked: the caller chooses layers.
void stamp(const Behavior& behavior, core::Layer& layer, const core::FrameRate& frameRate);

}  // namespace orvane::behaviors
