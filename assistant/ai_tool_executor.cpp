#include <array>
#include <exception>
#include <string_view>
#include <utility>

#include "assistant/ai_tool_handlers.hpp"
#include "assistant/ai_tools.hpp"

namespace orvane::assistant {

namespace tools {

void mutate(document::ProjectDocument& document, const std::function<void(core::OVProject&)>& change) {
  // The interaction publishes whatever the closure leaves behind, so the
  // tool works on a copy (O(1): the tree is shared) and the copy goes in
  // only when the tool got through.
  std::exception_ptr failure;
  document.updateInteraction([&](core::OVProject& project) {
    core::OVProject next = project;
    try {
      change(next);
    } catch (...) {
      failure = std::current_exception();
      return;
    }
    project = std::move(next);
  });
  if (failure) std::rethrow_exception(failure);
}

void mutateLayer(document::ProjectDocument& document, const core::Uuid& layerID,
                 const std::function<void(core::Layer&)>& change) {
  mutate(document, [&](core::OVProject& project) {
    project.updateActiveComposition([&](core::Composition& c) { c.update(layerID, change); });
  });
}

const core::Composition& requireActiveComposition(const core::OVProject& project) {
  const core::Composition* active = project.activeComposition();
  if (active == nullptr) throw ToolError("No active composition.");
  return *active;
}

void bumpLayerLimit(AIToolExecutor::TurnLimits& limits) {
  limits.layersCreated += 1;
  if (limits.layersCreated > AIToolExecutor::maxLayersPerTurn)
    throw ToolError("Layer creation limit (" + std::to_string(AIToolExecutor::maxLayersPerTurn) +
                    ") reached for this turn.");
}

}  // namespace tools

namespace {

using Handler = std::string (*)(tools::ToolContext&);

// Kept apart from the schema's list on purpose; the two agree by name.
constexpr std::array<std::pair<std::string_view, Handler>, 18> kHandlers{{
    {"create_composition", tools::createComposition},
    {"update_composition", tools::updateComposition},
    {"add_text_layer", tools::addTextLayer},
    {"add_shape_layer", tools::addShapeLayer},
    {"add_solid_layer", tools::addSolidLayer},
    {"add_adjustment_layer", tools::addAdjustmentLayer},
    {"add_media_layer", tools::addMediaLayer},
    {"delete_layers", tools::deleteLayers},
    {"rename_layer", tools::renameLayer},
    {"set_layer_timing", tools::setLayerTiming},
    {"set_layer_transform", tools::setLayerTransform},
    {"set_text_content", tools::setTextContent},
    {"add_effect", tools::addEffect},
    {"set_effect_parameters", tools::setEffectParameters},
    {"add_keyframe", tools::addKeyframe},
    {"set_blend_mode", tools::setBlendMode},
    {"apply_behavior", tools::applyBehavior},
    {"select_layers", tools::selectLayers},
}};

std::string run(const AIToolCall& call, document::ProjectDocument& document, surfaces::EditorState& editor,
                AIToolExecutor::TurnLimits& limits) {
  const Args args = Args::parse(call.argumentsJSON);
  for (const auto& [name, handler] : kHandlers) {
    if (name != call.name) continue;
    tools::ToolContext context{args, document, editor, limits};
    return handler(context);
  }
  throw ToolError::unknownTool(call.name);
}

}  // namespace

AIToolResult AIToolExecutor::execute(const AIToolCall& call, document::ProjectDocument& document,
                                     surfaces::EditorState& editor, TurnLimits& limits) {
  AIToolResult result;
  result.toolCallID = call.id;
  try {
    result.content = run(call, document, editor, limits);
  } catch (const std::exception& e) {
    result.content = e.what();
    result.isError = true;
  } catch (...) {
    // Nothing of ours throws anything but exceptions; still, the model
    // must get an answer for every call.
    result.content = "The tool failed.";
    result.isError = true;
  }
  return result;
}

}  // namespace orvane::assistant
