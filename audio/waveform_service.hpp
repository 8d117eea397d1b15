#pragma once
// Waveforms of audio clips for the timeline: a compact list of peaks made
// once per asset from its first audio stream, mixed down to mono at
// 22050 Hz so that the cost depends only on the duration, about 4000 peaks
// whatever the length, each scaled so that the loudest fills the height.
//
// WaveformService is shared by the windows and lives on the main thread:
// request, waveforms and inFlight are touched there only. Reading runs on
// the service's own thread; results come back through the MainThreadPost
// given at construction. Observers hear of every asset whose waveform
// arrived.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "core/media_asset.hpp"
#include "core/ov_time.hpp"
#include "core/uuid.hpp"
#include "media/asset_results.hpp"
#include "media/serial_worker.hpp"

namespace orvane::audio {

struct Waveform {
  std::vector<float> peaks;  // 0 to 1
  core::OVTime duration;     // of the source

  // The peak at a fraction of the source (clamped to 0 ... 1); 0 with no peaks.
  float peakAtFraction(double fraction) const;

  friend bool operator==(const Waveform&, const Waveform&) = default;
};

class WaveformService {
 public:
  static constexpr int bucketCount = 4000;
  static constexpr int sampleRate = 22050;

  explicit WaveformService(media::MainThreadPost post);
  ~WaveformService();

  // Asks for the waveform of an asset with an audio track; it appears in
  // waveforms() later. Nothing when there is one or one is on its way; a
  // failed reading leaves none, so the next request tries again.
  void request(const core::MediaAsset& asset);

  // Reads the file's first audio stream into peaks of perBucket samples,
  // perBucket being the larger of 1 and (duration × 22050) / bucketCount.
  // None without audio or when nothing could be read. Any thread.
  static std::optional<Waveform> generate(const std::filesystem::path& file, int bucketCount);

  const std::unordered_map<core::Uuid, Waveform>& waveforms() const;
  const Waveform* waveform(const core::Uuid& assetID) const;
  bool isInFlight(const core::Uuid& assetID) const;

  int addObserver(std::function<void(const core::Uuid&)> observer);
  void removeObserver(int token);

 private:
  media::AssetResults<Waveform> waveforms_;
};

}  // namespace orvane::audio
