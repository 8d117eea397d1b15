// One kernel per catalog effect: read the parameters (px values times the
// render scale), apply the effect's neutral test, run its filters, and fall
// back to the input on any failure.

#include <cmath>
#include <numbers>
#include <utility>

#include "render/draw_layer.hpp"
#include "render/effects/effect_filters.hpp"
#include "render/effects/effect_stack.hpp"
#include "render/effects/gaussian_blur.hpp"
#include "render/image_ops.hpp"

namespace orvane::render {

namespace {

using core::EffectCatalog;
using core::OVColor;

constexpr double kDegrees = std::numbers::pi / 180;
// Longer than any picture's side many times over; keeps the filters'
// integer arithmetic in range whatever a parameter holds.
constexpr double kLongest = 4.0 * kMaxImageSide;

// The values of one effect, with the catalog's defaults behind them.
class Params {
 public:
  Params(const EffectValues& values, const EffectRenderContext& context, std::string_view effectID)
      : values_(values), context_(context), descriptor_(EffectCatalog::descriptorFor(effectID)) {}

  double number(std::string_view id) const { return EffectStack::double_(values_, id, fallback(id).doubleValue().value_or(0)); }
  // A value in pixels at the render's resolution.
  double pixels(std::string_view id) const {
    return std::min(EffectStack::scaledDouble(values_, id, fallback(id).doubleValue().value_or(0), context_), kLongest);
  }
  bool flag(std::string_view id) const { return EffectStack::bool_(values_, id, fallback(id).boolValue().value_or(false)); }
  OVColor colour(std::string_view id) const {
    return EffectStack::color(values_, id, fallback(id).colorValue().value_or(OVColor::black));
  }

 private:
  core::PropertyValue fallback(std::string_view id) const {
    const core::EffectParameterDescriptor* p = descriptor_ ? descriptor_->parameter(id) : nullptr;
    return p ? p->defaultValue : core::PropertyValue{};
  }

  const EffectValues& values_;
  const EffectRenderContext& context_;
  const core::EffectDescriptor* descriptor_;
};

Image orInput(std::expected<Image, ImageError> result, const Image& input) {
  return result ? std::move(*result) : input;
}

AreaFilter gaussianFilter(double sigma, WorkerPool& pool) {
  return [sigma, &pool](const Image& input, const PixelRect& region) { return gaussianBlur(input, sigma, region, pool); };
}

Image gaussianBlurEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const Params p(v, c, "blur.gaussian");
  const double r = p.pixels("radius");
  if (!(r > 0.01)) return image;
  return applyBlur(image, p.flag("spread"), 3 * r, gaussianFilter(r, pool));
}

Image directionalBlurEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c,
                            WorkerPool& pool) {
  const Params p(v, c, "blur.directional");
  const double r = p.pixels("radius");
  if (!(r > 0.01)) return image;
  const double radians = p.number("angle") * kDegrees;
  return applyBlur(image, p.flag("spread"), r, [&](const Image& input, const PixelRect& region) {
    return motionBlur(input, r, radians, region, pool);
  });
}

Image sharpenEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const double amount = Params(v, c, "sharpen").number("amount");
  if (!(amount > 0.001)) return image;
  return orInput(sharpenLuminance(image, amount, pool), image);
}

Image brightnessEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  return orInput(colorControls(image, Params(v, c, "color.brightness").number("amount"), 1, 1, pool), image);
}

Image contrastEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  return orInput(colorControls(image, 0, Params(v, c, "color.contrast").number("amount"), 1, pool), image);
}

Image saturationEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  return orInput(colorControls(image, 0, 1, Params(v, c, "color.saturation").number("amount"), pool), image);
}

Image exposureEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const double ev = Params(v, c, "color.exposure").number("ev");
  if (!(std::fabs(ev) > 0.001)) return image;
  return orInput(exposureAdjust(image, ev, pool), image);
}

Image hueEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const double angle = Params(v, c, "color.hue").number("angle");
  if (!(std::fabs(angle) > 0.001)) return image;
  return orInput(hueAdjust(image, angle * kDegrees, pool), image);
}

Image temperatureEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const Params p(v, c, "color.temperature");
  const double temperature = p.number("temperature"), tint = p.number("tint");
  if (!(std::fabs(temperature - 6500) > 1) && !(std::fabs(tint) > 0.5)) return image;
  return orInput(temperatureAndTint(image, {6500, 0}, {temperature, tint}, pool), image);
}

Image blackAndWhiteEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c,
                          WorkerPool& pool) {
  const double amount = Params(v, c, "color.blackAndWhite").number("amount");
  if (!(amount > 0.001)) return image;
  return orInput(colorControls(image, 0, 1, 1 - amount, pool), image);
}

Image minimaxEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const Params p(v, c, "stylize.minimax");
  const double r = p.pixels("radius");
  if (!(r > 0.01)) return image;
  const double side = std::max(1.0, r * 2);
  auto out = morphologyRectangle(image, side, side, p.flag("maximum"), pool);
  return out ? crop(*out, image.extent()) : image;
}

Image dropShadowEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const Params p(v, c, "stylize.dropShadow");
  const double opacity = p.number("opacity");
  if (!(opacity > 0.001)) return image;
  const double distance = p.pixels("distance"), softness = p.pixels("softness");
  const double angle = p.number("direction") * kDegrees;
  const OVColor colour = p.colour("color");
  // Every channel driven by the source alpha: the shadow is the picture's
  // silhouette in the colour, at the opacity. The colour's own alpha is not
  // read.
  ColorMatrix matrix;
  const auto o = static_cast<float>(opacity);
  matrix.r = {0, 0, 0, static_cast<float>(colour.red) * o};
  matrix.g = {0, 0, 0, static_cast<float>(colour.green) * o};
  matrix.b = {0, 0, 0, static_cast<float>(colour.blue) * o};
  matrix.a = {0, 0, 0, o};
  auto shadow = colorMatrix(image, matrix, pool);
  if (!shadow) return image;
  if (softness > 0.01) {
    if (auto soft = gaussianBlur(*shadow, softness, {}, pool)) *shadow = crop(*soft, grownBy(image.extent(), 3 * softness));
  }
  const double dx = std::cos(angle) * distance, dy = std::sin(angle) * distance;
  if (std::fabs(dx) > 0.01 || std::fabs(dy) > 0.01) {
    shadow = transformed(*shadow, core::Affine2D::makeTranslation(dx, dy), pool);
    if (!shadow) return image;
  }
  return orInput(compositedOver(image, std::move(*shadow), pool), image);
}

Image cartoonEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const double amount = Params(v, c, "stylize.cartoon").number("amount");
  if (!(amount > 0.001)) return image;
  auto comic = comicEffect(image, pool);
  if (!comic) return image;
  if (amount >= 0.999) return *comic;
  return orInput(dissolveTransition(*comic, image, 1 - amount, pool), image);
}

Image mosaicEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const double scale = Params(v, c, "stylize.mosaic").pixels("scale");
  if (!(scale > 1.01)) return image;
  const PixelRect e = image.extent();
  auto out = pixellate(image, scale, {e.x + e.width / 2.0, e.y + e.height / 2.0}, pool);
  return out ? crop(*out, e) : image;
}

Image findEdgesEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const Params p(v, c, "stylize.findEdges");
  const double intensity = p.number("intensity");
  if (!(intensity > 0.001)) return image;
  auto out = edges(image, intensity, pool);
  if (!out) return image;
  Image found = crop(*out, image.extent());
  return p.flag("invert") ? orInput(colorInvert(std::move(found), pool), image) : found;
}

Image posterizeEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  return orInput(colorPosterize(image, Params(v, c, "stylize.posterize").number("levels"), pool), image);
}

Image glowEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const Params p(v, c, "stylize.glow");
  const double r = p.pixels("radius"), intensity = p.number("intensity");
  if (!(r > 0.01) || !(intensity > 0.001)) return image;
  const Image blurred = applyBlur(image, p.flag("spread"), 3 * r, gaussianFilter(r, pool));
  // Everything from 1 up glows alike.
  auto weighted = applyOpacity(blurred, std::min(intensity, 1.0), pool);
  if (!weighted) return image;
  if (auto sum = added(*weighted, image, pool)) return crop(*sum, blurred.extent());
  return orInput(compositedOver(*weighted, image, pool), image);
}

// The keys run these programs, as written for the platform's kernel
// language, with the sample unpremultiplied (see chromaKey in
// effect_filters.hpp):
//   float d = distance(s.rgb, keyColor);
//   float alpha = smoothstep(threshold, threshold + softness, d);
//   if (invertMatte > 0.5) { alpha = 1.0 - alpha; }
//   return vec4(s.rgb, s.a * alpha);
// and
//   float luma = dot(s.rgb, vec3(0.2126, 0.7152, 0.0722));
//   alpha = keyDarker > 0.5 ? smoothstep(threshold - softness, threshold + softness, luma)
//                           : 1.0 - smoothstep(threshold - softness, threshold + softness, luma);
//   return vec4(s.rgb, s.a * alpha);
Image chromaKeyEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const Params p(v, c, "key.chroma");
  const double softness = std::max(0.001, p.number("softness"));
  return orInput(chromaKey(image, p.colour("keyColor"), p.number("threshold"), softness, p.flag("invert"), pool), image);
}

Image lumaKeyEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const Params p(v, c, "key.luma");
  const double softness = std::max(0.001, p.number("softness"));
  return orInput(lumaKey(image, p.number("threshold"), softness, p.flag("keyOutDarker"), pool), image);
}

// Every kernel passes an empty picture through untouched.
template <EffectKernel Kernel>
Image guarded(const Image& image, const EffectValues& values, const EffectRenderContext& context, WorkerPool& pool) {
  return image.isEmpty() ? image : Kernel(image, values, context, pool);
}

constexpr std::pair<std::string_view, EffectKernel> kKernels[] = {
    {"blur.gaussian", guarded<gaussianBlurEffect>},
    {"blur.directional", guarded<directionalBlurEffect>},
    {"sharpen", guarded<sharpenEffect>},
    {"color.brightness", guarded<brightnessEffect>},
    {"color.contrast", guarded<contrastEffect>},
    {"color.exposure", guarded<exposureEffect>},
    {"color.saturation", guarded<saturationEffect>},
    {"color.hue", guarded<hueEffect>},
    {"color.temperature", guarded<temperatureEffect>},
    {"color.blackAndWhite", guarded<blackAndWhiteEffect>},
    {"stylize.minimax", guarded<minimaxEffect>},
    {"stylize.dropShadow", guarded<dropShadowEffect>},
    {"stylize.cartoon", guarded<cartoonEffect>},
    {"stylize.mosaic", guarded<mosaicEffect>},
    {"stylize.findEdges", guarded<findEdgesEffect>},
    {"stylize.posterize", guarded<posterizeEffect>},
    {"stylize.glow", guarded<glowEffect>},
    {"key.chroma", guarded<chromaKeyEffect>},
    {"key.luma", guarded<lumaKeyEffect>},
};

}  // namespace

EffectKernel effectKernel(std::string_view effectID) {
  for (const auto& [id, kernel] : kKernels)
    if (id == effectID) return kernel;
  return nullptr;
}

}  // namespace orvane::render
