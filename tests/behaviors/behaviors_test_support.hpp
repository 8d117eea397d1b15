#pragma once
// Helpers shared by the behavior tests: a document holding one layer of a
// chosen kind, the frame a time falls on, and readers of stamped keys.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "behaviors/apply_behavior.hpp"
#include "behaviors/behavior.hpp"
#include "behaviors/behavior_catalog.hpp"
#include "tests/commands/commands_test_support.hpp"

namespace orvane::behaviors::testing_support {

using namespace core;
using commands::testing_support::clip;
using commands::testing_support::secs;
using document::ProjectDocument;
using document::UndoStack;

// A layer of kind from start for duration seconds, placed at (100, 100).
inline Layer layerOfKind(LayerKind kind, double start = 2, double duration = 10) {
  LayerContent content = LayerContent::solid({OVColor::white, {200, 100}});
  switch (kind) {
    case LayerKind::video: content = LayerContent::video(Uuid::make()); break;
    case LayerKind::audio: content = LayerContent::audio(Uuid::make()); break;
    case LayerKind::image: content = LayerContent::image(Uuid::make()); break;
    case LayerKind::text: content = LayerContent::text(TextContent{}); break;
    case LayerKind::shape: content = LayerContent::shape(ShapeContent{}); break;
    case LayerKind::adjustment: content = LayerContent::adjustment({200, 100}); break;
    case LayerKind::precomposition: content = LayerContent::precomposition(Uuid::make()); break;
    case LayerKind::solid: break;
  }
  Layer layer = clip(std::string(displayName(kind)), start, duration, std::move(content));
  layer.transform.position = AnimatedProperty::point(100, 100);
  return layer;
}

// A 30 fps project, 20 s long, holding layers in the order given.
inline OVProject projectWith(std::vector<Layer> layers) {
  OVProject p = commands::testing_support::projectWith(std::move(layers));
  p.updateActiveComposition([](Composition& c) { c.duration = secs(20); });
  return p;
}

inline const Layer& onlyLayer(const ProjectDocument& doc) { return doc.activeComposition()->layers[0]; }

// The time of frame n at 30 fps.
inline OVTime frame(std::int64_t n) { return FrameRate::fps30.timeForFrame(n); }

inline std::vector<OVTime> keyTimes(const AnimatedProperty& p) {
  std::vector<OVTime> times;
  for (const Keyframe& k : p.keyframes()) times.push_back(k.time);
  return times;
}

}  // namespace orvane::behaviors::testing_support
