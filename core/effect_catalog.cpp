#include "core/effect_catalog.hpp"

namespace orvane::core {
namespace {

using P = EffectParameterDescriptor;
using Kind = EffectParameterDescriptor::EditorKind;

EffectDescriptor make(std::string id, std::string name, EffectCategory category, std::vector<P> parameters) {
  EffectDescriptor d{std::move(id), std::move(name), category, std::move(parameters), {}};
  d.presets = EffectPresets::presetsFor(d.id);
  return d;
}

std::vector<EffectDescriptor> blurAndColorEffects() {
  using C = EffectCategory;
  return {
      make("blur.gaussian", "Gaussian Blur", C::blur,
           {P::slider("radius", "Radius", 0, 200, 12, true), EffectCatalog::spreadParameter(false)}),
      make("blur.directional", "Directional Blur", C::blur,
           {P::slider("radius", "Length", 0, 200, 20, true), P::angle("angle", "Direction", 0),
            EffectCatalog::spreadParameter(false)}),
      make("sharpen", "Sharpen", C::blur, {P::slider("amount", "Amount", 0, 2, 0.4)}),
      make("color.brightness", "Brightness", C::color, {P::slider("amount", "Brightness", -1, 1, 0)}),
      make("color.contrast", "Contrast", C::color, {P::slider("amount", "Contrast", 0, 4, 1)}),
      make("color.exposure", "Exposure", C::color, {P::slider("ev", "Exposure (EV)", -4, 4, 0)}),
      make("color.saturation", "Saturation", C::color, {P::slider("amount", "Saturation", 0, 3, 1)}),
      make("color.hue", "Hue", C::color, {P::angle("angle", "Hue Shift", 0)}),
      make("color.temperature", "Temperature & Tint", C::color,
           {P::slider("temperature", "Temperature", 2000, 11000, 6500), P::slider("tint", "Tint", -150, 150, 0)}),
  };
}

std::vector<EffectDescriptor> stylizeAndKeyingEffects() {
  using C = EffectCategory;
  return {
      make("color.blackAndWhite", "Black & White", C::stylize, {P::slider("amount", "Amount", 0, 1, 1)}),
      make("stylize.minimax", "Minimax", C::stylize,
           {P::slider("radius", "Radius", 0, 50, 4, true), P::toggle("maximum", "Maximum", true)}),
      make("stylize.dropShadow", "Drop Shadow", C::stylize,
           {P::slider("opacity", "Opacity", 0, 1, 0.65), P::slider("distance", "Distance", 0, 200, 12, true),
            P::angle("direction", "Direction", -135), P::slider("softness", "Softness", 0, 100, 8, true),
            P::color("color", "Color", OVColor{0, 0, 0, 1})}),
      make("stylize.cartoon", "Cartoon", C::stylize, {P::slider("amount", "Amount", 0, 1, 1)}),
      make("stylize.mosaic", "Mosaic", C::stylize, {P::slider("scale", "Block Size", 1, 100, 12, true)}),
      make("stylize.findEdges", "Find Edges", C::stylize,
           {P::slider("intensity", "Intensity", 0, 10, 1), P::toggle("invert", "Invert", false)}),
      make("stylize.posterize", "Posterize", C::stylize, {P::slider("levels", "Levels", 2, 30, 6)}),
      make("stylize.glow", "Glow", C::stylize,
           {P::slider("radius", "Radius", 0, 100, 20, true), P::slider("intensity", "Intensity", 0, 2, 0.6),
            EffectCatalog::spreadParameter(true)}),
      make("key.chroma", "Chroma Key", C::keying,
           {P::color("keyColor", "Key Color", OVColor{0.1, 0.8, 0.2, 1}),
            P::slider("threshold", "Similarity", 0, 1, 0.3), P::slider("softness", "Softness", 0, 1, 0.1),
            P::toggle("invert", "Invert Matte", false)}),
      make("key.luma", "Luma Key", C::keying,
           {P::slider("threshold", "Threshold", 0, 1, 0.5), P::slider("softness", "Softness", 0, 1, 0.1),
            P::toggle("keyOutDarker", "Key Out Darker", true)}),
  };
}

std::vector<EffectDescriptor> buildCatalog() {
  auto all = blurAndColorEffects();
  for (auto& d : stylizeAndKeyingEffects()) all.push_back(std::move(d));
  return all;
}

}  // namespace

std::string_view symbolName(EffectCategory category) {
  switch (category) {
    case EffectCategory::blur: return "drop";
    case EffectCategory::color: return "paintpalette";
    case EffectCategory::stylize: return "paintbrush.pointed";
    case EffectCategory::keying: return "viewfinder";
  }
  return {};
}

// ------------------------------------------------------------ parameters

P P::slider(std::string id, std::string name, double minimum, double maximum, double defaultValue,
            bool scalesWithResolution) {
  return {std::move(id), std::move(name), PropertyValue::double_(defaultValue), Editor{Kind::slider, minimum, maximum},
          scalesWithResolution};
}

P P::angle(std::string id, std::string name, double defaultValue) {
  return {std::move(id), std::move(name), PropertyValue::double_(defaultValue), Editor{Kind::angle}, false};
}

P P::toggle(std::string id, std::string name, bool defaultValue) {
  return {std::move(id), std::move(name), PropertyValue::bool_(defaultValue), Editor{Kind::toggle}, false};
}

P P::color(std::string id, std::string name, OVColor defaultValue) {
  return {std::move(id), std::move(name), PropertyValue::color(defaultValue), Editor{Kind::color}, false};
}

// ------------------------------------------------------------ descriptor

const P* EffectDescriptor::parameter(std::string_view parameterID) const {
  for (const auto& p : parameters)
    if (p.id == parameterID) return &p;
  return nullptr;
}

EffectInstance EffectDescriptor::makeInstance() const {
  EffectInstance instance;
  instance.id = Uuid::make();
  instance.effectID = id;
  instance.isEnabled = true;
  return instance;
}

std::map<std::string, AnimatedProperty> EffectDescriptor::makeDefaultParameters() const {
  std::map<std::string, AnimatedProperty> out;
  for (const auto& p : parameters) out.emplace(p.id, AnimatedProperty(p.defaultValue));
  return out;
}

// --------------------------------------------------------------- catalog

// Function-local statics: built once on first use, thread-safe by the
// language's rules for static initialisation, never changed afterwards.
const std::vector<EffectDescriptor>& EffectCatalog::all() {
  static const std::vector<EffectDescriptor> catalog = buildCatalog();
  return catalog;
}

const std::map<std::string, const EffectDescriptor*, std::less<>>& EffectCatalog::index() {
  static const auto byID = [] {
    std::map<std::string, const EffectDescriptor*, std::less<>> m;
    for (const auto& d : all()) m.emplace(d.id, &d);
    return m;
  }();
  return byID;
}

const EffectDescriptor* EffectCatalog::descriptorFor(std::string_view id) {
  const auto& m = index();
  const auto it = m.find(id);
  return it == m.end() ? nullptr : it->second;
}

std::vector<const EffectDescriptor*> EffectCatalog::descriptorsIn(EffectCategory category) {
  std::vector<const EffectDescriptor*> out;
  for (const auto& d : all())
    if (d.category == category) out.push_back(&d);
  return out;
}

P EffectCatalog::spreadParameter(bool defaultValue) {
  return P::toggle("spread", "Spread Outside Box", defaultValue);
}

}  // namespace orvane::core
