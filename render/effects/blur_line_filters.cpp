#include "render/effects/blur_line_filters.hpp"

#include <cstring>

namespace orvane::render::detail {

namespace {

void boxRowStepSse(const Rgba* left, const Rgba* next, const Rgba* right, Rgba* sum, Rgba* target, int lanes,
                   float scale, float edge) {
  const Vec4 s4 = splat(scale), e4 = splat(edge);
  for (int l = 0; l < lanes; ++l) {
    const Vec4 s = load(sum[l]), r = load(right[l]);
    store(target[l], s * s4 + (load(left[l]) + r) * e4);
    store(sum[l], s + (r - load(next[l])));
  }
}

#if defined(__x86_64__) || defined(__i386__)
// Two pixels a vector where the processor has AVX2. Without fused
// multiply-add, so that the result is the same on every processor.
using Vec8 = float __attribute__((vector_size(32)));

__attribute__((target("avx2"))) inline Vec8 load8(const Rgba* p) {
  Vec8 v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
__attribute__((target("avx2"))) inline void store8(Rgba* p, Vec8 v) { std::memcpy(static_cast<void*>(p), &v, sizeof v); }

__attribute__((target("avx2"))) void boxRowStepAvx2(const Rgba* left, const Rgba* next, const Rgba* right, Rgba* sum,
                                                      Rgba* target, int lanes, float scale, float edge) {
  const Vec8 s8 = {scale, scale, scale, scale, scale, scale, scale, scale};
  const Vec8 e8 = {edge, edge, edge, edge, edge, edge, edge, edge};
  int l = 0;
  for (; l + 2 <= lanes; l += 2) {
    const Vec8 s = load8(sum + l), r = load8(right + l);
    store8(target + l, s * s8 + (load8(left + l) + r) * e8);
    store8(sum + l, s + (r - load8(next + l)));
  }
  if (l < lanes) boxRowStepSse(left + l, next + l, right + l, sum + l, target + l, lanes - l, scale, edge);
}
#endif

BoxRowStep chooseBoxRowStep() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2")) return boxRowStepAvx2;
#endif
  return boxRowStepSse;
}

}  // namespace

BoxRowStep boxRowStep() {
  static const BoxRowStep step = chooseBoxRowStep();
  return step;
}

}  // namespace orvane::render::detail
