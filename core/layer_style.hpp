#pragma once
// Label colours and blend modes of layers.

#include <array>
#include <string_view>

#include "core/enum_text.hpp"
#include "core/geometry.hpp"
#include "core/layer_content.hpp"

namespace orvane::core {

enum class LayerLabelColor { none, blue, teal, green, yellow, orange, red, purple };

template <>
struct EnumTable<LayerLabelColor> {
  using L = LayerLabelColor;
  static constexpr std::array<EnumEntry<L>, 8> entries{{
      {L::none, "none", "None"},
      {L::blue, "blue", "Blue"},
      {L::teal, "teal", "Teal"},
      {L::green, "green", "Green"},
      {L::yellow, "yellow", "Yellow"},
      {L::orange, "orange", "Orange"},
      {L::red, "red", "Red"},
      {L::purple, "purple", "Purple"},
  }};
};

// The swatch of a label.
OVColor color(LayerLabelColor label);
// The label a new layer of this kind gets.
LayerLabelColor suggestedLabelColorFor(LayerKind kind);

enum class OVBlendMode { normal, multiply, screen, overlay, softLight, hardLight, darken, lighten, difference, add };

template <>
struct EnumTable<OVBlendMode> {
  using B = OVBlendMode;
  static constexpr std::array<EnumEntry<B>, 10> entries{{
      {B::normal, "normal", "Normal"},
      {B::multiply, "multiply", "Multiply"},
      {B::screen, "screen", "Screen"},
      {B::overlay, "overlay", "Overlay"},
      {B::softLight, "softLight", "Soft Light"},
      {B::hardLight, "hardLight", "Hard Light"},
      {B::darken, "darken", "Darken"},
      {B::lighten, "lighten", "Lighten"},
      {B::difference, "difference", "Difference"},
      {B::add, "add", "Add"},
  }};
};

// The compositing filter that renders the mode; empty for normal.
std::string_view blendFilterName(OVBlendMode mode);

}  // namespace orvane::core
