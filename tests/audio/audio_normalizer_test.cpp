#include "audio/audio_normalizer.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/audio/audio_test_support.hpp"

namespace orvane::audio {
namespace {

using core::OVTime;

constexpr int kRate = 8000;

// A document whose active composition holds one layer over an asset.
struct Fixture {
  test::TempFolder folder;
  document::UndoStack undo;
  std::unique_ptr<document::ProjectDocument> doc;
  core::Uuid layerID;

  Fixture(const std::vector<float>& samples, core::MediaKind kind = core::MediaKind::audio,
          OVTime sourceStart = OVTime::zero, std::optional<OVTime> duration = std::nullopt) {
    const auto file = folder / "clip.wav";
    test::writeFloatWav(file, samples, kRate, 2);
    core::MediaAsset asset;
    asset.kind = kind;
    asset.path = file.string();
    asset.hasAudioTrack = kind != core::MediaKind::image;
    asset.duration = OVTime(static_cast<std::int64_t>(samples.size() / 2), kRate);
    core::OVProject project = core::OVProject::starter();
    project.assets.mutate().push_back(asset);
    const auto content = kind == core::MediaKind::image ? core::LayerContent::image(asset.id)
                                                        : core::LayerContent::audio(asset.id);
    core::Layer layer("Clip", content, core::OVTimeRange(OVTime::zero, duration.value_or(asset.duration)));
    layer.sourceStart = sourceStart;
    layerID = layer.id;
    project.updateActiveComposition([&](core::Composition& c) { c.layers.push_back(layer); });
    doc = std::make_unique<document::ProjectDocument>(project);
  }

  double gain() const { return doc->activeComposition()->layer(layerID)->audio.normalizeGain; }
  std::string normalize() { return AudioNormalizer::normalizeAudio(*doc, layerID, &undo); }
};

std::vector<float> stereoWithPeak(float peak, std::size_t frames = kRate) {
  std::vector<float> v = test::square(frames, 2, peak * 0.5f);
  v[frames] = -peak;  // once, on the right, half way
  return v;
}

TEST(AudioNormalizerTest, GainBringsThePeakToMinusOneDecibel) {
  Fixture atTarget(stereoWithPeak(0.891f));
  EXPECT_EQ(atTarget.normalize(), "Normalized (+0.0 dB).");
  EXPECT_EQ(atTarget.gain(), 1.0);
  EXPECT_FALSE(atTarget.undo.canUndo());  // the gain was 1 already: no change, no step

  Fixture fullScale(stereoWithPeak(1.0f));
  EXPECT_EQ(fullScale.normalize(), "Normalized (-1.0 dB).");
  EXPECT_EQ(fullScale.gain(), static_cast<double>(0.891f));
  EXPECT_EQ(fullScale.undo.undoActionName(), "Normalize Audio");

  Fixture quiet(stereoWithPeak(0.25f));
  EXPECT_EQ(quiet.normalize(), "Normalized (+11.0 dB).");
  EXPECT_EQ(quiet.gain(), static_cast<double>(0.891f / 0.25f));

  quiet.undo.undo();
  EXPECT_EQ(quiet.gain(), 1.0);
}

TEST(AudioNormalizerTest, SilenceLeavesTheLayerAndNoUndoStep) {
  for (const float peak : {0.0f, 0.00009f}) {
    Fixture silent(stereoWithPeak(peak));
    EXPECT_EQ(silent.normalize(), "The audio is silent — nothing to normalize.");
    EXPECT_EQ(silent.gain(), 1.0);
    EXPECT_FALSE(silent.undo.canUndo());
  }
  EXPECT_EQ(AudioNormalizer::gainForPeak(0.0001f).error(), AudioNormalizer::NormalizeError::silent);
  EXPECT_EQ(AudioNormalizer::gainForPeak(std::nanf("")).error(), AudioNormalizer::NormalizeError::silent);
  EXPECT_EQ(AudioNormalizer::resultText(0), "Normalized (-80.0 dB).");
}

TEST(AudioNormalizerTest, LayersWithoutAudioGetTheNoAudioSentence) {
  Fixture image(stereoWithPeak(0.5f), core::MediaKind::image);
  // An image layer, whose file here holds no picture at all.
  std::ofstream(image.folder / "clip.wav") << "not a picture";
  EXPECT_EQ(image.normalize(), "This layer has no audio to normalize.");

  Fixture missing(stereoWithPeak(0.5f));
  std::filesystem::remove(missing.folder / "clip.wav");
  EXPECT_EQ(missing.normalize(), "This layer has no audio to normalize.");
  EXPECT_EQ(AudioNormalizer::normalizeAudio(*missing.doc, core::Uuid::make(), &missing.undo),
            "This layer has no audio to normalize.");
  EXPECT_FALSE(missing.undo.canUndo());

  // A range that starts past the end of the file is empty.
  Fixture pastEnd(stereoWithPeak(0.5f), core::MediaKind::audio, OVTime(3, 1));
  EXPECT_EQ(pastEnd.normalize(), "This layer has no audio to normalize.");
}

TEST(AudioNormalizerTest, OnlyTheUsedRangeCounts) {
  // Loud in the first second, at 0.5 in the second: the clip uses the second.
  std::vector<float> samples = test::square(kRate, 2, 1.0f);
  const std::vector<float> softer = test::square(kRate, 2, 0.5f);
  samples.insert(samples.end(), softer.begin(), softer.end());
  Fixture fixture(samples, core::MediaKind::audio, OVTime(1, 1), OVTime(5, 1));
  EXPECT_EQ(fixture.normalize(), "Normalized (+5.0 dB).");
  EXPECT_EQ(fixture.gain(), static_cast<double>(0.891f / 0.5f));

  const auto file = fixture.folder / "clip.wav";
  EXPECT_EQ(*AudioNormalizer::peakGain(file, OVTime(1, 2), OVTime(1, 4)), static_cast<double>(0.891f));
  EXPECT_EQ(AudioNormalizer::peakGain(file, OVTime(1, 2), OVTime::zero).error(),
            AudioNormalizer::NormalizeError::noAudio);
}

TEST(AudioNormalizerTest, AsynchronousNormalizingWritesBackOnTheMainQueue) {
  Fixture fixture(stereoWithPeak(0.5f));
  test::MainQueue main;
  AudioNormalizer normalizer(main.poster());
  std::optional<std::string> text;
  normalizer.normalizeAudioAsync(*fixture.doc, fixture.layerID, &fixture.undo, [&](std::string t) { text = t; });
  EXPECT_EQ(fixture.gain(), 1.0);  // nothing written before the main queue runs
  ASSERT_TRUE(main.drainUntil([&] { return text.has_value(); }));
  EXPECT_EQ(*text, "Normalized (+5.0 dB).");
  EXPECT_EQ(fixture.gain(), static_cast<double>(0.891f / 0.5f));

  text.reset();
  normalizer.normalizeAudioAsync(*fixture.doc, core::Uuid::make(), &fixture.undo, [&](std::string t) { text = t; });
  ASSERT_TRUE(main.drainUntil([&] { return text.has_value(); }));
  EXPECT_EQ(*text, "This layer has no audio to normalize.");
}

}  // namespace
}  // namespace orvane::audio
