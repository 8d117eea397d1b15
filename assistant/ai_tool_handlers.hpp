#pragma once
// The executor's tools, one function each, and the pieces they share. Each
// returns the text the model reads on success and throws ToolError (or
// anything else) on failure; the executor turns both into results. Every
// change to the project goes through the running interaction on a copy, so
// a tool that throws leaves the project as it was. Main thread only.

#include <functional>
#include <string>

#include "assistant/ai_tool_args.hpp"
#include "assistant/ai_tools.hpp"
#include "core/project.hpp"

namespace orvane::assistant::tools {

struct ToolContext {
  const Args& args;
  document::ProjectDocument& document;
  surfaces::EditorState& editor;
  AIToolExecutor::TurnLimits& limits;
};

// Applies change to a copy of the project and publishes the copy through
// the interaction only when change returns; what change throws is thrown on.
void mutate(document::ProjectDocument& document, const std::function<void(core::OVProject&)>& change);
// change on the layer of the active composition with this id; nothing for
// an unknown id or with no active composition.
void mutateLayer(document::ProjectDocument& document, const core::Uuid& layerID,
                 const std::function<void(core::Layer&)>& change);
// The active composition of project; "No active composition." when none.
const core::Composition& requireActiveComposition(const core::OVProject& project);

// Counts one more added layer of the turn; the 25th throws.
void bumpLayerLimit(AIToolExecutor::TurnLimits& limits);

// ai_tool_handlers_composition.cpp
std::string createComposition(ToolContext& context);
std::string updateComposition(ToolContext& context);
std::string deleteLayers(ToolContext& context);
std::string selectLayers(ToolContext& context);

// ai_tool_handlers_add.cpp
std::string addTextLayer(ToolContext& context);
std::string addShapeLayer(ToolContext& context);
std::string addSolidLayer(ToolContext& context);
std::string addAdjustmentLayer(ToolContext& context);
std::string addMediaLayer(ToolContext& context);

// ai_tool_handlers_layer.cpp
std::string renameLayer(ToolContext& context);
std::string setLayerTiming(ToolContext& context);
std::string setLayerTransform(ToolContext& context);
std::string setTextContent(ToolContext& context);
std::string setBlendMode(ToolContext& context);
std::string applyBehavior(ToolContext& context);

// ai_tool_handlers_animation.cpp
std::string addEffect(ToolContext& context);
std::string setEffectParameters(ToolContext& context);
std::string addKeyframe(ToolContext& context);

}  // namespace orvane::assistant::tools
