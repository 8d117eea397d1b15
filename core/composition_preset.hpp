#pragma once
// Ready-made composition sizes and rates for the new-composition picker, and
// the defaults that new layers are made with.

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "core/composition.hpp"
#include "core/enum_text.hpp"

namespace orvane::core {

struct CompositionPreset {
  enum class Group { youTube, socialMedia, general, custom };

  std::string id;
  std::string name;
  Group group = Group::general;
  OVSize size;
  FrameRate frameRate;
  OVTime duration;
  std::string detail;  // "1920 × 1080 · 30 fps" when not given

  CompositionPreset() = default;
  CompositionPreset(std::string id, std::string name, Group group, double width, double height,
                    FrameRate rate, double seconds = 10, std::string detail = {});

  // The presets in picker order.
  static const std::vector<CompositionPreset>& all();
  // Full HD 1080p.
  static const CompositionPreset& defaultPreset();
  // The first preset whose size equals the rounded width and height.
  static std::optional<CompositionPreset> matching(double width, double height);

  // A composition of this size, rate and duration, its work area the whole
  // duration; tracks stay empty.
  Composition makeComposition(std::string name, EditingMode mode = EditingMode::layers) const;

  friend bool operator==(const CompositionPreset&, const CompositionPreset&) = default;
};

template <>
struct EnumTable<CompositionPreset::Group> {
  using G = CompositionPreset::Group;
  static constexpr std::array<EnumEntry<G>, 4> entries{{
      {G::youTube, "YouTube", "YouTube"},
      {G::socialMedia, "Social Media", "Social Media"},
      {G::general, "General", "General"},
      {G::custom, "Custom", "Custom"},
  }};
};

namespace ProjectDefaults {
inline const OVTime stillDuration{5 * OVTime::defaultTimescale, OVTime::defaultTimescale};
inline constexpr double solidSizeFraction = 1.0;
inline constexpr std::string_view textLayerName = "Text";
inline constexpr std::string_view shapeLayerName = "Shape";
inline constexpr std::string_view solidLayerName = "Solid";
}  // namespace ProjectDefaults

}  // namespace orvane::core
