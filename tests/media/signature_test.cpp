#include "media/composition_signature.hpp"

#include <gtest/gtest.h>

#include "tests/media/assembly_test_support.hpp"

namespace orvane::media {
namespace {

using namespace testing;

class SignatureTest : public ::testing::Test {
 protected:
  void SetUp() override {
    clip = footageAsset(folder, "clip.mov", 4);
    inner = composition("Inner", 3);
    nestedClip = videoLayer(clip, 0, 3);
    addLayers(inner, {nestedClip});
    main = composition("Main", 10);
    title = textLayer(1, 2);
    video = videoLayer(clip, 0, 4);
    nest = nestLayer(inner, 4, 3);
    addLayers(main, {title, video, nest});
  }
  CompositionSignature signature() const { return {main, projectOf({main, inner}, {clip})}; }
  // The signature after a change of one layer of main.
  CompositionSignature after(const core::Uuid& layerID, const std::function<void(core::Layer&)>& change) {
    main.update(layerID, change);
    return signature();
  }

  ScratchFolder folder{"signature"};
  core::MediaAsset clip;
  core::Composition inner, main;
  core::Layer title, video, nest, nestedClip;
};

TEST_F(SignatureTest, TextStartsWithDurationSizeAndRateThenOneEntryPerLayer) {
  const std::string text = signature().value;
  EXPECT_TRUE(text.starts_with("10.0|320x240|30/1|text,1010,")) << text;
  EXPECT_NE(text.find("|video,1010,"), std::string::npos) << text;
  EXPECT_NE(text.find(clip.id.text() + "," + clip.path), std::string::npos) << text;
  EXPECT_NE(text.find(":320x240,3.0,video;1010;0.0;3.0;0.0;"), std::string::npos) << text;
}

TEST_F(SignatureTest, VisualChangesKeepIt) {
  const CompositionSignature before = signature();
  EXPECT_EQ(after(title.id, [](core::Layer& l) { l.moveTo(secs(5)); }), before);
  EXPECT_EQ(after(video.id, [](core::Layer& l) { l.transform.opacity = core::AnimatedProperty::double_(20); }),
            before);
  EXPECT_EQ(after(video.id, [](core::Layer& l) { l.blendMode = core::OVBlendMode::screen; }), before);
  EXPECT_EQ(after(title.id, [](core::Layer& l) { l.content = core::LayerContent::text({.string = "Other"}); }),
            before);
}

TEST_F(SignatureTest, StructuralChangesChangeIt) {
  const CompositionSignature before = signature();
  EXPECT_NE(after(video.id, [](core::Layer& l) { l.moveTo(secs(0.5)); }), before);
  main.update(video.id, [](core::Layer& l) { l.moveTo(secs(0)); });
  EXPECT_EQ(signature(), before);
  EXPECT_NE(after(video.id, [](core::Layer& l) { l.sourceStart = secs(1); }), before);
  main.update(video.id, [](core::Layer& l) { l.sourceStart = secs(0); });
  EXPECT_NE(after(video.id, [](core::Layer& l) { l.audio.isMuted = true; }), before);
  main.update(video.id, [](core::Layer& l) { l.audio.isMuted = false; });
  EXPECT_NE(after(video.id, [](core::Layer& l) { l.audio.volume = core::AnimatedProperty::double_(80); }), before);
  main.update(video.id, [](core::Layer& l) { l.audio.volume = core::AnimatedProperty::double_(100); });
  EXPECT_NE(after(video.id, [](core::Layer& l) { l.audio.pan = core::AnimatedProperty::double_(-30); }), before);
  main.update(video.id, [](core::Layer& l) { l.audio.pan = core::AnimatedProperty::double_(0); });
  EXPECT_NE(after(video.id, [](core::Layer& l) { l.fadeOut = secs(0.5); }), before);
  main.update(video.id, [](core::Layer& l) { l.fadeOut = secs(0); });
  EXPECT_NE(after(video.id, [](core::Layer& l) { l.audio.echoMix = 40; }), before);
  main.update(video.id, [](core::Layer& l) { l.audio.echoMix = 0; });
  EXPECT_EQ(signature(), before);
  // A title moved past the end lengthens the composition.
  EXPECT_NE(after(title.id, [](core::Layer& l) { l.moveTo(secs(9)); }), before);
}

TEST_F(SignatureTest, MediaAndNestedStructureReachIt) {
  const CompositionSignature before = signature();
  core::OVProject relinked = projectOf({main, inner}, {clip});
  relinked.updateAsset(clip.id, [](core::MediaAsset& a) { a.path += ".moved"; });
  EXPECT_NE(CompositionSignature(main, relinked), before);

  // A nested clip moved, or a nested composition gone.
  core::Composition movedInner = inner;
  movedInner.update(nestedClip.id, [](core::Layer& l) { l.moveTo(secs(1)); });
  EXPECT_NE(CompositionSignature(main, projectOf({main, movedInner}, {clip})), before);
  const CompositionSignature withoutInner(main, projectOf({main}, {clip}));
  EXPECT_NE(withoutInner.value.find(":missing"), std::string::npos);
  // An asset that is gone from the project reads "missing".
  EXPECT_NE(CompositionSignature(main, projectOf({main, inner}, {})).value.find(",missing"), std::string::npos);
}

TEST_F(SignatureTest, SelfNestingEndsAtTheDepthLimit) {
  core::Composition loop = composition("Loop", 3);
  addLayers(loop, {nestLayer(loop, 0, 3)});
  const std::string fingerprint = nestedStructureFingerprint(loop.id, projectOf({loop}, {}), 0);
  std::size_t levels = 0;
  for (std::size_t at = fingerprint.find("320x240"); at != std::string::npos; at = fingerprint.find("320x240", at + 1)) {
    ++levels;
  }
  EXPECT_EQ(levels, 8u);
}

}  // namespace
}  // namespace orvane::media
