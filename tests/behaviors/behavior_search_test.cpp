// Searching and grouping the catalog for the behavior panel.

#include <algorithm>

#include "behaviors_test_support.hpp"

namespace orvane::behaviors {
namespace {

using namespace testing_support;

std::vector<std::string> idsOf(const std::vector<const Behavior*>& found) {
  std::vector<std::string> ids;
  for (const Behavior* b : found) ids.push_back(b->id);
  return ids;
}

bool has(const std::vector<std::string>& ids, const std::string& id) {
  return std::find(ids.begin(), ids.end(), id) != ids.end();
}

TEST(BehaviorSearchTest, EmptyQueryFiltersByKindOnly) {
  EXPECT_EQ(BehaviorCatalog::behaviorsMatching("").size(), 65u);
  EXPECT_EQ(BehaviorCatalog::behaviorsMatching("   ").size(), 65u);
  EXPECT_EQ(idsOf(BehaviorCatalog::behaviorsMatching("", LayerKind::audio)),
            (std::vector<std::string>{"audio.fade-in", "audio.fade-out", "audio.pan-left-right", "audio.duck"}));
  // 52 visual rows, plus 4 audio rows for video or 9 text rows for text.
  EXPECT_EQ(BehaviorCatalog::behaviorsMatching("", LayerKind::video).size(), 56u);
  EXPECT_EQ(BehaviorCatalog::behaviorsMatching("", LayerKind::text).size(), 61u);
  EXPECT_EQ(BehaviorCatalog::behaviorsMatching("", LayerKind::solid).size(), 52u);
}

TEST(BehaviorSearchTest, MatchesNameSummaryOrCategoryIgnoringCaseAndBlanks) {
  const auto fade = idsOf(BehaviorCatalog::behaviorsMatching("fade"));
  EXPECT_EQ(idsOf(BehaviorCatalog::behaviorsMatching("  FaDe \n")), fade);
  EXPECT_TRUE(has(fade, "entrance.fade-in"));
  EXPECT_TRUE(has(fade, "audio.fade-in"));
  EXPECT_TRUE(has(fade, "text.type-on"));  // by its summary "Slide up + fade — …"
  EXPECT_FALSE(has(fade, "crop.iris"));
  // By the category's display name: every row of "Crop", and the text wipe
  // whose summary names a crop.
  const auto crop = idsOf(BehaviorCatalog::behaviorsMatching("crop"));
  EXPECT_EQ(crop, (std::vector<std::string>{"crop.wipe-left", "crop.wipe-right", "crop.wipe-up", "crop.iris",
                                            "text.line-reveal"}));
  // Text outside ASCII is found as written.
  EXPECT_EQ(idsOf(BehaviorCatalog::behaviorsMatching("L → R")), (std::vector<std::string>{"audio.pan-left-right"}));
  EXPECT_TRUE(BehaviorCatalog::behaviorsMatching("no such behavior").empty());
  // The id is not searched.
  EXPECT_TRUE(BehaviorCatalog::behaviorsMatching("entrance.fade-in").empty());
}

TEST(BehaviorSearchTest, GroupsKeepCategoryOrderAndDropEmptyOnes) {
  const auto groups = BehaviorCatalog::grouped("spin");
  ASSERT_EQ(groups.size(), 3u);
  EXPECT_EQ(groups[0].category, BehaviorCategory::entrance);
  EXPECT_EQ(idsOf(groups[0].behaviors), (std::vector<std::string>{"entrance.spin-in"}));
  EXPECT_EQ(groups[1].category, BehaviorCategory::exit);
  EXPECT_EQ(idsOf(groups[1].behaviors), (std::vector<std::string>{"exit.spin-out"}));
  EXPECT_EQ(groups[2].category, BehaviorCategory::rotation);
  EXPECT_EQ(idsOf(groups[2].behaviors), (std::vector<std::string>{"rotation.full-spin", "rotation.half-spin"}));

  const auto all = BehaviorCatalog::grouped("");
  ASSERT_EQ(all.size(), 11u);
  std::size_t total = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    EXPECT_EQ(all[i].category, allBehaviorCategories()[i]);
    total += all[i].behaviors.size();
  }
  EXPECT_EQ(total, 65u);

  const auto forAudio = BehaviorCatalog::grouped("", LayerKind::audio);
  ASSERT_EQ(forAudio.size(), 1u);
  EXPECT_EQ(forAudio[0].category, BehaviorCategory::audio);
  EXPECT_TRUE(BehaviorCatalog::grouped("zzz").empty());
}

}  // namespace
}  // namespace orvane::behaviors
