#pragma once
// The one-dimensional filters behind gaussianBlur: the sampled Gaussian
// itself, and a cascade of three box filters for wide kernels. Internal to
// render/; any thread (a filter is an immutable value, the samples and the
// scratch belong to the caller).
//
// The horizontal pass filters one contiguous row at a time. The vertical
// pass walks down a stretch of columns: each sample is a run of `lanes`
// pixels of one row, filtered independently, so that it reads and writes
// memory in order.
//
// Every filter is a "valid" convolution: from count + 2 × support() input
// samples it makes count output samples, output j centred on input
// j + support(). The caller supplies the margin (zeros past a picture's edge,
// or its edge repeated).

#include <algorithm>
#include <cmath>
#include <cstddef>
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
  // Pixels of scratch that runFilter() needs per lane.
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

// The variance of the sampled kernel of sigma: a little below sigma², as it
// stops at 3 sigma.
inline double sampledVariance(double sigma) {
  const std::vector<double> w = sampledGaussian(sigma);
  double variance = 0;
  for (std::size_t k = 1; k < w.size(); ++k) variance += 2 * w[k] * static_cast<double>(k * k);
  return variance;
}

// Three extended boxes whose variances add up to variance.
inline LineFilter boxFilterOfVariance(double variance) {
  LineFilter f;
  f.kind = LineFilter::Kind::boxes;
  const double v = std::max(variance, 0.0) / LineFilter::kBoxPasses;
  const int r = std::max(0, static_cast<int>(std::floor(0.5 * std::sqrt(12 * v + 1) - 0.5)));
  const double inner = r * (r + 1.0) * (2 * r + 1.0) / 3;  // sum of k² over -r ... r
  const double alpha = (v * (2 * r + 1) - inner) / (2 * ((r + 1.0) * (r + 1.0) - v));
  f.boxRadius = r;
  f.edgeWeight = static_cast<float>(alpha);
  f.boxScale = static_cast<float>(1 / (2 * r + 1 + 2 * alpha));
  return f;
}

// Three extended boxes of the sampled kernel's variance. Matching the kernel
// the picture's extent allows, rather than the unbounded Gaussian, keeps the
// two methods alike where they meet and halves the largest difference
// between them on a straight edge.
inline LineFilter boxFilter(double sigma) { return boxFilterOfVariance(sampledVariance(sigma)); }

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

// One step of one box for a run of lanes (a stretch of a row):
// target = scale × sum + edge × (left + right), then sum += right − next,
// pixel by pixel. Chosen once for the processor (SSE, or AVX2 where present).
//
// A running sum does not come back to exactly zero once a bright stretch
// has passed: it keeps a rounding residue of about 1e-7 of what it held,
// which would leave a faint tail whose colour and alpha disagree (harmless
// to see, but blown up wherever a colour is divided by its alpha). The last
// box therefore makes a pixel whose components all lie within kBoxResidue
// of zero transparent; that is
// below what an 8- or 10-bit output shows by a factor of thirty or more.
inline constexpr float kBoxResidue = 1.0f / (1 << 15);
using BoxRowStep = void (*)(const Rgba* left, const Rgba* next, const Rgba* right, Rgba* sum, Rgba* target,
                            int lanes, float scale, float edge);
// flushResidue: the step of the last box.
BoxRowStep boxRowStep(bool flushResidue);

// The boxes in one walk: at step t the last box makes its output t, each box
// before it span samples further on, so each reads what the one before it
// made a moment ago, from a ring of span + 1 samples (sample m of any box
// sits in slot m mod (span + 1)). The running sums live in scratch after the
// rings.
template <class In, class Out>
void boxFilterRun(const LineFilter& f, In in, Out out, int count, int lanes, Rgba* scratch) {
  constexpr int kPasses = LineFilter::kBoxPasses;
  const BoxRowStep step = boxRowStep(false), lastStep = boxRowStep(true);
  const int span = f.boxSpan(), ringSize = span + 1;
  const float edge = f.edgeWeight * f.boxScale, scale = f.boxScale;
  const auto at = [lanes](Rgba* base, int slot) { return base + static_cast<std::ptrdiff_t>(slot) * lanes; };
  Rgba* rings[kPasses - 1];
  for (int p = 0; p + 1 < kPasses; ++p) rings[p] = at(scratch, p * ringSize);
  Rgba* sums = at(scratch, (kPasses - 1) * ringSize);
  const auto wrap = [ringSize](int k) { return k >= ringSize ? k - ringSize : k; };

  // The sum of box p's input samples 1 ... span - 1, for its output 0.
  const auto startSum = [&](int p) {
    Rgba* sum = at(sums, p);
    std::fill(sum, sum + lanes, Rgba{});
    for (int k = 1; k < span; ++k) {
      const Rgba* q = p == 0 ? in(k) : at(rings[p - 1], k % ringSize);
      for (int l = 0; l < lanes; ++l) store(sum[l], load(sum[l]) + load(q[l]));
    }
  };
  // Box p's output m (into target) from its input's samples m, m + 1 and
  // m + span. The box before wrote its sample m + span into slot newest just
  // now; its samples m and m + 1 are in the two slots after it.
  const auto boxStep = [&](int p, int m, int newest, Rgba* target) {
    if (p == 0) {
      step(in(m), in(m + 1), in(m + span), at(sums, 0), target, lanes, scale, edge);
      return;
    }
    const int oldest = wrap(newest + 1);
    Rgba* ring = rings[p - 1];
    (p + 1 == kPasses ? lastStep : step)(at(ring, oldest), at(ring, wrap(oldest + 1)), at(ring, newest),
                                         at(sums, p), target, lanes, scale, edge);
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
    for (int p = 0; p + 1 < kPasses; ++p) {
      const int m = t + (kPasses - 1 - p) * span;
      if (m < 0) continue;
      if (m == 0) startSum(p);
      boxStep(p, m, p > 0 ? slot[p - 1] : 0, at(rings[p], slot[p]));
    }
    advance();
  }
  startSum(kPasses - 1);
  for (int t = 0; t < count; ++t) {
    for (int p = 0; p + 1 < kPasses; ++p) {
      boxStep(p, t + (kPasses - 1 - p) * span, p > 0 ? slot[p - 1] : 0, at(rings[p], slot[p]));
    }
    boxStep(kPasses - 1, t, slot[kPasses - 2], out(t));
    advance();
  }
}

// The three boxes along a contiguous line (the horizontal pass): count +
// 2 × support() samples of in to count samples of out. The boxes run in one
// loop, each span samples behind the one before, so that their running sums
// (each a chain of additions) advance side by side. first and second hold
// the outputs of the first two boxes: count + 2 × span samples each.
inline void boxFilterContiguous(const LineFilter& f, const Rgba* in, Rgba* first, Rgba* second, Rgba* out,
                                int count) {
  static_assert(LineFilter::kBoxPasses == 3);
  const int span = f.boxSpan();
  const Vec4 edge = splat(f.edgeWeight * f.boxScale), scale = splat(f.boxScale);
  // sum holds Σ source[m + 1 ... m + span - 1] for output m.
  const auto startSum = [span](const Rgba* source) {
    Vec4 sum = splat(0);
    for (int k = 1; k < span; ++k) sum += load(source[k]);
    return sum;
  };
  const auto step = [&](const Rgba* source, int m, Vec4& sum) {
    const Vec4 r = load(source[m + span]);
    const Vec4 v = sum * scale + (load(source[m]) + r) * edge;
    sum += r - load(source[m + 1]);
    return v;
  };
  Vec4 sum1 = startSum(in);
  for (int m = 0; m < 2 * span; ++m) store(first[m], step(in, m, sum1));
  Vec4 sum2 = startSum(first);
  for (int m = 0; m < span; ++m) store(second[m], step(first, m, sum2));
  Vec4 sum3 = startSum(second);
  for (int j = 0; j < count; ++j) {
    store(first[j + 2 * span], step(in, j + 2 * span, sum1));
    store(second[j + span], step(first, j + span, sum2));
    store(out[j], step(second, j, sum3));
  }
}

// A contiguous line (the horizontal pass): count + 2 × support() samples of
// line into count samples of out; scratch holds 2 × (count + 2 × support())
// samples.
inline void filterContiguousLine(const LineFilter& f, const Rgba* line, Rgba* scratch, Rgba* out, int count) {
  if (f.kind == LineFilter::Kind::exact) {
    exactFilterRun<1>(
        f, [line](int i) { return line + i; }, [out](int j) { return out + j; }, count, 1);
    return;
  }
  boxFilterContiguous(f, line, scratch, scratch + count + 2 * f.support(), out, count);
}

// Runs the filter down count + 2 × support() samples of in to count samples
// of out, each of laneCount pixels. scratch holds lanes × f.scratchPerLane()
// pixels.
template <class In, class Out>
void runFilter(const LineFilter& f, In in, Out out, int count, int laneCount, Rgba* scratch) {
  if (f.kind == LineFilter::Kind::exact) {
    exactFilterRun<0>(f, in, out, count, laneCount);
  } else {
    boxFilterRun(f, in, out, count, laneCount, scratch);
  }
}

}  // namespace orvane::render::detail
