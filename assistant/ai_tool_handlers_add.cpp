// The tools that add layers: text, shape, solid, adjustment and media. Each
// counts against the turn's layer limit before anything else, so a failed
// add still uses up one of the turn's layers.

#include <functional>
#include <optional>

#include "Commands/layer_factory.hpp"
#include "assistant/ai_tool_handlers.hpp"

namespace orvane::assistant::tools {

namespace {

using MakeLayer = std::function<core::Layer(const core::Composition&, const core::OVTime&)>;

core::OVTime startTime(const Args& args) { return timeFromSeconds(args.double_("start_seconds").value_or(0), "start_seconds"); }

// x and/or y as a constant position; the missing one stays as made.
void applyPosition(const Args& args, core::Layer& layer) {
  const std::optional<double> x = args.double_("x");
  const std::optional<double> y = args.double_("y");
  if (!x && !y) return;
  core::AnimatedProperty& position = layer.transform.position;
  const core::OVPoint current = position.pointValueAt(core::OVTime::zero);
  position.setValue(core::PropertyValue::point(x.value_or(current.x), y.value_or(current.y)), core::OVTime::zero,
                    false);
}

// Makes the layer in the active composition, lets finish adjust it, puts
// it on top and returns its id.
core::Uuid insertNewLayer(ToolContext& context, const MakeLayer& make,
                          const std::function<void(core::Layer&)>& finish) {
  const core::OVTime start = startTime(context.args);
  core::Uuid id;
  mutate(context.document, [&](core::OVProject& project) {
    const core::Composition& active = requireActiveComposition(project);
    core::Layer layer = make(active, start);
    finish(layer);
    if (const std::optional<std::string> name = context.args.string("name")) layer.name = *name;
    id = layer.id;
    const core::Uuid compositionID = active.id;
    project.updateComposition(compositionID, [&](core::Composition& c) { c.insert(std::move(layer), 0, std::nullopt); });
  });
  return id;
}

std::string idText(const core::Uuid& id) { return id.text(); }

}  // namespace

std::string addTextLayer(ToolContext& context) {
  bumpLayerLimit(context.limits);
  const std::string text = context.args.string("text").value_or("Text");
  const std::optional<double> fontSize = context.args.double_("font_size");
  const core::Uuid id = insertNewLayer(
      context, [](const core::Composition& c, const core::OVTime& t) { return commands::LayerFactory::textLayer(c, t); },
      [&](core::Layer& layer) {
        core::TextContent content = *layer.content.textContent();
        content.string = text;
        if (fontSize) content.fontSize = *fontSize;
        layer.content = core::LayerContent::text(std::move(content));
        applyPosition(context.args, layer);
      });
  context.editor.selectLayer(id, false);
  return "Added text layer " + idText(id);
}

std::string addShapeLayer(ToolContext& context) {
  bumpLayerLimit(context.limits);
  const std::string given = context.args.string("shape").value_or("rectangle");
  const std::optional<core::ShapeContent::ShapeType> type =
      core::fromRaw<core::ShapeContent::ShapeType>(lowercased(given));
  if (!type) throw ToolError("Unknown shape '" + given + "'.");
  const core::Uuid id = insertNewLayer(
      context,
      [&](const core::Composition& c, const core::OVTime& t) { return commands::LayerFactory::shapeLayer(*type, c, t); },
      [&](core::Layer& layer) { applyPosition(context.args, layer); });
  context.editor.selectLayer(id, false);
  return "Added " + std::string(core::displayName(*type)) + " layer " + idText(id);
}

std::string addSolidLayer(ToolContext& context) {
  bumpLayerLimit(context.limits);
  const Args& args = context.args;
  const core::OVColor color{args.double_("r").value_or(0.2), args.double_("g").value_or(0.2),
                            args.double_("b").value_or(0.25), args.double_("a").value_or(1.0)};
  const core::Uuid id = insertNewLayer(
      context,
      [&](const core::Composition& c, const core::OVTime& t) { return commands::LayerFactory::solidLayer(color, c, t); },
      [](core::Layer&) {});
  return "Added solid layer " + idText(id);
}

std::string addAdjustmentLayer(ToolContext& context) {
  bumpLayerLimit(context.limits);
  const core::Uuid id = insertNewLayer(
      context,
      [](const core::Composition& c, const core::OVTime& t) { return commands::LayerFactory::adjustmentLayer(c, t); },
      [](core::Layer&) {});
  return "Added adjustment layer " + idText(id);
}

namespace {

const core::MediaAsset& resolveAsset(const Args& args, const core::OVProject& project) {
  if (const std::optional<std::string> text = args.string("asset_id")) {
    if (const std::optional<core::Uuid> id = core::Uuid::parse(*text))
      if (const core::MediaAsset* asset = project.asset(*id)) return *asset;
  }
  const std::optional<std::string> name = args.string("name");
  if (!name || name->empty()) throw ToolError("Provide asset_id or name for add_media_layer.");
  const std::string wanted = lowercased(*name);
  const std::vector<core::MediaAsset>& assets = project.assets.items();
  for (const core::MediaAsset& asset : assets)
    if (lowercased(asset.name) == wanted) return asset;
  for (const core::MediaAsset& asset : assets)
    if (lowercased(asset.name).find(wanted) != std::string::npos) return asset;
  throw ToolError("No media named '" + *name + "' in the project.");
}

}  // namespace

std::string addMediaLayer(ToolContext& context) {
  bumpLayerLimit(context.limits);
  const Args& args = context.args;
  const core::MediaAsset asset = resolveAsset(args, context.document.project());
  const core::OVTime start = startTime(args);
  const core::OVTime sourceStart =
      timeFromSeconds(args.double_("source_start_seconds").value_or(0), "source_start_seconds");
  std::optional<core::OVTime> sourceDuration;
  if (const std::optional<double> seconds = args.double_("duration_seconds"))
    sourceDuration = timeFromSeconds(*seconds, "duration_seconds");

  core::Uuid id;
  mutate(context.document, [&](core::OVProject& project) {
    const core::Uuid compositionID = requireActiveComposition(project).id;
    project.updateComposition(compositionID, [&](core::Composition& c) {
      // The first footage of an empty composition sets its length.
      if (c.layers.empty() && !asset.isStill() && asset.duration > c.duration) c.duration = asset.duration;
      core::Layer layer = commands::LayerFactory::layerFor(asset, c, start, sourceStart, sourceDuration);
      id = layer.id;
      c.insert(std::move(layer), 0, std::nullopt);
    });
  });
  context.editor.selectLayer(id, false);
  return "Added media '" + asset.name + "' as layer " + idText(id);
}

}  // namespace orvane::assistant::tools
