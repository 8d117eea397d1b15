// The path through space between two point keyframes: the cubic through
// their tangents, and the automatic tangents taken from the neighbours.

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "core/enum_text.hpp"
#include "core/spatial_path.hpp"

namespace orvane::core {
namespace {

using S = SpatialInterpolation;

void expectPointNear(const OVPoint& actual, const OVPoint& expected, double tolerance = 1e-12) {
  EXPECT_NEAR(actual.x, expected.x, tolerance) << "y: " << actual.y << " vs " << expected.y;
  EXPECT_NEAR(actual.y, expected.y, tolerance) << "x: " << actual.x << " vs " << expected.x;
}

void expectHandlesNear(const SpatialHandles& actual, const OVPoint& in, const OVPoint& out,
                       double tolerance = 1e-12) {
  {
    SCOPED_TRACE("inTangent");
    expectPointNear(actual.inTangent, in, tolerance);
  }
  {
    SCOPED_TRACE("outTangent");
    expectPointNear(actual.outTangent, out, tolerance);
  }
}

// --- Names ---

TEST(SpatialPathTest, SpatialModesHaveTheirRawTextAndDisplayNames) {
  EXPECT_EQ(rawValue(S::linear), "linear");
  EXPECT_EQ(rawValue(S::autoBezier), "autoBezier");
  EXPECT_EQ(rawValue(S::bezier), "bezier");
  EXPECT_EQ(displayName(S::linear), "Linear");
  EXPECT_EQ(displayName(S::autoBezier), "Auto Bezier");
  EXPECT_EQ(displayName(S::bezier), "Bezier");
  EXPECT_EQ(fromRaw<S>("autoBezier"), S::autoBezier);
  EXPECT_FALSE(fromRaw<S>("Auto Bezier").has_value());
  const auto all = allCases<S>();
  ASSERT_EQ(all.size(), 3u);
  EXPECT_EQ(all[0], S::linear);
  EXPECT_EQ(all[1], S::autoBezier);
  EXPECT_EQ(all[2], S::bezier);
}

TEST(SpatialPathTest, ZeroHandlesHaveBothTangentsZero) {
  EXPECT_EQ(SpatialHandles::zero.inTangent, OVPoint::zero);
  EXPECT_EQ(SpatialHandles::zero.outTangent, OVPoint::zero);
  EXPECT_EQ(SpatialHandles{}, SpatialHandles::zero);
}

// --- The cubic between two keys ---

TEST(SpatialPathTest, EndpointsAreExact) {
  const OVPoint a{0.1, 0.7};
  const OVPoint d{1e6 / 3, -2.2};
  const OVPoint out{123.456, -9.87};
  const OVPoint in{-55.5, 0.3};
  EXPECT_EQ(SpatialPath::pointFrom(a, out, d, in, 0), a);
  EXPECT_EQ(SpatialPath::pointFrom(a, out, d, in, 1), d);
}

TEST(SpatialPathTest, ProgressOutsideTheUnitIntervalIsClamped) {
  const OVPoint a{0, 0};
  const OVPoint d{30, 30};
  const OVPoint out{10, 0};
  const OVPoint in{0, -10};
  EXPECT_EQ(SpatialPath::pointFrom(a, out, d, in, -0.5), a);
  EXPECT_EQ(SpatialPath::pointFrom(a, out, d, in, -100), a);
  EXPECT_EQ(SpatialPath::pointFrom(a, out, d, in, 1.5), d);
  EXPECT_EQ(SpatialPath::pointFrom(a, out, d, in, 100), d);
}

TEST(SpatialPathTest, FollowsTheCubicThroughBothTangents) {
  // A = (0, 0), B = A + out = (10, 0), C = D + in = (30, 20), D = (30, 30).
  const OVPoint a{0, 0};
  const OVPoint d{30, 30};
  const OVPoint out{10, 0};
  const OVPoint in{0, -10};
  // ⅛A + ⅜B + ⅜C + ⅛D
  expectPointNear(SpatialPath::pointFrom(a, out, d, in, 0.5), {18.75, 11.25});
  // (27A + 27B + 9C + D) / 64
  expectPointNear(SpatialPath::pointFrom(a, out, d, in, 0.25), {8.90625, 3.28125});
  // (A + 9B + 27C + 27D) / 64
  expectPointNear(SpatialPath::pointFrom(a, out, d, in, 0.75), {26.71875, 21.09375});
}

TEST(SpatialPathTest, OutTangentBelongsToTheStartAndInTangentToTheEnd) {
  // Swapping the two tangents changes the path.
  const OVPoint a{0, 0};
  const OVPoint d{30, 30};
  // B = (0, −10), C = (40, 30): (27B + 9C + D) / 64.
  expectPointNear(SpatialPath::pointFrom(a, {0, -10}, d, {10, 0}, 0.25), {6.09375, 0.46875});
  // The unswapped order gives (8.90625, 3.28125) at the same progress.
  expectPointNear(SpatialPath::pointFrom(a, {10, 0}, d, {0, -10}, 0.25), {8.90625, 3.28125});
}

TEST(SpatialPathTest, ZeroTangentsGiveAStraightPathWithCubicPace) {
  // The path stays on the line, but the raw parameter is not the distance.
  const OVPoint a{0, 0};
  const OVPoint d{10, 20};
  // (27·0 + 27·0 + 9·D + D) / 64 = 10/64 of the way
  expectPointNear(SpatialPath::pointFrom(a, OVPoint::zero, d, OVPoint::zero, 0.25), {1.5625, 3.125});
  expectPointNear(SpatialPath::pointFrom(a, OVPoint::zero, d, OVPoint::zero, 0.5), {5, 10});
}

// --- Automatic tangents ---

TEST(SpatialPathTest, AutoHandlesWithoutNeighboursAreZero) {
  EXPECT_EQ(SpatialPath::autoHandlesAt({5, 5}, std::nullopt, std::nullopt), SpatialHandles::zero);
}

TEST(SpatialPathTest, AutoHandlesOfTheFirstKeyPointAThirdOfTheWayToTheNext) {
  const auto h = SpatialPath::autoHandlesAt({10, 10}, std::nullopt, OVPoint{40, 16});
  expectHandlesNear(h, {0, 0}, {10, 2});
}

TEST(SpatialPathTest, AutoHandlesOfTheLastKeyPointAThirdOfTheWayBack) {
  const auto h = SpatialPath::autoHandlesAt({10, 10}, OVPoint{1, 4}, std::nullopt);
  expectHandlesNear(h, {-3, -2}, {0, 0});
}

TEST(SpatialPathTest, AutoHandlesBetweenNeighboursLieAlongTheirChord) {
  // Chord (6, 0); both segments are 5 long.
  expectHandlesNear(SpatialPath::autoHandlesAt({3, 4}, OVPoint{0, 0}, OVPoint{6, 0}), {-5.0 / 3, 0},
                    {5.0 / 3, 0});
}

TEST(SpatialPathTest, AutoHandleLengthsFollowTheirOwnSegments) {
  // Chord (8, 6) has unit (0.8, 0.6); the segment before is 6 long, the one after 8.
  const auto h = SpatialPath::autoHandlesAt({0, 6}, OVPoint{0, 0}, OVPoint{8, 6});
  expectHandlesNear(h, {-0.8 * 2, -0.6 * 2}, {0.8 * 8 / 3, 0.6 * 8 / 3});
}

TEST(SpatialPathTest, AutoHandlesOnAPathThatDoublesBackFollowTheOutgoingSegment) {
  // Previous and next coincide: no chord, so the direction is N − P = (−6, −8).
  const auto h = SpatialPath::autoHandlesAt({6, 8}, OVPoint{0, 0}, OVPoint{0, 0});
  expectHandlesNear(h, {2, 8.0 / 3}, {-2, -8.0 / 3});
  // The in-handle points away from the neighbours, the opposite way to the out-handle.
  EXPECT_GT(h.inTangent.x, 0);
  EXPECT_LT(h.outTangent.x, 0);
}

TEST(SpatialPathTest, AutoHandlesFallBackToTheIncomingSegmentWhenTheOthersVanish) {
  // Chord 5e-5 and outgoing segment 7e-5 are both below 1e-4; the incoming
  // segment, 1.2e-4, gives the direction (1, 0).
  const auto h = SpatialPath::autoHandlesAt({1.2e-4, 0}, OVPoint{0, 0}, OVPoint{5e-5, 0});
  expectHandlesNear(h, {-4e-5, 0}, {7e-5 / 3, 0}, 1e-15);
}

TEST(SpatialPathTest, AutoHandlesAreZeroWhenAllThreePointsCoincide) {
  EXPECT_EQ(SpatialPath::autoHandlesAt({2, 2}, OVPoint{2, 2}, OVPoint{2, 2}), SpatialHandles::zero);
  // All three within a hair of each other: no direction above 1e-4.
  const auto h = SpatialPath::autoHandlesAt({2, 2}, OVPoint{2 + 3e-5, 2}, OVPoint{2, 2 + 3e-5});
  expectHandlesNear(h, {0, 0}, {0, 0}, 0);
}

TEST(SpatialPathTest, AutoHandlesAtAKeyOnItsPreviousNeighbourHaveAZeroInHandle) {
  const auto h = SpatialPath::autoHandlesAt({0, 0}, OVPoint{0, 0}, OVPoint{9, 0});
  expectHandlesNear(h, {0, 0}, {3, 0});
}

}  // namespace
}  // namespace orvane::core
