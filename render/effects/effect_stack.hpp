#pragma once
// Running a layer's effects over its picture. Each catalog effect (by id, see
// core/effect_catalog.hpp) has a kernel here; EffectStack resolves an
// instance's parameters at a time and chains the enabled, known effects in
// list order. Effects never fail a render: a kernel that cannot produce its
// output returns its input. Stateless; any thread.

#include <map>
#include <string>
#include <string_view>

#include "core/effect_catalog.hpp"
#include "core/geometry.hpp"
#include "core/layer_parts.hpp"
#include "core/ov_time.hpp"
#include "core/property_value.hpp"
#include "core/shared_vector.hpp"
#include "render/image.hpp"
#include "render/worker_pool.hpp"

namespace orvane::render {

// What an effect knows of where it runs: the composition's size, the time of
// the composition level that draws the layer, and output pixels per
// composition unit (values marked "scales with resolution" are multiplied by
// it).
struct EffectRenderContext {
  core::OVSize compositionSize;
  core::OVTime time;
  double renderScale = 1;
};

// Parameter id to value at one time.
using EffectValues = std::map<std::string, core::PropertyValue, std::less<>>;

// The kernel of one effect: the picture with the effect applied. Returns the
// input itself when the effect is at rest (its neutral test) or fails.
using EffectKernel = Image (*)(const Image& image, const EffectValues& values, const EffectRenderContext& context,
                               WorkerPool& pool);

// The kernel of a catalog id; null for an unknown id.
EffectKernel effectKernel(std::string_view effectID);

struct EffectStack {
  // The picture through each enabled effect whose id the catalog knows, the
  // first in the list first; unknown ids are skipped.
  static Image apply(const core::SharedVector<core::EffectInstance>& effects, const Image& image,
                     const EffectRenderContext& context, WorkerPool& pool = WorkerPool::shared());
  // Every parameter of the descriptor: the instance's stored property at t,
  // else the default. Ids the descriptor does not know are left out.
  static EffectValues resolvedValues(const core::EffectInstance& instance, const core::EffectDescriptor& descriptor,
                                     const core::OVTime& t);
  // Whether some enabled instance animates.
  static bool containsAnimation(const core::SharedVector<core::EffectInstance>& effects);

  // Reading values; an absent key or a value of another kind gives the
  // default. Numbers and flags read as the model converts them (a flag as 1
  // or 0, an integer as a number, a number as a flag when not zero); a
  // number or colour that is not finite gives the default too.
  static double double_(const EffectValues& values, std::string_view id, double defaultValue);
  static double scaledDouble(const EffectValues& values, std::string_view id, double defaultValue,
                             const EffectRenderContext& context);
  static bool bool_(const EffectValues& values, std::string_view id, bool defaultValue);
  static core::OVColor color(const EffectValues& values, std::string_view id, const core::OVColor& defaultValue);
};

}  // namespace orvane::render
