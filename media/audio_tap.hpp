#pragma once
// The hook through which audio processing reaches a track of the mix. The
// mix hands each track's samples, interleaved 32-bit floats at the track's
// rate and channel count, to the track's tap before it pans and sums the
// tracks to stereo. The effects that run there (echo, reverb, pitch) live in
// the audio library, which sits above this one; it supplies an
// AudioTapMaker, and whoever assembles a composition passes it on.
//
// prepare runs before the first block and whenever the format changes,
// process once per block on the mixing thread; neither may block, and
// process may not allocate.

#include <functional>
#include <memory>

#include "core/layer.hpp"

namespace orvane::media {

struct AudioTapFormat {
  double sampleRate = 48000;
  int channelCount = 2;
};

class AudioTrackTap {
 public:
  virtual ~AudioTrackTap() = default;
  virtual void prepare(const AudioTapFormat& format, int maximumFrames) = 0;
  // Works in place on frameCount frames of interleaved samples.
  virtual void process(float* interleaved, int frameCount) = 0;
};

// The tap for one layer's audio, or none when the layer needs no processing.
using AudioTapMaker = std::function<std::shared_ptr<AudioTrackTap>(const core::Layer& layer)>;

}  // namespace orvane::media
