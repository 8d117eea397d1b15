#include "core/layer_style.hpp"

namespace orvane::core {

OVColor color(LayerLabelColor label) {
  switch (label) {
    case LayerLabelColor::none: return {0.42, 0.45, 0.5, 1};
    case LayerLabelColor::blue: return {0.25, 0.55, 0.96, 1};
    case LayerLabelColor::teal: return {0.18, 0.7, 0.72, 1};
    case LayerLabelColor::green: return {0.3, 0.72, 0.4, 1};
    case LayerLabelColor::yellow: return {0.93, 0.78, 0.25, 1};
    case LayerLabelColor::orange: return {0.95, 0.58, 0.24, 1};
    case LayerLabelColor::red: return {0.92, 0.34, 0.34, 1};
    case LayerLabelColor::purple: return {0.62, 0.42, 0.93, 1};
  }
  return {0.42, 0.45, 0.5, 1};
}

LayerLabelColor suggestedLabelColorFor(LayerKind kind) {
  switch (kind) {
    case LayerKind::video: return LayerLabelColor::blue;
    case LayerKind::audio: return LayerLabelColor::green;
    case LayerKind::image: return LayerLabelColor::purple;
    case LayerKind::text: return LayerLabelColor::yellow;
    case LayerKind::shape: return LayerLabelColor::teal;
    case LayerKind::solid: return LayerLabelColor::orange;
    case LayerKind::adjustment: return LayerLabelColor::red;
    case LayerKind::precomposition: return LayerLabelColor::blue;
  }
  return LayerLabelColor::none;
}

std::string_view blendFilterName(OVBlendMode mode) {
  switch (mode) {
    case OVBlendMode::normal: return {};
    case OVBlendMode::multiply: return "CIMultiplyBlendMode";
    case OVBlendMode::screen: return "CIScreenBlendMode";
    case OVBlendMode::overlay: return "CIOverlayBlendMode";
    case OVBlendMode::softLight: return "CISoftLightBlendMode";
    case OVBlendMode::hardLight: return "CIHardLightBlendMode";
    case OVBlendMode::darken: return "CIDarkenBlendMode";
    case OVBlendMode::lighten: return "CILightenBlendMode";
    case OVBlendMode::difference: return "CIDifferenceBlendMode";
    case OVBlendMode::add: return "CIAdditionCompositing";
  }
  return {};
}

}  // namespace orvane::core
