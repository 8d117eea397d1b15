#include "export/sample_pump.hpp"

#include <algorithm>
#include <cmath>
#include <vector>

namespace orvane::export_ {

std::int64_t frameCountFor(const core::OVTimeRange& range, core::FrameRate rate) {
  return std::max<std::int64_t>(1, rate.frameCountFor(range.duration));
}

PumpFailure runVideoPump(media::CompositionReader& reader, VideoEncoder& encoder, const core::OVTimeRange& range,
                         core::FrameRate rate, const PacketSink& sink, const PumpControl& control) {
  const std::int64_t frames = frameCountFor(range, rate);
  for (std::int64_t n = 0; n < frames; ++n) {
    if (control.shouldStop()) return {};
    const core::OVTime t = range.start + rate.timeForFrame(n);
    auto picture = reader.videoFrameAt(t);
    if (!picture) return {.reading = picture.error().message()};
    if (auto appended = encoder.encode(*picture, n, sink); !appended) return {.writing = appended.error()};
    control.onSample(t.seconds());
  }
  if (control.shouldStop()) return {};
  if (auto finished = encoder.finish(sink); !finished) return {.writing = finished.error()};
  return {};
}

PumpFailure runAudioPump(media::CompositionReader& reader, AudioEncoder& encoder, const core::OVTimeRange& range,
                         const PacketSink& sink, const PumpControl& control) {
  const int readerRate = reader.audioFormat().sampleRate;
  const std::int64_t total = std::llround(range.duration.seconds() * readerRate);
  // One block of the mix, reused; the reader mixes at most this much at once.
  constexpr std::int64_t blockFrames = media::CompositionReader::maximumBlockFrames;
  std::vector<float> block(2 * blockFrames);
  for (std::int64_t done = 0; done < total;) {
    if (control.shouldStop()) return {};
    const std::int64_t count = std::min(blockFrames, total - done);
    const std::span<float> samples(block.data(), static_cast<std::size_t>(2 * count));
    const core::OVTime at = range.start + core::OVTime(done, readerRate);
    if (auto read = reader.readAudio(at, samples); !read) return {.reading = read.error().message()};
    if (auto appended = encoder.encode(samples, sink); !appended) return {.writing = appended.error()};
    done += count;
    control.onSample(at.seconds());
  }
  if (control.shouldStop()) return {};
  const int outputRate = encoder.context().sample_rate;
  const std::int64_t outputTotal = std::llround(range.duration.seconds() * outputRate);
  if (auto finished = encoder.finish(outputTotal, sink); !finished) return {.writing = finished.error()};
  return {};
}

}  // namespace orvane::export_
