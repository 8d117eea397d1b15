#include "media/audio_decoder.hpp"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>

#include "media/ffmpeg_support.hpp"

namespace orvane::media {

namespace {

// A read this far ahead of what is decoded decodes on instead of seeking.
constexpr double kForwardSeconds = 1.0;

struct ResamplerCloser {
  void operator()(SwrContext* c) const { swr_free(&c); }
};

}  // namespace

struct AudioDecoder::State {
  std::filesystem::path path;
  ffmpeg::OpenedFile file;
  int streamIndex = -1;
  AVStream* stream = nullptr;
  ffmpeg::CodecPtr codec;
  ffmpeg::PacketPtr packet{av_packet_alloc()};
  ffmpeg::FramePtr frame{av_frame_alloc()};
  std::unique_ptr<SwrContext, ResamplerCloser> resampler;
  AudioStreamInfo info;
  AudioFormat output;
  std::int64_t origin = 0;

  // Converted samples not yet read: frames from fifoStart (in output frames
  // from the stream's start) on, interleaved, starting at fifoHead.
  std::vector<float> fifo;
  std::size_t fifoHead = 0;
  std::int64_t fifoStart = 0;
  bool positioned = false;  // fifoStart is known (a frame has been decoded since the last seek)
  bool flushed = false, endOfStream = false;
  std::int64_t seeks = 0;

  std::int64_t buffered() const {
    return static_cast<std::int64_t>((fifo.size() - fifoHead) / static_cast<std::size_t>(output.channelCount));
  }
  bool makeResampler();
  bool decodeMore();
  void append(const std::uint8_t** data, int count);
  bool seekTo(std::int64_t position);
  void dropBefore(std::int64_t position);
};

bool AudioDecoder::State::makeResampler() {
  SwrContext* raw = nullptr;
  AVChannelLayout outLayout{};
  av_channel_layout_default(&outLayout, output.channelCount);
  AVChannelLayout inLayout{};
  if (av_channel_layout_copy(&inLayout, &codec->ch_layout) < 0 || inLayout.order == AV_CHANNEL_ORDER_UNSPEC) {
    av_channel_layout_uninit(&inLayout);
    av_channel_layout_default(&inLayout, codec->ch_layout.nb_channels);
  }
  const int made = swr_alloc_set_opts2(&raw, &outLayout, AV_SAMPLE_FMT_FLT, output.sampleRate, &inLayout,
                                       codec->sample_fmt, codec->sample_rate, 0, nullptr);
  av_channel_layout_uninit(&inLayout);
  av_channel_layout_uninit(&outLayout);
  if (made < 0 || !raw) return false;
  resampler.reset(raw);
  return swr_init(raw) >= 0;
}

void AudioDecoder::State::append(const std::uint8_t** data, int count) {
  if (fifoHead > 0 && fifoHead * 2 >= fifo.size()) {
    fifo.erase(fifo.begin(), fifo.begin() + static_cast<std::ptrdiff_t>(fifoHead));
    fifoHead = 0;
  }
  const int room = swr_get_out_samples(resampler.get(), count);
  if (room <= 0) return;
  const std::size_t old = fifo.size();
  fifo.resize(old + static_cast<std::size_t>(room) * output.channelCount);
  std::uint8_t* out = reinterpret_cast<std::uint8_t*>(fifo.data() + old);
  const int made = swr_convert(resampler.get(), &out, room, data, count);
  fifo.resize(old + static_cast<std::size_t>(std::max(made, 0)) * output.channelCount);
}

// Decodes one more frame into the fifo; false at the end of the stream.
bool AudioDecoder::State::decodeMore() {
  if (endOfStream) return false;
  file.deadline->extend();
  if (ffmpeg::receiveFrame(*file.format, *codec, streamIndex, *packet, *frame, flushed)) {
    // The format of a stream may change midway; the resampler follows.
    const bool changed = frame->sample_rate != codec->sample_rate || frame->format != codec->sample_fmt;
    if (changed) {
      codec->sample_rate = frame->sample_rate;
      codec->sample_fmt = static_cast<AVSampleFormat>(frame->format);
    }
    if (!changed || makeResampler()) {
      if (!positioned) {
        const std::int64_t pts = frame->best_effort_timestamp;
        const double seconds = pts == AV_NOPTS_VALUE ? 0.0 : (pts - origin) * av_q2d(stream->time_base);
        fifoStart = std::llround(seconds * output.sampleRate) -
                    swr_get_delay(resampler.get(), output.sampleRate) - buffered();
        positioned = true;
      }
      append(const_cast<const std::uint8_t**>(frame->extended_data), frame->nb_samples);
      av_frame_unref(frame.get());
      return true;
    }
  }
  // What the resampler still holds comes out at the end.
  if (resampler && positioned) append(nullptr, 0);
  endOfStream = true;
  return buffered() > 0;
}

bool AudioDecoder::State::seekTo(std::int64_t position) {
  ++seeks;
  file.deadline->extend();
  // A little early, so that the decoder has settled by the time asked for.
  const double seconds = std::max(0.0, static_cast<double>(position) / output.sampleRate - 0.1);
  const std::int64_t ts = origin + static_cast<std::int64_t>(seconds / av_q2d(stream->time_base));
  AVFormatContext* format = file.format.get();
  if (avformat_seek_file(format, streamIndex, INT64_MIN, ts, ts, 0) < 0 &&
      av_seek_frame(format, streamIndex, ts, AVSEEK_FLAG_BACKWARD) < 0 &&
      av_seek_frame(format, streamIndex, origin, AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY) < 0) {
    return false;
  }
  avcodec_flush_buffers(codec.get());
  if (!makeResampler()) return false;
  fifo.clear();
  fifoHead = 0;
  positioned = flushed = endOfStream = false;
  return true;
}

void AudioDecoder::State::dropBefore(std::int64_t position) {
  const std::int64_t drop = std::min(position - fifoStart, buffered());
  if (drop <= 0) return;
  fifoHead += static_cast<std::size_t>(drop) * output.channelCount;
  fifoStart += drop;
}

AudioDecoder::AudioDecoder(std::unique_ptr<State> state) : state_(std::move(state)) {}
AudioDecoder::~AudioDecoder() = default;

std::expected<std::unique_ptr<AudioDecoder>, MediaError> AudioDecoder::open(const std::filesystem::path& path,
                                                                            AudioFormat output) {
  if (output.sampleRate < 8000 || output.sampleRate > 384000 || output.channelCount < 1 ||
      output.channelCount > 8) {
    return std::unexpected(MediaError::unreadable);
  }
  auto file = ffmpeg::openFile(path);
  if (!file) return std::unexpected(file.error());
  auto state = std::make_unique<State>();
  if (!state->packet || !state->frame) return std::unexpected(MediaError::outOfMemory);
  state->path = path;
  state->output = output;
  state->file = std::move(*file);
  AVFormatContext* format = state->file.format.get();
  state->streamIndex = ffmpeg::firstUsableStream(*format, AVMEDIA_TYPE_AUDIO);
  if (state->streamIndex < 0) return std::unexpected(MediaError::noAudioStream);
  for (unsigned i = 0; i < format->nb_streams; ++i) {
    format->streams[i]->discard = static_cast<int>(i) == state->streamIndex ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
  }
  state->stream = format->streams[state->streamIndex];
  state->codec = ffmpeg::openDecoder(*state->stream, false);
  if (!state->codec || !state->makeResampler()) return std::unexpected(MediaError::noAudioStream);
  state->origin = ffmpeg::streamOrigin(*state->stream);
  state->info.sampleRate = state->codec->sample_rate;
  state->info.channelCount = state->codec->ch_layout.nb_channels;
  state->info.duration = ffmpeg::durationOf(*format, *state->stream);
  state->info.codecName = avcodec_get_name(state->stream->codecpar->codec_id);
  return std::unique_ptr<AudioDecoder>(new AudioDecoder(std::move(state)));
}

const std::filesystem::path& AudioDecoder::path() const { return state_->path; }
const AudioStreamInfo& AudioDecoder::info() const { return state_->info; }
AudioFormat AudioDecoder::outputFormat() const { return state_->output; }
std::int64_t AudioDecoder::seekCount() const { return state_->seeks; }

std::expected<void, MediaError> AudioDecoder::read(const core::OVTime& start, std::span<float> out) {
  State& s = *state_;
  const int channels = s.output.channelCount;
  const std::int64_t frames = static_cast<std::int64_t>(out.size() / static_cast<std::size_t>(channels));
  std::int64_t position = std::llround(start.seconds() * s.output.sampleRate);
  const bool sequential = s.positioned && position >= s.fifoStart &&
                          position <= s.fifoStart + s.buffered() + std::llround(kForwardSeconds * s.output.sampleRate);
  if (!sequential && !(s.endOfStream && s.positioned && position >= s.fifoStart)) {
    if (!s.seekTo(position)) return std::unexpected(MediaError::decodeFailed);
  }
  std::int64_t written = 0;
  while (written < frames) {
    const std::int64_t want = position + written;
    if (!s.positioned || s.fifoStart + s.buffered() <= want) {
      if (!s.decodeMore()) {
        if (s.buffered() == 0 && (!s.positioned || s.fifoStart + s.buffered() <= want)) break;
      }
      continue;
    }
    if (want < s.fifoStart) {
      // Before the stream's first sample: silence.
      const std::int64_t gap = std::min(frames - written, s.fifoStart - want);
      std::fill_n(out.data() + written * channels, gap * channels, 0.0f);
      written += gap;
      continue;
    }
    s.dropBefore(want);
    const std::int64_t take = std::min(frames - written, s.buffered());
    std::memcpy(out.data() + written * channels, s.fifo.data() + s.fifoHead,
                static_cast<std::size_t>(take * channels) * sizeof(float));
    s.fifoHead += static_cast<std::size_t>(take * channels);
    s.fifoStart += take;
    written += take;
  }
  std::fill(out.begin() + written * channels, out.end(), 0.0f);
  return {};
}

std::expected<std::vector<float>, MediaError> AudioDecoder::read(const core::OVTimeRange& range) {
  const std::int64_t frames = std::max<std::int64_t>(0, std::llround(range.duration.seconds() * state_->output.sampleRate));
  if (frames > std::int64_t{1} << 31) return std::unexpected(MediaError::outOfMemory);
  std::vector<float> samples(static_cast<std::size_t>(frames) * state_->output.channelCount);
  if (auto done = read(range.start, samples); !done) return std::unexpected(done.error());
  return samples;
}

}  // namespace orvane::media
