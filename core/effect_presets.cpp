#include "core/effect_catalog.hpp"

namespace orvane::core {
namespace {

PropertyValue num(double v) { return PropertyValue::double_(v); }
PropertyValue flag(bool v) { return PropertyValue::bool_(v); }
PropertyValue rgb(double r, double g, double b) { return PropertyValue::color(OVColor{r, g, b, 1}); }

using Table = std::map<std::string, std::vector<EffectPreset>, std::less<>>;

void addBlurAndColor(Table& t) {
  t["blur.gaussian"] = {{"Soft", {{"radius", num(6)}}},
                        {"Medium", {{"radius", num(20)}}},
                        {"Heavy", {{"radius", num(60)}}},
                        {"Dreamy", {{"radius", num(30)}, {"spread", flag(true)}}}};
  t["blur.directional"] = {{"Pan", {{"radius", num(30)}, {"angle", num(0)}}},
                           {"Tilt", {{"radius", num(30)}, {"angle", num(90)}}},
                           {"Diagonal", {{"radius", num(40)}, {"angle", num(45)}}},
                           {"Speed", {{"radius", num(120)}, {"spread", flag(true)}}}};
  t["sharpen"] = {{"Light", {{"amount", num(0.3)}}},
                  {"Crisp", {{"amount", num(0.8)}}},
                  {"Extreme", {{"amount", num(1.8)}}}};
  t["color.brightness"] = {{"Darker", {{"amount", num(-0.3)}}},
                           {"Lift", {{"amount", num(0.15)}}},
                           {"Bright", {{"amount", num(0.4)}}}};
  t["color.contrast"] = {{"Flat", {{"amount", num(0.7)}}},
                         {"Punchy", {{"amount", num(1.4)}}},
                         {"Hard", {{"amount", num(2.2)}}}};
  t["color.saturation"] = {{"Muted", {{"amount", num(0.5)}}},
                           {"Mono", {{"amount", num(0)}}},
                           {"Vivid", {{"amount", num(1.6)}}},
                           {"Pop", {{"amount", num(2.4)}}}};
  // The first name starts with U+2212 MINUS SIGN, as shown.
  t["color.exposure"] = {{"\u2212" "1 EV", {{"ev", num(-1)}}},
                         {"+1 EV", {{"ev", num(1)}}},
                         {"+2 EV", {{"ev", num(2)}}}};
  t["color.temperature"] = {{"Warm", {{"temperature", num(4200)}}},
                            {"Golden", {{"temperature", num(3200)}, {"tint", num(20)}}},
                            {"Cool", {{"temperature", num(9000)}}},
                            {"Teal", {{"temperature", num(10500)}, {"tint", num(-60)}}},
                            {"Magenta", {{"temperature", num(6500)}, {"tint", num(90)}}}};
}

void addStylizeAndKeying(Table& t) {
  t["color.blackAndWhite"] = {{"Half", {{"amount", num(0.5)}}}, {"Full", {{"amount", num(1)}}}};
  t["stylize.dropShadow"] = {
      {"Soft", {{"distance", num(8)}, {"softness", num(14)}, {"opacity", num(0.5)}}},
      {"Hard", {{"distance", num(10)}, {"softness", num(0)}, {"opacity", num(0.8)}}},
      {"Long", {{"distance", num(40)}, {"softness", num(20)}, {"opacity", num(0.6)}}},
      {"Glow Under", {{"distance", num(0)}, {"softness", num(30)}, {"opacity", num(0.7)}}}};
  t["stylize.glow"] = {{"Subtle", {{"radius", num(10)}, {"intensity", num(0.4)}}},
                       {"Bloom", {{"radius", num(30)}, {"intensity", num(0.8)}}},
                       {"Neon", {{"radius", num(60)}, {"intensity", num(1.6)}}}};
  t["stylize.cartoon"] = {{"Light", {{"amount", num(0.4)}}}, {"Full", {{"amount", num(1)}}}};
  t["stylize.mosaic"] = {{"Fine", {{"scale", num(6)}}},
                         {"Medium", {{"scale", num(16)}}},
                         {"Coarse", {{"scale", num(40)}}}};
  t["stylize.findEdges"] = {{"Outline", {{"intensity", num(1)}}},
                            {"Ink", {{"intensity", num(3)}, {"invert", flag(true)}}}};
  t["stylize.posterize"] = {{"2", {{"levels", num(2)}}}, {"4", {{"levels", num(4)}}}, {"8", {{"levels", num(8)}}}};
  t["stylize.minimax"] = {{"Grow", {{"radius", num(6)}, {"maximum", flag(true)}}},
                          {"Shrink", {{"radius", num(6)}, {"maximum", flag(false)}}}};
  t["key.chroma"] = {{"Green", {{"keyColor", rgb(0.1, 0.8, 0.2)}}}, {"Blue", {{"keyColor", rgb(0.05, 0.25, 0.9)}}}};
  t["key.luma"] = {{"Darks", {{"threshold", num(0.3)}, {"keyOutDarker", flag(true)}}},
                   {"Lights", {{"threshold", num(0.7)}, {"keyOutDarker", flag(false)}}}};
}

const Table& table() {
  static const Table presets = [] {
    Table t;
    addBlurAndColor(t);
    addStylizeAndKeying(t);
    return t;
  }();
  return presets;
}

}  // namespace

std::vector<EffectPreset> EffectPresets::presetsFor(std::string_view effectID) {
  const auto& t = table();
  const auto it = t.find(effectID);
  return it == t.end() ? std::vector<EffectPreset>{} : it->second;
}

}  // namespace orvane::core
