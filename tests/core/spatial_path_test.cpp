// The path through space between two point keyframes: the cubic through
// their tangents, and the automatic tangents taken from the neighbours.

#include <gtest/gtest.h>

#include <optional>

#include "core/enum_text.hpp"
#include "core/spatial_path.hpp"

namespace orvane::core {
namespace {

using S = SpatialInterpolation;

void expectPointNear(const OVPoint& actual, const OVPoint& expected) {
  EXPECT_NEAR(actual.x, expected.x, 1e-12) << "(" << actual.x << ", " << actual.y << ")";
  EXPECT_NEAR(actual.y, expected.y, 1e-12) << "(" << actual.x << ", " << actual.y << ")";
}

TEST(SpatialPathTest, ModesReadBackFromTheirRawText) {
  EXPECT_EQ(rawValue(S::autoBezier), "autoBezier");
  for (S mode : allCases<S>()) EXPECT_EQ(fromRaw<S>(rawValue(mode)), mode);
  EXPECT_FALSE(fromRaw<S>("Auto Bezier").has_value());
}

TEST(SpatialPathTest, EndpointsAreExactAndProgressIsClamped) {
  const OVPoint a{0.1, 0.7}, d{1e6 / 3, -2.2}, out{123.456, -9.87}, in{-55.5, 0.3};
  EXPECT_EQ(SpatialPath::pointFrom(a, out, d, in, 0), a);
  EXPECT_EQ(SpatialPath::pointFrom(a, out, d, in, 1), d);
  EXPECT_EQ(SpatialPath::pointFrom(a, out, d, in, -0.5), a);
  EXPECT_EQ(SpatialPath::pointFrom(a, out, d, in, 1.5), d);
}

TEST(SpatialPathTest, FollowsTheCubicFromTheStartsOutTangentToTheEndsInTangent) {
  // A = (0, 0), B = A + out, C = D + in, D = (30, 30).
  struct Case {
    OVPoint out, in;
    double progress;
    OVPoint expected;
  };
  const Case cases[] = {
      {{10, 0}, {0, -10}, 0.5, {18.75, 11.25}},         // ⅛A + ⅜B + ⅜C + ⅛D
      {{10, 0}, {0, -10}, 0.25, {8.90625, 3.28125}},    // (27A + 27B + 9C + D) / 64
      {{10, 0}, {0, -10}, 0.75, {26.71875, 21.09375}},  // (A + 9B + 27C + 27D) / 64
      {{0, -10}, {10, 0}, 0.25, {6.09375, 0.46875}},    // tangents swapped: another path
      {{0, 0}, {0, 0}, 0.25, {4.6875, 4.6875}},         // straight, but only 10/64 of the way
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << "out (" << c.out.x << ", " << c.out.y << ") at " << c.progress);
    expectPointNear(SpatialPath::pointFrom({0, 0}, c.out, {30, 30}, c.in, c.progress), c.expected);
  }
}

TEST(SpatialPathTest, AutoHandlesLieAlongTheNeighboursChordAThirdOfEachSegment) {
  struct Case {
    const char* what;
    OVPoint p;
    std::optional<OVPoint> previous, next;
    OVPoint in, out;
  };
  const OVPoint o{0, 0};
  const Case cases[] = {
      {"no neighbours", {5, 5}, std::nullopt, std::nullopt, o, o},
      {"first key", {10, 10}, std::nullopt, OVPoint{40, 16}, o, {10, 2}},
      {"last key", {10, 10}, OVPoint{1, 4}, std::nullopt, {-3, -2}, o},
      {"chord (6, 0), segments 5", {3, 4}, o, OVPoint{6, 0}, {-5.0 / 3, 0}, {5.0 / 3, 0}},
      // Chord unit (0.8, 0.6); the segment before is 6 long, the one after 8.
      {"unequal segments", {0, 6}, o, OVPoint{8, 6}, {-1.6, -1.2}, {0.8 * 8 / 3, 0.6 * 8 / 3}},
      // Neighbours coincide: no chord, so the direction is N − P = (−6, −8).
      {"doubling back", {6, 8}, o, o, {2, 8.0 / 3}, {-2, -8.0 / 3}},
      // Chord 5e-5 and outgoing 7e-5 are below 1e-4; the incoming 1.2e-4 gives (1, 0).
      {"tiny chord", {1.2e-4, 0}, o, OVPoint{5e-5, 0}, {-4e-5, 0}, {7e-5 / 3, 0}},
      {"all coincide", {2, 2}, OVPoint{2, 2}, OVPoint{2, 2}, o, o},
      {"all within a hair", {2, 2}, OVPoint{2 + 3e-5, 2}, OVPoint{2, 2 + 3e-5}, o, o},
      {"on its previous key", o, o, OVPoint{9, 0}, o, {3, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const SpatialHandles h = SpatialPath::autoHandlesAt(c.p, c.previous, c.next);
    expectPointNear(h.inTangent, c.in);
    expectPointNear(h.outTangent, c.out);
  }
}

}  // namespace
}  // namespace orvane::core
