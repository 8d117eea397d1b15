#include "assistant/ai_project_context.hpp"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <vector>

#include "assistant/ai_number_text.hpp"
#include "behaviors/behavior_catalog.hpp"
#include "core/effect_catalog.hpp"
#include "core/enum_text.hpp"

namespace orvane::assistant {
namespace {

using core::rawValue;

constexpr std::size_t kMaxListedAssets = 80;

// The fixed instructions; the state text follows the last line's newline.
constexpr std::string_view kInstructionLines[] = {
    "You are Orvane\u2019s composition assistant. You edit the open project using tools.",
    "",
    "Rules:",
    "- Prefer tools over prose when changing the project.",
    "- Use existing media from the library (add_media_layer) \u2014 never invent file paths.",
    "- Keep layer counts reasonable; do not spam layers.",
    "- After edits, briefly confirm what you did.",
    "- Times are in seconds. Scale is percent (100 = 100%). Opacity is 0\u2013100.",
    "- Position is the layer's anchor in composition pixels with the origin at the",
    "  BOTTOM-LEFT: y increases upwards, so the top edge of a 1080-high composition is y=1080",
    "  and the centre is (width/2, height/2).",
    "- To animate, call add_keyframe for each property at two or more times (e.g. opacity 0 at",
    "  0 s and 100 at 1 s for a fade-in, or position at start and end for a move). Behaviors",
    "  are ready-made animations; prefer them for common moves.",
    "- Transparent output: set update_composition transparent=true when the user wants",
    "  the background see-through (they can then export ProRes 4444 / HEVC with alpha).",
    "- Effect parameters: use the ids listed under Available effects; bools take true/false,",
    "  colours take {r,g,b,a} in 0\u20131.",
    "",
    "Current project state:",
};

std::string sizeText(const core::OVSize& size) { return integerText(size.width) + "x" + integerText(size.height); }

std::string joined(const std::vector<std::string>& parts, std::string_view separator) {
  std::string out;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) out += separator;
    out += parts[i];
  }
  return out;
}

std::string layerLine(const core::Layer& layer, const core::OVProject& project) {
  std::vector<std::string> parts{
      "- id=" + layer.id.text(),
      "name=\"" + layer.displayNameIn(project) + "\"",
      "kind=" + std::string(rawValue(layer.kind())),
      "start=" + decimalText(layer.timeRange.start.seconds()),
      "duration=" + decimalText(layer.timeRange.duration.seconds()),
  };
  if (const auto assetID = layer.content.assetID()) parts.push_back("asset_id=" + assetID->text());
  if (layer.blendMode != core::OVBlendMode::normal) parts.push_back("blend=" + std::string(rawValue(layer.blendMode)));

  std::vector<std::string> animated;
  for (const auto channel : core::allCases<core::LayerTransform::Channel>()) {
    if (layer.transform[channel].isAnimated()) animated.emplace_back(rawValue(channel));
  }
  if (!animated.empty()) parts.push_back("animated=[" + joined(animated, ",") + "]");

  if (!layer.effects.empty()) {
    std::vector<std::string> effects;
    for (const auto& effect : layer.effects) effects.push_back(effect.effectID + "@" + effect.id.text());
    parts.push_back("effects=[" + joined(effects, ",") + "]");
  }
  return joined(parts, " ");
}

void appendActiveComposition(std::vector<std::string>& lines, const core::OVProject& project) {
  const core::Composition* composition = project.activeComposition();
  if (composition == nullptr) {
    lines.emplace_back("No active composition.");
    return;
  }
  std::string mode = "editing_mode: " + std::string(rawValue(composition->editingMode));
  if (composition->isSequence()) {
    std::vector<std::string> tracks;
    for (const auto& track : composition->tracks) tracks.push_back(track.name);
    mode += " (tracks: " + joined(tracks, ",") +
            "; clips on a track never overlap \u2014 new clips go after the last one)";
  }
  lines.emplace_back("## Active composition");
  lines.push_back("id: " + composition->id.text());
  lines.push_back("name: " + composition->name);
  lines.push_back("size: " + sizeText(composition->size));
  lines.push_back(std::string("transparent_background: ") + (composition->isTransparent ? "true" : "false"));
  lines.push_back(std::move(mode));
  lines.push_back("duration_seconds: " + decimalText(composition->duration.seconds()));
  lines.push_back("frame_rate: " + composition->frameRate.displayName());
  lines.push_back("layers (" + std::to_string(composition->layers.size()) + "):");
  for (const auto& layer : composition->layers) lines.push_back(layerLine(layer, project));
}

void appendMediaLibrary(std::vector<std::string>& lines, const core::OVProject& project) {
  lines.emplace_back("## Media library");
  if (project.assets.empty()) {
    lines.emplace_back("(empty)");
    return;
  }
  std::size_t listed = 0;
  for (const auto& asset : project.assets) {
    if (listed == kMaxListedAssets) break;
    ++listed;
    lines.push_back("- id=" + asset.id.text() + " name=\"" + asset.name + "\" kind=" +
                    std::string(rawValue(asset.kind)) + " file=" + asset.fileName() + " " +
                    sizeText(asset.naturalSize) + " duration=" + decimalText(asset.duration.seconds()) + "s");
  }
  if (project.assets.size() > listed) {
    lines.push_back("\u2026 " + std::to_string(project.assets.size() - listed) + " more");
  }
}

std::string parameterText(const core::EffectParameterDescriptor& parameter) {
  using Kind = core::EffectParameterDescriptor::EditorKind;
  switch (parameter.editor.kind) {
    case Kind::slider:
      return parameter.id + "=number " + decimalText(parameter.editor.minimum) + "\u2026" +
             decimalText(parameter.editor.maximum);
    case Kind::angle: return parameter.id + "=degrees";
    case Kind::toggle: return parameter.id + "=bool";
    case Kind::color: return parameter.id + "=color{r,g,b,a}";
    case Kind::point: return parameter.id + "=point{x,y}";
  }
  return parameter.id;
}

void appendEffects(std::vector<std::string>& lines) {
  lines.emplace_back("## Available effects (id: parameter ids with type and range)");
  for (const auto& effect : core::EffectCatalog::all()) {
    std::vector<std::string> parameters;
    for (const auto& parameter : effect.parameters) parameters.push_back(parameterText(parameter));
    lines.push_back("- " + effect.id + " [" + std::string(rawValue(effect.category)) + "]: " +
                    joined(parameters, ", "));
  }
}

void appendBlendModes(std::vector<std::string>& lines) {
  lines.emplace_back("## Blend modes");
  std::vector<std::string> modes;
  for (const auto mode : core::allCases<core::OVBlendMode>()) modes.emplace_back(rawValue(mode));
  lines.push_back(joined(modes, ", "));
}

void appendBehaviors(std::vector<std::string>& lines) {
  lines.emplace_back("## Available behavior ids");
  std::vector<std::string> ids;
  for (const auto& behavior : behaviors::BehaviorCatalog::all()) ids.push_back(behavior.id);
  lines.push_back(joined(ids, ", "));
}

}  // namespace

std::string AIProjectContext::systemPrompt(const core::OVProject& project) {
  std::string prompt;
  for (const auto line : kInstructionLines) {
    prompt += line;
    prompt += '\n';
  }
  return prompt + build(project);
}

std::string AIProjectContext::build(const core::OVProject& project) {
  std::vector<std::string> lines{
      "## Project",
      "Compositions: " + std::to_string(project.compositions.size()),
      "Media assets: " + std::to_string(project.assets.size()),
      "",
  };
  appendActiveComposition(lines, project);
  lines.emplace_back("");
  appendMediaLibrary(lines, project);
  lines.emplace_back("");
  appendEffects(lines);
  lines.emplace_back("");
  appendBlendModes(lines);
  lines.emplace_back("");
  appendBehaviors(lines);
  return joined(lines, "\n");
}

}  // namespace orvane::assistant
