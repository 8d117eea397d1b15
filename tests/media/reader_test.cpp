#include "media/composition_reader.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "document/media_access.hpp"
#include "tests/media/assembly_test_support.hpp"
#include "tests/media/media_fixtures.hpp"

namespace orvane::media {
namespace {

using namespace testing;
using core::OVTime;

double rms(const std::vector<float>& stereo, int channel, double fromSeconds, double toSeconds, int rate = 48000) {
  const auto first = static_cast<std::size_t>(fromSeconds * rate), last = static_cast<std::size_t>(toSeconds * rate);
  double sum = 0;
  for (std::size_t i = first; i < last; ++i) sum += stereo[2 * i + channel] * stereo[2 * i + channel];
  return std::sqrt(sum / static_cast<double>(last - first));
}

double peak(const std::vector<float>& stereo, double fromSeconds, double toSeconds, int rate = 48000) {
  double most = 0;
  for (auto i = static_cast<std::size_t>(fromSeconds * rate); i < static_cast<std::size_t>(toSeconds * rate); ++i) {
    most = std::max({most, std::abs(double(stereo[2 * i])), std::abs(double(stereo[2 * i + 1]))});
  }
  return most;
}

// Three numbered clips and a tone, generated once for the suite.
class ReaderTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    media = new TempFolder();
    for (const auto& [name, frames] : {std::pair{"a.mp4", 30}, {"b.mp4", 60}, {"c.mp4", 30}}) {
      ASSERT_EQ(writeVideoClip(*media / name, {.frameCount = frames, .keyFrameInterval = 10}), "");
    }
    ASSERT_EQ(writeTone(*media / "tone.wav", {.seconds = 1.0}), "");
  }
  static void TearDownTestSuite() {
    delete media;
    media = nullptr;
  }

  void SetUp() override {
    a = importedAsset(*media / "a.mp4");
    b = importedAsset(*media / "b.mp4");
    c = importedAsset(*media / "c.mp4");
    tone = importedAsset(*media / "tone.wav");
    main = composition("Main", 5);
    main.backgroundColor = {1, 0, 0, 1};
    inner = composition("Inner", 1);
    core::Layer nestedC = centred(videoLayer(c, 0, 1));
    addLayers(inner, {nestedC});
    toneLayer = audioLayer(tone, 2, 1);
    // a from 0 to 1; a gap; b from 1.5 to 3.5; c's second half nested from 3.5 on.
    addLayers(main, {toneLayer, centred(videoLayer(a, 0, 1)), centred(videoLayer(b, 1.5, 2)),
                     centred(nestLayer(inner, 3.5, 0.5, 0.5))});
  }

  static core::Layer centred(core::Layer layer) {
    layer.transform.position = core::AnimatedProperty::point(160, 120);
    return layer;
  }
  core::OVProject project() const { return projectOf({main, inner}, {a, b, c, tone}); }
  CompositionReader reader() {
    auto assembled = CompositionAssembler{}.assemble(main, project(), 1);
    EXPECT_TRUE(assembled.has_value());
    return CompositionReader(std::move(*assembled));
  }
  static std::optional<int> frameShown(CompositionReader& reader, double seconds) {
    auto picture = reader.videoFrameAt(secs(seconds));
    EXPECT_TRUE(picture.has_value()) << seconds;
    if (!picture) return std::nullopt;
    EXPECT_EQ(picture->extent(), (render::PixelRect{0, 0, 320, 240}));
    const render::Rgba corner = picture->pixelAt(0, 0);
    if (corner.r > 0.9f && corner.g < 0.1f && corner.b < 0.1f) return -1;  // the red background: a gap
    return readFrameNumber(*picture);
  }

  static TempFolder* media;
  core::MediaAsset a, b, c, tone;
  core::Composition main, inner;
  core::Layer toneLayer;
};

TempFolder* ReaderTest::media = nullptr;

TEST_F(ReaderTest, FramesOfEveryTrackAreComposedAtTheirTimes) {
  CompositionReader r = reader();
  EXPECT_EQ(frameShown(r, 0), 0);
  EXPECT_EQ(frameShown(r, 10.0 / 30), 10);
  EXPECT_EQ(frameShown(r, 29.0 / 30), 29);
  EXPECT_EQ(frameShown(r, 1.2), -1);  // the gap shows the background
  // Forward frame by frame through b, then back into a.
  for (int n = 0; n < 12; ++n) EXPECT_EQ(frameShown(r, 1.5 + n / 30.0), n) << n;
  EXPECT_EQ(frameShown(r, 3.5 - 1.0 / 30), 59);
  EXPECT_EQ(frameShown(r, 0.5), 15);
  // The nested c starts half way in.
  EXPECT_EQ(frameShown(r, 3.5), 15);
  EXPECT_EQ(frameShown(r, 3.5 + 14.0 / 30), 29);
  EXPECT_EQ(frameShown(r, 4.2), -1);
}

TEST_F(ReaderTest, AudioHoldsTheToneInItsRangeAndSilenceAround) {
  CompositionReader r = reader();
  EXPECT_EQ(r.audioFormat(), (AudioFormat{48000, 2}));
  auto mix = r.audioFor(span(1.5, 2));
  ASSERT_TRUE(mix.has_value());
  ASSERT_EQ(mix->size(), 2u * 96000);
  EXPECT_LT(peak(*mix, 0, 0.499), 1e-4);
  EXPECT_NEAR(rms(*mix, 0, 0.55, 1.45), 0.5 / std::sqrt(2.0), 0.02);
  EXPECT_NEAR(rms(*mix, 1, 0.55, 1.45), 0.5 / std::sqrt(2.0), 0.02);
  EXPECT_LT(peak(*mix, 1.501, 2), 1e-4);

  // Read in small consecutive blocks, the mix is the same.
  std::vector<float> pieces(2 * 96000);
  for (std::size_t at = 0; at < 96000; at += 1000) {
    ASSERT_TRUE(r.readAudio(OVTime(72000 + static_cast<std::int64_t>(at), 48000),
                            std::span(pieces).subspan(2 * at, 2000)));
  }
  for (std::size_t i = 0; i < pieces.size(); i += 997) ASSERT_NEAR(pieces[i], (*mix)[i], 1e-5) << i;
}

TEST_F(ReaderTest, VolumeFadesAndPanShapeTheTone) {
  main.update(toneLayer.id, [](core::Layer& l) {
    l.fadeIn = secs(0.5);
    l.audio.pan = core::AnimatedProperty::double_(-100);
  });
  CompositionReader r = reader();
  auto mix = r.audioFor(span(2, 1));
  ASSERT_TRUE(mix.has_value());
  EXPECT_LT(rms(*mix, 1, 0, 1), 1e-4);  // hard left
  const double full = rms(*mix, 0, 0.6, 0.9);
  EXPECT_NEAR(full, 0.5, 0.02);  // equal power: all of it on the left
  EXPECT_NEAR(rms(*mix, 0, 0.2, 0.3), full * 0.5, 0.03);
  EXPECT_LT(rms(*mix, 0, 0, 0.02), full * 0.05);
}

TEST_F(ReaderTest, FileGoneBeforeAssemblyOrReadingGivesTheMissingMediaSentence) {
  ASSERT_EQ(writeVideoClip(*media / "gone.mp4", {.frameCount = 10}), "");
  const core::MediaAsset gone = importedAsset(*media / "gone.mp4");
  // As in a later session: the file is found by its stored path, not by the
  // access import opened (which outlives the file, as the platform's does).
  document::MediaAccessManager::shared().release(gone.id);
  core::Composition withGone = main;
  withGone.insert(centred(videoLayer(gone, 0, 1)), 0);
  const core::OVProject p = projectOf({withGone, inner}, {a, b, c, tone, gone});
  auto assembled = CompositionAssembler{}.assemble(withGone, p, 1);
  ASSERT_TRUE(assembled.has_value());
  CompositionReader r(std::move(*assembled));

  std::filesystem::remove(*media / "gone.mp4");
  const auto frame = r.videoFrameAt(secs(0.2));
  ASSERT_FALSE(frame.has_value());
  EXPECT_EQ(frame.error().message(), "Missing media: gone.mp4.");
  // Frames without it still read.
  EXPECT_EQ(frameShown(r, 2), 15);

  const auto again = CompositionAssembler{}.assemble(withGone, p, 1);
  ASSERT_FALSE(again.has_value());
  EXPECT_EQ(again.error().message(), "Missing media: gone.mp4.");
}

TEST_F(ReaderTest, UnreadableFileIsLeftOutWithoutError) {
  core::MediaAsset broken = a;
  broken.id = core::Uuid::make();
  broken.name = "broken.mp4";
  broken.path = (*media / "broken.mp4").string();
  ASSERT_EQ(writeBytes(broken.path, "not a movie at all"), "");
  core::Composition withBroken = main;
  core::Layer brokenLayer = centred(videoLayer(broken, 0, 1));
  withBroken.insert(brokenLayer, 0);
  auto assembled = CompositionAssembler{}.assemble(withBroken, projectOf({withBroken, inner}, {a, b, c, tone, broken}), 1);
  ASSERT_TRUE(assembled.has_value());
  CompositionReader r(std::move(*assembled));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(frameShown(r, (10.0 + i) / 30), 10 + i);
}

TEST_F(ReaderTest, RebuildingReleasesDecoders) {
  const auto residentBytes = [] {
    std::ifstream statm("/proc/self/statm");
    long pages = 0, resident = 0;
    statm >> pages >> resident;
    return resident * 4096L;
  };
  ASSERT_EQ(CompositionReader::liveDecoderCount(), 0u);
  long before = 0;
  for (int i = 0; i < 100; ++i) {
    CompositionReader r = reader();
    ASSERT_TRUE(r.videoFrameAt(secs(0.2 + 0.005 * i)).has_value());
    ASSERT_TRUE(r.audioFor(span(2.5, 0.05)).has_value());
    EXPECT_EQ(r.openDecoderCount(), 2u);
    if (i == 9) before = residentBytes();
  }
  EXPECT_EQ(CompositionReader::liveDecoderCount(), 0u);
  EXPECT_LE(MediaAssetCache::shared().idleDecoderCount(), 8u);
  EXPECT_LT(residentBytes() - before, 32L << 20);
}

}  // namespace
}  // namespace orvane::media
