// The tools that work on compositions as a whole and on the selection:
// create_composition, update_composition, delete_layers, select_layers.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "assistant/ai_tool_handlers.hpp"
#include "core/composition_preset.hpp"

namespace orvane::assistant::tools {

namespace {

constexpr double kMinimumDimension = 16;
// Far beyond any picture the renderer can make, and still an exact integer
// for the result text.
constexpr double kMaximumDimension = 100000;

double dimension(const Args& args, const char* key, double fallback) {
  const double value = std::max(kMinimumDimension, args.double_(key).value_or(fallback));
  if (value > kMaximumDimension) throw ToolError("Number out of range for '" + std::string(key) + "'.");
  return value;
}


}  // namespace

std::string createComposition(ToolContext& context) {
  const Args& args = context.args;
  const core::CompositionPreset& base = core::CompositionPreset::defaultPreset();
  const double width = dimension(args, "width", base.size.width);
  const double height = dimension(args, "height", base.size.height);
  const double seconds = std::max(0.1, args.double_("duration_seconds").value_or(base.duration.seconds()));
  timeFromSeconds(seconds, "duration_seconds");
  const core::FrameRate rate = parseFrameRate(args.string("frame_rate")).value_or(base.frameRate);
  const std::optional<std::string> givenName = args.string("name");

  const core::CompositionPreset preset("ai.custom", givenName.value_or("AI Composition"),
                                       core::CompositionPreset::Group::custom, width, height, rate, seconds);
  const core::EditingMode mode =
      args.string("editing_mode") == "sequence" ? core::EditingMode::sequence : core::EditingMode::layers;

  mutate(context.document, [&](core::OVProject& project) {
    const std::string name = givenName ? *givenName : project.uniqueCompositionName();
    core::Composition composition = preset.makeComposition(name, mode);
    if (mode == core::EditingMode::sequence) composition.tracks = core::Composition::defaultTracks();
    project.addComposition(std::move(composition), true);
  });
  context.editor.clearLayerSelection();
  context.editor.clearAssetSelection();
  return "Created composition " + preset.name + " (" + integerText(preset.size.width) + "x" +
         integerText(preset.size.height) + ", " + decimalText(seconds) + "s).";
}

std::string updateComposition(ToolContext& context) {
  const Args& args = context.args;
  requireActiveComposition(context.document.project());
  const std::optional<std::string> name = args.string("name");
  const std::optional<double> width = args.double_("width");
  const std::optional<double> height = args.double_("height");
  std::optional<core::OVTime> duration;
  if (const std::optional<double> seconds = args.double_("duration_seconds"); seconds && *seconds > 0)
    duration = timeFromSeconds(*seconds, "duration_seconds");
  const std::optional<core::FrameRate> rate = parseFrameRate(args.string("frame_rate"));
  const std::optional<bool> transparent = args.bool_("transparent");
  const std::optional<nlohmann::json> background = args.object("background");
  const std::optional<core::OVColor> backgroundColor = background ? parseColor(*background) : std::nullopt;
  const auto usable = [](const std::optional<double>& v) {
    return v && *v >= kMinimumDimension && *v <= kMaximumDimension;
  };

  mutate(context.document, [&](core::OVProject& project) {
    const core::Composition& active = requireActiveComposition(project);
    const core::Uuid id = active.id;
    const std::string oldName = active.name;
    project.updateComposition(id, [&](core::Composition& c) {
      if (name && !name->empty()) c.name = *name;
      // A size needs both sides; half a size would distort the picture.
      if (usable(width) && usable(height)) c.size = {*width, *height};
      if (duration) c.duration = *duration;
      if (rate) c.frameRate = *rate;
      if (transparent) c.isTransparent = *transparent;
      if (backgroundColor) c.backgroundColor = *backgroundColor;
    });
    // Layers nesting this composition that show its name follow the rename.
    if (name && !name->empty() && *name != oldName) project.syncPrecompositionLayerNamesFor(id, oldName, *name);
  });
  return "Updated active composition.";
}

std::string deleteLayers(ToolContext& context) {
  const std::vector<core::Uuid> ids = context.args.uuidArray("layer_ids");
  mutate(context.document, [&](core::OVProject& project) {
    project.updateActiveComposition([&](core::Composition& c) {
      for (const core::Uuid& id : ids) c.remove(id);
    });
  });
  context.editor.clearLayerSelection();
  return "Deleted " + std::to_string(ids.size()) + " layer(s).";
}

std::string selectLayers(ToolContext& context) {
  const std::vector<core::Uuid> ids = context.args.uuidArray("layer_ids");
  context.editor.selectLayers(ids);
  return "Selected " + std::to_string(ids.size()) + " layer(s).";
}

}  // namespace orvane::assistant::tools
