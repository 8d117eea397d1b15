#include "audio/waveform_service.hpp"

#include <gtest/gtest.h>

#include "tests/audio/audio_test_support.hpp"

namespace orvane::audio {
namespace {

constexpr int kRate = WaveformService::sampleRate;

core::MediaAsset audioAsset(const std::filesystem::path& file) {
  core::MediaAsset asset;
  asset.kind = core::MediaKind::audio;
  asset.path = file.string();
  asset.hasAudioTrack = true;
  return asset;
}

TEST(WaveformTest, PeaksOfOneSecondFillTheirHeight) {
  test::TempFolder folder;
  // Loud first half, a quarter of that in the second.
  std::vector<float> samples = test::square(kRate / 2, 1, 0.8f);
  const std::vector<float> soft = test::square(kRate / 2, 1, 0.2f);
  samples.insert(samples.end(), soft.begin(), soft.end());
  test::writeFloatWav(folder / "tone.wav", samples, kRate, 1);

  const auto waveform = WaveformService::generate(folder / "tone.wav", WaveformService::bucketCount);
  ASSERT_TRUE(waveform);
  // 22050 samples at 5 a bucket: slightly more buckets than asked for.
  ASSERT_EQ(waveform->peaks.size(), 4410u);
  EXPECT_EQ(waveform->duration.seconds(), 1.0);
  EXPECT_EQ(waveform->peaks.front(), 1.0f);
  EXPECT_EQ(waveform->peaks[2204], 1.0f);
  EXPECT_FLOAT_EQ(waveform->peaks[2206], 0.25f);
  EXPECT_FLOAT_EQ(waveform->peaks.back(), 0.25f);
}

TEST(WaveformTest, OtherFormatsAreMixedDownAndResampled) {
  test::TempFolder folder;
  // Two seconds of 48 kHz stereo: 44100 samples at 22050 Hz, 11 a bucket,
  // 4009 whole buckets and a partial one.
  std::vector<float> level(96000 * 2, 0.5f);
  test::writeFloatWav(folder / "level.wav", level, 48000, 2);
  const auto waveform = WaveformService::generate(folder / "level.wav", WaveformService::bucketCount);
  ASSERT_TRUE(waveform);
  EXPECT_EQ(waveform->peaks.size(), 4010u);
  EXPECT_NEAR(waveform->peaks[2000], 1.0f, 0.01f);

  // Opposite sides cancel in the mixdown: a flat line.
  for (std::size_t i = 1; i < level.size(); i += 2) level[i] = -0.5f;
  test::writeFloatWav(folder / "opposed.wav", level, 48000, 2);
  const auto opposed = WaveformService::generate(folder / "opposed.wav", WaveformService::bucketCount);
  ASSERT_TRUE(opposed);
  EXPECT_LT(*std::max_element(opposed->peaks.begin(), opposed->peaks.end()), 0.0001f);
}

TEST(WaveformTest, SilencePeaksStayAsTheyAre) {
  test::TempFolder folder;
  std::vector<float> samples(kRate / 10, 0.0f);
  samples[100] = 0.00005f;
  test::writeFloatWav(folder / "quiet.wav", samples, kRate, 1);
  const auto waveform = WaveformService::generate(folder / "quiet.wav", 100);
  ASSERT_TRUE(waveform);
  ASSERT_EQ(waveform->peaks.size(), 101u);  // 2205 samples, 22 a bucket, 5 left over
  EXPECT_EQ(waveform->peaks[4], 0.00005f);
  EXPECT_EQ(waveform->peaks[0], 0.0f);

  EXPECT_FALSE(WaveformService::generate(folder / "missing.wav", 100));
  std::ofstream(folder / "garbage.wav") << "RIFF nonsense";
  EXPECT_FALSE(WaveformService::generate(folder / "garbage.wav", 100));
}

TEST(WaveformTest, PeakAtFractionClampsToTheEnds) {
  Waveform w;
  EXPECT_EQ(w.peakAtFraction(0.5), 0.0f);
  w.peaks = {0.1f, 0.2f, 0.3f, 0.4f, 0.5f};
  EXPECT_EQ(w.peakAtFraction(1.0), 0.5f);
  EXPECT_EQ(w.peakAtFraction(-1), 0.1f);
  EXPECT_EQ(w.peakAtFraction(0.5), 0.3f);
  EXPECT_EQ(w.peakAtFraction(0.74), 0.3f);  // index 2.96 floors to 2
  EXPECT_EQ(w.peakAtFraction(std::nan("")), 0.1f);
}

TEST(WaveformServiceTest, RequestPublishesOnTheMainQueueOnce) {
  test::TempFolder folder;
  test::writeFloatWav(folder / "tone.wav", test::square(kRate / 2, 1, 0.5f), kRate, 1);
  test::MainQueue main;
  WaveformService service(main.poster());
  std::vector<core::Uuid> heard;
  service.addObserver([&](const core::Uuid& id) { heard.push_back(id); });

  const core::MediaAsset asset = audioAsset(folder / "tone.wav");
  service.request(asset);
  EXPECT_TRUE(service.isInFlight(asset.id));
  service.request(asset);  // in flight: no second reading
  ASSERT_TRUE(main.drainUntil([&] { return !service.isInFlight(asset.id); }));
  ASSERT_NE(service.waveform(asset.id), nullptr);
  EXPECT_EQ(service.waveform(asset.id)->peaks.size(), 5513u);  // 11025 samples, 2 a bucket
  EXPECT_EQ(heard, std::vector<core::Uuid>{asset.id});

  service.request(asset);  // there already
  EXPECT_FALSE(service.isInFlight(asset.id));

  core::MediaAsset silentVideo = audioAsset(folder / "tone.wav");
  silentVideo.hasAudioTrack = false;
  service.request(silentVideo);
  EXPECT_FALSE(service.isInFlight(silentVideo.id));
}

TEST(WaveformServiceTest, FailedReadingLetsTheNextRequestTryAgain) {
  test::TempFolder folder;
  std::ofstream(folder / "broken.wav") << "RIFF but nothing after";
  test::MainQueue main;
  WaveformService service(main.poster());
  const core::MediaAsset broken = audioAsset(folder / "broken.wav");
  service.request(broken);
  ASSERT_TRUE(service.isInFlight(broken.id));
  ASSERT_TRUE(main.drainUntil([&] { return !service.isInFlight(broken.id); }));
  EXPECT_EQ(service.waveform(broken.id), nullptr);
  service.request(broken);
  EXPECT_TRUE(service.isInFlight(broken.id));

  const core::MediaAsset missing = audioAsset(folder / "missing.wav");
  service.request(missing);  // no readable file: dropped at once
  EXPECT_FALSE(service.isInFlight(missing.id));
}

}  // namespace
}  // namespace orvane::audio
