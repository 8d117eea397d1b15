#include <gtest/gtest.h>

#include <cmath>

#include "media/audio_decoder.hpp"
#include "tests/media/media_fixtures.hpp"

namespace orvane::media {
namespace {

using core::OVTime;
using testing::TempFolder;
using testing::ToneSpec;

// The tone the fixtures write: the left channel at f, the right at 2f.
float expectedSample(double f, int channel, std::int64_t frame, int rate) {
  return static_cast<float>(0.5 * std::sin(2 * M_PI * f * (channel == 1 ? 2 : 1) * frame / rate));
}

// The largest difference from the tone over samples read from startFrame on.
double largestError(const std::vector<float>& samples, int channels, std::int64_t startFrame, int rate,
                    int toneChannels = 2) {
  double worst = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const int ch = static_cast<int>(i % channels);
    const std::int64_t frame = startFrame + static_cast<std::int64_t>(i / channels);
    const float want = expectedSample(440, toneChannels == 1 ? 0 : ch, frame, rate);
    worst = std::max(worst, static_cast<double>(std::abs(samples[i] - want)));
  }
  return worst;
}

std::unique_ptr<AudioDecoder> openTone(const std::filesystem::path& path, const ToneSpec& tone, AudioFormat out) {
  EXPECT_EQ(testing::writeTone(path, tone), "");
  auto decoder = AudioDecoder::open(path, out);
  EXPECT_TRUE(decoder);
  return decoder ? std::move(*decoder) : nullptr;
}

TEST(AudioDecoderTest, WavSamplesArriveAtTheirTimesInOrderAndAfterSeeks) {
  TempFolder folder;
  auto decoder = openTone(folder / "tone.wav", {}, {48000, 2});
  ASSERT_TRUE(decoder);
  EXPECT_EQ(decoder->info().sampleRate, 48000);
  EXPECT_EQ(decoder->info().codecName, "pcm_s16le");
  std::vector<float> block(2 * 4800);
  for (int i = 0; i < 5; ++i) {
    ASSERT_TRUE(decoder->read(OVTime(i * 4800, 48000), block));
    EXPECT_LT(largestError(block, 2, i * 4800, 48000), 1e-3) << "block " << i;
  }
  EXPECT_EQ(decoder->seekCount(), 1);
  // Back: a seek; ahead by less than a second: decoded on.
  for (std::int64_t start : {1000, 30000, 40000}) {
    ASSERT_TRUE(decoder->read(OVTime(start, 48000), block));
    EXPECT_LT(largestError(block, 2, start, 48000), 1e-3) << start;
  }
  EXPECT_EQ(decoder->seekCount(), 2);
}

TEST(AudioDecoderTest, BeforeTheStartAndPastTheEndIsSilence) {
  TempFolder folder;
  auto decoder = openTone(folder / "tone.wav", {}, {48000, 2});
  ASSERT_TRUE(decoder);
  auto samples = decoder->read(core::OVTimeRange(OVTime(-480, 48000), OVTime(960, 48000)));
  ASSERT_TRUE(samples);
  ASSERT_EQ(samples->size(), 2u * 960);
  for (int i = 0; i < 2 * 480; ++i) ASSERT_EQ((*samples)[i], 0.0f) << i;
  const std::vector<float> after(samples->begin() + 2 * 480, samples->end());
  EXPECT_LT(largestError(after, 2, 0, 48000), 1e-3);
  auto tail = decoder->read(core::OVTimeRange(OVTime(47000, 48000), OVTime(2000, 48000)));
  ASSERT_TRUE(tail);
  for (std::size_t i = 2 * 1000; i < tail->size(); ++i) ASSERT_EQ((*tail)[i], 0.0f) << i;
  EXPECT_NE((*tail)[2 * 500], 0.0f);
}

TEST(AudioDecoderTest, ResamplingKeepsPitchAndTimingAndSpreadsMono) {
  TempFolder folder;
  ToneSpec tone;
  tone.sampleRate = 44100;
  tone.channels = 1;
  auto decoder = openTone(folder / "mono.wav", tone, {48000, 2});
  ASSERT_TRUE(decoder);
  auto samples = decoder->read(core::OVTimeRange(OVTime::fromSeconds(0.25), OVTime::fromSeconds(0.1)));
  ASSERT_TRUE(samples);
  ASSERT_EQ(samples->size(), 2u * 4800);
  for (std::size_t i = 0; i < samples->size(); i += 2) ASSERT_EQ((*samples)[i], (*samples)[i + 1]);
  // Mono spread to two sides comes out at -3 dB on each.
  std::vector<float> left;
  for (std::size_t i = 0; i < samples->size(); i += 2) left.push_back((*samples)[i] * std::sqrt(2.0f));
  EXPECT_LT(largestError(left, 1, 12000, 48000, 1), 0.03);
}

// A compressed tone read after jumps matches the same stretch read straight
// through, and lines up with the tone written (the codec's start-up delay
// accounted for).
TEST(AudioDecoderTest, CompressedTonesReadTheSameAfterJumpsAndLineUp) {
  TempFolder folder;
  struct Case {
    const char* name;
    testing::AudioCodec codec;
  };
  for (const Case& c : {Case{"tone.mp3", testing::AudioCodec::mp3}, Case{"tone.m4a", testing::AudioCodec::aac}}) {
    ToneSpec tone;
    tone.codec = c.codec;
    auto straight = openTone(folder / c.name, tone, {48000, 2});
    ASSERT_TRUE(straight) << c.name;
    std::vector<float> whole(2 * 48000);
    ASSERT_TRUE(straight->read(OVTime::zero, whole));
    const std::vector<float> late(whole.begin() + 2 * 33600, whole.begin() + 2 * 38400);
    EXPECT_LT(largestError(late, 2, 33600, 48000), 0.08) << c.name;

    auto jumping = AudioDecoder::open(folder / c.name, {48000, 2});
    ASSERT_TRUE(jumping) << c.name;
    std::vector<float> block(2 * 2400);
    for (std::int64_t start : {std::int64_t{36000}, std::int64_t{9600}, std::int64_t{24000}}) {
      ASSERT_TRUE((*jumping)->read(OVTime(start, 48000), block));
      double worst = 0;
      for (std::size_t i = 0; i < block.size(); ++i) {
        worst = std::max(worst, double(std::abs(block[i] - whole[2 * start + i])));
      }
      EXPECT_LT(worst, 0.01) << c.name << " from " << start;
    }
  }
}

TEST(AudioDecoderTest, BadFormatsAndFilesAreRefused) {
  TempFolder folder;
  ASSERT_EQ(testing::writeTone(folder / "tone.wav", {}), "");
  EXPECT_EQ(AudioDecoder::open(folder / "tone.wav", {0, 2}).error(), MediaError::unreadable);
  EXPECT_EQ(AudioDecoder::open(folder / "tone.wav", {48000, 0}).error(), MediaError::unreadable);
  EXPECT_EQ(AudioDecoder::open(folder / "tone.wav", {48000, 99}).error(), MediaError::unreadable);
  EXPECT_EQ(AudioDecoder::open(folder / "missing.wav").error(), MediaError::missingFile);
  testing::VideoClipSpec silent;
  silent.frameCount = 3;
  ASSERT_EQ(testing::writeVideoClip(folder / "silent.mp4", silent), "");
  EXPECT_EQ(AudioDecoder::open(folder / "silent.mp4").error(), MediaError::noAudioStream);
}

}  // namespace
}  // namespace orvane::media
