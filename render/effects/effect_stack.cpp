#include "render/effects/effect_stack.hpp"

#include <cmath>

namespace orvane::render {

namespace {

const core::PropertyValue* find(const EffectValues& values, std::string_view id) {
  const auto it = values.find(id);
  return it == values.end() ? nullptr : &it->second;
}

}  // namespace

Image EffectStack::apply(const core::SharedVector<core::EffectInstance>& effects, const Image& image,
                         const EffectRenderContext& context, WorkerPool& pool) {
  Image picture = image;
  for (const core::EffectInstance& instance : effects) {
    if (!instance.isEnabled) continue;
    // An id from a newer version of the program is passed over, so that its
    // projects still open and draw.
    const core::EffectDescriptor* descriptor = core::EffectCatalog::descriptorFor(instance.effectID);
    const EffectKernel kernel = effectKernel(instance.effectID);
    if (descriptor == nullptr || kernel == nullptr) continue;
    picture = kernel(picture, resolvedValues(instance, *descriptor, context.time), context, pool);
  }
  return picture;
}

EffectValues EffectStack::resolvedValues(const core::EffectInstance& instance, const core::EffectDescriptor& descriptor,
                                         const core::OVTime& t) {
  EffectValues values;
  for (const core::EffectParameterDescriptor& parameter : descriptor.parameters) {
    const auto stored = instance.parameters.find(parameter.id);
    values.emplace(parameter.id, stored == instance.parameters.end() ? parameter.defaultValue : stored->second.valueAt(t));
  }
  return values;
}

bool EffectStack::containsAnimation(const core::SharedVector<core::EffectInstance>& effects) {
  for (const core::EffectInstance& instance : effects)
    if (instance.isEnabled && instance.isAnimated()) return true;
  return false;
}

double EffectStack::double_(const EffectValues& values, std::string_view id, double defaultValue) {
  const core::PropertyValue* value = find(values, id);
  const std::optional<double> d = value ? value->doubleValue() : std::nullopt;
  return d && std::isfinite(*d) ? *d : defaultValue;
}

double EffectStack::scaledDouble(const EffectValues& values, std::string_view id, double defaultValue,
                                 const EffectRenderContext& context) {
  return double_(values, id, defaultValue) * context.renderScale;
}

bool EffectStack::bool_(const EffectValues& values, std::string_view id, bool defaultValue) {
  const core::PropertyValue* value = find(values, id);
  return value ? value->boolValue().value_or(defaultValue) : defaultValue;
}

core::OVColor EffectStack::color(const EffectValues& values, std::string_view id, const core::OVColor& defaultValue) {
  const core::PropertyValue* value = find(values, id);
  const std::optional<core::OVColor> c = value ? value->colorValue() : std::nullopt;
  if (!c || !std::isfinite(c->red) || !std::isfinite(c->green) || !std::isfinite(c->blue) || !std::isfinite(c->alpha)) {
    return defaultValue;
  }
  return *c;
}

}  // namespace orvane::render
