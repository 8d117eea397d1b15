#include "render/effects/blur_line_filters.hpp"

#include <cstring>

namespace orvane::render::detail {

namespace {

using Int4 = int __attribute__((vector_size(16)));

// The pixel, or transparency when none of its components passes the
// residue (a pixel is kept or dropped whole, so that its colour keeps to its
// alpha).
inline Vec4 withoutResidue(Vec4 v) {
  const Vec4 limit = splat(kBoxResidue);
  Int4 keep = (v > limit) | (v < -limit);
  keep |= __builtin_shuffle(keep, Int4{1, 0, 3, 2});
  keep |= __builtin_shuffle(keep, Int4{2, 3, 0, 1});
  return reinterpret_cast<Vec4>(reinterpret_cast<Int4>(v) & keep);
}

template <bool kFlush>
void boxRowStepSse(const Rgba* left, const Rgba* next, const Rgba* right, Rgba* sum, Rgba* target, int lanes,
                   float scale, float edge) {
  const Vec4 s4 = splat(scale), e4 = splat(edge);
  for (int l = 0; l < lanes; ++l) {
    const Vec4 s = load(sum[l]), r = load(right[l]);
    const Vec4 v = s * s4 + (load(left[l]) + r) * e4;
    store(target[l], kFlush ? withoutResidue(v) : v);
    store(sum[l], s + (r - load(next[l])));
  }
}

#if defined(__x86_64__) || defined(__i386__)
// Two pixels a vector where the processor has AVX2. Without fused
// multiply-add, so that the result is the same on every processor.
using Vec8 = float __attribute__((vector_size(32)));
using Int8 = int __attribute__((vector_size(32)));

__attribute__((target("avx2"))) inline Vec8 load8(const Rgba* p) {
  Vec8 v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
__attribute__((target("avx2"))) inline void store8(Rgba* p, Vec8 v) {
  std::memcpy(static_cast<void*>(p), &v, sizeof v);
}

template <bool kFlush>
__attribute__((target("avx2"))) void boxRowStepAvx2(const Rgba* left, const Rgba* next, const Rgba* right, Rgba* sum,
                                                      Rgba* target, int lanes, float scale, float edge) {
  const Vec8 s8 = {scale, scale, scale, scale, scale, scale, scale, scale};
  const Vec8 e8 = {edge, edge, edge, edge, edge, edge, edge, edge};
  constexpr float r = kBoxResidue;
  const Vec8 limit = {r, r, r, r, r, r, r, r};
  int l = 0;
  for (; l + 2 <= lanes; l += 2) {
    const Vec8 s = load8(sum + l), right8 = load8(right + l);
    Vec8 v = s * s8 + (load8(left + l) + right8) * e8;
    if (kFlush) {
      Int8 keep = (v > limit) | (v < -limit);
      keep |= __builtin_shuffle(keep, Int8{1, 0, 3, 2, 5, 4, 7, 6});
      keep |= __builtin_shuffle(keep, Int8{2, 3, 0, 1, 6, 7, 4, 5});
      v = reinterpret_cast<Vec8>(reinterpret_cast<Int8>(v) & keep);
    }
    store8(target + l, v);
    store8(sum + l, s + (right8 - load8(next + l)));
  }
  if (l < lanes) boxRowStepSse<kFlush>(left + l, next + l, right + l, sum + l, target + l, lanes - l, scale, edge);
}
#endif

bool hasAvx2() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2");
#else
  return false;
#endif
}

}  // namespace

BoxRowStep boxRowStep(bool flushResidue) {
  static const bool avx2 = hasAvx2();
#if defined(__x86_64__) || defined(__i386__)
  if (avx2) return flushResidue ? boxRowStepAvx2<true> : boxRowStepAvx2<false>;
#endif
  return flushResidue ? boxRowStepSse<true> : boxRowStepSse<false>;
}

}  // namespace orvane::render::detail
