#include "audio/audio_normalizer.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <vector>

#include "document/media_access.hpp"
#include "media/audio_decoder.hpp"

namespace orvane::audio {
namespace {

constexpr std::int64_t kChunkFrames = 16384;

// What normalising a layer reads: its file and the used range.
struct NormalizeSource {
  std::filesystem::path file;
  core::OVTime sourceStart;
  core::OVTime duration;
};

std::optional<NormalizeSource> sourceOf(const document::ProjectDocument& doc, const core::Uuid& layerID) {
  const core::Composition* composition = doc.activeComposition();
  if (composition == nullptr) return std::nullopt;
  const core::Layer* layer = composition->layer(layerID);
  if (layer == nullptr) return std::nullopt;
  const auto assetID = layer->content.assetID();
  if (!assetID) return std::nullopt;
  const core::MediaAsset* asset = doc.project().asset(*assetID);
  if (asset == nullptr) return std::nullopt;
  const auto file = document::MediaAccessManager::shared().restoreAccessFor(*asset);
  if (!file) return std::nullopt;
  return NormalizeSource{*file, layer->sourceStart, layer->timeRange.duration};
}

std::expected<std::unique_ptr<media::AudioDecoder>, media::MediaError> openAtNativeFormat(
    const std::filesystem::path& file) {
  auto decoder = media::AudioDecoder::open(file);
  if (!decoder) return decoder;
  // Read at the file's own rate and channels, so that no resampling or
  // mixing moves the peak.
  const media::AudioStreamInfo& info = (*decoder)->info();
  const media::AudioFormat native{std::clamp(info.sampleRate, 8000, 384000), std::clamp(info.channelCount, 1, 8)};
  if (native == (*decoder)->outputFormat()) return decoder;
  return media::AudioDecoder::open(file, native);
}

}  // namespace

std::string_view AudioNormalizer::message(NormalizeError error) {
  switch (error) {
    case NormalizeError::noAudio:
      return "This layer has no audio to normalize.";
    case NormalizeError::silent:
      return "The audio is silent — nothing to normalize.";
  }
  return "This layer has no audio to normalize.";
}

std::expected<double, AudioNormalizer::NormalizeError> AudioNormalizer::gainForPeak(float peak) {
  if (!(peak > 0.0001f)) return std::unexpected(NormalizeError::silent);
  return static_cast<double>(targetPeak / peak);
}

std::string AudioNormalizer::resultText(double gain) {
  const double db = 20 * std::log10(std::max(gain, 0.0001));
  char text[64];
  std::snprintf(text, sizeof text, "Normalized (%+.1f dB).", db);
  return text;
}

std::expected<double, AudioNormalizer::NormalizeError> AudioNormalizer::peakGain(const std::filesystem::path& file,
                                                                                 const core::OVTime& sourceStart,
                                                                                 const core::OVTime& duration) {
  auto opened = openAtNativeFormat(file);
  if (!opened) return std::unexpected(NormalizeError::noAudio);
  media::AudioDecoder& decoder = **opened;
  const media::AudioFormat format = decoder.outputFormat();

  const double assetSeconds = decoder.info().duration.seconds();
  const double start = std::clamp(sourceStart.seconds(), 0.0, std::max(assetSeconds, 0.0));
  const double length = std::min(duration.seconds(), assetSeconds - start);
  if (!(length > 0)) return std::unexpected(NormalizeError::noAudio);

  const std::int64_t firstFrame = std::llround(start * format.sampleRate);
  const std::int64_t frames = std::llround(length * format.sampleRate);
  if (frames < 1) return std::unexpected(NormalizeError::noAudio);

  std::vector<float> chunk(static_cast<std::size_t>(kChunkFrames * format.channelCount));
  float peak = 0;
  for (std::int64_t done = 0; done < frames; done += kChunkFrames) {
    const std::int64_t count = std::min(kChunkFrames, frames - done);
    const std::span<float> out(chunk.data(), static_cast<std::size_t>(count * format.channelCount));
    // Times on the output rate's clock, so each read starts where the last ended.
    if (!decoder.read(core::OVTime(firstFrame + done, format.sampleRate), out)) {
      return std::unexpected(NormalizeError::noAudio);
    }
    for (const float s : out) peak = std::max(peak, std::abs(s));
  }
  return gainForPeak(peak);
}

std::string AudioNormalizer::normalizeAudio(document::ProjectDocument& doc, const core::Uuid& layerID,
                                            document::UndoStack* undo) {
  const auto source = sourceOf(doc, layerID);
  if (!source) return std::string(message(NormalizeError::noAudio));
  const auto gain = peakGain(source->file, source->sourceStart, source->duration);
  if (!gain) return std::string(message(gain.error()));
  doc.updateLayer(layerID, "Normalize Audio", undo, [g = *gain](core::Layer& l) { l.audio.normalizeGain = g; });
  return resultText(*gain);
}

AudioNormalizer::AudioNormalizer(media::MainThreadPost post)
    : post_(std::move(post)), alive_(std::make_shared<int>(0)) {}

AudioNormalizer::~AudioNormalizer() = default;

void AudioNormalizer::normalizeAudioAsync(document::ProjectDocument& doc, const core::Uuid& layerID,
                                          document::UndoStack* undo, std::function<void(std::string)> done) {
  const auto source = sourceOf(doc, layerID);
  if (!source) {
    post_([done = std::move(done)] { done(std::string(message(NormalizeError::noAudio))); });
    return;
  }
  worker_.post([&doc, layerID, undo, source = *source, done = std::move(done), post = post_,
                weak = std::weak_ptr<int>(alive_)] {
    const auto gain = peakGain(source.file, source.sourceStart, source.duration);
    post([&doc, layerID, undo, gain, done, weak] {
      if (!weak.lock()) return;
      if (!gain) {
        done(std::string(message(gain.error())));
        return;
      }
      doc.updateLayer(layerID, "Normalize Audio", undo, [g = *gain](core::Layer& l) { l.audio.normalizeGain = g; });
      done(resultText(*gain));
    });
  });
}

}  // namespace orvane::audio
