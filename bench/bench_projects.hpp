#pragma once
// Projects shared by the benchmarks: layers with every transform channel and
// crop edge animated over 20 keys, as a busy motion-graphics project has.

#include <string>
#include <vector>

#include "core/enum_text.hpp"
#include "core/project.hpp"

namespace orvane::bench_projects {

using namespace orvane::core;

inline constexpr FrameRate kRate = FrameRate::fps30;

// 20 keys one second apart, alternating values, in the given mode.
inline AnimatedProperty makeDoubleProperty(InterpolationMode mode, int keys = 20) {
  AnimatedProperty p = AnimatedProperty::double_(0);
  std::vector<Keyframe> list;
  for (int i = 0; i < keys; ++i) {
    list.emplace_back(kRate.timeForFrame(i * 30), PropertyValue::double_(i % 2 ? 100 : 0), mode,
                      BezierHandles::overshoot);
  }
  p.setKeyframes(std::move(list));
  return p;
}

inline AnimatedProperty makePointProperty(int keys = 20) {
  AnimatedProperty p = AnimatedProperty::point(0, 0);
  for (int i = 0; i < keys; ++i) {
    p.upsertKeyframe(PropertyValue::point(i * 40.0, (i % 3) * 90.0), kRate.timeForFrame(i * 30),
                     InterpolationMode::easeInOut);
  }
  return p;
}

inline Layer makeAnimatedLayer(int index) {
  Layer layer("Solid " + std::to_string(index), LayerContent::solid({OVColor::white, {200, 200}}),
              OVTimeRange(OVTime::zero, OVTime::fromSeconds(20)));
  for (auto channel : allCases<LayerTransform::Channel>()) {
    const bool isPoint = channel == LayerTransform::Channel::position || channel == LayerTransform::Channel::scale ||
                         channel == LayerTransform::Channel::anchorPoint;
    layer.transform[channel] = isPoint ? makePointProperty() : makeDoubleProperty(InterpolationMode::linear);
  }
  for (auto edge : allCases<LayerCrop::Edge>()) layer.crop[edge] = makeDoubleProperty(InterpolationMode::easeIn);
  return layer;  // 6 transform channels + 4 crop edges: 10 properties of 20 keys
}

inline OVProject makeProject(int layerCount) {
  Composition composition;
  std::vector<Layer> layers;
  // Every layer owns its keyframe storage, as separately animated layers do.
  for (int i = 0; i < layerCount; ++i) layers.push_back(makeAnimatedLayer(i));
  composition.layers = PersistentList<Layer>(layers);
  return OVProject("Benchmark", {composition});
}

}  // namespace orvane::bench_projects
