#include "export/export_settings.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace orvane::export_ {
namespace {

using core::OVTime;
using core::OVTimeRange;

ExportSettings settingsOf(ExportCodec codec, ExportMediaChannels channels = ExportMediaChannels::videoAndAudio) {
  ExportSettings settings;
  settings.codec = codec;
  settings.channels = channels;
  settings.range = OVTimeRange(OVTime::fromSeconds(0), OVTime::fromSeconds(10));
  return settings;
}

TEST(ExportCodecTest, RawValuesRoundTripAndUnknownOnesGiveNone) {
  for (ExportCodec codec : allExportCodecs) EXPECT_EQ(exportCodecFromRaw(rawValue(codec)), codec);
  EXPECT_EQ(rawValue(ExportCodec::vp9Alpha), "vp9Alpha");
  EXPECT_EQ(rawValue(ExportCodec::hevcWithAlpha), "hevcWithAlpha");
  EXPECT_EQ(exportCodecFromRaw("H264"), std::nullopt);
  EXPECT_EQ(exportCodecFromRaw(""), std::nullopt);
  for (ExportMediaChannels channels : allExportMediaChannels) {
    EXPECT_EQ(exportMediaChannelsFromRaw(rawValue(channels)), channels);
  }
  EXPECT_EQ(exportMediaChannelsFromRaw("audio"), std::nullopt);
}

TEST(ExportCodecTest, NamesAndAlphaFollowTheMenu) {
  EXPECT_EQ(displayName(ExportCodec::h264), "H.264 · MP4");
  EXPECT_EQ(displayName(ExportCodec::proRes4444), "ProRes 4444 · MOV (alpha)");
  EXPECT_EQ(displayName(ExportCodec::hevcWithAlpha), "HEVC · MOV (alpha)");
  EXPECT_EQ(displayName(ExportCodec::vp9Alpha), "VP9 · WebM (alpha)");
  EXPECT_EQ(description(ExportCodec::hevcWithAlpha), "Compressed with transparency preserved. Much smaller than ProRes.");
  EXPECT_FALSE(preservesAlpha(ExportCodec::h264));
  EXPECT_TRUE(preservesAlpha(ExportCodec::proRes4444));
  EXPECT_TRUE(preservesAlpha(ExportCodec::hevcWithAlpha));
  EXPECT_TRUE(preservesAlpha(ExportCodec::vp9Alpha));
  EXPECT_EQ(displayName(ExportMediaChannels::videoOnly), "Video Only");
  EXPECT_EQ(description(ExportMediaChannels::audioOnly), "Sound only (M4A / AAC)");
}

TEST(ExportCodecTest, AvailabilityOfTheInstalledEncoders) {
  // This machine's FFmpeg has libx264, prores_ks and libvpx-vp9 with alpha.
  EXPECT_EQ(unavailableReason(ExportCodec::h264), std::nullopt);
  EXPECT_EQ(unavailableReason(ExportCodec::proRes4444), std::nullopt);
  EXPECT_EQ(unavailableReason(ExportCodec::vp9Alpha), std::nullopt);
  // libx265 may or may not take alpha; when it does not, the sentence says so.
  if (auto reason = unavailableReason(ExportCodec::hevcWithAlpha)) {
    EXPECT_TRUE(reason->starts_with("HEVC with alpha is not available: ")) << *reason;
    EXPECT_TRUE(reason->ends_with(".")) << *reason;
  }
}

TEST(ExportSettingsTest, PixelSizesRoundHalvesAwayFromZeroToEven) {
  ExportSettings settings;
  settings.size = {1921, 1081};
  EXPECT_EQ(settings.pixelWidth(), 1922);
  EXPECT_EQ(settings.pixelHeight(), 1082);
  settings.size = {1920.9, 1079.4};
  EXPECT_EQ(settings.pixelWidth(), 1920);
  EXPECT_EQ(settings.pixelHeight(), 1080);
  settings.size = {1, 0};
  EXPECT_EQ(settings.pixelWidth(), 2);
  EXPECT_EQ(settings.pixelHeight(), 2);
  settings.size = {-640, std::numeric_limits<double>::quiet_NaN()};
  EXPECT_EQ(settings.pixelWidth(), 2);
  EXPECT_EQ(settings.pixelHeight(), 2);
  settings.size = {std::numeric_limits<double>::infinity(), 1e300};
  EXPECT_EQ(settings.pixelWidth(), 2);
  EXPECT_GT(settings.pixelHeight(), 2);
  EXPECT_EQ(settings.pixelHeight() % 2, 0);
}

TEST(ExportSettingsTest, EstimatesFollowBitrateOrProResBitsPerPixel) {
  ExportSettings proRes = settingsOf(ExportCodec::proRes4444);
  proRes.size = {1920, 1080};
  proRes.audioBitrateKbps = 320;
  proRes.range = OVTimeRange(OVTime::fromSeconds(5), OVTime::fromSeconds(60));
  EXPECT_EQ(proRes.estimatedByteCount(), static_cast<std::int64_t>(60 * (1920.0 * 1080 * 30 * 5.3 + 320000) / 8));

  ExportSettings h264 = settingsOf(ExportCodec::h264);
  EXPECT_EQ(h264.estimatedByteCount(), (16'000'000LL + 192'000) * 10 / 8);
  ExportSettings vp9 = settingsOf(ExportCodec::vp9Alpha, ExportMediaChannels::videoOnly);
  EXPECT_EQ(vp9.estimatedByteCount(), 16'000'000LL * 10 / 8);

  ExportSettings audio = settingsOf(ExportCodec::h264, ExportMediaChannels::audioOnly);
  audio.audioBitrateKbps = 320;
  const std::int64_t audioOnly = audio.estimatedByteCount();
  audio.videoBitrateMbps = 999;
  EXPECT_EQ(audio.estimatedByteCount(), audioOnly);
  EXPECT_EQ(audioOnly, 320'000LL * 10 / 8);

  h264.range = OVTimeRange::zero;
  EXPECT_EQ(h264.estimatedByteCount(), 0);
}

// Numbers typed or decoded from a saved preset may be anything: the encoder
// bitrates and the estimate stay inside their integers.
TEST(ExportSettingsTest, BitratesThatAreNotNumbersOrTooLargeStayInRange) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  ExportSettings settings = settingsOf(ExportCodec::h264);
  settings.videoBitrateMbps = nan;
  settings.audioBitrateKbps = nan;
  EXPECT_EQ(settings.videoOutputSettings().averageBitRate, 0);
  EXPECT_EQ(settings.audioOutputSettings().bitRate, 0);
  EXPECT_EQ(settings.estimatedByteCount(), 0);

  settings.videoBitrateMbps = inf;
  settings.audioBitrateKbps = 1e300;
  EXPECT_EQ(settings.videoOutputSettings().averageBitRate, std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(settings.audioOutputSettings().bitRate, std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(settings.estimatedByteCount(), std::numeric_limits<std::int64_t>::max());

  // A negative bitrate adds nothing to the size shown.
  settings.videoBitrateMbps = -16;
  settings.audioBitrateKbps = 192;
  EXPECT_EQ(settings.estimatedByteCount(), 192'000LL * 10 / 8);
}

TEST(ExportSettingsTest, ContainerFollowsCodecAndChannels) {
  const std::pair<std::string, std::string> faststart{"movflags", "+faststart"};
  ExportSettings h264 = settingsOf(ExportCodec::h264);
  EXPECT_EQ(h264.fileExtension(), "mp4");
  EXPECT_EQ(h264.contentType(), "video/mp4");
  EXPECT_EQ(h264.containerSettings(), (ContainerSettings{"mp4", {faststart}}));
  ExportSettings proRes = settingsOf(ExportCodec::proRes4444);
  EXPECT_EQ(proRes.fileExtension(), "mov");
  EXPECT_EQ(proRes.contentType(), "video/quicktime");
  EXPECT_EQ(proRes.containerSettings(), (ContainerSettings{"mov", {faststart}}));
  EXPECT_EQ(settingsOf(ExportCodec::hevcWithAlpha).containerSettings().muxerName, "mov");
  ExportSettings vp9 = settingsOf(ExportCodec::vp9Alpha);
  EXPECT_EQ(vp9.fileExtension(), "webm");
  EXPECT_EQ(vp9.contentType(), "video/webm");
  EXPECT_EQ(vp9.containerSettings().muxerName, "webm");
  for (ExportCodec codec : allExportCodecs) {
    ExportSettings audio = settingsOf(codec, ExportMediaChannels::audioOnly);
    EXPECT_EQ(audio.fileExtension(), "m4a");
    EXPECT_EQ(audio.contentType(), "audio/mp4");
    EXPECT_EQ(audio.containerSettings().muxerName, "ipod");
    EXPECT_TRUE(audio.videoOutputSettings().encoderName.empty());
  }
}

TEST(ExportSettingsTest, H264EncoderSettings) {
  ExportSettings settings = settingsOf(ExportCodec::h264);
  settings.size = {1921, 1080};
  settings.frameRate = core::FrameRate::fps29_97;
  settings.videoBitrateMbps = 12.5;
  const VideoEncoderSettings video = settings.videoOutputSettings();
  EXPECT_EQ(video.encoderName, "libx264");
  EXPECT_EQ(video.pixelFormat, "yuv420p");
  EXPECT_EQ(video.width, 1922);
  EXPECT_EQ(video.height, 1080);
  EXPECT_EQ(video.averageBitRate, 12'500'000);
  EXPECT_EQ(video.expectedFrameRate, 30);
  EXPECT_EQ(video.maxKeyFrameInterval, 60);
  EXPECT_FALSE(video.allowFrameReordering);
  EXPECT_EQ(video.profile, "high");
  EXPECT_TRUE(video.codecTag.empty());
}

TEST(ExportSettingsTest, AlphaCodecsEncoderSettings) {
  ExportSettings settings = settingsOf(ExportCodec::proRes4444);
  settings.frameRate = core::FrameRate::fps25;
  const VideoEncoderSettings proRes = settings.videoOutputSettings();
  EXPECT_EQ(proRes.encoderName, "prores_ks");
  EXPECT_EQ(proRes.pixelFormat, "yuva444p10le");
  EXPECT_EQ(proRes.profile, "4444");
  EXPECT_EQ(proRes.averageBitRate, 0);
  EXPECT_EQ(proRes.maxKeyFrameInterval, 0);

  settings.codec = ExportCodec::hevcWithAlpha;
  const VideoEncoderSettings hevc = settings.videoOutputSettings();
  EXPECT_EQ(hevc.encoderName, "libx265");
  EXPECT_EQ(hevc.codecTag, "hvc1");
  EXPECT_TRUE(hevc.profile.empty());
  EXPECT_TRUE(hevc.pixelFormat.starts_with("yuva") || hevc.pixelFormat.starts_with("gbra")) << hevc.pixelFormat;
  EXPECT_EQ(hevc.averageBitRate, 16'000'000);
  EXPECT_EQ(hevc.maxKeyFrameInterval, 50);
  EXPECT_FALSE(hevc.allowFrameReordering);

  settings.codec = ExportCodec::vp9Alpha;
  const VideoEncoderSettings vp9 = settings.videoOutputSettings();
  EXPECT_EQ(vp9.encoderName, "libvpx-vp9");
  EXPECT_EQ(vp9.pixelFormat, "yuva420p");
  EXPECT_EQ(vp9.averageBitRate, 16'000'000);
  EXPECT_EQ(vp9.expectedFrameRate, 25);
  EXPECT_EQ(vp9.maxKeyFrameInterval, 50);
}

TEST(ExportSettingsTest, AudioEncoderSettings) {
  ExportSettings settings = settingsOf(ExportCodec::h264);
  settings.audioBitrateKbps = 320.7;
  settings.audioSampleRate = 44100;
  settings.audioChannels = 1;
  EXPECT_EQ(settings.audioOutputSettings(), (AudioEncoderSettings{"aac", 1, 44100, 320'700}));
  settings.audioSampleRate = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(settings.audioOutputSettings().sampleRate, 48000);
}

}  // namespace
}  // namespace orvane::export_
