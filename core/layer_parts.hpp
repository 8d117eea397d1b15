#pragma once
// The animated parts of a layer: transform, crop, masks, effects and audio.
// Every keyframe in them runs on the composition clock. Plain values.

#include <algorithm>
#include <array>
#include <map>
#include <string>

#include "core/affine.hpp"
#include "core/animated_property.hpp"
#include "core/enum_text.hpp"
#include "core/mask_path.hpp"
#include "core/uuid.hpp"

namespace orvane::core {

// ---------------------------------------------------------------- transform

struct LayerTransform {
  enum class Channel { position, scale, rotation, anchorPoint, opacity, skew };

  // The values at one time.
  struct Resolved {
    OVPoint position;
    OVPoint scale{100, 100};
    double rotationDegrees = 0;
    OVPoint anchorPoint{0.5, 0.5};
    double opacity = 100;
    double skewDegrees = 0;
    bool flipHorizontally = false;
    bool flipVertically = false;

    friend bool operator==(const Resolved&, const Resolved&) = default;
  };

  AnimatedProperty position = AnimatedProperty::point(0, 0);        // composition pixels
  AnimatedProperty scale = AnimatedProperty::point(100, 100);       // percent per axis
  AnimatedProperty rotation = AnimatedProperty::double_(0);         // degrees
  AnimatedProperty anchorPoint = AnimatedProperty::point(0.5, 0.5); // fraction of the layer size
  AnimatedProperty opacity = AnimatedProperty::double_(100);        // percent
  AnimatedProperty skew = AnimatedProperty::double_(0);             // degrees
  bool flipHorizontally = false;
  bool flipVertically = false;

  // The default transform with its position at the centre of size.
  static LayerTransform centeredIn(const OVSize& size);

  AnimatedProperty& operator[](Channel c);
  const AnimatedProperty& operator[](Channel c) const;
  bool isAnimated() const;

  Resolved resolvedAt(const OVTime& t) const;
  // Translate by position, rotate, skew, then scale (with flips): the matrix
  // children compose with. It carries no anchor offset.
  Affine2D pivotTransformAt(const OVTime& t) const;
  // The pivot transform translated by −anchor × layerSize: layer space to the
  // parent's space, the anchor landing on position.
  Affine2D affineTransformAt(const OVTime& t, const OVSize& layerSize) const;

  friend bool operator==(const LayerTransform&, const LayerTransform&) = default;
};

template <>
struct EnumTable<LayerTransform::Channel> {
  using C = LayerTransform::Channel;
  static constexpr std::array<EnumEntry<C>, 6> entries{{
      {C::position, "position", "Position"},
      {C::scale, "scale", "Scale"},
      {C::rotation, "rotation", "Rotation"},
      {C::anchorPoint, "anchorPoint", "Anchor Point"},
      {C::opacity, "opacity", "Opacity"},
      {C::skew, "skew", "Skew"},
  }};
};

std::size_t hashValue(const LayerTransform& t);

// --------------------------------------------------------------------- crop

// Distances cut from each edge, in layer units.
struct LayerCrop {
  enum class Edge { left, top, right, bottom };

  static const LayerCrop zero;

  AnimatedProperty left = AnimatedProperty::double_(0);
  AnimatedProperty top = AnimatedProperty::double_(0);
  AnimatedProperty right = AnimatedProperty::double_(0);
  AnimatedProperty bottom = AnimatedProperty::double_(0);

  AnimatedProperty& operator[](Edge e);
  const AnimatedProperty& operator[](Edge e) const;
  // Some edge evaluates above half a unit at t.
  bool isActiveAt(const OVTime& t) const;
  // What the crop keeps of a layer of layerSize at t, in layer units (y up):
  // edges floored at 0, never narrower or lower than 1 unit.
  OVRect sourceRectAt(const OVTime& t, const OVSize& layerSize) const;

  friend bool operator==(const LayerCrop&, const LayerCrop&) = default;
};
inline const LayerCrop LayerCrop::zero{};

template <>
struct EnumTable<LayerCrop::Edge> {
  using E = LayerCrop::Edge;
  static constexpr std::array<EnumEntry<E>, 4> entries{{
      {E::left, "left", "Left"}, {E::top, "top", "Top"}, {E::right, "right", "Right"}, {E::bottom, "bottom", "Bottom"}}};
};

std::size_t hashValue(const LayerCrop& c);

// -------------------------------------------------------------------- masks

struct LayerMask {
  Uuid id = Uuid::make();
  std::string name = "Mask";
  bool isEnabled = true;
  bool inverted = false;
  AnimatedProperty path{PropertyValue::maskPath(MaskPath{})};
  AnimatedProperty feather = AnimatedProperty::double_(0);

  // Never below 0.
  double featherValueAt(const OVTime& t) const { return std::max(0.0, feather.doubleValueAt(t, 0)); }
  // The path at t; an empty closed path when the value is no mask path.
  MaskPath pathValueAt(const OVTime& t) const;

  friend bool operator==(const LayerMask&, const LayerMask&) = default;
};

std::size_t hashValue(const LayerMask& m);

// ------------------------------------------------------------------ effects

struct EffectInstance {
  Uuid id = Uuid::make();
  std::string effectID;  // key into the effect catalog
  bool isEnabled = true;
  std::map<std::string, AnimatedProperty> parameters;

  bool isAnimated() const;

  friend bool operator==(const EffectInstance&, const EffectInstance&) = default;
};

std::size_t hashValue(const EffectInstance& e);

// -------------------------------------------------------------------- audio

enum class AudioPitchMode { keepDuration, linked };

template <>
struct EnumTable<AudioPitchMode> {
  using P = AudioPitchMode;
  static constexpr std::array<EnumEntry<P>, 2> entries{{
      {P::keepDuration, "keepDuration", "Pitch only"}, {P::linked, "linked", "Pitch + Speed"}}};
};
// The explanation shown with a pitch mode; empty when there is none.
std::string_view helpText(AudioPitchMode mode);

struct AudioProperties {
  AnimatedProperty volume = AnimatedProperty::double_(100);  // percent
  AnimatedProperty pan = AnimatedProperty::double_(0);
  bool isMuted = false;
  double normalizeGain = 1;  // linear factor written by the normaliser
  double echoMix = 0;
  double echoDelayMs = 180;
  double echoFeedback = 35;
  double reverbMix = 0;
  double reverbDecay = 50;
  double pitchSemitones = 0;
  double pitchCents = 0;
  AudioPitchMode pitchMode = AudioPitchMode::keepDuration;

  // 2^((semitones + cents / 100) / 12).
  double pitchRatio() const;
  bool hasPitchShift() const;
  bool needsProcessingTap() const;
  bool isAnimated() const { return volume.isAnimated() || pan.isAnimated(); }

  friend bool operator==(const AudioProperties&, const AudioProperties&) = default;
};

std::size_t hashValue(const AudioProperties& a);

}  // namespace orvane::core
