#pragma once
// The eighteen things the model may do to a project: their descriptions and
// parameter schemas, and the executor that carries out one call on the main
// thread inside the turn's interaction. The executor never fails to its
// caller: every failure is a result with isError set, for the model to read.

#include <vector>

#include "assistant/ai_types.hpp"
#include "document/project_document.hpp"
#include "surfaces/editor_state.hpp"

namespace orvane::assistant {

struct AIToolSchema {
  // Built anew at each request, in the order the model is shown them.
  static std::vector<AIToolDefinition> all();
};

struct AIToolExecutor {
  // Counted across one turn.
  struct TurnLimits {
    int layersCreated = 0;
  };
  static constexpr int maxLayersPerTurn = 24;

  static AIToolResult execute(const AIToolCall& call, document::ProjectDocument& document,
                              surfaces::EditorState& editor, TurnLimits& limits);
};

}  // namespace orvane::assistant
