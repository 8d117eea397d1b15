#include "media/media_probe.hpp"

#include <cmath>

#include "media/ffmpeg_support.hpp"

namespace orvane::media {

std::expected<MediaProbe, MediaError> probeMediaFile(const std::filesystem::path& path) {
  auto file = ffmpeg::openFile(path);
  if (!file) return std::unexpected(file.error());
  const AVFormatContext& format = *file->format;
  MediaProbe probe;
  probe.duration = ffmpeg::fileDuration(format);
  if (const int v = ffmpeg::firstUsableStream(format, AVMEDIA_TYPE_VIDEO); v >= 0) {
    const AVStream& stream = *format.streams[v];
    VideoTrackFacts facts;
    facts.geometry = ffmpeg::geometryOf(stream);
    facts.displaySize = facts.geometry.displaySize();
    facts.displaySize = {std::abs(facts.displaySize.width), std::abs(facts.displaySize.height)};
    facts.nominalFrameRate = ffmpeg::nominalFrameRate(stream);
    probe.video = facts;
    if (probe.duration.isZero()) probe.duration = ffmpeg::durationOf(format, stream);
  }
  if (const int a = ffmpeg::firstUsableStream(format, AVMEDIA_TYPE_AUDIO); a >= 0) {
    const AVCodecParameters& par = *format.streams[a]->codecpar;
    probe.audio = AudioTrackFacts{par.ch_layout.nb_channels, static_cast<double>(par.sample_rate)};
    if (probe.duration.isZero()) probe.duration = ffmpeg::durationOf(format, *format.streams[a]);
  }
  return probe;
}

}  // namespace orvane::media
