#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

#include "media/audio_decoder.hpp"
#include "media/media_asset_cache.hpp"
#include "media/video_decoder.hpp"
#include "tests/media/media_fixtures.hpp"

namespace orvane::media {
namespace {

using core::FrameRate;
using core::OVTime;
using testing::TempFolder;
using testing::VideoClipSpec;

std::unique_ptr<VideoDecoder> openClip(const std::filesystem::path& path, const VideoClipSpec& spec) {
  const std::string failed = testing::writeVideoClip(path, spec);
  EXPECT_EQ(failed, "");
  auto decoder = VideoDecoder::open(path);
  EXPECT_TRUE(decoder.has_value());
  return decoder ? std::move(*decoder) : nullptr;
}

std::optional<int> frameNumberAt(VideoDecoder& decoder, const OVTime& t) {
  auto frame = decoder.frameAt(t);
  if (!frame) return std::nullopt;
  return testing::readFrameNumber(frame->image);
}

// Every frame in order, then every frame in a shuffled order (seeks back
// and forward across key frames), each asked for at its exact time.
void expectEveryFrameAtItsTime(VideoDecoder& decoder, const FrameRate& rate, int frames) {
  for (int n = 0; n < frames; ++n) {
    ASSERT_EQ(frameNumberAt(decoder, rate.timeForFrame(n)), n) << rate.displayName() << " in order";
  }
  std::vector<int> order(frames);
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), std::mt19937(7));
  for (int n : order) {
    ASSERT_EQ(frameNumberAt(decoder, rate.timeForFrame(n)), n) << rate.displayName() << " after a jump";
  }
}

TEST(VideoDecoderTest, EveryStandardRateGivesFrameNAtTheTimeOfFrameN) {
  TempFolder folder;
  for (const FrameRate& rate : FrameRate::standardRates) {
    VideoClipSpec spec;
    spec.rate = rate;
    spec.frameCount = 20;
    spec.keyFrameInterval = 6;
    auto decoder = openClip(folder / ("rate-" + std::to_string(rate.numerator) + ".mp4"), spec);
    ASSERT_TRUE(decoder);
    expectEveryFrameAtItsTime(*decoder, rate, spec.frameCount);
  }
}

TEST(VideoDecoderTest, HevcInMatroskaIsFrameAccurate) {
  TempFolder folder;
  VideoClipSpec spec;
  spec.codec = testing::VideoCodec::hevc;
  spec.rate = FrameRate::fps25;
  spec.frameCount = 20;
  spec.keyFrameInterval = 8;
  spec.preset = "ultrafast";
  auto decoder = openClip(folder / "clip.mkv", spec);
  ASSERT_TRUE(decoder);
  EXPECT_EQ(decoder->info().codecName, "hevc");
  expectEveryFrameAtItsTime(*decoder, spec.rate, spec.frameCount);
}

TEST(VideoDecoderTest, TimesBetweenFramesShowTheEarlierFrameAndTheEndsClamp) {
  TempFolder folder;
  VideoClipSpec spec;
  spec.frameCount = 10;
  auto decoder = openClip(folder / "clip.mp4", spec);
  ASSERT_TRUE(decoder);
  const FrameRate rate = spec.rate;
  EXPECT_EQ(frameNumberAt(*decoder, rate.timeForFrame(4) + OVTime(1, 100)), 4);
  EXPECT_EQ(frameNumberAt(*decoder, rate.timeForFrame(5) - OVTime(1, 1000)), 4);
  EXPECT_EQ(frameNumberAt(*decoder, OVTime::fromSeconds(-2)), 0);
  EXPECT_EQ(frameNumberAt(*decoder, OVTime::fromSeconds(50)), 9);
  EXPECT_EQ(frameNumberAt(*decoder, rate.timeForFrame(9)), 9);
  auto frame = decoder->frameAt(rate.timeForFrame(3));
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->time, rate.timeForFrame(3));
  EXPECT_EQ(frame->duration, rate.frameDuration());
  EXPECT_EQ(frame->image.extent(), (render::PixelRect{0, 0, 320, 240}));
}

TEST(VideoDecoderTest, PlayingForwardDecodesOnWithoutSeeking) {
  TempFolder folder;
  VideoClipSpec spec;
  spec.frameCount = 40;
  spec.keyFrameInterval = 10;
  auto decoder = openClip(folder / "clip.mp4", spec);
  ASSERT_TRUE(decoder);
  for (int n = 0; n < spec.frameCount; ++n) ASSERT_EQ(frameNumberAt(*decoder, spec.rate.timeForFrame(n)), n);
  EXPECT_EQ(decoder->seekCount(), 1);  // the first frame's
  EXPECT_LE(decoder->decodedFrameCount(), spec.frameCount);
  // Skipping a frame or two also decodes on.
  ASSERT_EQ(frameNumberAt(*decoder, spec.rate.timeForFrame(2)), 2);
  const auto seeks = decoder->seekCount();
  for (int n = 4; n < 30; n += 3) ASSERT_EQ(frameNumberAt(*decoder, spec.rate.timeForFrame(n)), n);
  EXPECT_EQ(decoder->seekCount(), seeks);
}

TEST(VideoDecoderTest, VariableFrameRateFramesShowFromTheirOwnTimes) {
  TempFolder folder;
  VideoClipSpec spec;
  spec.frameTimes = {0.0, 0.04, 0.1, 0.13, 0.3, 0.31, 0.5, 0.52, 0.9, 1.0};
  spec.keyFrameInterval = 4;
  auto decoder = openClip(folder / "vfr.mp4", spec);
  ASSERT_TRUE(decoder);
  for (int pass = 0; pass < 2; ++pass) {
    for (int n = static_cast<int>(spec.frameTimes.size()) - 1; n >= 0; n -= (pass == 0 ? 1 : 3)) {
      const double start = spec.frameTimes[n];
      EXPECT_EQ(frameNumberAt(*decoder, OVTime::fromSeconds(start, 90000)), n) << start;
      if (n + 1 < static_cast<int>(spec.frameTimes.size())) {
        const double before = spec.frameTimes[n + 1] - 0.002;
        EXPECT_EQ(frameNumberAt(*decoder, OVTime::fromSeconds(before, 90000)), n) << before;
      }
    }
  }
}

TEST(VideoDecoderTest, RotatedPhoneClipKeepsItsPictureAndReportsTheRotation) {
  TempFolder folder;
  VideoClipSpec spec;
  spec.frameCount = 3;
  spec.clockwiseRotation = 90;
  auto decoder = openClip(folder / "phone.mov", spec);
  ASSERT_TRUE(decoder);
  const render::FootageGeometry& geometry = decoder->geometry();
  EXPECT_EQ(geometry.naturalSize, (core::OVSize{320, 240}));
  EXPECT_EQ(geometry.displaySize(), (core::OVSize{240, 320}));
  // Clockwise on screen in the y-up space: the x axis turns to point down.
  EXPECT_EQ(geometry.preferredTransform, (core::Affine2D{0, -1, 1, 0, 0, 0}));
  auto frame = decoder->frameAt(OVTime::zero);
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->image.extent(), (render::PixelRect{0, 0, 320, 240}));
  EXPECT_EQ(testing::readFrameNumber(frame->image), 0);
}

struct ColourCase {
  const char* name;
  int width, height;
  bool bt709, fullRange, tagged;
};

TEST(VideoDecoderTest, ColoursComeThroughTheStreamsMatrixAndRange) {
  const core::OVColor colour{0.8, 0.25, 0.35, 1};
  const ColourCase cases[] = {{"HD untagged BT.709", 1280, 720, true, false, false},
                              {"SD untagged BT.601", 320, 240, false, false, false},
                              {"SD tagged BT.709 full range", 320, 240, true, true, true},
                              {"HD tagged BT.601", 1280, 720, false, false, true}};
  TempFolder folder;
  for (const ColourCase& c : cases) {
    VideoClipSpec spec;
    spec.width = c.width, spec.height = c.height;
    spec.frameCount = 2;
    spec.fill = colour;
    spec.bt709 = c.bt709, spec.fullRange = c.fullRange, spec.tagColour = c.tagged;
    spec.preset = "ultrafast";
    auto decoder = openClip(folder / (std::string(c.name) + ".mp4"), spec);
    ASSERT_TRUE(decoder);
    auto frame = decoder->frameAt(OVTime::zero);
    ASSERT_TRUE(frame) << c.name;
    const render::Rgba p = frame->image.pixelAt(c.width / 2, c.height / 2);
    EXPECT_NEAR(p.r, colour.red, 0.02) << c.name;
    EXPECT_NEAR(p.g, colour.green, 0.02) << c.name;
    EXPECT_NEAR(p.b, colour.blue, 0.02) << c.name;
    EXPECT_EQ(p.a, 1.0f) << c.name;
  }
}

TEST(VideoDecoderTest, BgraFramesAreScaledToFitAndKeepTheirTime) {
  TempFolder folder;
  VideoClipSpec spec;
  spec.frameCount = 5;
  auto decoder = openClip(folder / "clip.mp4", spec);
  ASSERT_TRUE(decoder);
  auto frame = decoder->bgraFrameAt(spec.rate.timeForFrame(3), 160, 1000);
  ASSERT_TRUE(frame);
  EXPECT_EQ(frame->width, 160);
  EXPECT_EQ(frame->height, 120);
  EXPECT_EQ(frame->pixels.size(), 160u * 120 * 4);
  EXPECT_EQ(frame->time, spec.rate.timeForFrame(3));
  // Frame 3: bits 0 and 1 set, the top left blocks white; bit 2 black.
  EXPECT_GT(frame->pixels[(30 * 160 + 16) * 4], 200);
  EXPECT_LT(frame->pixels[(30 * 160 + 80) * 4], 50);
  EXPECT_FALSE(decoder->bgraFrameAt(OVTime::zero, 0, 10).has_value());
}

TEST(VideoDecoderTest, FilesWithoutVideoOrNotMediaAreRefused) {
  TempFolder folder;
  ASSERT_EQ(testing::writeTone(folder / "tone.wav", {}), "");
  ASSERT_EQ(testing::writeBytes(folder / "junk.mp4", std::string(5000, 'x')), "");
  ASSERT_EQ(testing::writeBytes(folder / "empty.mp4", ""), "");
  EXPECT_EQ(VideoDecoder::open(folder / "tone.wav").error(), MediaError::noVideoStream);
  EXPECT_EQ(VideoDecoder::open(folder / "junk.mp4").error(), MediaError::unreadable);
  EXPECT_EQ(VideoDecoder::open(folder / "empty.mp4").error(), MediaError::unreadable);
  EXPECT_EQ(VideoDecoder::open(folder / "absent.mp4").error(), MediaError::missingFile);
}

TEST(VideoDecoderTest, TruncatedClipDecodesWhatItHoldsOrFailsCleanly) {
  TempFolder folder;
  VideoClipSpec spec;
  spec.frameCount = 30;
  ASSERT_EQ(testing::writeVideoClip(folder / "whole.mkv", spec), "");
  const auto size = std::filesystem::file_size(folder / "whole.mkv");
  std::filesystem::copy_file(folder / "whole.mkv", folder / "cut.mkv");
  std::filesystem::resize_file(folder / "cut.mkv", size / 2);
  auto decoder = VideoDecoder::open(folder / "cut.mkv");
  ASSERT_TRUE(decoder);
  for (int n : {0, 29, 3, 20}) {
    auto frame = (*decoder)->frameAt(spec.rate.timeForFrame(n));
    if (frame) {
      EXPECT_TRUE(testing::readFrameNumber(frame->image).has_value());
    }
  }
  EXPECT_EQ(frameNumberAt(**decoder, OVTime::zero), 0);
}

}  // namespace
}  // namespace orvane::media
