#pragma once
// A turn of tool calls against a document: the interaction the session
// would open, the executor's calls, and the one "AI Edit" step at the end,
// checked to undo to the project before the turn and redo to the one after.

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "assistant/ai_tools.hpp"
#include "document/undo_stack.hpp"
#include "surfaces/editor_state.hpp"
#include "tests/commands/commands_test_support.hpp"

namespace orvane::assistant::testing_support {

using namespace core;
using commands::testing_support::audioAsset;
using commands::testing_support::clip;
using commands::testing_support::imageAsset;
using commands::testing_support::projectWith;
using commands::testing_support::secs;
using commands::testing_support::videoAsset;

class ToolTurnTest : public ::testing::Test {
 protected:
  // Replaces the document's project and opens the turn's interaction.
  void start(OVProject project) {
    if (document.isInteracting()) document.cancelInteraction();
    document.performWithoutUndo([&](OVProject& p) { p = std::move(project); });
    before = document.project();
    document.beginInteraction();
  }
  void SetUp() override { start(projectWith({})); }

  AIToolResult call(std::string_view name, std::string_view argumentsJSON = "{}") {
    return AIToolExecutor::execute({"call-7", std::string(name), std::string(argumentsJSON)}, document, editor,
                                   limits);
  }
  // A call expected to work; returns its text.
  std::string ok(std::string_view name, std::string_view argumentsJSON = "{}") {
    const AIToolResult r = call(name, argumentsJSON);
    EXPECT_FALSE(r.isError) << name << ": " << r.content;
    EXPECT_EQ(r.toolCallID, "call-7");
    return r.content;
  }
  // A call expected to fail without touching the project; returns its text.
  std::string fails(std::string_view name, std::string_view argumentsJSON = "{}") {
    const OVProject was = document.project();
    const AIToolResult r = call(name, argumentsJSON);
    EXPECT_TRUE(r.isError) << name << ": " << r.content;
    EXPECT_EQ(document.project(), was) << name << " changed the project while failing";
    return r.content;
  }

  // Ends the turn: one "AI Edit" step that undoes to the project before the
  // turn and redoes to the one after.
  void endTurnExpectingOneStep() {
    document.endInteraction("AI Edit", &undo);
    const OVProject after = document.project();
    ASSERT_EQ(undo.undoCount(), 1u);
    EXPECT_EQ(undo.undoActionName(), "AI Edit");
    undo.undo();
    EXPECT_EQ(document.project(), before);
    undo.redo();
    EXPECT_EQ(document.project(), after);
  }

  const Composition& active() const { return *document.activeComposition(); }
  const Layer& layer(const Uuid& id) const {
    const Layer* l = active().layer(id);
    EXPECT_NE(l, nullptr);
    static const Layer missing;
    return l != nullptr ? *l : missing;
  }
  // The id a result ends with ("... layer <id>" or "... <id>.").
  static Uuid idAtEnd(const std::string& text) {
    std::string_view t = text;
    if (t.ends_with('.')) t.remove_suffix(1);
    const std::optional<Uuid> id = t.size() >= 36 ? Uuid::parse(t.substr(t.size() - 36)) : std::nullopt;
    EXPECT_TRUE(id.has_value()) << text;
    return id.value_or(Uuid{});
  }
  Uuid addSolid(std::string_view argumentsJSON = "{}") { return idAtEnd(ok("add_solid_layer", argumentsJSON)); }
  Uuid addText(std::string_view argumentsJSON = R"({"text":"Hi"})") {
    return idAtEnd(ok("add_text_layer", argumentsJSON));
  }
  static std::string quoted(const Uuid& id) { return "\"" + id.text() + "\""; }

  document::ProjectDocument document;
  surfaces::EditorState editor;
  document::UndoStack undo;
  AIToolExecutor::TurnLimits limits;
  OVProject before;
};

}  // namespace orvane::assistant::testing_support
