#pragma once
// FFmpeg's encoders of one export: the picture encoder, fed composed
// pictures, and the audio encoder, fed the stereo mix; each hands its
// packets to a sink (the muxer). Sending waits for nothing: when the
// encoder will take no more (EAGAIN) its packets are taken out first, which
// is the back-pressure that paces each pump. One thread per encoder.

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/audio_fifo.h>
#include <libswresample/swresample.h>
}

#include "core/frame_rate.hpp"
#include "export/export_settings.hpp"
#include "export/pixel_conversion.hpp"
#include "render/image.hpp"

namespace orvane::export_ {

// Takes one encoded packet; a sentence when it could not be written.
using PacketSink = std::function<std::expected<void, std::string>(AVPacket&)>;

struct CodecContextCloser {
  void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FrameFreer {
  void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct PacketFreer {
  void operator()(AVPacket* p) const { av_packet_free(&p); }
};
using CodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextCloser>;
using FrameHandle = std::unique_ptr<AVFrame, FrameFreer>;
using PacketHandle = std::unique_ptr<AVPacket, PacketFreer>;

// Sends frame (null: the end) and hands every packet the encoder has
// ready to sink.
std::expected<void, std::string> encodeFrame(AVCodecContext& codec, const AVFrame* frame, AVPacket& scratch,
                                             const PacketSink& sink);

class VideoEncoder {
 public:
  // The encoder the settings name at rate, fed pictures of sourceWidth ×
  // sourceHeight. None when FFmpeg lacks it or refuses the settings.
  static std::optional<VideoEncoder> open(const VideoEncoderSettings& settings, core::FrameRate rate,
                                          int sourceWidth, int sourceHeight, bool globalHeader);

  const AVCodecContext& context() const { return *codec_; }
  // The picture as frame number index (its time is index frames).
  std::expected<void, std::string> encode(const render::Image& picture, std::int64_t index, const PacketSink& sink);
  // Takes out the frames the encoder still holds.
  std::expected<void, std::string> finish(const PacketSink& sink);

 private:
  VideoEncoder() = default;
  CodecContextPtr codec_;
  FrameHandle frame_;
  PacketHandle packet_;
  std::optional<PictureConverter> converter_;
};

class AudioEncoder {
 public:
  // The encoder of the settings, fed interleaved stereo floats at inputRate.
  static std::optional<AudioEncoder> open(const AudioEncoderSettings& settings, int inputRate, bool globalHeader);
  AudioEncoder(AudioEncoder&&) noexcept;
  AudioEncoder& operator=(AudioEncoder&&) = delete;
  ~AudioEncoder();

  const AVCodecContext& context() const { return *codec_; }
  // The next stretch of the mix; whole encoder frames go out as they fill.
  std::expected<void, std::string> encode(std::span<const float> stereo, const PacketSink& sink);
  // Ends the stream at exactly totalSamples output samples: what remains is
  // padded with silence or cut, then the encoder is drained.
  std::expected<void, std::string> finish(std::int64_t totalSamples, const PacketSink& sink);

 private:
  AudioEncoder() = default;
  std::expected<void, std::string> sendFrames(std::int64_t limit, bool partialLast, const PacketSink& sink);

  CodecContextPtr codec_;
  FrameHandle frame_;
  PacketHandle packet_;
  SwrContext* resampler_ = nullptr;
  AVAudioFifo* fifo_ = nullptr;
  std::vector<std::uint8_t*> planes_;     // the resampler's output, one pointer per plane
  std::vector<std::uint8_t> planeMemory_;  // behind planes_
  int planeCapacity_ = 0;                  // samples each plane holds
  std::int64_t samplesSent_ = 0;
};

}  // namespace orvane::export_
