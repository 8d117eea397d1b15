// The built-in list: ids, order, kinds, timings and the channels each row
// animates, checked by stamping every row onto a 10 s clip at 30 fps.

#include <cmath>
#include <map>
#include <set>
#include <sstream>

#include "behaviors_test_support.hpp"
#include "core/effect_catalog.hpp"

namespace orvane::behaviors {
namespace {

using namespace testing_support;

// One row as the panel's table gives it, typed apart from the catalog code:
// timing ("L0.5" leading, "T0.6" trailing, "W" whole layer), the layer kinds
// ("visual", "audio" for audio and video, "text"), and for each channel or
// effect parameter the number of keys.
struct Row {
  std::string id;
  std::string timing;
  std::string kinds;
  std::map<std::string, int> channels;
};

const std::vector<Row>& tableRows() {
  static const std::vector<Row> rows = {
      {"entrance.fade-in", "L0.5", "visual", {{"opacity", 2}}},
      {"entrance.fade-up", "L0.65", "visual", {{"opacity", 2}, {"position", 2}}},
      {"entrance.fade-down", "L0.65", "visual", {{"opacity", 2}, {"position", 2}}},
      {"entrance.slide-left", "L0.7", "visual", {{"opacity", 3}, {"position", 2}}},
      {"entrance.slide-right", "L0.7", "visual", {{"opacity", 3}, {"position", 2}}},
      {"entrance.zoom-in", "L0.6", "visual", {{"opacity", 2}, {"scale", 2}}},
      {"entrance.pop-in", "L0.45", "visual", {{"opacity", 3}, {"scale", 4}}},
      {"entrance.drop-in", "L0.7", "visual", {{"opacity", 3}, {"position", 3}, {"scale", 4}}},
      {"entrance.spin-in", "L0.7", "visual", {{"opacity", 2}, {"rotation", 2}, {"scale", 2}}},
      {"entrance.blur-in", "L0.6", "visual", {{"opacity", 2}, {"scale", 2}, {"blur.gaussian/radius", 2}}},
      {"exit.fade-out", "T0.5", "visual", {{"opacity", 2}}},
      {"exit.fade-up", "T0.6", "visual", {{"opacity", 2}, {"position", 2}}},
      {"exit.fade-down", "T0.6", "visual", {{"opacity", 2}, {"position", 2}}},
      {"exit.slide-left", "T0.6", "visual", {{"opacity", 3}, {"position", 2}}},
      {"exit.slide-right", "T0.6", "visual", {{"opacity", 3}, {"position", 2}}},
      {"exit.zoom-out", "T0.55", "visual", {{"opacity", 2}, {"scale", 3}}},
      {"exit.pop-out", "T0.35", "visual", {{"opacity", 3}, {"scale", 3}}},
      {"exit.spin-out", "T0.65", "visual", {{"opacity", 2}, {"rotation", 2}, {"scale", 2}}},
      {"exit.blur-out", "T0.6", "visual", {{"opacity", 2}, {"scale", 2}, {"blur.gaussian/radius", 2}}},
      {"emphasis.pulse", "W", "visual", {{"scale", 3}}},
      {"emphasis.heartbeat", "L1", "visual", {{"scale", 7}}},
      {"emphasis.wiggle", "L0.8", "visual", {{"rotation", 7}}},
      {"emphasis.flash", "L0.5", "visual", {{"opacity", 6}}},
      {"emphasis.bounce", "L0.9", "visual", {{"position", 7}}},
      {"emphasis.pop", "L0.4", "visual", {{"scale", 4}}},
      {"motion.drift-right", "W", "visual", {{"position", 2}}},
      {"motion.drift-left", "W", "visual", {{"position", 2}}},
      {"motion.ken-burns-in", "W", "visual", {{"scale", 2}}},
      {"motion.ken-burns-out", "W", "visual", {{"scale", 2}}},
      {"motion.float", "W", "visual", {{"position", 3}}},
      {"motion.orbit", "W", "visual", {{"position", 3}, {"rotation", 2}}},
      {"opacity.fade-in-full", "W", "visual", {{"opacity", 2}}},
      {"opacity.fade-out-full", "W", "visual", {{"opacity", 2}}},
      {"opacity.dip-to-black", "W", "visual", {{"opacity", 4}}},
      {"opacity.ghost", "L0.4", "visual", {{"opacity", 2}}},
      {"scale.grow", "L0.6", "visual", {{"opacity", 2}, {"scale", 2}}},
      {"scale.shrink", "T0.6", "visual", {{"opacity", 2}, {"scale", 2}}},
      {"scale.stretch-x", "L0.55", "visual", {{"scale", 3}, {"opacity", 2}}},
      {"scale.stretch-y", "L0.55", "visual", {{"scale", 3}, {"opacity", 2}}},
      {"rotation.tilt-in", "L0.7", "visual", {{"rotation", 2}, {"opacity", 2}}},
      {"rotation.full-spin", "W", "visual", {{"rotation", 2}}},
      {"rotation.half-spin", "W", "visual", {{"rotation", 2}}},
      {"rotation.swing", "L1", "visual", {{"rotation", 4}}},
      {"crop.wipe-left", "L0.8", "visual", {{"crop.left", 2}}},
      {"crop.wipe-right", "L0.8", "visual", {{"crop.right", 2}}},
      {"crop.wipe-up", "L0.8", "visual", {{"crop.bottom", 2}}},
      {"crop.iris", "L0.75", "visual", {{"crop.left", 2}, {"crop.right", 2}, {"crop.top", 2}, {"crop.bottom", 2}}},
      {"effects.focus-pull", "L1", "visual", {{"blur.gaussian/radius", 2}}},
      {"effects.desaturate-in", "L1.2", "visual", {{"color.saturation/amount", 2}}},
      {"effects.exposure-flash", "L0.5", "visual", {{"color.exposure/ev", 3}}},
      {"effects.darken-mood", "L0.8", "visual", {{"color.brightness/amount", 2}}},
      {"effects.sharpen-pop", "L0.6", "visual", {{"sharpen/amount", 2}}},
      {"audio.fade-in", "L1", "audio", {{"volume", 2}}},
      {"audio.fade-out", "T1", "audio", {{"volume", 2}}},
      {"audio.pan-left-right", "W", "audio", {{"pan", 2}}},
      {"audio.duck", "W", "audio", {{"volume", 4}}},
      {"text.type-on", "L0.55", "text", {{"opacity", 2}, {"position", 2}}},
      {"text.headline-slam", "L0.5", "text", {{"opacity", 2}, {"scale", 3}}},
      {"text.whisper", "L1.2", "text", {{"opacity", 2}}},
      {"text.skew-in", "L0.6", "text", {{"opacity", 2}, {"skew", 2}, {"position", 2}}},
      {"text.typewriter", "L1.4", "text", {{"textReveal", 2}}},
      {"text.typewriter-fast", "L0.6", "text", {{"textReveal", 2}}},
      {"text.type-and-settle", "L1", "text", {{"textReveal", 2}, {"position", 2}, {"opacity", 2}}},
      {"text.type-on-reverse", "T0.8", "text", {{"textReveal", 2}}},
      {"text.line-reveal", "L0.7", "text", {{"crop.right", 2}}},
  };
  return rows;
}

std::set<LayerKind> kindsNamed(const std::string& name) {
  if (name == "audio") return {LayerKind::audio, LayerKind::video};
  if (name == "text") return {LayerKind::text};
  return {LayerKind::video, LayerKind::image, LayerKind::text, LayerKind::shape,
          LayerKind::solid, LayerKind::adjustment, LayerKind::precomposition};
}

// Every animated property of the layer by name, with its number of keys.
std::map<std::string, int> animatedChannels(const Layer& layer) {
  std::map<std::string, int> out;
  auto note = [&](const std::string& name, const AnimatedProperty& p) {
    if (p.isAnimated()) out[name] += static_cast<int>(p.keyframes().size());
  };
  for (auto c : allCases<LayerTransform::Channel>()) note(std::string(rawValue(c)), layer.transform[c]);
  for (auto e : allCases<LayerCrop::Edge>()) note("crop." + std::string(rawValue(e)), layer.crop[e]);
  note("volume", layer.audio.volume);
  note("pan", layer.audio.pan);
  note("textReveal", layer.textReveal);
  for (const EffectInstance& effect : layer.effects)
    for (const auto& [id, p] : effect.parameters) note(effect.effectID + "/" + id, p);
  return out;
}

// The 30 fps frame of progress p under a timing written as in the table, on
// a layer from start for duration seconds.
std::int64_t expectedFrame(const std::string& timing, double p, double start, double duration) {
  double t = start + p * duration;
  if (timing[0] != 'W') {
    const double span = std::min(std::stod(timing.substr(1)), duration);
    t = timing[0] == 'L' ? start + p * span : start + duration - span + p * span;
  }
  return static_cast<std::int64_t>(std::floor(t * 30 + 1e-6));
}

TEST(BehaviorCatalogTest, HoldsTheSixtyFiveRowsInCategoryOrderWithUniqueIds) {
  const auto& all = BehaviorCatalog::all();
  ASSERT_EQ(all.size(), 65u);
  ASSERT_EQ(tableRows().size(), 65u);
  std::set<std::string> ids;
  for (std::size_t i = 0; i < all.size(); ++i) {
    EXPECT_EQ(all[i].id, tableRows()[i].id) << "row " << i;
    ids.insert(all[i].id);
    // The id starts with the category's raw name.
    EXPECT_EQ(all[i].id.substr(0, all[i].id.find('.')), rawValue(all[i].category)) << all[i].id;
    if (i > 0) {
      EXPECT_LE(all[i - 1].category, all[i].category) << all[i].id;
    }
    EXPECT_FALSE(all[i].name.empty());
    EXPECT_FALSE(all[i].summary.empty());
    EXPECT_FALSE(all[i].systemImage.empty());
  }
  EXPECT_EQ(ids.size(), 65u);

  std::map<BehaviorCategory, int> perCategory;
  for (const Behavior& b : all) ++perCategory[b.category];
  const std::vector<int> expected = {10, 9, 6, 6, 4, 4, 4, 4, 5, 4, 9};
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_EQ(perCategory[allBehaviorCategories()[i]], expected[i]) << displayName(allBehaviorCategories()[i]);
}

TEST(BehaviorCatalogTest, LooksUpByIdThroughTheIndex) {
  for (const Behavior& b : BehaviorCatalog::all()) EXPECT_EQ(BehaviorCatalog::behavior(b.id), &b);
  EXPECT_EQ(BehaviorCatalog::behavior("entrance.fade-in")->name, "Fade In");
  EXPECT_EQ(BehaviorCatalog::behavior("text.line-reveal")->name, "Reveal Behind Wipe");
  EXPECT_EQ(BehaviorCatalog::behavior("entrance.nope"), nullptr);
  EXPECT_EQ(BehaviorCatalog::behavior(""), nullptr);
  EXPECT_EQ(BehaviorCatalog::behavior("Fade In"), nullptr);
}

TEST(BehaviorCatalogTest, KindsFollowTheCategory) {
  for (const Row& row : tableRows()) {
    const Behavior* b = BehaviorCatalog::behavior(row.id);
    ASSERT_NE(b, nullptr) << row.id;
    EXPECT_EQ(b->applicableKinds, kindsNamed(row.kinds)) << row.id;
  }
}

TEST(BehaviorCatalogTest, KeysRunForwardWithinOneRunAndNameKnownEffects) {
  auto checkKeys = [](const std::string& where, const std::vector<BehaviorKey>& keys) {
    ASSERT_FALSE(keys.empty()) << where;
    EXPECT_EQ(keys.front().progress, 0) << where;
    EXPECT_EQ(keys.back().progress, 1) << where;
    for (std::size_t i = 1; i < keys.size(); ++i) EXPECT_LT(keys[i - 1].progress, keys[i].progress) << where;
    for (const BehaviorKey& k : keys)
      EXPECT_EQ(k.handles.has_value(), k.mode == InterpolationMode::bezier) << where << " at " << k.progress;
  };
  for (const Behavior& b : BehaviorCatalog::all()) {
    for (const BehaviorTrack& t : b.tracks) checkKeys(b.id, t.keys);
    for (const BehaviorEffect& e : b.effects) {
      const EffectDescriptor* d = EffectCatalog::descriptorFor(e.effectID);
      ASSERT_NE(d, nullptr) << b.id << " names " << e.effectID;
      for (const auto& [parameter, keys] : e.parameters) {
        EXPECT_NE(d->parameter(parameter), nullptr) << b.id << " names " << parameter;
        checkKeys(b.id + " " + parameter, keys);
      }
    }
  }
}

// Every row stamped onto a 10 s clip starting at 2 s: the channels it
// animates, how many keys each gets, and the frame each key falls on.
TEST(BehaviorCatalogTest, EveryRowStampsItsChannelsAtTheRightFrames) {
  for (const Row& row : tableRows()) {
    SCOPED_TRACE(row.id);
    const Behavior* b = BehaviorCatalog::behavior(row.id);
    ASSERT_NE(b, nullptr);
    const LayerKind kind = row.kinds == "text" ? LayerKind::text : LayerKind::video;
    ProjectDocument doc(projectWith({layerOfKind(kind, 2, 10)}));
    UndoStack undo;
    ASSERT_EQ(applyBehavior(doc, row.id, {onlyLayer(doc).id}, &undo), 1);
    const Layer& layer = onlyLayer(doc);
    EXPECT_EQ(animatedChannels(layer), row.channels);

    auto checkTimes = [&](const AnimatedProperty& p, const std::vector<BehaviorKey>& keys) {
      ASSERT_EQ(p.keyframes().size(), keys.size());
      for (std::size_t i = 0; i < keys.size(); ++i)
        EXPECT_EQ(p.keyframes()[i].time, frame(expectedFrame(row.timing, keys[i].progress, 2, 10)))
            << "key " << i;
    };
    for (const BehaviorTrack& t : b->tracks) checkTimes(property(t.channel, layer), t.keys);
    ASSERT_EQ(layer.effects.size(), b->effects.size());
    for (std::size_t i = 0; i < b->effects.size(); ++i)
      for (const auto& [parameter, keys] : b->effects[i].parameters)
        checkTimes(layer.effects[i].parameters.at(parameter), keys);
  }
}

}  // namespace
}  // namespace orvane::behaviors
