#include "media/video_decoder.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "media/ffmpeg_support.hpp"
#include "media/frame_converter.hpp"
#include "media/yuv_picture.hpp"
#include "render/rgba8.hpp"

namespace orvane::media {

namespace {

// Without an index, a jump shorter than this decodes on instead of seeking.
constexpr double kForwardWithoutIndexSeconds = 2.0;
// A jump of up to this many frames decodes on: cheaper than a seek, which
// also drops the frames in flight in the codec's threads.
constexpr std::int64_t kForwardFrames = 4;

}  // namespace

struct VideoDecoder::State {
  std::filesystem::path path;
  ffmpeg::OpenedFile file;
  int streamIndex = -1;
  AVStream* stream = nullptr;
  ffmpeg::CodecPtr codec;
  ffmpeg::PacketPtr packet{av_packet_alloc()};
  VideoStreamInfo info;
  std::int64_t origin = 0;         // ticks where the stream's time starts
  std::int64_t nominalTicks = 1;   // one frame at the nominal rate
  std::int64_t tolerance = 0;      // ticks a frame may start after the time asked for

  // The frame on screen (current) and the one after it (pending), both
  // decoded; times in ticks from the origin.
  ffmpeg::FramePtr current{av_frame_alloc()}, pending{av_frame_alloc()};
  bool hasCurrent = false, hasPending = false;
  bool currentIsFirst = false;  // current is the stream's first frame
  std::int64_t currentTicks = 0, pendingTicks = 0;
  bool flushed = false;       // the demuxer ran out and the codec was told
  bool endOfStream = false;   // the codec has given its last frame

  FrameConverter converter;
  std::vector<std::uint8_t> bgra;
  std::optional<VideoFrame> converted;  // the picture of current, once made

  std::int64_t seeks = 0, decoded = 0;

  // The next frame from the codec into frame; false at the end or when the
  // stream is broken beyond use.
  bool decodeInto(AVFrame* frame, std::int64_t previousTicks, std::int64_t& ticks);
  bool seekTo(std::int64_t target);
  bool advanceTo(std::int64_t target);
  bool keyFrameLiesAhead(std::int64_t target) const;
  std::expected<void, MediaError> position(std::int64_t target);
  core::OVTime currentDuration() const;
};

bool VideoDecoder::State::decodeInto(AVFrame* frame, std::int64_t previousTicks, std::int64_t& ticks) {
  if (endOfStream) return false;
  file.deadline->extend();
  if (ffmpeg::receiveFrame(*file.format, *codec, streamIndex, *packet, *frame, flushed)) {
    ++decoded;
    const std::int64_t pts = frame->best_effort_timestamp;
    ticks = pts == AV_NOPTS_VALUE ? previousTicks + nominalTicks : pts - origin;
    return true;
  }
  endOfStream = true;
  return false;
}

bool VideoDecoder::State::advanceTo(std::int64_t target) {
  for (;;) {
    if (!hasPending) {
      hasPending = decodeInto(pending.get(), currentTicks, pendingTicks);
      if (!hasPending) return hasCurrent;
    }
    if (hasCurrent && pendingTicks > target) return true;
    std::swap(current, pending);
    currentTicks = pendingTicks;
    hasCurrent = true;
    hasPending = false;
    currentIsFirst = false;
    converted.reset();
  }
}

bool VideoDecoder::State::seekTo(std::int64_t target) {
  std::int64_t seekTicks = std::max<std::int64_t>(target, 0);
  std::int64_t backoff = std::max<std::int64_t>(1, av_rescale_q(1, AVRational{1, 1}, stream->time_base));
  for (int attempt = 0;; ++attempt) {
    ++seeks;
    file.deadline->extend();
    const std::int64_t ts = origin + seekTicks;
    AVFormatContext* format = file.format.get();
    if (avformat_seek_file(format, streamIndex, INT64_MIN, ts, ts, 0) < 0 &&
        av_seek_frame(format, streamIndex, ts, AVSEEK_FLAG_BACKWARD) < 0 &&
        avformat_seek_file(format, streamIndex, INT64_MIN, ts, INT64_MAX, 0) < 0) {
      return false;
    }
    avcodec_flush_buffers(codec.get());
    hasCurrent = hasPending = flushed = endOfStream = false;
    converted.reset();
    hasCurrent = decodeInto(current.get(), seekTicks - nominalTicks, currentTicks);
    if (!hasCurrent) return false;
    currentIsFirst = seekTicks <= 0;
    // A key frame whose decode time lies before the target may still show
    // after it (reordered frames): then the frame wanted is in the group
    // before, so go back further.
    if (currentTicks <= target || seekTicks <= 0 || attempt >= 6) return true;
    seekTicks = std::max<std::int64_t>(0, seekTicks - backoff);
    backoff *= 2;
  }
}

bool VideoDecoder::State::keyFrameLiesAhead(std::int64_t target) const {
  // Measured from the last frame decoded: the codec has read that far.
  const std::int64_t reached = hasPending ? pendingTicks : currentTicks;
  if (target - reached <= kForwardFrames * nominalTicks) return false;
  AVStream* s = stream;
  if (avformat_index_get_entries_count(s) > 0) {
    const int index = av_index_search_timestamp(s, origin + target, AVSEEK_FLAG_BACKWARD);
    if (index < 0) return false;
    const AVIndexEntry* entry = avformat_index_get_entry(s, index);
    return entry && entry->timestamp - origin > reached;
  }
  return (target - reached) * av_q2d(s->time_base) > kForwardWithoutIndexSeconds;
}

std::expected<void, MediaError> VideoDecoder::State::position(std::int64_t target) {
  if (hasCurrent && currentTicks <= target) {
    if ((hasPending && pendingTicks > target) || (!hasPending && endOfStream)) return {};
    if (!keyFrameLiesAhead(target)) {
      if (advanceTo(target)) return {};
      return std::unexpected(MediaError::decodeFailed);
    }
  }
  // Before the first frame: the first frame, which is on hand.
  if (hasCurrent && currentIsFirst && currentTicks > target) return {};
  if (!seekTo(target)) return std::unexpected(MediaError::decodeFailed);
  if (!advanceTo(target)) return std::unexpected(MediaError::decodeFailed);
  return {};
}

core::OVTime VideoDecoder::State::currentDuration() const {
  const std::int64_t ticks = hasPending && pendingTicks > currentTicks ? pendingTicks - currentTicks : nominalTicks;
  return ffmpeg::toTime(ticks, stream->time_base);
}

VideoDecoder::VideoDecoder(std::unique_ptr<State> state) : state_(std::move(state)) {}
VideoDecoder::~VideoDecoder() = default;

std::expected<std::unique_ptr<VideoDecoder>, MediaError> VideoDecoder::open(const std::filesystem::path& path) {
  auto file = ffmpeg::openFile(path);
  if (!file) return std::unexpected(file.error());
  auto state = std::make_unique<State>();
  if (!state->packet || !state->current || !state->pending) return std::unexpected(MediaError::outOfMemory);
  state->path = path;
  state->file = std::move(*file);
  AVFormatContext* format = state->file.format.get();
  state->streamIndex = ffmpeg::firstUsableStream(*format, AVMEDIA_TYPE_VIDEO);
  if (state->streamIndex < 0) return std::unexpected(MediaError::noVideoStream);
  for (unsigned i = 0; i < format->nb_streams; ++i) {
    format->streams[i]->discard = static_cast<int>(i) == state->streamIndex ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
  }
  AVStream* stream = format->streams[state->streamIndex];
  state->stream = stream;
  state->codec = ffmpeg::openDecoder(*stream, true);
  if (!state->codec) return std::unexpected(MediaError::noVideoStream);
  state->origin = ffmpeg::streamOrigin(*stream);
  VideoStreamInfo& info = state->info;
  info.codedWidth = stream->codecpar->width;
  info.codedHeight = stream->codecpar->height;
  info.geometry = ffmpeg::geometryOf(*stream);
  info.nominalFrameRate = ffmpeg::nominalFrameRate(*stream);
  info.duration = ffmpeg::durationOf(*format, *stream);
  info.codecName = avcodec_get_name(stream->codecpar->codec_id);
  const AVRational rate = info.nominalFrameRate
                              ? AVRational{info.nominalFrameRate->numerator, info.nominalFrameRate->denominator}
                              : AVRational{30, 1};
  state->nominalTicks = std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(rate), stream->time_base));
  const std::int64_t halfMillisecond = av_rescale_q_rnd(1, AVRational{1, 2000}, stream->time_base, AV_ROUND_UP);
  state->tolerance = std::min(std::max<std::int64_t>(1, halfMillisecond), state->nominalTicks / 4);
  return std::unique_ptr<VideoDecoder>(new VideoDecoder(std::move(state)));
}

const std::filesystem::path& VideoDecoder::path() const { return state_->path; }
const VideoStreamInfo& VideoDecoder::info() const { return state_->info; }
std::int64_t VideoDecoder::seekCount() const { return state_->seeks; }
std::int64_t VideoDecoder::decodedFrameCount() const { return state_->decoded; }

std::expected<VideoFrame, MediaError> VideoDecoder::frameAt(const core::OVTime& t) {
  State& s = *state_;
  const std::int64_t target = ffmpeg::toTicks(t, s.stream->time_base) + s.tolerance;
  if (auto positioned = s.position(target); !positioned) return std::unexpected(positioned.error());
  if (!s.converted && isPlanar420(*s.current) && s.current->width == std::lround(s.info.geometry.naturalSize.width) &&
      s.current->height == std::lround(s.info.geometry.naturalSize.height)) {
    auto image = yuvPicture(*s.current);
    if (!image) return std::unexpected(MediaError::outOfMemory);
    s.converted = VideoFrame{std::move(*image), ffmpeg::toTime(s.currentTicks, s.stream->time_base),
                             s.currentDuration()};
  }
  if (!s.converted) {
    const int width = std::max(1, static_cast<int>(std::lround(s.info.geometry.naturalSize.width)));
    const int height = std::max(1, static_cast<int>(std::lround(s.info.geometry.naturalSize.height)));
    const std::size_t bytesPerRow = static_cast<std::size_t>(width) * 4;
    s.bgra.resize(bytesPerRow * height);
    if (!s.converter.toBgra(*s.current, width, height, s.bgra, static_cast<int>(bytesPerRow))) {
      return std::unexpected(MediaError::decodeFailed);
    }
    auto image = render::imageFromRgba8(s.bgra, width, height, bytesPerRow,
                                        {render::AlphaForm::premultiplied, render::ChannelOrder::bgra});
    if (!image) return std::unexpected(MediaError::outOfMemory);
    s.converted = VideoFrame{std::move(*image), ffmpeg::toTime(s.currentTicks, s.stream->time_base),
                             s.currentDuration()};
  }
  return *s.converted;
}

std::expected<VideoFrameBgra, MediaError> VideoDecoder::bgraFrameAt(const core::OVTime& t, int maxWidth,
                                                                    int maxHeight) {
  State& s = *state_;
  if (maxWidth <= 0 || maxHeight <= 0) return std::unexpected(MediaError::decodeFailed);
  const std::int64_t target = ffmpeg::toTicks(t, s.stream->time_base) + s.tolerance;
  if (auto positioned = s.position(target); !positioned) return std::unexpected(positioned.error());
  const double w = s.info.geometry.naturalSize.width, h = s.info.geometry.naturalSize.height;
  const double scale = std::min({1.0, maxWidth / w, maxHeight / h});
  VideoFrameBgra frame;
  frame.width = std::max(1, static_cast<int>(std::lround(w * scale)));
  frame.height = std::max(1, static_cast<int>(std::lround(h * scale)));
  frame.time = ffmpeg::toTime(s.currentTicks, s.stream->time_base);
  frame.pixels.resize(static_cast<std::size_t>(frame.width) * frame.height * 4);
  if (!s.converter.toBgra(*s.current, frame.width, frame.height, frame.pixels, frame.width * 4)) {
    return std::unexpected(MediaError::decodeFailed);
  }
  return frame;
}

}  // namespace orvane::media
