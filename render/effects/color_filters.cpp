// The pointwise effect filters: colour controls, exposure, hue, temperature,
// posterize, invert, dissolve and the two keys.

#include <cmath>

#include "render/effects/effect_filters.hpp"
#include "render/effects/effect_support.hpp"
#include "render/effects/white_point.hpp"
#include "render/vec4.hpp"

namespace orvane::render {

using detail::Straight;
using detail::Vec4;

namespace {

// A 3 × 3 matrix on colour in floats, rows as output channels.
struct ColourMatrix3 {
  float m[3][3];
  static ColourMatrix3 of(const Matrix3& d) {
    ColourMatrix3 out{};
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) out.m[i][j] = static_cast<float>(d[i][j]);
    return out;
  }
  void apply(float& r, float& g, float& b) const {
    const float x = r, y = g, z = b;
    r = m[0][0] * x + m[0][1] * y + m[0][2] * z;
    g = m[1][0] * x + m[1][1] * y + m[1][2] * z;
    b = m[2][0] * x + m[2][1] * y + m[2][2] * z;
  }
};

// Rewrites every pixel through f(Straight&) on straight colour.
template <class F>
std::expected<Image, ImageError> mapStraight(Image image, WorkerPool& pool, F f) {
  return mapPixels(
      std::move(image),
      [&f](Rgba* pixels, int count) {
        for (int i = 0; i < count; ++i) {
          Straight s = detail::straightOf(pixels[i]);
          f(s);
          pixels[i] = detail::premultipliedOf(s);
        }
      },
      pool);
}

Matrix3 hueRotation(double radians) {
  // NTSC RGB to YIQ; its inverse is computed rather than copied so that a
  // turn of 0 is the identity to rounding.
  const Matrix3 yiq{{{0.299, 0.587, 0.114}, {0.595716, -0.274453, -0.321263}, {0.211456, -0.522591, 0.311135}}};
  // Red sits at +19.5° in the (I, Q) plane, yellow at −44°, green at −118°:
  // the hue wheel runs clockwise there, so the turn is by −radians.
  const double c = std::cos(-radians), s = std::sin(-radians);
  const Matrix3 turn{{{1, 0, 0}, {0, c, -s}, {0, s, c}}};
  return multiply(inverted(yiq), multiply(turn, yiq));
}

}  // namespace

std::expected<Image, ImageError> colorControls(Image image, double brightness, double contrast, double saturation,
                                               WorkerPool& pool) {
  if (std::fabs(brightness) < 1e-4 && std::fabs(contrast - 1) < 1e-4 && std::fabs(saturation - 1) < 1e-4) {
    return image;
  }
  const auto bright = static_cast<float>(brightness), con = static_cast<float>(contrast),
             sat = static_cast<float>(saturation);
  return mapStraight(std::move(image), pool, [=](Straight& s) {
    const float grey = detail::luma(s.r, s.g, s.b);
    for (float* c : {&s.r, &s.g, &s.b}) {
      const float saturated = grey + (*c - grey) * sat;
      *c = (saturated + bright - 0.5f) * con + 0.5f;
    }
  });
}

std::expected<Image, ImageError> exposureAdjust(Image image, double ev, WorkerPool& pool) {
  const auto gain = static_cast<float>(std::exp2(ev));
  const Vec4 scale{gain, gain, gain, 1.0f};
  return mapPixels(
      std::move(image),
      [scale](Rgba* pixels, int count) {
        for (int i = 0; i < count; ++i) detail::store(pixels[i], detail::load(pixels[i]) * scale);
      },
      pool);
}

std::expected<Image, ImageError> hueAdjust(Image image, double radians, WorkerPool& pool) {
  // Linear with no offset, so it applies to premultiplied colour as it is.
  const ColourMatrix3 m = ColourMatrix3::of(hueRotation(radians));
  return mapPixels(
      std::move(image),
      [&m](Rgba* pixels, int count) {
        for (int i = 0; i < count; ++i) m.apply(pixels[i].r, pixels[i].g, pixels[i].b);
      },
      pool);
}

std::expected<Image, ImageError> temperatureAndTint(Image image, core::OVPoint neutral, core::OVPoint targetNeutral,
                                                    WorkerPool& pool) {
  const ColourMatrix3 m = ColourMatrix3::of(adaptationMatrix(whitePointChromaticity(neutral.x, neutral.y),
                                                             whitePointChromaticity(targetNeutral.x, targetNeutral.y)));
  const SrgbCurve &decode = SrgbCurve::decode(), &encode = SrgbCurve::encode();
  return mapStraight(std::move(image), pool, [&](Straight& s) {
    float r = decode(s.r), g = decode(s.g), b = decode(s.b);
    m.apply(r, g, b);
    s.r = encode(r), s.g = encode(g), s.b = encode(b);
  });
}

std::expected<Image, ImageError> colorPosterize(Image image, double levels, WorkerPool& pool) {
  const double n = std::isfinite(levels) ? std::clamp(std::round(levels), 2.0, 256.0) : 2.0;
  const auto steps = static_cast<float>(n - 1);
  return mapStraight(std::move(image), pool, [steps](Straight& s) {
    for (float* c : {&s.r, &s.g, &s.b}) *c = std::round(std::clamp(*c, 0.0f, 1.0f) * steps) / steps;
  });
}

std::expected<Image, ImageError> colorInvert(Image image, WorkerPool& pool) {
  return mapStraight(std::move(image), pool, [](Straight& s) {
    s.r = 1 - s.r, s.g = 1 - s.g, s.b = 1 - s.b;
  });
}

std::expected<Image, ImageError> dissolveTransition(const Image& from, const Image& to, double time,
                                                    WorkerPool& pool) {
  if (from.isInfinite() || to.isInfinite()) return std::unexpected(ImageError::unbounded);
  const float t = std::isfinite(time) ? static_cast<float>(std::clamp(time, 0.0, 1.0)) : 0.0f;
  const PixelRect rect = from.extent().united(to.extent());
  return detail::renderRows(
      rect, pool, [&] { return std::vector<Rgba>(static_cast<std::size_t>(rect.width)); },
      [&](int y, Rgba* out, std::vector<Rgba>& other) {
        readRow(from, y, rect.x, rect.width, out);
        readRow(to, y, rect.x, rect.width, other.data());
        const Vec4 weight = detail::splat(t);
        for (int x = 0; x < rect.width; ++x) {
          const Vec4 a = detail::load(out[x]);
          detail::store(out[x], a + (detail::load(other[x]) - a) * weight);
        }
      });
}

std::expected<Image, ImageError> additionCompositing(const Image& top, double topWeight, const Image& bottom,
                                                     const PixelRect& rect, WorkerPool& pool) {
  const Vec4 weight = detail::splat(topWeight > 0 ? static_cast<float>(std::min(topWeight, 1.0)) : 0.0f);
  return detail::renderRows(
      rect, pool, [&] { return std::vector<Rgba>(static_cast<std::size_t>(rect.width)); },
      [&](int y, Rgba* out, std::vector<Rgba>& above) {
        readRow(bottom, y, rect.x, rect.width, out);
        readRow(top, y, rect.x, rect.width, above.data());
        for (int x = 0; x < rect.width; ++x) {
          detail::store(out[x], detail::vclamp01(detail::load(out[x]) + detail::load(above[x]) * weight));
        }
      });
}

std::expected<Image, ImageError> chromaKey(Image image, core::OVColor keyColor, double threshold, double softness,
                                           bool invertMatte, WorkerPool& pool) {
  const auto kr = static_cast<float>(keyColor.red), kg = static_cast<float>(keyColor.green),
             kb = static_cast<float>(keyColor.blue);
  const auto low = static_cast<float>(threshold), soft = static_cast<float>(softness);
  return mapStraight(std::move(image), pool, [=](Straight& s) {
    const float d = std::sqrt((s.r - kr) * (s.r - kr) + (s.g - kg) * (s.g - kg) + (s.b - kb) * (s.b - kb));
    float alpha = detail::smoothstep(low, low + soft, d);
    if (invertMatte) alpha = 1.0f - alpha;
    s.a *= alpha;
  });
}

std::expected<Image, ImageError> lumaKey(Image image, double threshold, double softness, bool keyDarker,
                                         WorkerPool& pool) {
  const auto t = static_cast<float>(threshold), soft = static_cast<float>(softness);
  return mapStraight(std::move(image), pool, [=](Straight& s) {
    const float l = detail::luma(s.r, s.g, s.b);
    const float rising = detail::smoothstep(t - soft, t + soft, l);
    s.a *= keyDarker ? rising : 1.0f - rising;
  });
}

}  // namespace orvane::render
