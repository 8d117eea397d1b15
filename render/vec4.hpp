#pragma once
// Four floats in one SSE register, for the inner loops of the kernels (GCC and
// Clang vector extension). Internal to render/.

#include <cstring>

#include "render/rgba.hpp"

namespace orvane::render::detail {

using Vec4 = float __attribute__((vector_size(16)));

inline Vec4 load(const Rgba& p) {
  Vec4 v;
  std::memcpy(&v, &p, sizeof v);
  return v;
}
inline void store(Rgba& p, Vec4 v) { std::memcpy(static_cast<void*>(&p), &v, sizeof v); }
inline Vec4 splat(float f) { return Vec4{f, f, f, f}; }
inline Vec4 alphaOf(Vec4 v) { return splat(v[3]); }
inline Vec4 vmin(Vec4 a, Vec4 b) { return a < b ? a : b; }
inline Vec4 vmax(Vec4 a, Vec4 b) { return a > b ? a : b; }
inline Vec4 vclamp01(Vec4 v) { return vmin(vmax(v, splat(0)), splat(1)); }

}  // namespace orvane::render::detail
