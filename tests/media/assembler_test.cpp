#include "media/composition_assembler.hpp"

#include <gtest/gtest.h>

#include "tests/media/assembly_test_support.hpp"

namespace orvane::media {
namespace {

using namespace testing;
using core::OVTime;

// The files here hold a few bytes: the records say what they are.
class AssemblerTest : public ::testing::Test {
 protected:
  void SetUp() override { assembler.sourceInfo = sourceInfoFromRecord; }

  AssembledComposition assembled(const core::Composition& c, const core::OVProject& project, double scale = 1) {
    auto result = assembler.assemble(c, project, scale);
    EXPECT_TRUE(result.has_value()) << (result ? "" : result.error().message());
    return result ? std::move(*result) : AssembledComposition{};
  }
  const TrackSegment& onlySegment(const AssembledComposition& a, std::int32_t trackID) {
    const TimedTrack* track = a.asset.track(trackID);
    EXPECT_NE(track, nullptr);
    EXPECT_EQ(track->segments.size(), 1u);
    return track->segments.front();
  }

  ScratchFolder folder{"assembler"};
  CompositionAssembler assembler;
};

TEST_F(AssemblerTest, TextOnlyCompositionHasNoTracksNoMixAndAPlanOverItsWholeDuration) {
  core::Composition main = composition("Main", 4);
  addLayers(main, {textLayer(0, 4)});
  const AssembledComposition a = assembled(main, projectOf({main}, {}), 0.5);

  EXPECT_TRUE(a.asset.tracks().empty());
  EXPECT_FALSE(a.audioMix);
  EXPECT_EQ(a.audioTapRetention, nullptr);
  EXPECT_FALSE(a.plan.canvasTrackID);
  EXPECT_TRUE(a.plan.allVideoTrackIDs().empty());
  EXPECT_EQ(a.asset.duration, secs(4));
  EXPECT_EQ(a.videoComposition.renderSize, (render::PixelSize{160, 120}));
  EXPECT_EQ(a.videoComposition.frameDuration, OVTime(1, 30));
  ASSERT_NE(a.videoComposition.instruction, nullptr);
  EXPECT_EQ(a.videoComposition.instruction->timeRange, span(0, 4));
  EXPECT_EQ(a.videoComposition.instruction->plan.composition, main);
}

TEST_F(AssemblerTest, DurationIsNeverShorterThanContentNorThanOneFrame) {
  core::Composition empty = composition("Empty", 0);
  EXPECT_EQ(assembled(empty, projectOf({empty}, {})).asset.duration, OVTime(1, 30));

  core::Composition overlong = composition("Long", 2);
  addLayers(overlong, {textLayer(1, 5)});
  EXPECT_EQ(assembled(overlong, projectOf({overlong}, {})).asset.duration, secs(6));
}

TEST_F(AssemblerTest, FootageRangeIsClampedToItsFile) {
  const core::MediaAsset clip = footageAsset(folder, "clip.mov", 4);
  core::Composition main = composition("Main", 20);
  core::Layer longer = videoLayer(clip, 2, 10);
  core::Layer pastEnd = videoLayer(clip, 0, 3, 4.5);
  core::Layer lateStart = videoLayer(clip, 12, 3, 3);
  addLayers(main, {longer, pastEnd, lateStart});
  const AssembledComposition a = assembled(main, projectOf({main}, {clip}));

  // Ten seconds over a file of four: the track ends with the file.
  const TrackSegment& whole = onlySegment(a, a.plan.videoTrackIDs.at(longer.id));
  EXPECT_EQ(whole.sourceRange, span(0, 4));
  EXPECT_EQ(whole.compositionRange(), span(2, 4));
  EXPECT_NE(a.asset.track(a.plan.videoTrackIDs.at(longer.id))->segmentAt(secs(5.9)), nullptr);
  EXPECT_EQ(a.asset.track(a.plan.videoTrackIDs.at(longer.id))->segmentAt(secs(6)), nullptr);
  EXPECT_EQ(a.plan.footageGeometry.at(longer.id).naturalSize, (core::OVSize{320, 240}));

  // A source start past the file's end leaves the layer without a track.
  EXPECT_FALSE(a.plan.videoTrackIDs.contains(pastEnd.id));
  // One second left of the file from 3 s on.
  EXPECT_EQ(onlySegment(a, a.plan.videoTrackIDs.at(lateStart.id)).sourceRange, span(3, 1));

  // Each footage layer has tracks of its own: two layers with video and audio.
  EXPECT_EQ(a.asset.tracksOf(TrackMediaType::video).size(), 2u);
  EXPECT_EQ(a.asset.tracksOf(TrackMediaType::audio).size(), 2u);
}

TEST_F(AssemblerTest, TrimmedPrecompositionBringsOnlyItsWindowToOuterTime) {
  const core::MediaAsset a1 = footageAsset(folder, "a.mov", 3);
  const core::MediaAsset b1 = footageAsset(folder, "b.mov", 3);
  core::Composition inner = composition("Inner", 3);
  core::Layer full = videoLayer(a1, 0, 3);
  core::Layer late = videoLayer(b1, 1.5, 1.5);
  core::Layer outside = videoLayer(b1, 2.5, 0.5);
  addLayers(inner, {full, late, outside});
  core::Composition main = composition("Main", 20);
  // The middle third of the nested timeline, shown from 10 s on.
  addLayers(main, {nestLayer(inner, 10, 1, 1)});
  const AssembledComposition a = assembled(main, projectOf({main, inner}, {a1, b1}));

  const TrackSegment& fullPart = onlySegment(a, a.plan.videoTrackIDs.at(full.id));
  EXPECT_EQ(fullPart.compositionRange(), span(10, 1));
  EXPECT_EQ(fullPart.sourceRange, span(1, 1));
  const TrackSegment& latePart = onlySegment(a, a.plan.videoTrackIDs.at(late.id));
  EXPECT_EQ(latePart.compositionRange(), span(10.5, 0.5));
  EXPECT_EQ(latePart.sourceRange, span(0, 0.5));
  EXPECT_FALSE(a.plan.videoTrackIDs.contains(outside.id));
  // The plan can draw the nested level.
  EXPECT_TRUE(a.plan.compositionsByID.contains(inner.id));

  // The nested audio's volume curve runs on the nested clock.
  const AudioMixInputParameters& params = a.audioMix->inputParameters.front();
  EXPECT_EQ(params.layerTimeOffset, secs(1) - secs(10));
}

TEST_F(AssemblerTest, MissingFilesOfAllLevelsEndInOneSentence) {
  const core::MediaAsset a1 = footageAsset(folder, "a.mov", 3, true, true, false);
  const core::MediaAsset b1 = footageAsset(folder, "b.mov", 3, true, true, false);
  const core::MediaAsset here = footageAsset(folder, "here.mov", 3);
  core::Composition inner = composition("Inner", 3);
  addLayers(inner, {videoLayer(b1, 0, 3), videoLayer(a1, 0, 1)});
  core::Composition main = composition("Main", 5);
  addLayers(main, {videoLayer(a1, 0, 3), videoLayer(here, 0, 3), nestLayer(inner, 0, 3)});

  const auto result = assembler.assemble(main, projectOf({main, inner}, {a1, b1, here}), 1);
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error().names, (std::vector<std::string>{"a.mov", "b.mov"}));
  EXPECT_EQ(result.error().message(), "Missing media: a.mov, b.mov.");
}

TEST_F(AssemblerTest, WithoutMissingMediaTheRestAssembles) {
  const core::MediaAsset gone = footageAsset(folder, "gone.mov", 3, true, true, false);
  const core::MediaAsset here = footageAsset(folder, "here.mov", 3);
  core::Composition main = composition("Main", 5);
  core::Layer kept = videoLayer(here, 0, 3);
  core::Layer title = textLayer(0, 2);
  core::Layer unknown("Unknown", core::LayerContent::audio(core::Uuid::make()), span(0, 3));
  addLayers(main, {videoLayer(gone, 0, 3), kept, title, unknown});
  const core::OVProject project = projectOf({main}, {gone, here});
  ASSERT_FALSE(assembler.assemble(main, project, 1));

  const core::Composition stripped = withoutMissingMedia(main, project);
  ASSERT_EQ(stripped.layers.size(), 2u);
  EXPECT_NE(stripped.layer(kept.id), nullptr);
  EXPECT_NE(stripped.layer(title.id), nullptr);
  EXPECT_TRUE(assembled(stripped, project).plan.videoTrackIDs.contains(kept.id));
}

TEST_F(AssemblerTest, UnknownAssetsAndCompositionsAndDisabledLayersAreLeftOutSilently) {
  const core::MediaAsset clip = footageAsset(folder, "clip.mov", 3);
  core::Composition inner = composition("Inner", 3);
  core::Layer nestedClip = videoLayer(clip, 0, 3);
  addLayers(inner, {nestedClip});
  core::Composition main = composition("Main", 5);
  core::Layer unknownAsset("Gone", core::LayerContent::video(core::Uuid::make()), span(0, 3));
  core::Layer unknownNest("Nest", core::LayerContent::precomposition(core::Uuid::make()), span(0, 3));
  core::Layer disabledNest = nestLayer(inner, 0, 3);
  disabledNest.isEnabled = false;
  addLayers(main, {unknownAsset, unknownNest, disabledNest});

  const AssembledComposition a = assembled(main, projectOf({main, inner}, {clip}));
  EXPECT_TRUE(a.asset.tracks().empty());
  EXPECT_TRUE(a.plan.videoTrackIDs.empty());
}

TEST_F(AssemblerTest, MutedPrecompositionKeepsVideoAndDropsAllAudioInside) {
  const core::MediaAsset clip = footageAsset(folder, "clip.mov", 3);
  const core::MediaAsset tone = footageAsset(folder, "tone.wav", 3, false, true);
  core::Composition inner = composition("Inner", 3);
  core::Layer nestedClip = videoLayer(clip, 0, 3);
  addLayers(inner, {nestedClip, audioLayer(tone, 0, 3)});
  core::Composition main = composition("Main", 5);
  core::Layer nest = nestLayer(inner, 0, 3);
  nest.audio.isMuted = true;
  addLayers(main, {nest});

  const AssembledComposition a = assembled(main, projectOf({main, inner}, {clip, tone}));
  EXPECT_TRUE(a.plan.videoTrackIDs.contains(nestedClip.id));
  EXPECT_TRUE(a.asset.tracksOf(TrackMediaType::audio).empty());
  EXPECT_FALSE(a.audioMix);
}

TEST_F(AssemblerTest, AudioFollowsMuteSourceAudioAndSoloRules) {
  const core::MediaAsset clip = footageAsset(folder, "clip.mov", 3);
  const core::MediaAsset tone = footageAsset(folder, "tone.wav", 3, false, true);
  core::Composition main = composition("Main", 5);
  core::Layer silentVideo = videoLayer(clip, 0, 3);
  silentVideo.usesSourceAudio = false;
  core::Layer muted = audioLayer(tone, 0, 3);
  muted.audio.isMuted = true;
  core::Layer plain = audioLayer(tone, 0, 3);
  addLayers(main, {silentVideo, muted, plain});
  const AssembledComposition a = assembled(main, projectOf({main}, {clip, tone}));
  EXPECT_TRUE(a.plan.videoTrackIDs.contains(silentVideo.id));
  ASSERT_TRUE(a.audioMix);
  ASSERT_EQ(a.audioMix->inputParameters.size(), 1u);  // only `plain`

  // A solo on an audible layer silences the unsoloed ones beside it.
  core::Layer solo = audioLayer(tone, 0, 3);
  solo.isSolo = true;
  main.insert(solo, 0);
  const AssembledComposition soloed = assembled(main, projectOf({main}, {clip, tone}));
  ASSERT_EQ(soloed.audioMix->inputParameters.size(), 1u);
  const TimedTrack* track = soloed.asset.track(soloed.audioMix->inputParameters[0].trackID);
  EXPECT_EQ(track->mediaType, TrackMediaType::audio);
}

TEST_F(AssemblerTest, FadesBecomeRampsOfATenthWithAShorterLast) {
  const core::MediaAsset tone = footageAsset(folder, "tone.wav", 3, false, true);
  core::Composition main = composition("Main", 5);
  core::Layer faded = audioLayer(tone, 1, 1.05);
  faded.fadeIn = secs(0.25);
  faded.audio.normalizeGain = 2;
  addLayers(main, {faded});
  const AssembledComposition a = assembled(main, projectOf({main}, {tone}));

  const std::vector<VolumeRamp>& ramps = a.audioMix->inputParameters.at(0).ramps;
  ASSERT_EQ(ramps.size(), 11u);
  for (std::size_t i = 0; i < 10; ++i) {
    EXPECT_EQ(ramps[i].timeRange, span(1 + 0.1 * static_cast<double>(i), 0.1)) << i;
  }
  EXPECT_EQ(ramps[10].timeRange, span(2, 0.05));
  EXPECT_FLOAT_EQ(ramps[0].startVolume, 0);
  EXPECT_FLOAT_EQ(ramps[0].endVolume, 0.8f);   // 0.1 of 0.25 s, times 2
  EXPECT_FLOAT_EQ(ramps[2].startVolume, 1.6f);
  EXPECT_FLOAT_EQ(ramps[2].endVolume, 2);
  // The last ramp ends on the layer's end, where the fade multiplier is 0
  // even without a fade-out.
  EXPECT_FLOAT_EQ(ramps[9].endVolume, 2);
  EXPECT_FLOAT_EQ(ramps[10].startVolume, 2);
  EXPECT_FLOAT_EQ(ramps[10].endVolume, 0);
  EXPECT_FLOAT_EQ(a.audioMix->inputParameters[0].volumeAt(secs(1.05)), 0.4f);

  // A layer longer than its file: the ramps stop with the file, before the
  // layer's end, still at full volume.
  core::Layer overlong = audioLayer(tone, 0, 5);
  overlong.fadeIn = secs(0.25);
  core::Composition other = composition("Other", 5);
  addLayers(other, {overlong});
  const std::vector<VolumeRamp> cut = assembled(other, projectOf({other}, {tone})).audioMix->inputParameters.at(0).ramps;
  ASSERT_EQ(cut.size(), 30u);
  EXPECT_EQ(cut.back().timeRange.end(), secs(3));
  EXPECT_FLOAT_EQ(cut.back().endVolume, 1);
}

TEST_F(AssemblerTest, SteadyVolumeIsOneSettingWithNormalizeGain) {
  const core::MediaAsset tone = footageAsset(folder, "tone.wav", 3, false, true);
  core::Composition main = composition("Main", 5);
  core::Layer quiet = audioLayer(tone, 0, 3);
  quiet.audio.volume = core::AnimatedProperty::double_(50);
  quiet.audio.normalizeGain = 3;
  quiet.audio.pan = core::AnimatedProperty::double_(-100);
  addLayers(main, {quiet});
  const AssembledComposition a = assembled(main, projectOf({main}, {tone}));
  const AudioMixInputParameters& params = a.audioMix->inputParameters.at(0);
  EXPECT_TRUE(params.ramps.empty());
  EXPECT_FLOAT_EQ(params.initialVolume, 1.5f);
  EXPECT_FLOAT_EQ(params.panGainsAt(secs(1)).right, 0);
}

TEST_F(AssemblerTest, TapsAreMadePerLayerAndKeptWithTheResult) {
  struct CountingTap : AudioTrackTap {
    void prepare(const AudioTapFormat&, int) override {}
    void process(float*, int) override {}
  };
  int asked = 0;
  assembler.tapMaker = [&](const core::Layer& layer) -> std::shared_ptr<AudioTrackTap> {
    ++asked;
    if (layer.audio.echoMix <= 0.5) return nullptr;
    return std::make_shared<CountingTap>();
  };
  const core::MediaAsset tone = footageAsset(folder, "tone.wav", 3, false, true);
  core::Composition main = composition("Main", 5);
  core::Layer echo = audioLayer(tone, 0, 3);
  echo.audio.echoMix = 50;
  addLayers(main, {echo, audioLayer(tone, 0, 3)});
  AssembledComposition a = assembled(main, projectOf({main}, {tone}));

  EXPECT_EQ(asked, 2);
  ASSERT_NE(a.audioTapRetention, nullptr);
  ASSERT_EQ(a.audioTapRetention->taps.size(), 1u);
  std::weak_ptr<AudioTrackTap> tap = a.audioTapRetention->taps[0];
  EXPECT_EQ(a.audioMix->inputParameters[0].audioTapProcessor, tap.lock());
  EXPECT_EQ(a.audioMix->inputParameters[1].audioTapProcessor, nullptr);
  a = {};
  EXPECT_TRUE(tap.expired());
}

TEST_F(AssemblerTest, StillsAreRegisteredByLayerAndMissingOnesReported) {
  core::MediaAsset still = footageAsset(folder, "card.png", 0, false, false);
  still.kind = core::MediaKind::image;
  core::Composition main = composition("Main", 5);
  core::Layer image("Card", core::LayerContent::image(still.id), span(0, 5));
  addLayers(main, {image});
  const AssembledComposition a = assembled(main, projectOf({main}, {still}));
  EXPECT_EQ(a.plan.stillImagePaths.at(image.id), still.path);
  EXPECT_TRUE(a.asset.tracks().empty());

  std::filesystem::remove(still.path);
  const auto missing = assembler.assemble(main, projectOf({main}, {still}), 1);
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.error().message(), "Missing media: card.png.");
}

TEST_F(AssemblerTest, SelfNestingStopsAtTheDepthLimit) {
  const core::MediaAsset clip = footageAsset(folder, "clip.mov", 3);
  core::Composition loop = composition("Loop", 3);
  core::Layer clipLayer = videoLayer(clip, 0, 3);
  addLayers(loop, {clipLayer, nestLayer(loop, 0, 3)});
  const AssembledComposition a = assembled(loop, projectOf({loop}, {clip}));
  // One track per level, levels 0 to 7; the map keeps the last.
  EXPECT_EQ(a.asset.tracksOf(TrackMediaType::video).size(), 8u);
  EXPECT_EQ(a.plan.videoTrackIDs.size(), 1u);
}

TEST(ClampedSourceRangeTest, StartIsHeldInTheFileAndLengthCutAtItsEnd) {
  EXPECT_EQ(clampedSourceRange(secs(-2), secs(3), secs(4)), span(0, 3));
  EXPECT_EQ(clampedSourceRange(secs(3), secs(3), secs(4)), span(3, 1));
  EXPECT_FALSE(clampedSourceRange(secs(4), secs(3), secs(4)));
  EXPECT_FALSE(clampedSourceRange(secs(1), secs(0), secs(4)));
  EXPECT_FALSE(clampedSourceRange(secs(0), secs(1), secs(0)));
}

}  // namespace
}  // namespace orvane::media
