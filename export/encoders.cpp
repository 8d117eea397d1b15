#include "export/encoders.hpp"

#include <algorithm>
#include <cstring>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

#include "export/muxer.hpp"

namespace orvane::export_ {

std::expected<void, std::string> encodeFrame(AVCodecContext& codec, const AVFrame* frame, AVPacket& scratch,
                                             const PacketSink& sink) {
  for (;;) {
    const int sent = avcodec_send_frame(&codec, frame);
    const bool full = sent == AVERROR(EAGAIN);
    if (sent < 0 && !full) return std::unexpected(ffmpegErrorSentence(sent));
    // Packets ready now go out; when the encoder was full they make room.
    for (;;) {
      const int received = avcodec_receive_packet(&codec, &scratch);
      if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) break;
      if (received < 0) return std::unexpected(ffmpegErrorSentence(received));
      auto written = sink(scratch);
      av_packet_unref(&scratch);
      if (!written) return written;
    }
    if (!full) return {};
  }
}

namespace {

AVDictionary* encoderOptions(const VideoEncoderSettings& settings) {
  AVDictionary* options = nullptr;
  if (!settings.profile.empty()) av_dict_set(&options, "profile", settings.profile.c_str(), 0);
  for (const auto& [key, value] : settings.options) av_dict_set(&options, key.c_str(), value.c_str(), 0);
  return options;
}

bool usable(core::FrameRate rate) { return rate.numerator > 0 && rate.denominator > 0; }

}  // namespace

std::optional<VideoEncoder> VideoEncoder::open(const VideoEncoderSettings& settings, core::FrameRate rate,
                                               int sourceWidth, int sourceHeight, bool globalHeader) {
  const AVCodec* codec = avcodec_find_encoder_by_name(settings.encoderName.c_str());
  const AVPixelFormat format = av_get_pix_fmt(settings.pixelFormat.c_str());
  if (codec == nullptr || format == AV_PIX_FMT_NONE || !usable(rate) || settings.width < 2 || settings.height < 2) {
    return std::nullopt;
  }
  VideoEncoder encoder;
  encoder.codec_.reset(avcodec_alloc_context3(codec));
  if (!encoder.codec_) return std::nullopt;
  AVCodecContext& c = *encoder.codec_;
  c.width = settings.width;
  c.height = settings.height;
  c.pix_fmt = format;
  c.time_base = {rate.denominator, rate.numerator};
  c.framerate = {rate.numerator, rate.denominator};
  c.sample_aspect_ratio = {1, 1};
  if (settings.averageBitRate > 0) c.bit_rate = settings.averageBitRate;
  if (settings.maxKeyFrameInterval > 0) c.gop_size = settings.maxKeyFrameInterval;
  if (!settings.allowFrameReordering) c.max_b_frames = 0;
  c.color_range = AVCOL_RANGE_MPEG;
  c.colorspace = AVCOL_SPC_BT709;
  c.color_primaries = AVCOL_PRI_BT709;
  c.color_trc = AVCOL_TRC_BT709;
  c.thread_count = 0;
  if (globalHeader) c.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  AVDictionary* options = encoderOptions(settings);
  const int opened = avcodec_open2(&c, codec, &options);
  av_dict_free(&options);
  if (opened < 0) return std::nullopt;

  auto converter = PictureConverter::make(sourceWidth, sourceHeight, c.width, c.height, format);
  if (!converter) return std::nullopt;
  encoder.converter_.emplace(std::move(*converter));
  encoder.frame_.reset(av_frame_alloc());
  encoder.packet_.reset(av_packet_alloc());
  if (!encoder.frame_ || !encoder.packet_) return std::nullopt;
  encoder.frame_->format = format;
  encoder.frame_->width = c.width;
  encoder.frame_->height = c.height;
  if (av_frame_get_buffer(encoder.frame_.get(), 0) < 0) return std::nullopt;
  return encoder;
}

std::expected<void, std::string> VideoEncoder::encode(const render::Image& picture, std::int64_t index,
                                                      const PacketSink& sink) {
  AVFrame& frame = *frame_;
  // The encoder may still hold the last picture; then this gets fresh buffers.
  if (av_frame_make_writable(&frame) < 0) return std::unexpected("The picture could not be converted.");
  if (!converter_->convert(picture, frame)) return std::unexpected("The picture could not be converted.");
  frame.pts = index;
  frame.color_range = codec_->color_range;
  frame.colorspace = codec_->colorspace;
  frame.color_primaries = codec_->color_primaries;
  frame.color_trc = codec_->color_trc;
  return encodeFrame(*codec_, &frame, *packet_, sink);
}

std::expected<void, std::string> VideoEncoder::finish(const PacketSink& sink) {
  return encodeFrame(*codec_, nullptr, *packet_, sink);
}

std::optional<AudioEncoder> AudioEncoder::open(const AudioEncoderSettings& settings, int inputRate,
                                               bool globalHeader) {
  const AVCodec* codec = avcodec_find_encoder_by_name(settings.encoderName.c_str());
  if (codec == nullptr || settings.channels < 1 || settings.channels > 8 || settings.sampleRate < 8000 ||
      settings.sampleRate > 384000 || inputRate < 1) {
    return std::nullopt;
  }
  AudioEncoder encoder;
  encoder.codec_.reset(avcodec_alloc_context3(codec));
  if (!encoder.codec_) return std::nullopt;
  AVCodecContext& c = *encoder.codec_;
  c.sample_fmt = codec->sample_fmts != nullptr ? codec->sample_fmts[0] : AV_SAMPLE_FMT_FLTP;
  c.sample_rate = settings.sampleRate;
  av_channel_layout_default(&c.ch_layout, settings.channels);
  c.bit_rate = settings.bitRate;
  c.time_base = {1, settings.sampleRate};
  if (globalHeader) c.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  if (avcodec_open2(&c, codec, nullptr) < 0) return std::nullopt;

  AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
  if (swr_alloc_set_opts2(&encoder.resampler_, &c.ch_layout, c.sample_fmt, c.sample_rate, &stereo,
                          AV_SAMPLE_FMT_FLT, inputRate, 0, nullptr) < 0 ||
      swr_init(encoder.resampler_) < 0) {
    return std::nullopt;
  }
  const int frameSize = c.frame_size > 0 ? c.frame_size : 1024;
  encoder.fifo_ = av_audio_fifo_alloc(c.sample_fmt, c.ch_layout.nb_channels, 4 * frameSize);
  encoder.frame_.reset(av_frame_alloc());
  encoder.packet_.reset(av_packet_alloc());
  if (encoder.fifo_ == nullptr || !encoder.frame_ || !encoder.packet_) return std::nullopt;
  AVFrame& frame = *encoder.frame_;
  frame.format = c.sample_fmt;
  frame.sample_rate = c.sample_rate;
  frame.nb_samples = frameSize;
  if (av_channel_layout_copy(&frame.ch_layout, &c.ch_layout) < 0 || av_frame_get_buffer(&frame, 0) < 0) {
    return std::nullopt;
  }
  return encoder;
}

AudioEncoder::AudioEncoder(AudioEncoder&& other) noexcept
    : codec_(std::move(other.codec_)),
      frame_(std::move(other.frame_)),
      packet_(std::move(other.packet_)),
      resampler_(std::exchange(other.resampler_, nullptr)),
      fifo_(std::exchange(other.fifo_, nullptr)),
      planes_(std::move(other.planes_)),
      planeMemory_(std::move(other.planeMemory_)),
      planeCapacity_(other.planeCapacity_),
      samplesSent_(other.samplesSent_) {}

AudioEncoder::~AudioEncoder() {
  swr_free(&resampler_);
  if (fifo_ != nullptr) av_audio_fifo_free(fifo_);
}

std::expected<void, std::string> AudioEncoder::encode(std::span<const float> stereo, const PacketSink& sink) {
  const int inputFrames = static_cast<int>(stereo.size() / 2);
  const int most = swr_get_out_samples(resampler_, inputFrames);
  if (most < 0) return std::unexpected("The audio could not be converted.");
  if (most == 0) return sendFrames(INT64_MAX, false, sink);
  if (most > planeCapacity_) {
    // Grown to the largest block seen, then reused.
    const int channels = codec_->ch_layout.nb_channels;
    const int planeCount = av_sample_fmt_is_planar(codec_->sample_fmt) ? channels : 1;
    const int size = av_samples_get_buffer_size(nullptr, channels, most, codec_->sample_fmt, 1);
    if (size < 0) return std::unexpected("The audio could not be converted.");
    planeMemory_.resize(static_cast<std::size_t>(size));
    planes_.assign(static_cast<std::size_t>(planeCount), nullptr);
    av_samples_fill_arrays(planes_.data(), nullptr, planeMemory_.data(), channels, most, codec_->sample_fmt, 1);
    planeCapacity_ = most;
  }
  const auto* input = reinterpret_cast<const std::uint8_t*>(stereo.data());
  const int converted = swr_convert(resampler_, planes_.data(), planeCapacity_, inputFrames > 0 ? &input : nullptr,
                                    inputFrames);
  if (converted < 0) return std::unexpected("The audio could not be converted.");
  if (converted > 0 && av_audio_fifo_write(fifo_, reinterpret_cast<void**>(planes_.data()), converted) < converted) {
    return std::unexpected("The audio could not be converted.");
  }
  return sendFrames(INT64_MAX, false, sink);
}

std::expected<void, std::string> AudioEncoder::sendFrames(std::int64_t limit, bool partialLast,
                                                          const PacketSink& sink) {
  const int size = codec_->frame_size > 0 ? codec_->frame_size : 1024;
  for (;;) {
    const std::int64_t allowed = std::min<std::int64_t>(av_audio_fifo_size(fifo_), limit - samplesSent_);
    if (allowed <= 0 || (allowed < size && !partialLast)) return {};
    const int count = static_cast<int>(std::min<std::int64_t>(allowed, size));
    AVFrame& frame = *frame_;
    if (av_frame_make_writable(&frame) < 0) return std::unexpected("The audio could not be converted.");
    frame.nb_samples = count;
    if (av_audio_fifo_read(fifo_, reinterpret_cast<void**>(frame.data), count) < count) {
      return std::unexpected("The audio could not be converted.");
    }
    frame.pts = samplesSent_;
    samplesSent_ += count;
    auto sent = encodeFrame(*codec_, &frame, *packet_, sink);
    frame.nb_samples = size;
    if (!sent) return sent;
    if (count < size) return {};  // a short frame is the last one the encoder takes
  }
}

std::expected<void, std::string> AudioEncoder::finish(std::int64_t totalSamples, const PacketSink& sink) {
  // What the resampler still holds, then silence up to the length asked for.
  if (auto drained = encode({}, sink); !drained) return drained;
  const std::int64_t missing = totalSamples - samplesSent_ - av_audio_fifo_size(fifo_);
  if (missing > 0) {
    const int channels = codec_->ch_layout.nb_channels;
    std::vector<std::uint8_t*> silence(static_cast<std::size_t>(channels));
    std::vector<std::uint8_t> memory;
    const int count = static_cast<int>(std::min<std::int64_t>(missing, 1 << 20));
    const int size = av_samples_get_buffer_size(nullptr, channels, count, codec_->sample_fmt, 1);
    if (size < 0) return std::unexpected("The audio could not be converted.");
    memory.resize(static_cast<std::size_t>(size));
    av_samples_fill_arrays(silence.data(), nullptr, memory.data(), channels, count, codec_->sample_fmt, 1);
    av_samples_set_silence(silence.data(), 0, count, channels, codec_->sample_fmt);
    av_audio_fifo_write(fifo_, reinterpret_cast<void**>(silence.data()), count);
  }
  if (auto sent = sendFrames(totalSamples, true, sink); !sent) return sent;
  return encodeFrame(*codec_, nullptr, *packet_, sink);
}

}  // namespace orvane::export_
