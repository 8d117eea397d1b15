#pragma once
// Samples of one audio stream of one file, decoded and resampled to the
// format the caller asks for: interleaved 32-bit floats at a sample rate and
// channel count of its choosing (mono is spread to both sides of stereo;
// more channels are mixed down by FFmpeg's default matrix).
//
// `read(start, out)` fills out with the samples from start on: frames that
// lie before the stream's first sample or past its end are silence. Reading
// on from where the previous read ended (the mix, waveforms, export) decodes
// on without seeking; any other start seeks to the packet before it and
// decodes forward.
//
// A decoder is used by one thread at a time; it may move between threads.
// MediaAssetCache hands them out and keeps released ones; `open` makes a
// private one.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "core/ov_time.hpp"
#include "media/media_error.hpp"

namespace orvane::media {

// The layout of decoded samples: interleaved floats.
struct AudioFormat {
  int sampleRate = 48000;
  int channelCount = 2;

  friend bool operator==(const AudioFormat&, const AudioFormat&) = default;
};

// What the file says about its audio stream.
struct AudioStreamInfo {
  int sampleRate = 0;
  int channelCount = 0;
  core::OVTime duration;
  std::string codecName;  // "aac", "mp3", "pcm_s16le", ...
};

class AudioDecoder {
 public:
  // Opens the first audio stream of the file; the output format's rate must
  // be 8000 ... 384000 Hz and its channels 1 ... 8 (else unreadable).
  static std::expected<std::unique_ptr<AudioDecoder>, MediaError> open(const std::filesystem::path& path,
                                                                       AudioFormat output = {});

  ~AudioDecoder();
  AudioDecoder(const AudioDecoder&) = delete;
  AudioDecoder& operator=(const AudioDecoder&) = delete;

  const std::filesystem::path& path() const;
  const AudioStreamInfo& info() const;
  AudioFormat outputFormat() const;

  // Fills out (a whole number of frames of outputFormat's channels) with the
  // samples from start on. Before start zero and past the end: silence.
  std::expected<void, MediaError> read(const core::OVTime& start, std::span<float> out);
  // The samples of range, as many frames as its duration holds at the output
  // rate (rounded to nearest).
  std::expected<std::vector<float>, MediaError> read(const core::OVTimeRange& range);

  // Diagnostics: seeks so far.
  std::int64_t seekCount() const;

  struct State;  // FFmpeg objects; defined in the source

 private:
  explicit AudioDecoder(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

}  // namespace orvane::media
