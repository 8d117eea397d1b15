#include "surfaces/timeline_ruler.hpp"

#include <gtest/gtest.h>

#include "Commands/composition_edits.hpp"
#include "tests/surfaces/timeline_test_support.hpp"

namespace orvane::surfaces {
namespace {

using namespace testing_support;

class TimelineWorkAreaTest : public TimelineFixture {
 protected:
  void SetUp() override { open({clip("A", 1, 2)}); }
  TimelineMetrics metrics() const { return timelineMetrics(comp(), editor); }

  // A ruler drag of part to dx in ticks, then released.
  void drag(WorkAreaPart part, double dx, int steps = 6) {
    TimelineWorkAreaDrag d(*doc, &undo);
    for (int i = 1; i <= steps; ++i) d.dragChanged(part, dx * i / steps, metrics());
    d.dragEnded();
  }
  OVTimeRange workArea() const { return *comp().workArea; }
};

TEST_F(TimelineWorkAreaTest, StartHandleFromTheWholeCompositionIsOneStep) {
  const OVProject before = doc->project();
  drag(WorkAreaPart::startHandle, 200);
  EXPECT_EQ(workArea(), OVTimeRange::fromStartEnd(secs(2), secs(10)));
  expectOneStep(before, 0, "Set Work Area");
}

TEST_F(TimelineWorkAreaTest, HandlesStopAtTheEdgesAndKeepAFrame) {
  commands::setWorkArea(*doc, OVTimeRange::fromStartEnd(secs(2), secs(8)), &undo);
  drag(WorkAreaPart::endHandle, 500);
  EXPECT_EQ(workArea().end(), secs(10));
  drag(WorkAreaPart::endHandle, -5000);
  EXPECT_EQ(workArea(), OVTimeRange::fromStartEnd(secs(2), secs(2) + OVTime(1, 30)));
  drag(WorkAreaPart::startHandle, -5000);
  EXPECT_EQ(workArea().start, secs(0));
  drag(WorkAreaPart::startHandle, 5000);
  EXPECT_EQ(workArea().start, secs(2)) << "a frame before the end";
  drag(WorkAreaPart::startHandle, -10.5);
  EXPECT_EQ(workArea().start, OVTime(56, 30)) << "on a frame: 1.895 s falls to 1.8667 s";
}

TEST_F(TimelineWorkAreaTest, BodyKeepsItsLengthAndStopsAtZeroAndTheEnd) {
  commands::setWorkArea(*doc, OVTimeRange::fromStartEnd(secs(2), secs(8)), &undo);
  const OVProject before = doc->project();
  const auto steps = undo.undoCount();
  drag(WorkAreaPart::body, 500);
  EXPECT_EQ(workArea(), OVTimeRange::fromStartEnd(secs(4), secs(10)));
  expectOneStep(before, steps, "Set Work Area");
  drag(WorkAreaPart::body, -900);
  EXPECT_EQ(workArea(), OVTimeRange::fromStartEnd(secs(0), secs(6)));

  EXPECT_EQ(shiftWorkArea(OVTimeRange(secs(1), secs(20)), secs(3), secs(10)), OVTimeRange(secs(0), secs(20)))
      << "longer than the composition: pinned at zero";
}

TEST_F(TimelineWorkAreaTest, CancelRestoresAndAPlainReleaseDoesNothing) {
  const OVProject before = doc->project();
  {
    TimelineWorkAreaDrag d(*doc, &undo);
    d.dragEnded();
    d.dragChanged(WorkAreaPart::startHandle, 100, metrics());
    d.dragChanged(WorkAreaPart::startHandle, 300, metrics());
    EXPECT_TRUE(d.isDragging());
    EXPECT_FALSE(doc->project() == before);
    d.dragCancelled();
  }
  EXPECT_TRUE(doc->project() == before);
  EXPECT_EQ(undo.undoCount(), 0u);
}

TEST_F(TimelineWorkAreaTest, ScrubMovesThePlayheadWithoutHistory) {
  scrubTo(*doc, metrics(), 251);
  EXPECT_EQ(comp().playheadTime, secs(2.5));
  scrubTo(*doc, metrics(), 1e9);
  EXPECT_EQ(comp().playheadTime, secs(10));
  scrubTo(*doc, metrics(), -50);
  EXPECT_EQ(comp().playheadTime, secs(0));
  EXPECT_EQ(undo.undoCount(), 0u);
}

}  // namespace
}  // namespace orvane::surfaces
