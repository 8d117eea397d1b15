#pragma once
// The built-in visual effects as data: ids, names, categories, parameters
// with their editors, ranges and defaults, and the named presets of each.
// A layer's EffectInstance refers to a descriptor by id; those ids and the
// parameter ids are stored in project files and never change. The pixels of
// each effect live with the renderer, which looks its kernel up by the same
// id. Immutable after first use; any thread may read it.

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/animated_property.hpp"
#include "core/enum_text.hpp"
#include "core/layer_parts.hpp"
#include "core/property_value.hpp"

namespace orvane::core {

enum class EffectCategory { blur, color, stylize, keying };

// The raw value is the text shown.
template <>
struct EnumTable<EffectCategory> {
  using C = EffectCategory;
  static constexpr std::array<EnumEntry<C>, 4> entries{{
      {C::blur, "Blur & Sharpen", "Blur & Sharpen"},
      {C::color, "Colour Correction", "Colour Correction"},
      {C::stylize, "Stylize", "Stylize"},
      {C::keying, "Keying", "Keying"},
  }};
};
std::string_view symbolName(EffectCategory category);

struct EffectParameterDescriptor {
  enum class EditorKind { slider, angle, toggle, color, point };
  struct Editor {
    EditorKind kind = EditorKind::slider;
    double minimum = 0;  // slider only
    double maximum = 0;  // slider only
    friend bool operator==(const Editor&, const Editor&) = default;
  };

  std::string id;
  std::string name;
  PropertyValue defaultValue;
  Editor editor;
  // The value is in pixels: it is multiplied by the render scale when used.
  bool scalesWithResolution = false;

  static EffectParameterDescriptor slider(std::string id, std::string name, double minimum, double maximum,
                                          double defaultValue, bool scalesWithResolution = false);
  // In degrees.
  static EffectParameterDescriptor angle(std::string id, std::string name, double defaultValue);
  static EffectParameterDescriptor toggle(std::string id, std::string name, bool defaultValue = false);
  static EffectParameterDescriptor color(std::string id, std::string name, OVColor defaultValue);

  friend bool operator==(const EffectParameterDescriptor&, const EffectParameterDescriptor&) = default;
};

// A named starting point: only the parameters it changes.
struct EffectPreset {
  std::string name;
  std::map<std::string, PropertyValue> values;
  friend bool operator==(const EffectPreset&, const EffectPreset&) = default;
};

struct EffectDescriptor {
  std::string id;
  std::string name;
  EffectCategory category = EffectCategory::blur;
  std::vector<EffectParameterDescriptor> parameters;
  std::vector<EffectPreset> presets;

  const EffectParameterDescriptor* parameter(std::string_view parameterID) const;
  // A new instance of this effect: fresh id, enabled, no parameter stored
  // (each reads as its default until first changed).
  EffectInstance makeInstance() const;
  // Every parameter as an unanimated property at its default.
  std::map<std::string, AnimatedProperty> makeDefaultParameters() const;

  friend bool operator==(const EffectDescriptor&, const EffectDescriptor&) = default;
};

struct EffectCatalog {
  // The nineteen effects in catalog order, presets attached.
  static const std::vector<EffectDescriptor>& all();
  static const std::map<std::string, const EffectDescriptor*, std::less<>>& index();
  // Null for an unknown id.
  static const EffectDescriptor* descriptorFor(std::string_view id);
  static std::vector<const EffectDescriptor*> descriptorsIn(EffectCategory category);
  // "spread" "Spread Outside Box": shared by the blurs and the glow.
  static EffectParameterDescriptor spreadParameter(bool defaultValue);
};

struct EffectPresets {
  // In table order; empty for an unknown id and for "color.hue".
  static std::vector<EffectPreset> presetsFor(std::string_view effectID);
};

}  // namespace orvane::core
