#pragma once
// Reads an assembled composition the way the media engine plays it: for a
// composition time, the frames of every video track that covers it, handed
// to the frame compositor in one call; for a stretch of time, the audio
// mix as interleaved stereo floats at the composition's audio rate. Each
// track has a decoder of its own, leased from the asset cache and given
// back when the reader goes; the decoders go on without seeking while time
// moves forward frame by frame, and seek otherwise.
//
// A file that has gone from disk gives the missing-media error; any other
// failure to decode leaves that track out of the frame or the mix, as the
// compositor treats an absent frame. One thread at a time; the reader may
// move between threads (export reads video and audio on two readers).

#include <atomic>
#include <cstddef>
#include <expected>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/ov_time.hpp"
#include "media/audio_decoder.hpp"
#include "media/composition_assembler.hpp"
#include "media/media_asset_cache.hpp"
#include "media/video_decoder.hpp"
#include "render/image.hpp"
#include "render/render_plan.hpp"

namespace orvane::media {

class CompositionReader {
 public:
  // Audio is mixed in blocks of at most this many frames; taps never see more.
  static constexpr int maximumBlockFrames = 4096;

  explicit CompositionReader(AssembledComposition assembled, MediaAssetCache& cache = MediaAssetCache::shared());
  ~CompositionReader();
  CompositionReader(const CompositionReader&) = delete;
  CompositionReader& operator=(const CompositionReader&) = delete;

  const AssembledComposition& composition() const { return assembled_; }
  // Stereo at the composition's audio rate (48000 Hz unless it says another
  // that decoders accept).
  AudioFormat audioFormat() const { return audioFormat_; }

  // The decoded frame of each video track at composition time t, by track.
  std::expected<render::SourceFrames, CompositionAssemblyError> sourceFramesAt(const core::OVTime& t);
  // The composed picture at t over (0, 0, renderSize).
  std::expected<render::Image, CompositionAssemblyError> videoFrameAt(const core::OVTime& t);

  // The mix from start on into out (interleaved stereo; its size a multiple
  // of 2). Silence where no track plays.
  std::expected<void, CompositionAssemblyError> readAudio(const core::OVTime& start, std::span<float> out);
  // The mix of range: as many frames as its duration holds, rounded.
  std::expected<std::vector<float>, CompositionAssemblyError> audioFor(const core::OVTimeRange& range);

  // Decoders this reader holds now.
  std::size_t openDecoderCount() const;
  // Decoders held by all readers of the process (tests, diagnostics).
  static std::size_t liveDecoderCount() { return liveDecoders_.load(); }

 private:
  struct VideoTrackState;
  struct AudioTrackState;

  std::expected<void, CompositionAssemblyError> mixBlock(std::int64_t firstSample, std::span<float> out);
  std::expected<void, CompositionAssemblyError> addTrack(AudioTrackState& state, std::int64_t firstSample,
                                                         std::span<float> out);

  AssembledComposition assembled_;
  MediaAssetCache& cache_;
  AudioFormat audioFormat_;
  std::vector<std::unique_ptr<VideoTrackState>> videoTracks_;
  std::vector<std::unique_ptr<AudioTrackState>> audioTracks_;
  // Scratch of the mix, grown to one block and reused.
  std::vector<float> trackSamples_;
  std::vector<float> volumes_;

  static std::atomic<std::size_t> liveDecoders_;
};

}  // namespace orvane::media
