#pragma once
// Helpers shared by the edit-operation tests: media records, a document
// with an undo stack, and the apply / undo / redo check every edit gets.

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

#include "core/project.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::commands::testing_support {

using namespace core;
using document::ProjectDocument;
using document::UndoStack;

inline OVTime secs(double s) { return OVTime::fromSeconds(s); }

inline MediaAsset videoAsset(std::string name, double seconds, OVSize size = {1920, 1080}, bool hasAudio = true) {
  MediaAsset a;
  a.name = std::move(name);
  a.kind = MediaKind::video;
  a.path = "/media/" + a.name + ".mov";
  a.duration = secs(seconds);
  a.naturalSize = size;
  a.frameRate = FrameRate::fps30;
  a.hasVideoTrack = true;
  a.hasAudioTrack = hasAudio;
  return a;
}

inline MediaAsset imageAsset(std::string name, OVSize size = {800, 600}) {
  MediaAsset a;
  a.name = std::move(name);
  a.kind = MediaKind::image;
  a.path = "/media/" + a.name + ".png";
  a.naturalSize = size;
  a.hasVideoTrack = true;
  return a;
}

inline MediaAsset audioAsset(std::string name, double seconds) {
  MediaAsset a;
  a.name = std::move(name);
  a.kind = MediaKind::audio;
  a.path = "/media/" + a.name + ".wav";
  a.duration = secs(seconds);
  a.hasAudioTrack = true;
  a.audioChannelCount = 2;
  a.audioSampleRate = 48000;
  return a;
}

// A clip of content from start for duration, not yet in any composition.
inline Layer clip(std::string name, double start, double duration,
                  LayerContent content = LayerContent::solid({OVColor::white, {100, 100}})) {
  return Layer(std::move(name), std::move(content), {secs(start), secs(duration)});
}

// A project with one active 10 s, 30 fps, 1920×1080 composition (or
// sequence with the default tracks) holding layers, inserted as listed.
inline OVProject projectWith(std::vector<Layer> layers, EditingMode mode = EditingMode::layers) {
  OVProject p = OVProject::starter(CompositionPreset::defaultPreset(), mode);
  p.updateActiveComposition([&](Composition& c) {
    c.frameRate = FrameRate::fps30;
    c.duration = secs(10);
    c.size = {1920, 1080};
    for (auto& l : layers) c.layers.push_back(std::move(l));
    c.normalizeSequenceOrder();
  });
  return p;
}

// Runs edit and checks that it left exactly one undo step named
// actionName, that undo brings back the project before and redo the
// project after.
template <class Edit>
void expectUndoableEdit(ProjectDocument& doc, UndoStack& undo, std::string_view actionName, Edit edit) {
  const OVProject before = doc.project();
  const std::size_t steps = undo.undoCount();
  edit();
  const OVProject after = doc.project();
  ASSERT_EQ(undo.undoCount(), steps + 1) << "expected one undo step " << actionName;
  EXPECT_EQ(undo.undoActionName(), actionName);
  EXPECT_FALSE(after == before) << actionName << " changed nothing";
  undo.undo();
  EXPECT_TRUE(doc.project() == before) << "undo of " << actionName;
  undo.redo();
  EXPECT_TRUE(doc.project() == after) << "redo of " << actionName;
}

// One row of a table of edits: the undo name it must leave, and the edit.
struct NamedEdit {
  std::string name;
  std::function<void()> edit;
};

// Each edit through expectUndoableEdit, undone again afterwards, so that
// every row starts from the same project.
inline void expectEachUndoableFromOneStart(ProjectDocument& doc, UndoStack& undo,
                                           std::initializer_list<NamedEdit> cases) {
  for (const NamedEdit& c : cases) {
    const OVProject start = doc.project();
    SCOPED_TRACE(c.name);
    expectUndoableEdit(doc, undo, c.name, c.edit);
    undo.undo();
    ASSERT_TRUE(doc.project() == start);
  }
}

// Runs edit and checks that it left no trace: no undo step, no revision.
template <class Edit>
void expectNoEdit(ProjectDocument& doc, UndoStack& undo, Edit edit) {
  const OVProject before = doc.project();
  const auto revision = doc.revision();
  const std::size_t steps = undo.undoCount();
  edit();
  EXPECT_EQ(undo.undoCount(), steps);
  EXPECT_EQ(doc.revision(), revision);
  EXPECT_TRUE(doc.project() == before);
}

}  // namespace orvane::commands::testing_support
