#pragma once
// One item on a timeline: a clip or a generated element. The same record
// serves compositions and sequences. Its time range and every keyframe in it
// run on the composition clock; only `sourceStart` is on the source's clock.
// Plain value; its lists are shared copy-on-write.

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "core/animated_property.hpp"
#include "core/layer_content.hpp"
#include "core/layer_parts.hpp"
#include "core/layer_style.hpp"
#include "core/marker.hpp"
#include "core/shared_vector.hpp"

namespace orvane::core {

struct OVProject;

struct Layer {
  Uuid id = Uuid::make();
  std::string name;
  LayerContent content;
  OVTimeRange timeRange;
  OVTime sourceStart;
  bool isEnabled = true;
  bool isLocked = false;
  bool isSolo = false;
  bool usesSourceAudio = true;
  OVTime fadeIn;
  OVTime fadeOut;
  OVBlendMode blendMode = OVBlendMode::normal;
  LayerTransform transform;
  LayerCrop crop;
  SharedVector<LayerMask> masks;
  SharedVector<EffectInstance> effects;
  AudioProperties audio;
  std::optional<Uuid> parentLayerID;
  LayerLabelColor labelColor = LayerLabelColor::none;
  SharedVector<Marker> markers;
  bool isExpandedInTimeline = false;
  std::optional<Uuid> trackID;
  AnimatedProperty textReveal = AnimatedProperty::double_(100);  // percent of a text that shows
  bool crossfadeIn = false;   // fadeIn came from an overlap in a sequence
  bool crossfadeOut = false;  // fadeOut came from an overlap in a sequence

  // A record with every field at its default and no label colour.
  Layer() = default;
  // A new layer: fresh id, the suggested label colour of its kind.
  Layer(std::string name, LayerContent content, OVTimeRange timeRange);

  // --- Queries ---
  LayerKind kind() const { return content.kind(); }
  bool isVisual() const { return content.isVisual(); }
  // Can produce audio, is not muted, and (for video) uses its source audio.
  bool contributesAudio() const;
  bool isActiveAt(const OVTime& t) const { return isEnabled && timeRange.contains(t); }
  // The source time shown at composition time t.
  OVTime sourceTimeForComposition(const OVTime& t) const { return sourceStart + (t - timeRange.start); }
  // The nested composition's name for a precomposition layer, else the name.
  std::string displayNameIn(const OVProject& project) const;
  // Linear fade-in and fade-out ramps multiplied; 0 outside the time range.
  double fadeMultiplierAt(const OVTime& t) const;
  // Whether a change of this layer needs the media composition rebuilt:
  // true for footage and nested compositions.
  bool affectsCompositionStructure() const;

  // --- Edits (the document wraps them with undo) ---
  // Moves the start by delta but not before floor; keyframes follow.
  void moveBy(const OVTime& delta, const OVTime& notBefore = OVTime::zero);
  void moveTo(const OVTime& t, const OVTime& notBefore = OVTime::zero);
  void shiftKeyframesBy(const OVTime& delta);
  void alignKeyframesTo(const FrameRate& rate);
  // Visits transform channels, crop edges, each mask's path then feather,
  // each effect's parameters, volume, pan and text reveal, with write-back.
  void forEachAnimatedProperty(const std::function<void(AnimatedProperty&)>& body);
  void forEachAnimatedProperty(const std::function<void(const AnimatedProperty&)>& body) const;

  void trimStartTo(const OVTime& t, const OVTime& minimumDuration);
  void trimEndTo(const OVTime& t, const OVTime& minimumDuration,
                 const std::optional<OVTime>& maximumSource = std::nullopt);
  void setFadeIn(const OVTime& v);
  void setFadeOut(const OVTime& v);
  void clampFadesToDuration();
  // Head and tail of a cut at t, or no value when t is within
  // minimumDuration of either end.
  std::optional<std::pair<Layer, Layer>> splitAt(const OVTime& t, const OVTime& minimumDuration) const;

  friend bool operator==(const Layer&, const Layer&) = default;
};

std::size_t hashValue(const Layer& layer);

}  // namespace orvane::core
