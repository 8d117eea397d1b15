#include "surfaces/smart_guides.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace orvane::surfaces {
namespace {

using Box = SmartGuides::Box;
using Axis = SmartGuides::Axis;
using Range = SmartGuides::Range;

// A row of boxes 60 high on a wide canvas, so that the canvas's own lines
// stay out of the way unless a case wants them.
Box inRow(double minX, double maxX) { return {minX, maxX, 200, 260}; }
const core::OVSize kWide{5000, 1000};

TEST(SmartGuidesTest, CanvasWinsATieWithAnotherBox) {
  // The moving box's centre is 3 right of the canvas centre and its left
  // edge 3 right of another box's right edge.
  const Box other{300, 444, 150, 300};
  const Box moving{447, 547, 200, 260};
  const auto r = SmartGuides::resolve(moving, {other}, {1000, 1000}, 4);
  EXPECT_DOUBLE_EQ(r.offset.x, 3);
}

TEST(SmartGuidesTest, AxesSnapIndependently) {
  const Box moving{3, 103, 400, 470};
  const auto r = SmartGuides::resolve(moving, {}, {1000, 1000}, 5);
  EXPECT_DOUBLE_EQ(r.offset.x, -3);
  EXPECT_DOUBLE_EQ(r.offset.y, 0);
  ASSERT_EQ(r.alignments.size(), 1u);
  EXPECT_EQ(r.alignments[0].axis, Axis::vertical);
  EXPECT_DOUBLE_EQ(r.alignments[0].value, 0);
  // A canvas line runs the canvas's whole height.
  EXPECT_DOUBLE_EQ(r.alignments[0].from, 0);
  EXPECT_DOUBLE_EQ(r.alignments[0].to, 1000);
}

TEST(SmartGuidesTest, TheNearestTargetWinsAndTheToleranceIsInclusive) {
  const Box moving = inRow(1000, 1100);
  // Outside the row: 1104 lies 4 from the right edge, 1102 after it only 2.
  const std::vector<Box> others{{1104, 1200, 600, 700}, {1102, 1150, 700, 800}};
  EXPECT_DOUBLE_EQ(SmartGuides::offset(Axis::vertical, moving, others, {0, 5000, 0, 1000}, 5), 2);
  EXPECT_DOUBLE_EQ(SmartGuides::offset(Axis::vertical, moving, others, {0, 5000, 0, 1000}, 2), 2);
  EXPECT_DOUBLE_EQ(SmartGuides::offset(Axis::vertical, moving, others, {0, 5000, 0, 1000}, 1.999), 0);
  EXPECT_DOUBLE_EQ(SmartGuides::offset(Axis::vertical, moving, others, {0, 5000, 0, 1000}, -1), 0);
}

TEST(SmartGuidesTest, WithNoOthersOnlyCanvasEdgesAndCentreAttract) {
  const core::OVSize canvas{1000, 800};
  EXPECT_DOUBLE_EQ(SmartGuides::resolve({946, 1046, 10, 50}, {}, canvas, 6).offset.x, 4);  // centre 996 -> 1000
  EXPECT_DOUBLE_EQ(SmartGuides::resolve({200, 300, 396, 406}, {}, canvas, 6).offset.y, -1);       // centre 401 -> 400
  const auto free = SmartGuides::resolve({200, 300, 100, 150}, {}, canvas, 6);
  EXPECT_EQ(free.offset, core::OVPoint::zero);
  EXPECT_TRUE(free.isEmpty());
}

TEST(SmartGuidesTest, AGapRepeatsToTheRightOfTwoBoxes) {
  const std::vector<Box> others{inRow(0, 100), inRow(140, 240)};
  const auto r = SmartGuides::resolve(inRow(283, 383), others, kWide, 6);
  EXPECT_DOUBLE_EQ(r.offset.x, -3);
  ASSERT_EQ(r.spacings.size(), 1u);
  const auto& s = r.spacings[0];
  EXPECT_EQ(s.axis, Axis::vertical);
  EXPECT_EQ(s.gaps, (std::vector<Range>{{100, 140}, {240, 280}}));
  EXPECT_DOUBLE_EQ(s.cross, 230);
}

TEST(SmartGuidesTest, SpacingNeedsTheRow) {
  // The same place a little higher, no longer overlapping the two.
  const std::vector<Box> others{inRow(0, 100), inRow(140, 240)};
  const auto r = SmartGuides::resolve({283, 383, 270, 330}, others, kWide, 6);
  EXPECT_DOUBLE_EQ(r.offset.x, 0);
  EXPECT_TRUE(r.spacings.empty());
}

TEST(SmartGuidesTest, AlignmentBeatsACloserSpacing) {
  // The spacing pulls by 3, an edge of a box outside the row by 5.
  const std::vector<Box> others{inRow(0, 100), inRow(140, 240), {388, 488, 600, 700}};
  const auto r = SmartGuides::resolve(inRow(283, 383), others, kWide, 6);
  EXPECT_DOUBLE_EQ(r.offset.x, 5);
  EXPECT_TRUE(r.spacings.empty());
  ASSERT_FALSE(r.alignments.empty());
  EXPECT_DOUBLE_EQ(r.alignments[0].value, 388);
  // The line reaches from the moved box to the one it meets.
  EXPECT_DOUBLE_EQ(r.alignments[0].from, 200);
  EXPECT_DOUBLE_EQ(r.alignments[0].to, 700);
}

TEST(SmartGuidesTest, SpacingCandidatesCentreRepeatBeforeAndTakeTheSmallest) {
  const std::vector<Box> apart{inRow(0, 100), inRow(300, 400)};
  // Centred between the two: 2 to the right.
  EXPECT_EQ(SmartGuides::spacingOffset(Axis::vertical, inRow(148, 248), apart, 5), 2);
  // The gap of the two boxes to the right repeated before them.
  const std::vector<Box> right{inRow(500, 600), inRow(640, 740)};
  EXPECT_EQ(SmartGuides::spacingOffset(Axis::vertical, inRow(357, 457), right, 5), 3);
  EXPECT_EQ(SmartGuides::spacingOffset(Axis::vertical, inRow(350, 450), right, 5), std::nullopt);
  // Centring (-4) against repeating the left gap (+1): the smaller wins.
  const std::vector<Box> three{inRow(0, 100), inRow(140, 240), inRow(390, 490)};
  EXPECT_EQ(SmartGuides::spacingOffset(Axis::vertical, inRow(279, 359), three, 5), 1);
}

TEST(SmartGuidesTest, TouchingANeighbourIsNoSpacing) {
  const std::vector<Box> others{inRow(0, 100), inRow(140, 240)};
  const auto r = SmartGuides::resolve(inRow(240, 340), others, kWide, 5);
  EXPECT_DOUBLE_EQ(r.offset.x, 0);
  EXPECT_TRUE(r.spacings.empty());
}

TEST(SmartGuidesTest, SpacingsOnEitherSideBeforeAndAfter) {
  // Moved last of four equal gaps: only the two gaps before it show.
  const auto last = SmartGuides::spacings(Axis::vertical, inRow(420, 520),
                                          {inRow(0, 100), inRow(140, 240), inRow(280, 380)});
  ASSERT_EQ(last.size(), 1u);
  EXPECT_EQ(last[0].gaps, (std::vector<Range>{{240, 280}, {380, 420}}));

  // Moved second of four: its own two sides, then the two after it.
  const auto second = SmartGuides::spacings(Axis::vertical, inRow(140, 240),
                                            {inRow(0, 100), inRow(280, 380), inRow(420, 520)});
  ASSERT_EQ(second.size(), 2u);
  EXPECT_EQ(second[0].gaps, (std::vector<Range>{{100, 140}, {240, 280}}));
  EXPECT_EQ(second[1].gaps, (std::vector<Range>{{240, 280}, {380, 420}}));

  // A vertical column works the same way on y, marked at the moved box's x.
  const auto column = SmartGuides::spacings(Axis::horizontal, {10, 50, 140, 240},
                                            {{0, 60, 0, 100}, {20, 40, 280, 380}});
  ASSERT_EQ(column.size(), 1u);
  EXPECT_EQ(column[0].axis, Axis::horizontal);
  EXPECT_DOUBLE_EQ(column[0].cross, 30);
}

TEST(SmartGuidesTest, GapsWithinOneAreEqual) {
  const std::vector<Box> left{inRow(0, 100)};
  EXPECT_EQ(SmartGuides::spacings(Axis::vertical, inRow(140, 240), {inRow(0, 100), inRow(280.9, 380)}).size(), 1u);
  EXPECT_TRUE(SmartGuides::spacings(Axis::vertical, inRow(140, 240), {inRow(0, 100), inRow(281, 380)}).empty());
  // Two boxes are not a row yet.
  EXPECT_TRUE(SmartGuides::spacings(Axis::vertical, inRow(140, 240), left).empty());
}

TEST(SmartGuidesTest, DedupeKeepsTheFirstLineOfEachPlacePerAxis) {
  const std::vector<SmartGuides::Alignment> lines{
      {core::Uuid::make(), Axis::vertical, 10, 0, 1},
      {core::Uuid::make(), Axis::vertical, 10.4, 0, 1},
      {core::Uuid::make(), Axis::horizontal, 10.2, 0, 1},
      {core::Uuid::make(), Axis::vertical, 10.5, 0, 1},
  };
  const auto kept = SmartGuides::dedupe(lines);
  ASSERT_EQ(kept.size(), 3u);
  EXPECT_EQ(kept[0].id, lines[0].id);
  EXPECT_EQ(kept[1].id, lines[2].id);
  EXPECT_EQ(kept[2].id, lines[3].id);

  // A sliver of a box has its edges and centre within 0.5: one line.
  const auto sliver = SmartGuides::resolve({100, 100.6, 10, 20}, {{100, 300, 500, 600}}, {1000, 1000}, 0);
  std::size_t vertical = 0;
  for (const auto& a : sliver.alignments) vertical += a.axis == Axis::vertical;
  EXPECT_EQ(vertical, 1u);
}

TEST(SmartGuidesTest, NonFiniteInputSnapsNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto r = SmartGuides::resolve(inRow(3, 103), {inRow(200, 300)}, kWide, nan);
  EXPECT_EQ(r.offset, core::OVPoint::zero);
  const auto odd = SmartGuides::resolve({nan, nan, 0, 10}, {inRow(200, 300)}, kWide, 8);
  EXPECT_DOUBLE_EQ(odd.offset.x, 0);
}

}  // namespace
}  // namespace orvane::surfaces
