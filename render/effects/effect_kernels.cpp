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

// The colour matrix whose four output vectors are (0, 0, 0, colour × opacity)
// and (0, 0, 0, opacity): every channel driven by the source alpha alone, so
// the picture's silhouette in the colour at the opacity (the colour's own
// alpha is not read). Written out, as it needs no division.
std::expected<Image, ImageError> silhouette(const Image& image, const OVColor& colour, double opacity,
                                            WorkerPool& pool) {
  const auto o = static_cast<float>(opacity);
  const float r = static_cast<float>(colour.red) * o, g = static_cast<float>(colour.green) * o,
              b = static_cast<float>(colour.blue) * o;
  return mapPixels(
      image,
      [=](Rgba* pixels, int count) {
        for (int i = 0; i < count; ++i) {
          const float a = pixels[i].a;
          const float alpha = std::clamp(o * a, 0.0f, 1.0f);
          pixels[i] = {r * a * alpha, g * a * alpha, b * a * alpha, alpha};
        }
      },
      pool);
}

Image dropShadowEffect(const Image& image, const EffectValues& v, const EffectRenderContext& c, WorkerPool& pool) {
  const Params p(v, c, "stylize.dropShadow");
  const double opacity = p.number("opacity");
  if (!(opacity > 0.001)) return image;
  const double distance = p.pixels("distance"), softness = p.pixels("softness");
  const double angle = p.number("direction") * kDegrees;
  const OVColor colour = p.colour("color");
  auto shadow = silhouette(image, colour, opacity, pool);
  if (!shadow) return image;
  if (softness > 0.01) {
    if (auto soft = gaussianBlur(*shadow, softness, {}, pool)) *shadow = crop(*soft, grownBy(image.extent(), 3 * softness));
  }
  const double dx = std::cos(angle) * distance, dy = std::sin(angle) * distance;
  const core::Affine2D move = std::fabs(dx) > 0.01 || std::fabs(dy) > 0.01 ? core::Affine2D::makeTranslation(dx, dy)
                                                                           : core::Affine2D::identity();
  // The moved shadow and the picture over it, drawn into one canvas: the
  // same pixels as moving the shadow, then compositing, with no picture in
  // between.
  const PixelRect rect = image.extent().united(transformedExtent(*shadow, move));
  if (image.isInfinite() || rect.isInfinite()) return image;
  auto canvas = Canvas::make(rect, {}, pool);
  if (!canvas) return image;
  drawLayer(*canvas, rect, *shadow, move, 1.0, core::OVBlendMode::normal, pool);
  drawLayer(*canvas, rect, image, core::Affine2D::identity(), 1.0, core::OVBlendMode::normal, pool);
  return std::move(*canvas).image();
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
  const double weight = std::min(intensity, 1.0);
  if (auto sum = additionCompositing(blurred, weight, image, blurred.extent(), pool)) return std::move(*sum);
  auto weighted = applyOpacity(blurred, weight, pool);
  return weighted ? orInput(compositedOver(*weighted, image, pool), image) : image;
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
