#include "core/composition_preset.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace orvane::core {
namespace {

OVTime sec(double s) { return OVTime::fromSeconds(s); }

const CompositionPreset& presetWithID(const std::string& id) {
  for (const CompositionPreset& p : CompositionPreset::all())
    if (p.id == id) return p;
  ADD_FAILURE() << "no preset " << id;
  return CompositionPreset::all().front();
}

TEST(CompositionPresetTest, AllListsEighteenPresetsInPickerOrder) {
  std::vector<std::string> ids;
  for (const CompositionPreset& p : CompositionPreset::all()) ids.push_back(p.id);
  const std::vector<std::string> expected{
      "youtube.1080",       "youtube.1440",  "youtube.4k",  "youtube.shorts", "tiktok",
      "instagram.reels",    "instagram.stories", "instagram.square", "instagram.portrait",
      "facebook.landscape", "x.landscape",   "sd.480",      "hd.720",         "hd.1080",
      "uhd.4k",             "cinema.1080p24", "square.1080", "vertical.1080"};
  EXPECT_EQ(ids, expected);
}

TEST(CompositionPresetTest, RowsCarryNameGroupSizeRateAndDuration) {
  using G = CompositionPreset::Group;
  struct Row {
    std::string id, name;
    G group;
    double width, height;
    FrameRate rate;
    double seconds;
  };
  const std::vector<Row> rows{
      {"youtube.1080", "YouTube 1080p", G::youTube, 1920, 1080, FrameRate::fps30, 30},
      {"youtube.4k", "YouTube 4K", G::youTube, 3840, 2160, FrameRate::fps30, 30},
      {"tiktok", "TikTok", G::socialMedia, 1080, 1920, FrameRate::fps30, 30},
      {"instagram.stories", "Instagram Stories", G::socialMedia, 1080, 1920, FrameRate::fps30, 15},
      {"instagram.portrait", "Instagram Feed (Portrait)", G::socialMedia, 1080, 1350, FrameRate::fps30, 30},
      {"facebook.landscape", "Facebook / LinkedIn", G::socialMedia, 1200, 630, FrameRate::fps30, 30},
      {"x.landscape", "X / Twitter", G::socialMedia, 1600, 900, FrameRate::fps30, 30},
      {"sd.480", "SD 480p", G::general, 854, 480, FrameRate::fps30, 10},
      {"cinema.1080p24", "Cinema 1080p 24", G::general, 1920, 1080, FrameRate::fps24, 10},
      {"vertical.1080", "Vertical 1080", G::general, 1080, 1920, FrameRate::fps30, 10},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.id);
    const CompositionPreset& p = presetWithID(row.id);
    EXPECT_EQ(p.name, row.name);
    EXPECT_EQ(p.group, row.group);
    EXPECT_EQ(p.size, (OVSize{row.width, row.height}));
    EXPECT_EQ(p.frameRate, row.rate);
    EXPECT_EQ(p.duration, sec(row.seconds));
  }
  for (const CompositionPreset& p : CompositionPreset::all()) EXPECT_NE(p.group, G::custom) << p.id;
}

TEST(CompositionPresetTest, GroupsAreTextValued) {
  using G = CompositionPreset::Group;
  EXPECT_EQ(rawValue(G::youTube), "YouTube");
  EXPECT_EQ(rawValue(G::socialMedia), "Social Media");
  EXPECT_EQ(fromRaw<G>("General"), G::general);
  EXPECT_EQ(fromRaw<G>("Custom"), G::custom);
}

TEST(CompositionPresetTest, EmptyDetailIsFilledFromSizeAndRate) {
  EXPECT_EQ(presetWithID("youtube.1080").detail, "1920 × 1080 · 30 fps");
  EXPECT_EQ(presetWithID("cinema.1080p24").detail, "1920 × 1080 · 24 fps");
  EXPECT_EQ(presetWithID("sd.480").detail, "854 × 480 · 30 fps");
  const CompositionPreset custom("custom", "Custom", CompositionPreset::Group::custom, 1920.5, 1080,
                                 FrameRate::fps29_97);
  EXPECT_EQ(custom.detail, "1920.5 × 1080 · 29.970 fps");
  EXPECT_EQ(custom.duration, sec(10));
  const CompositionPreset given("g", "Given", CompositionPreset::Group::custom, 100, 100, FrameRate::fps25, 2,
                                "Tiny");
  EXPECT_EQ(given.detail, "Tiny");
  EXPECT_EQ(given.duration, sec(2));
}

TEST(CompositionPresetTest, DefaultIsFullHD) {
  EXPECT_EQ(CompositionPreset::defaultPreset().id, "hd.1080");
  EXPECT_EQ(CompositionPreset::defaultPreset().name, "Full HD 1080p");
}

TEST(CompositionPresetTest, MatchingRoundsAndPrefersEarlierRows) {
  EXPECT_EQ(CompositionPreset::matching(1920, 1080)->id, "youtube.1080");
  EXPECT_EQ(CompositionPreset::matching(1080, 1920)->id, "youtube.shorts");
  EXPECT_EQ(CompositionPreset::matching(1080, 1080)->id, "instagram.square");
  // Halves round away from zero; anything less rounds down.
  EXPECT_EQ(CompositionPreset::matching(853.5, 479.5)->id, "sd.480");
  EXPECT_EQ(CompositionPreset::matching(1079.5, 1080.49)->id, "instagram.square");
  EXPECT_EQ(CompositionPreset::matching(1920.49, 1079.5)->id, "youtube.1080");
  EXPECT_FALSE(CompositionPreset::matching(1919.49, 1080).has_value());
  EXPECT_FALSE(CompositionPreset::matching(1000, 1000).has_value());
}

TEST(CompositionPresetTest, MakeCompositionTakesSizeRateDurationAndWorkArea) {
  const CompositionPreset& shorts = presetWithID("youtube.shorts");
  const Composition c = shorts.makeComposition("Reel", EditingMode::sequence);
  EXPECT_EQ(c.name, "Reel");
  EXPECT_EQ(c.size, (OVSize{1080, 1920}));
  EXPECT_EQ(c.frameRate, FrameRate::fps30);
  EXPECT_EQ(c.duration, sec(30));
  EXPECT_EQ(c.workArea, OVTimeRange(OVTime::zero, sec(30)));
  EXPECT_EQ(c.editingMode, EditingMode::sequence);
  EXPECT_TRUE(c.tracks.empty());
  EXPECT_TRUE(c.layers.empty());
  EXPECT_EQ(c.backgroundColor, OVColor::black);
  EXPECT_EQ(c.audioSampleRate, 48000);
  EXPECT_NE(shorts.makeComposition("Reel").id, c.id);

  const Composition cinema = presetWithID("cinema.1080p24").makeComposition("Film");
  EXPECT_EQ(cinema.frameRate, FrameRate::fps24);
  EXPECT_EQ(cinema.editingMode, EditingMode::layers);
}

TEST(CompositionPresetTest, ProjectDefaultsForNewLayers) {
  EXPECT_EQ(ProjectDefaults::stillDuration, sec(5));
  EXPECT_EQ(ProjectDefaults::stillDuration.timescale, 600000);
  EXPECT_EQ(ProjectDefaults::solidSizeFraction, 1.0);
  EXPECT_EQ(ProjectDefaults::textLayerName, "Text");
  EXPECT_EQ(ProjectDefaults::shapeLayerName, "Shape");
  EXPECT_EQ(ProjectDefaults::solidLayerName, "Solid");
}

}  // namespace
}  // namespace orvane::core
