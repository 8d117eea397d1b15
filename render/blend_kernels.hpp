#pragma once
// Per-pixel compositing of a premultiplied source s over a premultiplied
// backdrop d, one struct per mode so that a kernel is instantiated per mode
// and the inner loop has no switch. Internal to render/.
//
// The blend modes follow the compositing formula shared by the PDF blend
// modes and the W3C compositing model, with B(Cb, Cs) the mode's function on
// straight colours:
//   colour = s·(1 − αd) + d·(1 − αs) + αs·αd·B(d/αd, s/αs)
//   alpha  = αs + αd − αs·αd
// Where it saves the divisions, the premultiplied closed form is used.

#include <algorithm>
#include <cmath>

#include "render/vec4.hpp"

namespace orvane::render::detail {

// Writes the source as it is (the first draw into a fresh canvas).
struct ReplaceBlend {
  static Vec4 apply(Vec4 s, Vec4) { return s; }
};

// Porter-Duff source-over.
struct SourceOverBlend {
  static Vec4 apply(Vec4 s, Vec4 d) { return s + d * (splat(1) - alphaOf(s)); }
};

// Sum of the premultiplied components, clamped to 0 ... 1 when stored.
struct AddBlend {
  static Vec4 apply(Vec4 s, Vec4 d) { return vclamp01(s + d); }
};

// B = Cs·Cb. On the alpha lane the same expression gives αs + αd − αs·αd.
struct MultiplyBlend {
  static Vec4 apply(Vec4 s, Vec4 d) {
    return s * d + s * (splat(1) - alphaOf(d)) + d * (splat(1) - alphaOf(s));
  }
};

// B = Cs + Cb − Cs·Cb.
struct ScreenBlend {
  static Vec4 apply(Vec4 s, Vec4 d) { return s + d - s * d; }
};

// B = min(Cs, Cb).
struct DarkenBlend {
  static Vec4 apply(Vec4 s, Vec4 d) { return s + d - vmax(s * alphaOf(d), d * alphaOf(s)); }
};

// B = max(Cs, Cb).
struct LightenBlend {
  static Vec4 apply(Vec4 s, Vec4 d) { return s + d - vmin(s * alphaOf(d), d * alphaOf(s)); }
};

// B = |Cb − Cs|.
struct DifferenceBlend {
  static Vec4 apply(Vec4 s, Vec4 d) {
    Vec4 r = s + d - splat(2) * vmin(s * alphaOf(d), d * alphaOf(s));
    r[3] = s[3] + d[3] - s[3] * d[3];
    return r;
  }
};

// The general formula for the modes whose B needs straight colours.
template <float (*B)(float cb, float cs)>
Vec4 blendStraight(Vec4 s, Vec4 d) {
  const float as = s[3], ad = d[3];
  Vec4 r = s * splat(1 - ad) + d * splat(1 - as);
  if (as > 0 && ad > 0) {
    const float both = as * ad;
    for (int i = 0; i < 3; ++i) r[i] += both * B(d[i] / ad, s[i] / as);
  }
  r[3] = as + ad - as * ad;
  return r;
}

inline float hardLight(float cb, float cs) {
  return cs <= 0.5f ? cb * 2 * cs : cb + (2 * cs - 1) - cb * (2 * cs - 1);
}
inline float overlay(float cb, float cs) { return hardLight(cs, cb); }
inline float softLight(float cb, float cs) {
  if (cs <= 0.5f) return cb - (1 - 2 * cs) * cb * (1 - cb);
  const float dcb = cb <= 0.25f ? ((16 * cb - 12) * cb + 4) * cb : std::sqrt(std::max(cb, 0.0f));
  return cb + (2 * cs - 1) * (dcb - cb);
}

struct OverlayBlend {
  static Vec4 apply(Vec4 s, Vec4 d) { return blendStraight<overlay>(s, d); }
};
struct SoftLightBlend {
  static Vec4 apply(Vec4 s, Vec4 d) { return blendStraight<softLight>(s, d); }
};
struct HardLightBlend {
  static Vec4 apply(Vec4 s, Vec4 d) { return blendStraight<hardLight>(s, d); }
};

}  // namespace orvane::render::detail
