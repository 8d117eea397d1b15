#include "audio/waveform_service.hpp"

#include <algorithm>
#include <cmath>

#include "media/audio_decoder.hpp"

namespace orvane::audio {
namespace {

constexpr std::int64_t kChunkFrames = 16384;
// A day of audio; a corrupt duration must not ask for more.
constexpr double kMaxSeconds = 86400;

// Running peak of the current bucket, appended every perBucket samples.
struct PeakCollector {
  std::int64_t perBucket = 1;
  std::vector<float> peaks;
  float peak = 0;
  std::int64_t count = 0;

  void add(std::span<const float> samples) {
    for (const float s : samples) {
      peak = std::max(peak, std::abs(s));
      if (++count == perBucket) {
        peaks.push_back(peak);
        peak = 0;
        count = 0;
      }
    }
  }
  void finish() {
    if (count > 0) peaks.push_back(peak);
    count = 0;
  }
};

}  // namespace

float Waveform::peakAtFraction(double fraction) const {
  if (peaks.empty()) return 0;
  const double f = std::isnan(fraction) ? 0 : std::clamp(fraction, 0.0, 1.0);
  const auto index = static_cast<std::size_t>(f * static_cast<double>(peaks.size() - 1));
  return peaks[std::min(index, peaks.size() - 1)];
}

std::optional<Waveform> WaveformService::generate(const std::filesystem::path& file, int bucketCount) {
  auto opened = media::AudioDecoder::open(file, media::AudioFormat{sampleRate, 1});
  if (!opened) return std::nullopt;
  media::AudioDecoder& decoder = **opened;

  const core::OVTime duration = decoder.info().duration;
  const double seconds = std::clamp(duration.seconds(), 0.0, kMaxSeconds);
  const std::int64_t expected = std::max<std::int64_t>(1, static_cast<std::int64_t>(seconds * sampleRate));
  PeakCollector collector;
  collector.perBucket = std::max<std::int64_t>(1, expected / std::max(1, bucketCount));
  collector.peaks.reserve(static_cast<std::size_t>(expected / collector.perBucket + 1));

  std::vector<float> chunk(static_cast<std::size_t>(kChunkFrames));
  for (std::int64_t done = 0; done < expected; done += kChunkFrames) {
    const std::span<float> out(chunk.data(), static_cast<std::size_t>(std::min(kChunkFrames, expected - done)));
    // On the output rate's clock, so each read starts where the last ended.
    if (!decoder.read(core::OVTime(done, sampleRate), out)) break;
    collector.add(out);
  }
  collector.finish();
  if (collector.peaks.empty()) return std::nullopt;

  const float top = *std::max_element(collector.peaks.begin(), collector.peaks.end());
  if (top > 0.0001f) {
    for (float& p : collector.peaks) p /= top;
  }
  return Waveform{std::move(collector.peaks), duration};
}

WaveformService::WaveformService(media::MainThreadPost post) : waveforms_(std::move(post)) {}

WaveformService::~WaveformService() = default;

void WaveformService::request(const core::MediaAsset& asset) {
  if (!asset.hasAudioTrack) return;
  waveforms_.request(asset, [](const std::filesystem::path& file) { return generate(file, bucketCount); });
}

const std::unordered_map<core::Uuid, Waveform>& WaveformService::waveforms() const { return waveforms_.all(); }

const Waveform* WaveformService::waveform(const core::Uuid& assetID) const { return waveforms_.find(assetID); }

bool WaveformService::isInFlight(const core::Uuid& assetID) const { return waveforms_.isInFlight(assetID); }

int WaveformService::addObserver(std::function<void(const core::Uuid&)> observer) {
  return waveforms_.addObserver(std::move(observer));
}

void WaveformService::removeObserver(int token) { waveforms_.removeObserver(token); }

}  // namespace orvane::audio
