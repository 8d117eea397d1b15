#include "media/composition_reader.hpp"

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "document/media_access.hpp"
#include "render/frame_compositor.hpp"

namespace orvane::media {

std::atomic<std::size_t> CompositionReader::liveDecoders_{0};

namespace {

using core::OVTime;

// A decoder lease counted in the process-wide tally while held.
template <class Lease>
class CountedLease {
 public:
  CountedLease(std::atomic<std::size_t>& tally) : tally_(tally) {}
  ~CountedLease() { reset(); }
  CountedLease(const CountedLease&) = delete;
  CountedLease& operator=(const CountedLease&) = delete;

  void hold(Lease lease, std::string path) {
    reset();
    lease_ = std::move(lease);
    path_ = std::move(path);
    if (lease_) ++tally_;
  }
  void reset() {
    if (lease_) --tally_;
    lease_.reset();
    path_.clear();
  }
  bool holds(const std::string& path) const { return lease_ && path_ == path; }
  explicit operator bool() const { return static_cast<bool>(lease_); }
  auto* operator->() const { return lease_.get(); }

 private:
  std::atomic<std::size_t>& tally_;
  Lease lease_;
  std::string path_;
};

std::string displayName(const TrackSegment& segment) {
  if (!segment.sourceName.empty()) return segment.sourceName;
  return std::filesystem::path(segment.sourcePath).filename().string();
}

// Names of files gone from disk, gathered over all tracks of one call.
struct MissingFiles {
  std::vector<std::string> names;

  void note(const TrackSegment& segment) {
    std::string name = displayName(segment);
    if (std::ranges::find(names, name) == names.end()) names.push_back(std::move(name));
  }
  std::expected<void, CompositionAssemblyError> result() const {
    if (names.empty()) return {};
    return std::unexpected(CompositionAssemblyError{.names = names});
  }
};

bool isGone(const std::string& path) { return !document::isReadableFile(path); }

int mixRate(double compositionRate) {
  // The decoders resample to 8 kHz ... 384 kHz; anything else mixes at 48 kHz.
  if (!std::isfinite(compositionRate) || compositionRate < 8000 || compositionRate > 384000) return 48000;
  return static_cast<int>(std::lround(compositionRate));
}

}  // namespace

struct CompositionReader::VideoTrackState {
  explicit VideoTrackState(const TimedTrack& t) : track(t), decoder(liveDecoders_) {}
  const TimedTrack& track;
  CountedLease<VideoDecoderLease> decoder;
  std::string unusablePath;  // a file that opens but can't be decoded: not retried every frame
};

struct CompositionReader::AudioTrackState {
  AudioTrackState(const TimedTrack& t, const AudioMixInputParameters* p) : track(t), params(p), decoder(liveDecoders_) {}
  const TimedTrack& track;
  const AudioMixInputParameters* params;
  CountedLease<AudioDecoderLease> decoder;
  std::string unusablePath;
  bool tapPrepared = false;
};

CompositionReader::CompositionReader(AssembledComposition assembled, MediaAssetCache& cache)
    : assembled_(std::move(assembled)), cache_(cache) {
  audioFormat_ = {mixRate(assembled_.plan.composition.audioSampleRate), 2};
  const std::vector<std::int32_t> required = assembled_.plan.allVideoTrackIDs();
  const std::unordered_set<std::int32_t> drawn(required.begin(), required.end());
  for (const TimedTrack& track : assembled_.asset.tracks()) {
    if (track.mediaType == TrackMediaType::video) {
      // A track the plan doesn't draw (a nested composition used twice) is never decoded.
      if (drawn.contains(track.trackID)) videoTracks_.push_back(std::make_unique<VideoTrackState>(track));
    } else {
      const AudioMixInputParameters* params =
          assembled_.audioMix ? assembled_.audioMix->parametersFor(track.trackID) : nullptr;
      audioTracks_.push_back(std::make_unique<AudioTrackState>(track, params));
    }
  }
}

CompositionReader::~CompositionReader() = default;

std::size_t CompositionReader::openDecoderCount() const {
  std::size_t count = 0;
  for (const auto& state : videoTracks_) count += state->decoder ? 1 : 0;
  for (const auto& state : audioTracks_) count += state->decoder ? 1 : 0;
  return count;
}

std::expected<render::SourceFrames, CompositionAssemblyError> CompositionReader::sourceFramesAt(const OVTime& t) {
  render::SourceFrames frames;
  MissingFiles missing;
  for (const auto& state : videoTracks_) {
    const TrackSegment* segment = state->track.segmentAt(t);
    if (segment == nullptr || segment->sourcePath == state->unusablePath) continue;
    if (!state->decoder.holds(segment->sourcePath)) {
      if (isGone(segment->sourcePath)) {
        cache_.remove(segment->sourcePath);  // idle decoders of a vanished file must not serve again
        missing.note(*segment);
        continue;
      }
      auto lease = cache_.videoDecoder(segment->sourcePath);
      if (!lease) {
        if (lease.error() == MediaError::missingFile) {
          missing.note(*segment);
        } else {
          state->unusablePath = segment->sourcePath;
        }
        continue;
      }
      state->decoder.hold(std::move(*lease), segment->sourcePath);
    }
    auto frame = state->decoder->frameAt(segment->sourceTimeFor(t));
    if (frame) {
      frames.insert_or_assign(state->track.trackID, std::move(frame->image));
    } else if (isGone(segment->sourcePath)) {
      missing.note(*segment);
    }
  }
  if (auto gone = missing.result(); !gone) return std::unexpected(gone.error());
  return frames;
}

std::expected<render::Image, CompositionAssemblyError> CompositionReader::videoFrameAt(const OVTime& t) {
  auto frames = sourceFramesAt(t);
  if (!frames) return std::unexpected(frames.error());
  return render::FrameCompositor::composeFrame(assembled_.plan, t, *frames);
}

std::expected<void, CompositionAssemblyError> CompositionReader::readAudio(const OVTime& start,
                                                                           std::span<float> out) {
  const double first = std::round(start.seconds() * audioFormat_.sampleRate);
  if (!std::isfinite(first) || std::abs(first) > 1e15) {
    std::ranges::fill(out, 0.0f);
    return {};
  }
  std::int64_t sample = static_cast<std::int64_t>(first);
  const std::size_t frames = out.size() / 2;
  for (std::size_t done = 0; done < frames;) {
    const std::size_t count = std::min<std::size_t>(frames - done, maximumBlockFrames);
    if (auto mixed = mixBlock(sample, out.subspan(2 * done, 2 * count)); !mixed) return mixed;
    done += count;
    sample += static_cast<std::int64_t>(count);
  }
  if (out.size() % 2 != 0) out.back() = 0;
  return {};
}

std::expected<std::vector<float>, CompositionAssemblyError> CompositionReader::audioFor(
    const core::OVTimeRange& range) {
  const double frames = std::round(range.duration.seconds() * audioFormat_.sampleRate);
  // An hour of stereo is the most one call hands back.
  const double limit = 3600.0 * audioFormat_.sampleRate;
  std::vector<float> samples(2 * static_cast<std::size_t>(std::clamp(frames, 0.0, limit)));
  if (auto read = readAudio(range.start, samples); !read) return std::unexpected(read.error());
  return samples;
}

std::expected<void, CompositionAssemblyError> CompositionReader::mixBlock(std::int64_t firstSample,
                                                                          std::span<float> out) {
  std::ranges::fill(out, 0.0f);
  const std::size_t frames = out.size() / 2;
  if (trackSamples_.size() < out.size()) trackSamples_.resize(out.size());
  if (volumes_.size() < frames) volumes_.resize(frames);
  MissingFiles missing;
  for (const auto& state : audioTracks_) {
    auto added = addTrack(*state, firstSample, out);
    if (!added) {
      for (const std::string& name : added.error().names) {
        if (std::ranges::find(missing.names, name) == missing.names.end()) missing.names.push_back(name);
      }
    }
  }
  return missing.result();
}

std::expected<void, CompositionAssemblyError> CompositionReader::addTrack(AudioTrackState& state,
                                                                          std::int64_t firstSample,
                                                                          std::span<float> out) {
  const int rate = audioFormat_.sampleRate;
  const auto sampleAt = [rate](const OVTime& t) { return std::llround(t.seconds() * rate); };
  const std::int64_t frames = static_cast<std::int64_t>(out.size() / 2);
  MissingFiles missing;
  for (const TrackSegment& segment : state.track.segments) {
    const std::int64_t segmentStart = sampleAt(segment.compositionStart);
    const std::int64_t segmentEnd = sampleAt(segment.compositionRange().end());
    const std::int64_t from = std::clamp<std::int64_t>(segmentStart - firstSample, 0, frames);
    const std::int64_t to = std::clamp<std::int64_t>(segmentEnd - firstSample, 0, frames);
    if (to <= from || segment.sourcePath == state.unusablePath) continue;
    if (!state.decoder.holds(segment.sourcePath)) {
      if (isGone(segment.sourcePath)) {
        cache_.remove(segment.sourcePath);
        missing.note(segment);
        continue;
      }
      auto lease = cache_.audioDecoder(segment.sourcePath, audioFormat_);
      if (!lease) {
        if (lease.error() == MediaError::missingFile) {
          missing.note(segment);
        } else {
          state.unusablePath = segment.sourcePath;
        }
        continue;
      }
      state.decoder.hold(std::move(*lease), segment.sourcePath);
    }
    const std::size_t count = static_cast<std::size_t>(to - from);
    const std::span<float> samples(trackSamples_.data(), 2 * count);
    // Source positions in whole samples at the mix rate, so that block after
    // block the decoder sees each read start where the last one ended.
    const std::int64_t sourceSample = sampleAt(segment.sourceRange.start) + (firstSample + from - segmentStart);
    if (!state.decoder->read(OVTime(sourceSample, rate), samples)) {
      if (isGone(segment.sourcePath)) missing.note(segment);
      continue;
    }
    const AudioMixInputParameters* params = state.params;
    if (params != nullptr && params->audioTapProcessor) {
      if (!state.tapPrepared) {
        params->audioTapProcessor->prepare({static_cast<double>(rate), 2}, maximumBlockFrames);
        state.tapPrepared = true;
      }
      params->audioTapProcessor->process(samples.data(), static_cast<int>(count));
    }
    const std::span<float> volumes(volumes_.data(), count);
    const OVTime at(firstSample + from, rate);
    PanGains pan;
    if (params != nullptr) {
      params->volumesInto(at, rate, volumes);
      pan = params->panGainsAt(OVTime(firstSample + from + static_cast<std::int64_t>(count / 2), rate));
    } else {
      std::ranges::fill(volumes, 1.0f);
    }
    addPannedTrack(out.subspan(2 * static_cast<std::size_t>(from), 2 * count), samples, volumes, pan);
  }
  return missing.result();
}

}  // namespace orvane::media
