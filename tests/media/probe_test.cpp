#include <gtest/gtest.h>

#include "media/media_asset_cache.hpp"
#include "media/media_probe.hpp"
#include "tests/media/media_fixtures.hpp"

namespace orvane::media {
namespace {

using core::FrameRate;
using testing::TempFolder;
using testing::VideoClipSpec;

TEST(MediaProbeTest, VideoWithAudioReportsBothStreams) {
  TempFolder folder;
  VideoClipSpec spec;
  spec.rate = FrameRate::fps25;
  spec.frameCount = 25;
  spec.withAudio = true;
  ASSERT_EQ(testing::writeVideoClip(folder / "clip.mp4", spec), "");
  auto probe = probeMediaFile(folder / "clip.mp4");
  ASSERT_TRUE(probe);
  ASSERT_TRUE(probe->video);
  EXPECT_EQ(probe->video->displaySize, (core::OVSize{320, 240}));
  EXPECT_EQ(probe->video->nominalFrameRate, FrameRate::fps25);
  ASSERT_TRUE(probe->audio);
  EXPECT_EQ(probe->audio->channelCount, 2);
  EXPECT_EQ(probe->audio->sampleRate, 48000);
  EXPECT_NEAR(probe->duration.seconds(), 1.0, 0.05);
}

TEST(MediaProbeTest, NtscRatesAreKeptExactly) {
  TempFolder folder;
  for (const FrameRate& rate : {FrameRate::fps23_976, FrameRate::fps29_97, FrameRate::fps59_94}) {
    VideoClipSpec spec;
    spec.rate = rate;
    spec.frameCount = 6;
    spec.preset = "ultrafast";
    const auto path = folder / ("r" + std::to_string(rate.numerator) + ".mov");
    ASSERT_EQ(testing::writeVideoClip(path, spec), "");
    auto probe = probeMediaFile(path);
    ASSERT_TRUE(probe && probe->video);
    EXPECT_EQ(probe->video->nominalFrameRate, rate) << rate.displayName();
    EXPECT_NEAR(probe->duration.seconds(), 6 * rate.frameDuration().seconds(), 0.01) << rate.displayName();
  }
}

TEST(MediaProbeTest, RotatedClipReportsItsUprightSize) {
  TempFolder folder;
  VideoClipSpec spec;
  spec.frameCount = 3;
  spec.clockwiseRotation = 90;
  ASSERT_EQ(testing::writeVideoClip(folder / "phone.mp4", spec), "");
  auto probe = probeMediaFile(folder / "phone.mp4");
  ASSERT_TRUE(probe && probe->video);
  EXPECT_EQ(probe->video->displaySize, (core::OVSize{240, 320}));
  EXPECT_EQ(probe->video->geometry.naturalSize, (core::OVSize{320, 240}));
}

TEST(MediaProbeTest, VariableRateClipHasAnAverageRate) {
  TempFolder folder;
  VideoClipSpec spec;
  spec.frameTimes = {0, 0.05, 0.1, 0.3, 0.35, 0.6};
  ASSERT_EQ(testing::writeVideoClip(folder / "vfr.mkv", spec), "");
  auto probe = probeMediaFile(folder / "vfr.mkv");
  ASSERT_TRUE(probe && probe->video);
  ASSERT_TRUE(probe->video->nominalFrameRate);
  EXPECT_GT(probe->video->nominalFrameRate->fps(), 0);
}

TEST(MediaProbeTest, AudioFilesHaveNoVideo) {
  TempFolder folder;
  struct Case {
    const char* name;
    testing::AudioCodec codec;
    int rate, channels;
  };
  for (const Case& c : {Case{"tone.wav", testing::AudioCodec::pcm16, 44100, 1},
                        Case{"tone.mp3", testing::AudioCodec::mp3, 44100, 2},
                        Case{"tone.m4a", testing::AudioCodec::aac, 48000, 2}}) {
    testing::ToneSpec tone;
    tone.codec = c.codec, tone.sampleRate = c.rate, tone.channels = c.channels;
    ASSERT_EQ(testing::writeTone(folder / c.name, tone), "") << c.name;
    auto probe = probeMediaFile(folder / c.name);
    ASSERT_TRUE(probe) << c.name;
    EXPECT_FALSE(probe->video) << c.name;
    ASSERT_TRUE(probe->audio) << c.name;
    EXPECT_EQ(probe->audio->channelCount, c.channels) << c.name;
    EXPECT_EQ(probe->audio->sampleRate, c.rate) << c.name;
    EXPECT_NEAR(probe->duration.seconds(), 1.0, 0.06) << c.name;
  }
}

TEST(MediaProbeTest, DamagedMissingAndEmptyFilesFail) {
  TempFolder folder;
  ASSERT_EQ(testing::writeBytes(folder / "empty.mov", ""), "");
  ASSERT_EQ(testing::writeBytes(folder / "junk.mkv", std::string(20000, '\x47')), "");
  VideoClipSpec spec;
  spec.frameCount = 10;
  ASSERT_EQ(testing::writeVideoClip(folder / "whole.mp4", spec), "");
  std::filesystem::copy_file(folder / "whole.mp4", folder / "cut.mp4");
  std::filesystem::resize_file(folder / "cut.mp4", std::filesystem::file_size(folder / "whole.mp4") / 3);
  EXPECT_EQ(probeMediaFile(folder / "empty.mov").error(), MediaError::unreadable);
  EXPECT_EQ(probeMediaFile(folder / "junk.mkv").error(), MediaError::unreadable);
  EXPECT_EQ(probeMediaFile(folder / "cut.mp4").error(), MediaError::unreadable);
  EXPECT_EQ(probeMediaFile(folder / "nothing.mp4").error(), MediaError::missingFile);
  EXPECT_EQ(probeMediaFile(folder.path()).error(), MediaError::missingFile);
}

TEST(MediaProbeTest, SubtitlesAloneAreNoStreamsOfUse) {
  TempFolder folder;
  ASSERT_EQ(testing::writeSubtitlesOnly(folder / "subs.mkv"), "");
  auto probe = probeMediaFile(folder / "subs.mkv");
  ASSERT_TRUE(probe);
  EXPECT_FALSE(probe->video);
  EXPECT_FALSE(probe->audio);
}

TEST(MediaAssetCacheTest, ReleasedDecodersWaitForTheNextLeaseOfTheirFile) {
  TempFolder folder;
  VideoClipSpec spec;
  spec.frameCount = 5;
  ASSERT_EQ(testing::writeVideoClip(folder / "a.mp4", spec), "");
  ASSERT_EQ(testing::writeTone(folder / "a.wav", {}), "");
  MediaAssetCache cache;
  VideoDecoder* first = nullptr;
  {
    auto one = cache.videoDecoder(folder / "a.mp4");
    auto two = cache.videoDecoder(folder / "a.mp4");
    ASSERT_TRUE(one && two);
    EXPECT_NE(one->get(), two->get());
    first = one->get();
    EXPECT_EQ(cache.idleDecoderCount(), 0u);
  }
  EXPECT_EQ(cache.idleDecoderCount(), 2u);
  auto again = cache.videoDecoder(folder / "./a.mp4");
  ASSERT_TRUE(again);
  EXPECT_TRUE(again->get() == first || cache.idleDecoderCount() == 1u);
  EXPECT_EQ(cache.idleDecoderCount(), 1u);
  // An audio decoder is reused only at the same output format.
  { auto stereo = cache.audioDecoder(folder / "a.wav", {48000, 2}); }
  auto mono = cache.audioDecoder(folder / "a.wav", {48000, 1});
  ASSERT_TRUE(mono);
  EXPECT_EQ((*mono)->outputFormat(), (AudioFormat{48000, 1}));
  EXPECT_EQ(cache.idleDecoderCount(), 2u);
  // After remove, a lease given back is closed instead of kept.
  cache.remove(folder / "a.mp4");
  cache.remove(folder / "a.wav");
  EXPECT_EQ(cache.idleDecoderCount(), 0u);
  again->reset();
  mono->reset();
  EXPECT_EQ(cache.idleDecoderCount(), 0u);
}

TEST(MediaAssetCacheTest, LeasesOutliveTheCacheAndProbesAreKept) {
  TempFolder folder;
  ASSERT_EQ(testing::writeTone(folder / "a.wav", {}), "");
  AudioDecoderLease kept;
  {
    MediaAssetCache cache;
    auto probe = cache.probe(folder / "a.wav");
    ASSERT_TRUE(probe && probe->audio);
    // The file changes on disk; the cache keeps what it read until removed.
    testing::ToneSpec mono;
    mono.channels = 1;
    ASSERT_EQ(testing::writeTone(folder / "a.wav", mono), "");
    EXPECT_EQ(cache.probe(folder / "a.wav")->audio->channelCount, 2);
    cache.remove(folder / "a.wav");
    EXPECT_EQ(cache.probe(folder / "a.wav")->audio->channelCount, 1);
    EXPECT_EQ(cache.videoDecoder(folder / "a.wav").error(), MediaError::noVideoStream);
    kept = *cache.audioDecoder(folder / "a.wav");
  }
  std::vector<float> samples(200);
  EXPECT_TRUE(kept->read(core::OVTime::zero, samples));
  kept.reset();  // closes with no cache to return to
}

}  // namespace
}  // namespace orvane::media
