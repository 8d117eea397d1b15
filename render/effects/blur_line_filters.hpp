#pragma once
// The one-dimensional filters behind gaussianBlur: the sampled Gaussian
// itself, and a cascade of three box filters for wide kernels. Internal to
// render/; any thread (a filter is an immutable value, the samples and the
// scratch belong to the caller).
//
// A filter runs along a sequence of samples, each a run of `lanes` pixels
// filtered independently: one pixel for a row (the horizontal pass), a
// stretch of a row for the vertical pass, which walks down whole row
// segments so that it reads and writes memory in order.
//
// Every filter is a "valid" convolution: from count + 2 × support() input
// samples it makes count output samples, output j centred on input
// j + support(). The caller supplies the margin (zeros past a picture's edge,
// or its edge repeated).

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "render/rgba.hpp"
#include "render/vec4.hpp"

namespace orvane::render::detail {

struct LineFilter {
  enum class Kind { exact, boxes };
  static constexpr int kBoxPasses = 3;

  Kind kind = Kind::exact;
  // exact: the weights of offsets 0 ... radius (the kernel is symmetric),
  // summing to 1 over -radius ... radius.
  std::vector<float> weights;
  int radius = 0;
  // boxes: each pass averages 2 × boxRadius + 1 samples at weight 1 and the
  // two next ones at edgeWeight, all scaled by boxScale (an extended box:
  // the fractional ends let the variances add up to any value).
  int boxRadius = 0;
  float edgeWeight = 0;
  float boxScale = 1;

  // From an output sample to the farthest input it reads.
  int support() const { return kind == Kind::exact ? radius : kBoxPasses * boxSpan() / 2; }
  // From one end of a box to the other.
  int boxSpan() const { return 2 * boxRadius + 2; }
  // Pixels of scratch that run() needs per lane.
  std::size_t scratchPerLane() const {
    return kind == Kind::exact ? 0 : static_cast<std::size_t>((kBoxPasses - 1) * (boxSpan() + 1) + kBoxPasses);
  }
};

// The sampled Gaussian of sigma over ±ceil(3 sigma), normalised: the
// weights of offsets 0 ... ceil(3 sigma).
inline std::vector<double> sampledGaussian(double sigma) {
  const int radius = std::max(1, static_cast<int>(std::ceil(3 * sigma)));
  std::vector<double> w(static_cast<std::size_t>(radius) + 1);
  double total = 0;
  for (int k = 0; k <= radius; ++k) {
    w[static_cast<std::size_t>(k)] = std::exp(-0.5 * k * k / (sigma * sigma));
    total += (k == 0 ? 1 : 2) * w[static_cast<std::size_t>(k)];
  }
  for (double& v : w) v /= total;
  return w;
}

inline LineFilter exactFilter(double sigma) {
  LineFilter f;
  f.kind = LineFilter::Kind::exact;
  const std::vector<double> w = sampledGaussian(sigma);
  f.radius = static_cast<int>(w.size()) - 1;
  f.weights.assign(w.begin(), w.end());
  return f;
}

// Three extended boxes whose variances add up to that of the sampled kernel
// (a little below sigma², as it stops at 3 sigma). Matching the kernel the
// picture's extent allows, rather than the unbounded Gaussian, keeps the two
// methods alike where they meet and halves the largest difference between
// them on a straight edge.
inline LineFilter boxFilter(double sigma) {
  LineFilter f;
  f.kind = LineFilter::Kind::boxes;
  const std::vector<double> w = sampledGaussian(sigma);
  double variance = 0;
  for (std::size_t k = 1; k < w.size(); ++k) variance += 2 * w[k] * static_cast<double>(k * k);
  const double v = variance / LineFilter::kBoxPasses;
  const int r = std::max(0, static_cast<int>(std::floor(0.5 * std::sqrt(12 * v + 1) - 0.5)));
  const double inner = r * (r + 1.0) * (2 * r + 1.0) / 3;  // sum of k² over -r ... r
  const double alpha = (v * (2 * r + 1) - inner) / (2 * ((r + 1.0) * (r + 1.0) - v));
  f.boxRadius = r;
  f.edgeWeight = static_cast<float>(alpha);
  f.boxScale = static_cast<float>(1 / (2 * r + 1 + 2 * alpha));
  return f;
}

// out(j) = Σ weights[|k|] × in(j + radius + k).
template <int kLanes, class In, class Out>
void exactFilterRun(const LineFilter& f, In in, Out out, int count, int laneCount) {
  const int lanes = kLanes > 0 ? kLanes : laneCount;
  const int r = f.radius;
  const float* w = f.weights.data();
  // Eight lanes at a time keep their sums in registers across the taps.
  constexpr int kBlock = kLanes > 0 && kLanes < 8 ? kLanes : 8;
  for (int j = 0; j < count; ++j) {
    Rgba* o = out(j);
    const Rgba* centre = in(j + r);
    for (int l0 = 0; l0 < lanes; l0 += kBlock) {
      const int n = std::min(kBlock, lanes - l0);
      Vec4 acc[kBlock];
      for (int l = 0; l < n; ++l) acc[l] = load(centre[l0 + l]) * w[0];
      for (int k = 1; k <= r; ++k) {
        const Rgba* before = in(j + r - k) + l0;
        const Rgba* after = in(j + r + k) + l0;
        const Vec4 wk = splat(w[k]);
        for (int l = 0; l < n; ++l) acc[l] += (load(before[l]) + load(after[l])) * wk;
      }
      for (int l = 0; l < n; ++l) store(o[l0 + l], acc[l]);
    }
  }
}

// A vector that may alias the pixels of a scratch buffer.
using SumVec = float __attribute__((vector_size(16), may_alias));

// The boxes in one walk: at step t the last box makes its output t, each box
// before it span samples further on, so each reads what the one before it
// made a moment ago, from a ring of span + 1 samples (sample m of any box
// sits in slot m mod (span + 1)). With a fixed lane count the running sums
// stay in registers; otherwise they live in scratch.
template <int kLanes, int kPasses, class In, class Out>
void boxFilterRun(const LineFilter& f, In in, Out out, int count, int laneCount, Rgba* scratch) {
  const int lanes = kLanes > 0 ? kLanes : laneCount;
  const int span = f.boxSpan(), ringSize = span + 1;
  const Vec4 edge = splat(f.edgeWeight * f.boxScale), scale = splat(f.boxScale);
  Rgba* rings[kPasses - 1];
  for (int p = 0; p + 1 < kPasses; ++p) rings[p] = scratch + static_cast<std::ptrdiff_t>(p) * ringSize * lanes;
  SumVec localSums[kLanes > 0 ? kPasses * kLanes : 1] = {};
  SumVec* sums = kLanes > 0
                     ? localSums
                     : reinterpret_cast<SumVec*>(scratch + static_cast<std::ptrdiff_t>(kPasses - 1) * ringSize * lanes);
  const auto wrap = [ringSize](int k) { return k >= ringSize ? k - ringSize : k; };
  const auto at = [lanes](Rgba* ring, int slot) { return ring + static_cast<std::ptrdiff_t>(slot) * lanes; };

  // Box p's input sample m.
  const auto input = [&](int p, int m) -> const Rgba* { return p == 0 ? in(m) : at(rings[p - 1], m % ringSize); };
  // The sum of box p's input samples 1 ... span - 1, for its output 0.
  const auto startSum = [&](int p) {
    SumVec* sum = sums + static_cast<std::ptrdiff_t>(p) * lanes;
    for (int l = 0; l < lanes; ++l) sum[l] = SumVec{};
    for (int k = 1; k < span; ++k) {
      const Rgba* q = input(p, k);
      for (int l = 0; l < lanes; ++l) sum[l] += load(q[l]);
    }
  };
  // Box p's output m (into target) from its input's samples m, m + 1 and
  // m + span, where its sum holds Σ input(m + 1 ... m + span - 1). The box
  // before wrote its sample m + span into slot newest just now.
  const auto boxStep = [&](int p, int m, int newest, Rgba* target) {
    const Rgba *left, *next, *right;
    if (p == 0) {
      left = in(m), next = in(m + 1), right = in(m + span);
    } else {
      const int oldest = wrap(newest + 1);
      left = at(rings[p - 1], oldest), next = at(rings[p - 1], wrap(oldest + 1)), right = at(rings[p - 1], newest);
    }
    SumVec* sum = sums + static_cast<std::ptrdiff_t>(p) * lanes;
    for (int l = 0; l < lanes; ++l) {
      const Vec4 s = sum[l], r = load(right[l]);
      store(target[l], s * scale + (load(left[l]) + r) * edge);
      sum[l] = s + (r - load(next[l]));
    }
  };

  // slot[p]: where box p's output of this step goes (its index mod ringSize);
  // at the first step box p makes its output -p × span.
  int slot[kPasses];
  for (int p = 0; p < kPasses; ++p) slot[p] = p % ringSize;
  const auto advance = [&] {
    for (int p = 0; p < kPasses; ++p) slot[p] = wrap(slot[p] + 1);
  };
  // Filling the rings: the later boxes start one after the other.
  for (int t = -(kPasses - 1) * span; t < 0; ++t) {
    for (int p = 0; p < kPasses; ++p) {
      const int m = t + (kPasses - 1 - p) * span;
      if (m < 0) continue;
      if (m == 0) startSum(p);
      boxStep(p, m, p > 0 ? slot[p - 1] : 0, at(rings[p], slot[p]));
    }
    advance();
  }
  if (kPasses == 1 || count <= 0) return;
  startSum(kPasses - 1);
  for (int t = 0; t < count; ++t) {
    for (int p = 0; p + 1 < kPasses; ++p) boxStep(p, t + (kPasses - 1 - p) * span, p > 0 ? slot[p - 1] : 0, at(rings[p], slot[p]));
    boxStep(kPasses - 1, t, slot[kPasses - 2], out(t));
    advance();
  }
}

// One box over a contiguous line, from count + span input samples to count:
// out[j] = scale × (Σ in[j + 1 ... j + span - 1] + edge × (in[j] + in[j + span])).
inline void boxLinePass(const LineFilter& f, const Rgba* in, Rgba* out, int count) {
  const int span = f.boxSpan();
  const Vec4 edge = splat(f.edgeWeight * f.boxScale), scale = splat(f.boxScale);
  Vec4 sum = splat(0);
  for (int k = 1; k < span; ++k) sum += load(in[k]);
  for (int j = 0; j < count; ++j) {
    const Vec4 r = load(in[j + span]);
    store(out[j], sum * scale + (load(in[j]) + r) * edge);
    sum += r - load(in[j + 1]);
  }
}

// A contiguous line (the horizontal pass): count + 2 × support() samples of
// line into count samples of out, box after box, through spare (which holds
// as many samples as line; line is overwritten).
inline void filterContiguousLine(const LineFilter& f, Rgba* line, Rgba* spare, Rgba* out, int count) {
  if (f.kind == LineFilter::Kind::exact) {
    exactFilterRun<1>(
        f, [line](int i) -> const Rgba* { return line + i; }, [out](int j) { return out + j; }, count, 1);
    return;
  }
  const int span = f.boxSpan();
  for (int p = LineFilter::kBoxPasses - 1; p > 0; --p) {
    boxLinePass(f, line, spare, count + p * span);
    std::swap(line, spare);
  }
  boxLinePass(f, line, out, count);
}

// Runs the filter down count + 2 × support() samples of in to count samples
// of out, each of laneCount pixels. scratch holds lanes × f.scratchPerLane()
// pixels.
template <class In, class Out>
void runFilter(const LineFilter& f, In in, Out out, int count, int laneCount, Rgba* scratch) {
  if (f.kind == LineFilter::Kind::exact) {
    exactFilterRun<0>(f, in, out, count, laneCount);
  } else {
    boxFilterRun<0, LineFilter::kBoxPasses>(f, in, out, count, laneCount, scratch);
  }
}

}  // namespace orvane::render::detail
