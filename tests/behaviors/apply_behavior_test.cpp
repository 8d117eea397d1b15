// Applying behaviors through the document: which layers take them, the keys
// and values written for a handful of rows as their table gives them, and
// the undo step.

#include "behaviors_test_support.hpp"

namespace orvane::behaviors {
namespace {

using namespace testing_support;
using commands::testing_support::expectNoEdit;
using commands::testing_support::expectUndoableEdit;
using Mode = InterpolationMode;
using V = PropertyValue;

// What a stamped key should hold: frame at 30 fps, value, mode, handles.
struct Expected {
  std::int64_t frame;
  PropertyValue value;
  Mode mode;
  std::optional<BezierHandles> handles;
};

void expectKeys(const AnimatedProperty& p, const std::vector<Expected>& expected, const std::string& what) {
  SCOPED_TRACE(what);
  ASSERT_EQ(p.keyframes().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const Keyframe& k = p.keyframes()[i];
    EXPECT_EQ(k.time, frame(expected[i].frame)) << "key " << i;
    EXPECT_EQ(k.value, expected[i].value) << "key " << i;
    EXPECT_EQ(k.mode, expected[i].mode) << "key " << i;
    EXPECT_EQ(k.handles, expected[i].handles) << "key " << i;
  }
}

// A document with one layer of kind from 2 s for 10 s, and the behavior
// applied to it.
struct Stamped {
  ProjectDocument doc;
  explicit Stamped(const std::string& id, LayerKind kind = LayerKind::solid,
                   const std::function<void(Layer&)>& prepare = {})
      : doc([&] {
          Layer layer = layerOfKind(kind);
          if (prepare) prepare(layer);
          return projectWith({layer});
        }()) {
    EXPECT_EQ(applyBehavior(doc, id, {onlyLayer(doc).id}), 1);
  }
  const Layer& layer() const { return onlyLayer(doc); }
};

const auto decelerate = BezierHandles::decelerate;
const auto accelerate = BezierHandles::accelerate;

// --- Rows key by key (layer from 2 s to 12 s, frame 60 to 360) ---

TEST(ApplyBehaviorRowsTest, FadeInOpacityAndFade) {
  Stamped s("entrance.fade-in", LayerKind::solid, [](Layer& l) { l.fadeIn = secs(1); });
  expectKeys(s.layer().transform.opacity,
             {{60, V::double_(0), Mode::bezier, decelerate}, {75, V::double_(100), Mode::bezier, decelerate}},
             "opacity");
  EXPECT_EQ(s.layer().fadeIn, OVTime::zero);
  EXPECT_FALSE(s.layer().transform.position.isAnimated());
}

TEST(ApplyBehaviorRowsTest, DropInOffsetsPositionAndSquashesScale) {
  Stamped s("entrance.drop-in");
  const Layer& l = s.layer();
  // 0.3 × 0.7 s = 0.21 s → frame 66; 0.62 → 73; 0.82 → 77; 1 → 81.
  expectKeys(l.transform.opacity,
             {{60, V::double_(0), Mode::bezier, decelerate},
              {66, V::double_(100), Mode::linear, std::nullopt},
              {81, V::double_(100), Mode::linear, std::nullopt}},
             "opacity");
  expectKeys(l.transform.position,
             {{60, V::point(100, 420), Mode::bezier, accelerate},
              {73, V::point(100, 100), Mode::bezier, decelerate},
              {81, V::point(100, 100), Mode::linear, std::nullopt}},
             "position");
  expectKeys(l.transform.scale,
             {{60, V::point(100, 100), Mode::linear, std::nullopt},
              {73, V::point(118, 82), Mode::bezier, decelerate},
              {77, V::point(94, 106), Mode::bezier, decelerate},
              {81, V::point(100, 100), Mode::bezier, decelerate}},
             "scale");
}

TEST(ApplyBehaviorRowsTest, SlideOutLeftRunsAtTheEnd) {
  Stamped s("exit.slide-left");
  // Trailing 0.6 s of a clip ending at 12 s: 11.4 s (342), 11.79 s (353), 12 s.
  expectKeys(s.layer().transform.opacity,
             {{342, V::double_(100), Mode::linear, std::nullopt},
              {353, V::double_(100), Mode::bezier, accelerate},
              {360, V::double_(0), Mode::linear, std::nullopt}},
             "opacity");
  expectKeys(s.layer().transform.position,
             {{342, V::point(100, 100), Mode::bezier, BezierHandles::anticipate},
              {360, V::point(-420, 100), Mode::linear, std::nullopt}},
             "position");
}

TEST(ApplyBehaviorRowsTest, UniformScaleNumbersBecomePoints) {
  Stamped s("emphasis.pop");
  // 0.32 × 0.4 s = 0.128 s → frame 63; 0.7 → 0.28 s → 68; 1 → 72.
  expectKeys(s.layer().transform.scale,
             {{60, V::point(100, 100), Mode::bezier, decelerate},
              {63, V::point(134, 134), Mode::bezier, decelerate},
              {68, V::point(96, 96), Mode::bezier, decelerate},
              {72, V::point(100, 100), Mode::bezier, decelerate}},
             "scale");
}

TEST(ApplyBehaviorRowsTest, ExposureFlashAddsAnAnimatedEffect) {
  Stamped s("effects.exposure-flash");
  ASSERT_EQ(s.layer().effects.size(), 1u);
  const EffectInstance& e = s.layer().effects[0];
  EXPECT_EQ(e.effectID, "color.exposure");
  EXPECT_TRUE(e.isEnabled);
  ASSERT_EQ(e.parameters.size(), 1u);
  // 0.35 × 0.5 s = 0.175 s → frame 65.
  expectKeys(e.parameters.at("ev"),
             {{60, V::double_(0), Mode::linear, std::nullopt},
              {65, V::double_(1.4), Mode::easeOut, std::nullopt},
              {75, V::double_(0), Mode::easeIn, std::nullopt}},
             "ev");
}

TEST(ApplyBehaviorRowsTest, IrisOpensEveryCropEdge) {
  Stamped s("crop.iris");
  // 0.75 s → frame 82.5, so 82.
  const Layer& l = s.layer();
  expectKeys(l.crop.left, {{60, V::double_(400), Mode::easeOut, {}}, {82, V::double_(0), Mode::easeIn, {}}}, "left");
  expectKeys(l.crop.right, {{60, V::double_(400), Mode::easeOut, {}}, {82, V::double_(0), Mode::easeIn, {}}}, "right");
  expectKeys(l.crop.top, {{60, V::double_(300), Mode::easeOut, {}}, {82, V::double_(0), Mode::easeIn, {}}}, "top");
  expectKeys(l.crop.bottom, {{60, V::double_(300), Mode::easeOut, {}}, {82, V::double_(0), Mode::easeIn, {}}},
             "bottom");
}

TEST(ApplyBehaviorRowsTest, RevealBehindWipeOffsetsTheRightCrop) {
  Stamped s("text.line-reveal", LayerKind::text, [](Layer& l) { l.crop.right = AnimatedProperty::double_(10); });
  expectKeys(s.layer().crop.right,
             {{60, V::double_(4010), Mode::bezier, decelerate}, {81, V::double_(10), Mode::linear, std::nullopt}},
             "crop.right");
}

TEST(ApplyBehaviorRowsTest, AudioRowsWriteVolumeAndPan) {
  Stamped duck("audio.duck", LayerKind::audio);
  // 0.4 × 10 s → frame 180; 0.7 → 270.
  expectKeys(duck.layer().audio.volume,
             {{60, V::double_(100), Mode::easeIn, {}},
              {180, V::double_(35), Mode::easeInOut, {}},
              {270, V::double_(35), Mode::easeInOut, {}},
              {360, V::double_(100), Mode::easeOut, {}}},
             "volume");
  Stamped pan("audio.pan-left-right", LayerKind::video);
  expectKeys(pan.layer().audio.pan, {{60, V::double_(-100), Mode::linear, {}}, {360, V::double_(100), Mode::linear, {}}},
             "pan");
}

// --- The edge cases of applying ---

TEST(ApplyBehaviorTest, AShortClipCompressesTheRun) {
  ProjectDocument doc(projectWith({layerOfKind(LayerKind::solid, 1, 0.3)}));
  ASSERT_EQ(applyBehavior(doc, "entrance.fade-in", {onlyLayer(doc).id}), 1);
  EXPECT_EQ(keyTimes(onlyLayer(doc).transform.opacity), (std::vector<OVTime>{frame(30), frame(39)}));
}

TEST(ApplyBehaviorTest, TrailingSecondOfATenSecondClip) {
  ProjectDocument doc(projectWith({layerOfKind(LayerKind::video, 2, 10)}));
  ASSERT_EQ(applyBehavior(doc, "audio.fade-out", {onlyLayer(doc).id}), 1);
  EXPECT_EQ(keyTimes(onlyLayer(doc).audio.volume), (std::vector<OVTime>{secs(11), secs(12)}));
}

TEST(ApplyBehaviorTest, FadeInReplacesAnExistingOpacityAnimation) {
  Layer layer = layerOfKind(LayerKind::image);
  layer.transform.opacity.upsertKeyframe(V::double_(20), secs(5));
  layer.transform.opacity.upsertKeyframe(V::double_(80), secs(6));
  layer.transform.rotation.upsertKeyframe(V::double_(45), secs(5));
  ProjectDocument doc(projectWith({layer}));
  ASSERT_EQ(applyBehavior(doc, "entrance.fade-in", {layer.id}), 1);
  const Layer& after = onlyLayer(doc);
  EXPECT_EQ(keyTimes(after.transform.opacity), (std::vector<OVTime>{secs(2), secs(2.5)}));
  EXPECT_EQ(after.transform.opacity.valueAt(secs(6)), V::double_(100));
  EXPECT_EQ(after.transform.rotation, layer.transform.rotation) << "other channels stay";
}

TEST(ApplyBehaviorTest, LockedLayersAreLeftOutAndUnchanged) {
  Layer locked = layerOfKind(LayerKind::solid);
  locked.isLocked = true;
  Layer open = layerOfKind(LayerKind::shape);
  ProjectDocument doc(projectWith({locked, open}));
  EXPECT_EQ(applyBehavior(doc, "entrance.fade-up", {locked.id, open.id}), 1);
  EXPECT_EQ(*doc.activeComposition()->layer(locked.id), locked);
  EXPECT_TRUE(doc.activeComposition()->layer(open.id)->transform.position.isAnimated());

  UndoStack undo;
  expectNoEdit(doc, undo, [&] { EXPECT_EQ(applyBehavior(doc, "entrance.fade-up", {locked.id}, &undo), 0); });
}

TEST(ApplyBehaviorTest, AudioLayersTakeOnlyAudioBehaviors) {
  const Layer audio = layerOfKind(LayerKind::audio);
  const Layer video = layerOfKind(LayerKind::video);
  const Layer text = layerOfKind(LayerKind::text);
  ProjectDocument doc(projectWith({audio, video, text}));
  UndoStack undo;
  EXPECT_EQ(applyBehavior(doc, "audio.fade-in", {audio.id, video.id, text.id}, &undo), 2);
  EXPECT_TRUE(doc.activeComposition()->layer(audio.id)->audio.volume.isAnimated());
  EXPECT_TRUE(doc.activeComposition()->layer(video.id)->audio.volume.isAnimated());
  EXPECT_EQ(*doc.activeComposition()->layer(text.id), text);

  expectNoEdit(doc, undo, [&] { EXPECT_EQ(applyBehavior(doc, "entrance.fade-in", {audio.id}, &undo), 0); });
  const Layer audioBefore = *doc.activeComposition()->layer(audio.id);
  EXPECT_EQ(applyBehavior(doc, "entrance.fade-in", {audio.id, video.id}, &undo), 1);
  EXPECT_EQ(*doc.activeComposition()->layer(audio.id), audioBefore);
}

TEST(ApplyBehaviorTest, TextBehaviorsTakeOnlyTextLayers) {
  const Layer text = layerOfKind(LayerKind::text);
  const Layer solid = layerOfKind(LayerKind::solid);
  ProjectDocument doc(projectWith({text, solid}));
  EXPECT_EQ(applyBehavior(doc, "text.typewriter", {text.id, solid.id}), 1);
  EXPECT_TRUE(doc.activeComposition()->layer(text.id)->textReveal.isAnimated());
  EXPECT_EQ(*doc.activeComposition()->layer(solid.id), solid);
}

TEST(ApplyBehaviorTest, OffsetPositionKeysAddToWhereTheLayerStands) {
  ProjectDocument doc(projectWith({layerOfKind(LayerKind::solid)}));
  ASSERT_EQ(applyBehavior(doc, "entrance.fade-up", {onlyLayer(doc).id}), 1);
  const auto& keys = onlyLayer(doc).transform.position.keyframes();
  ASSERT_EQ(keys.size(), 2u);
  EXPECT_EQ(keys[0].value, V::point(100, -40));
  EXPECT_EQ(keys[1].value, V::point(100, 100));
}

TEST(ApplyBehaviorTest, EffectsStackWhileTracksReplace) {
  ProjectDocument doc(projectWith({layerOfKind(LayerKind::solid)}));
  const Uuid id = onlyLayer(doc).id;
  ASSERT_EQ(applyBehavior(doc, "effects.focus-pull", {id}), 1);
  ASSERT_EQ(applyBehavior(doc, "effects.focus-pull", {id}), 1);
  ASSERT_EQ(onlyLayer(doc).effects.size(), 2u);
  EXPECT_EQ(onlyLayer(doc).effects[0].effectID, "blur.gaussian");
  EXPECT_EQ(onlyLayer(doc).effects[1].effectID, "blur.gaussian");
  EXPECT_NE(onlyLayer(doc).effects[0].id, onlyLayer(doc).effects[1].id);

  ASSERT_EQ(applyBehavior(doc, "entrance.zoom-in", {id}), 1);
  const Layer once = onlyLayer(doc);
  ASSERT_EQ(applyBehavior(doc, "entrance.zoom-in", {id}), 1);
  const Layer& twice = onlyLayer(doc);
  EXPECT_EQ(twice.transform.scale.keyframes().size(), 2u);
  EXPECT_EQ(twice.transform.opacity.keyframes().size(), 2u);
  EXPECT_EQ(twice.transform.scale.valueAt(secs(2)), once.transform.scale.valueAt(secs(2)));
  EXPECT_EQ(twice.effects.size(), 2u);
}

TEST(ApplyBehaviorTest, OneUndoStepNamedForTheBehavior) {
  const Layer a = layerOfKind(LayerKind::solid);
  const Layer b = layerOfKind(LayerKind::video, 4, 3);
  ProjectDocument doc(projectWith({a, b}));
  UndoStack undo;
  expectUndoableEdit(doc, undo, "Apply Blur In",
                     [&] { EXPECT_EQ(applyBehavior(doc, "entrance.blur-in", {a.id, b.id}, &undo), 2); });
  expectUndoableEdit(doc, undo, "Apply Pan L → R",
                     [&] { EXPECT_EQ(applyBehavior(doc, "audio.pan-left-right", {b.id}, &undo), 1); });
}

TEST(ApplyBehaviorTest, NothingToApplyLeavesNoTrace) {
  const Layer a = layerOfKind(LayerKind::solid);
  ProjectDocument doc(projectWith({a}));
  UndoStack undo;
  expectNoEdit(doc, undo, [&] {
    EXPECT_EQ(applyBehavior(doc, "entrance.no-such", {a.id}, &undo), 0);
    EXPECT_EQ(applyBehavior(doc, "entrance.fade-in", {Uuid::make()}, &undo), 0);
    EXPECT_EQ(applyBehavior(doc, "entrance.fade-in", {}, &undo), 0);
  });

  OVProject empty;
  empty.compositions = {};
  ProjectDocument noComposition(empty);
  expectNoEdit(noComposition, undo,
               [&] { EXPECT_EQ(applyBehavior(noComposition, "entrance.fade-in", {a.id}, &undo), 0); });
}

TEST(ApplyBehaviorTest, ALayerNamedTwiceIsStampedOnce) {
  ProjectDocument doc(projectWith({layerOfKind(LayerKind::solid)}));
  const Uuid id = onlyLayer(doc).id;
  EXPECT_EQ(applyBehavior(doc, "effects.focus-pull", {id, id}), 1);
  EXPECT_EQ(onlyLayer(doc).effects.size(), 1u);
}

TEST(ApplyBehaviorTest, UnknownEffectsAndParametersAreSkipped) {
  Behavior b;
  b.name = "Odd";
  b.effects = {BehaviorEffect{"no.such.effect", {{"radius", {{0, V::double_(1)}}}}},
               BehaviorEffect{"blur.gaussian", {{"nonsense", {{0, V::double_(1)}}}, {"radius", {{1, V::double_(5)}}}}}};
  ProjectDocument doc(projectWith({layerOfKind(LayerKind::solid)}));
  ASSERT_EQ(applyBehavior(doc, b, {onlyLayer(doc).id}), 1);
  ASSERT_EQ(onlyLayer(doc).effects.size(), 1u);
  const EffectInstance& e = onlyLayer(doc).effects[0];
  EXPECT_EQ(e.effectID, "blur.gaussian");
  ASSERT_EQ(e.parameters.size(), 1u);
  EXPECT_EQ(keyTimes(e.parameters.at("radius")), (std::vector<OVTime>{secs(2.7)}));
}

}  // namespace
}  // namespace orvane::behaviors
