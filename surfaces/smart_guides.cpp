#include "surfaces/smart_guides.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

namespace orvane::surfaces {

namespace {

using Box = SmartGuides::Box;
using Axis = SmartGuides::Axis;

// Guides closer than this are one line on screen.
constexpr double kSameLine = 0.5;
// Gaps that differ by less than this read as equal.
constexpr double kSameGap = 1.0;

// The smallest candidate in magnitude within tolerance; the first wins ties,
// so the caller's order is the priority.
struct Nearest {
  double tolerance;
  std::optional<double> best;

  void consider(double delta) {
    if (!(std::abs(delta) <= tolerance)) return;  // also drops NaN
    if (!best || std::abs(delta) < std::abs(*best)) best = delta;
  }
};

// Among boxes, the one that satisfies keep and scores highest; the first
// on a tie.
template <class Keep, class Score>
std::optional<Box> bestOf(const std::vector<Box>& boxes, Keep keep, Score score) {
  std::optional<Box> found;
  for (const Box& b : boxes) {
    if (keep(b) && (!found || score(b) > score(*found))) found = b;
  }
  return found;
}

}  // namespace

SmartGuides::Result SmartGuides::resolve(const Box& moving, const std::vector<Box>& others,
                                         const core::OVSize& canvas, double tolerance) {
  const Box frame{0, canvas.width, 0, canvas.height};
  const double dx = offset(Axis::vertical, moving, others, frame, tolerance);
  const double dy = offset(Axis::horizontal, moving, others, frame, tolerance);
  const Box moved = moving.offsetBy(dx, dy);

  Result result;
  result.offset = {dx, dy};
  std::vector<Alignment> lines = alignments(Axis::vertical, moved, others, frame);
  for (Alignment& a : alignments(Axis::horizontal, moved, others, frame)) lines.push_back(std::move(a));
  result.alignments = dedupe(std::move(lines));
  result.spacings = spacings(Axis::vertical, moved, others);
  for (Spacing& s : spacings(Axis::horizontal, moved, others)) result.spacings.push_back(std::move(s));
  return result;
}

double SmartGuides::offset(Axis axis, const Box& moving, const std::vector<Box>& others, const Box& frame,
                           double tolerance) {
  // Targets in priority order: the canvas first, then the others as listed.
  Nearest nearest{tolerance, std::nullopt};
  const auto against = [&](const Box& target) {
    for (double t : values(target, axis)) {
      for (double v : values(moving, axis)) nearest.consider(t - v);
    }
  };
  against(frame);
  for (const Box& other : others) against(other);
  if (nearest.best) return *nearest.best;
  // Alignment goes before equal spacing on the same axis.
  return spacingOffset(axis, moving, others, tolerance).value_or(0);
}

std::optional<double> SmartGuides::spacingOffset(Axis axis, const Box& moving, const std::vector<Box>& others,
                                                 double tolerance) {
  const std::vector<Box> row = neighbours(moving, others, axis);
  const auto lo = [axis](const Box& b) { return low(b, axis); };
  const auto hi = [axis](const Box& b) { return high(b, axis); };

  const auto nearestBelow = [&](double limit) {
    return bestOf(row, [&](const Box& b) { return hi(b) <= limit; }, hi);
  };
  const auto nearestAbove = [&](double limit) {
    return bestOf(row, [&](const Box& b) { return lo(b) >= limit; }, [&](const Box& b) { return -lo(b); });
  };

  Nearest nearest{tolerance, std::nullopt};
  const std::optional<Box> before = nearestBelow(lo(moving));
  const std::optional<Box> after = nearestAbove(hi(moving));
  if (before && after) nearest.consider((hi(*before) + lo(*after) - lo(moving) - hi(moving)) * 0.5);
  if (before) {
    if (const auto next = nearestBelow(lo(*before))) {
      const double gap = lo(*before) - hi(*next);
      if (gap > 0) nearest.consider(hi(*before) + gap - lo(moving));
    }
  }
  if (after) {
    if (const auto next = nearestAbove(hi(*after))) {
      const double gap = lo(*next) - hi(*after);
      if (gap > 0) nearest.consider(lo(*after) - gap - hi(moving));
    }
  }
  return nearest.best;
}

std::vector<SmartGuides::Alignment> SmartGuides::alignments(Axis axis, const Box& moved,
                                                            const std::vector<Box>& others, const Box& frame) {
  const Axis cross = crossAxis(axis);
  std::vector<const Box*> candidates;
  candidates.reserve(others.size() + 1);
  candidates.push_back(&frame);
  for (const Box& b : others) candidates.push_back(&b);

  std::vector<Alignment> found;
  for (double v : values(moved, axis)) {
    double from = low(moved, cross), to = high(moved, cross);
    bool any = false;
    for (const Box* b : candidates) {
      const auto vs = values(*b, axis);
      const bool lines = std::any_of(vs.begin(), vs.end(), [v](double w) { return std::abs(w - v) < kSameLine; });
      if (!lines) continue;
      any = true;
      from = std::min(from, low(*b, cross));
      to = std::max(to, high(*b, cross));
    }
    if (any) found.push_back(Alignment{core::Uuid::make(), axis, v, from, to});
  }
  return found;
}

std::vector<SmartGuides::Spacing> SmartGuides::spacings(Axis axis, const Box& moved,
                                                        const std::vector<Box>& others) {
  // The row with the moved box in it, flagged so that it can be found again
  // after sorting.
  std::vector<std::pair<Box, bool>> row;
  for (const Box& b : neighbours(moved, others, axis)) row.emplace_back(b, false);
  row.emplace_back(moved, true);
  if (row.size() < 3) return {};
  std::stable_sort(row.begin(), row.end(),
                   [axis](const auto& a, const auto& b) { return low(a.first, axis) < low(b.first, axis); });
  const auto at = std::find_if(row.begin(), row.end(), [](const auto& e) { return e.second; });
  const std::ptrdiff_t i = at - row.begin();
  const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(row.size());

  // The gap from box k to box k + 1, when both exist and it is positive.
  const auto gap = [&](std::ptrdiff_t k) -> std::optional<Range> {
    if (k < 0 || k + 1 >= count) return std::nullopt;
    const Range r{high(row[k].first, axis), low(row[k + 1].first, axis)};
    if (!(r.length() > 0)) return std::nullopt;
    return r;
  };
  const double cross = axis == Axis::vertical ? moved.midY() : moved.midX();

  std::vector<Spacing> found;
  const auto addIfEqual = [&](std::ptrdiff_t first) {
    const auto a = gap(first), b = gap(first + 1);
    if (a && b && std::abs(a->length() - b->length()) < kSameGap) {
      found.push_back(Spacing{core::Uuid::make(), axis, {*a, *b}, cross});
    }
  };
  addIfEqual(i - 1);  // either side of the moved box
  addIfEqual(i - 2);  // the two before it
  addIfEqual(i);      // the two after it
  return found;
}

std::vector<SmartGuides::Box> SmartGuides::neighbours(const Box& moving, const std::vector<Box>& others, Axis axis) {
  std::vector<Box> found;
  for (const Box& b : others) {
    if (axis == Axis::vertical ? moving.sharesRow(b) : moving.sharesColumn(b)) found.push_back(b);
  }
  return found;
}

std::vector<SmartGuides::Alignment> SmartGuides::dedupe(std::vector<Alignment> alignments) {
  std::vector<Alignment> kept;
  kept.reserve(alignments.size());
  for (Alignment& a : alignments) {
    const bool repeated = std::any_of(kept.begin(), kept.end(), [&](const Alignment& k) {
      return k.axis == a.axis && std::abs(k.value - a.value) < kSameLine;
    });
    if (!repeated) kept.push_back(std::move(a));
  }
  return kept;
}

}  // namespace orvane::surfaces
