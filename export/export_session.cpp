#include "export/export_session.hpp"

#include <algorithm>
#include <optional>
#include <thread>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "audio/audio_mix_tap.hpp"
#include "export/encoders.hpp"
#include "export/muxer.hpp"
#include "export/sample_pump.hpp"
#include "media/composition_reader.hpp"

namespace orvane::export_ {

namespace {

using core::OVTimeRange;

// The composition as this export draws it: the export's rate, transparency
// when the codec keeps alpha, and the export's motion blur.
core::Composition workingCopy(const core::Composition& composition, const ExportSettings& settings) {
  core::Composition copy = composition;
  copy.frameRate = settings.frameRate;
  if (preservesAlpha(settings.codec)) copy.isTransparent = true;
  copy.motionBlurEnabled = settings.enableMotionBlur;
  copy.motionBlurShutterAngle = settings.motionBlurShutterAngle;
  return copy;
}

double renderScaleFor(const core::Composition& composition, const ExportSettings& settings) {
  if (!(composition.size.width > 0)) return 1;
  return settings.pixelWidth() / composition.size.width;
}

bool rateUsable(core::FrameRate rate) { return rate.numerator > 0 && rate.denominator > 0; }

// WebM readers learn from the track that its pictures carry alpha.
bool marksAlpha(const VideoEncoderSettings& video, const ContainerSettings& container) {
  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(av_get_pix_fmt(video.pixelFormat.c_str()));
  const bool alpha = descriptor != nullptr && (descriptor->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
  return alpha && (container.muxerName == "webm" || container.muxerName == "matroska");
}

// What the pumps share: the stop signal and the first failure.
class PumpGroup {
 public:
  explicit PumpGroup(const std::atomic<bool>& cancelled) : cancelled_(cancelled) {}
  bool shouldStop() const { return cancelled_.load() || failed_.load(); }
  void record(const PumpFailure& failure) {
    if (!failure.failed()) return;
    std::scoped_lock guard(lock_);
    if (!first_.failed()) first_ = failure;
    failed_.store(true);
  }
  PumpFailure failure() const {
    std::scoped_lock guard(lock_);
    return first_;
  }

 private:
  const std::atomic<bool>& cancelled_;
  std::atomic<bool> failed_{false};
  mutable std::mutex lock_;
  PumpFailure first_;
};

double fractionAt(double seconds, double startSeconds, double durationSeconds) {
  if (!(durationSeconds > 0)) return 0;
  return std::clamp((seconds - startSeconds) / durationSeconds, 0.0, 1.0);
}

}  // namespace

ExportSession::ExportSession() : ExportSession(media::CompositionAssembler{}) {}

ExportSession::ExportSession(media::CompositionAssembler assembler, media::MediaAssetCache& cache)
    : assembler_(std::move(assembler)), cache_(cache) {
  if (!assembler_.tapMaker) assembler_.tapMaker = audio::makeEffectTap();
}

std::expected<void, ExportError> ExportSession::exportTo(const core::Composition& composition,
                                                         const core::OVProject& project,
                                                         const ExportSettings& settings,
                                                         const std::filesystem::path& output,
                                                         const ExportProgress& progress) {
  const OVTimeRange range = settings.range;
  if (!range.duration.isPositive()) return std::unexpected(ExportError::nothingToRender());
  const bool includeVideo = settings.includeVideo();
  if (includeVideo && !rateUsable(settings.frameRate)) {
    return std::unexpected(ExportError::writerFailed("The video encoder rejected these settings."));
  }

  const core::Composition working = workingCopy(composition, settings);
  auto assembled = assembler_.assemble(working, project, renderScaleFor(working, settings));
  if (!assembled) return std::unexpected(ExportError::readerFailed(assembled.error().message()));
  // The compositor draws every frame, footage or not: a picture is always there.
  const bool hasAudioTracks = !assembled->asset.tracksOf(media::TrackMediaType::audio).empty();
  if (settings.includeAudio() && !hasAudioTracks && !includeVideo) {
    return std::unexpected(ExportError::nothingToRender());
  }

  std::error_code ignored;
  std::filesystem::remove(output, ignored);

  const render::PixelSize renderSize = assembled->videoComposition.renderSize;
  std::optional<media::CompositionReader> videoReader;
  std::optional<media::CompositionReader> audioReader;
  if (settings.includeAudio() && hasAudioTracks) audioReader.emplace(*assembled, cache_);
  if (includeVideo) videoReader.emplace(std::move(*assembled), cache_);

  const ContainerSettings container = settings.containerSettings();
  auto muxer = Muxer::make(container, output);
  if (!muxer) return std::unexpected(ExportError::writerFailed(muxer.error()));

  std::optional<VideoEncoder> videoEncoder;
  int videoStream = -1;
  if (includeVideo) {
    if (auto reason = unavailableReason(settings.codec)) return std::unexpected(ExportError::writerFailed(*reason));
    const VideoEncoderSettings video = settings.videoOutputSettings();
    videoEncoder = VideoEncoder::open(video, settings.frameRate, renderSize.width, renderSize.height,
                                      muxer->wantsGlobalHeader());
    if (!videoEncoder) {
      return std::unexpected(ExportError::writerFailed("The video encoder rejected these settings."));
    }
    auto stream = muxer->addStream(videoEncoder->context(), video.codecTag);
    if (!stream) return std::unexpected(ExportError::writerFailed(stream.error()));
    videoStream = *stream;
    if (marksAlpha(video, container)) muxer->setStreamMetadata(videoStream, "alpha_mode", "1");
  }

  std::optional<AudioEncoder> audioEncoder =
      audioReader ? AudioEncoder::open(settings.audioOutputSettings(), audioReader->audioFormat().sampleRate,
                                       muxer->wantsGlobalHeader())
                  : std::nullopt;
  int audioStream = -1;
  if (audioReader) {
    if (audioEncoder) {
      auto stream = muxer->addStream(audioEncoder->context());
      if (!stream) return std::unexpected(ExportError::writerFailed(stream.error()));
      audioStream = *stream;
    } else if (includeVideo) {
      audioReader.reset();  // the picture goes out alone
    } else {
      return std::unexpected(ExportError::writerFailed("The audio encoder rejected these settings."));
    }
  }

  if (auto opened = muxer->open(); !opened) return std::unexpected(ExportError::writerFailed(opened.error()));

  const double startSeconds = range.start.seconds();
  const double durationSeconds = range.duration.seconds();
  const auto report = [&](double seconds) {
    if (progress) progress(fractionAt(seconds, startSeconds, durationSeconds));
  };
  PumpGroup group(cancelled_);
  const auto stop = [&group] { return group.shouldStop(); };

  std::jthread audioThread;
  if (audioEncoder) {
    audioThread = std::jthread([&] {
      const AVRational timeBase = audioEncoder->context().time_base;
      const PacketSink sink = [&](AVPacket& packet) { return muxer->write(audioStream, packet, timeBase); };
      const PumpControl control{stop, [&](double seconds) {
                                  if (!includeVideo) report(seconds);
                                }};
      group.record(runAudioPump(*audioReader, *audioEncoder, range, sink, control));
    });
  }
  if (videoEncoder) {
    const AVRational timeBase = videoEncoder->context().time_base;
    const PacketSink sink = [&](AVPacket& packet) { return muxer->write(videoStream, packet, timeBase); };
    group.record(runVideoPump(*videoReader, *videoEncoder, range, settings.frameRate, sink, {stop, report}));
  }
  if (audioThread.joinable()) audioThread.join();

  if (isCancelled()) {
    muxer->discard();
    return std::unexpected(ExportError::cancelled());
  }
  const PumpFailure failure = group.failure();
  if (failure.reading) {
    muxer->discard();
    return std::unexpected(
        ExportError::readerFailed(failure.reading->empty() ? "The composition could not be read." : *failure.reading));
  }
  if (failure.writing) {
    muxer->discard();
    return std::unexpected(ExportError::writerFailed(*failure.writing));
  }
  if (auto finished = muxer->finish(); !finished) {
    const std::string text = finished.error() == "Unknown error." ? "The file could not be finalised." : finished.error();
    return std::unexpected(ExportError::writerFailed(text));
  }
  if (progress) progress(1.0);
  return {};
}

}  // namespace orvane::export_
