#include "export/muxer.hpp"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/error.h>
}

namespace orvane::export_ {

std::string ffmpegErrorSentence(int code) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  if (av_strerror(code, text, sizeof text) < 0 || text[0] == '\0') return "Unknown error.";
  std::string sentence = text;
  if (sentence.back() != '.') sentence += '.';
  return sentence;
}

std::expected<Muxer, std::string> Muxer::make(const ContainerSettings& container, const std::filesystem::path& path) {
  Muxer muxer;
  muxer.container_ = container;
  muxer.path_ = path;
  const int made =
      avformat_alloc_output_context2(&muxer.format_, nullptr, container.muxerName.c_str(), path.string().c_str());
  if (made < 0 || muxer.format_ == nullptr) return std::unexpected(ffmpegErrorSentence(made));
  return muxer;
}

Muxer::Muxer(Muxer&& other) noexcept
    : format_(std::exchange(other.format_, nullptr)),
      container_(std::move(other.container_)),
      path_(std::move(other.path_)),
      fileOpen_(std::exchange(other.fileOpen_, false)),
      created_(std::exchange(other.created_, false)),
      finished_(other.finished_) {}

Muxer::~Muxer() { discard(); }

bool Muxer::wantsGlobalHeader() const { return (format_->oformat->flags & AVFMT_GLOBALHEADER) != 0; }

std::expected<int, std::string> Muxer::addStream(const AVCodecContext& encoder, const std::string& codecTag) {
  AVStream* stream = avformat_new_stream(format_, nullptr);
  if (stream == nullptr) return std::unexpected("Unknown error.");
  const int copied = avcodec_parameters_from_context(stream->codecpar, &encoder);
  if (copied < 0) return std::unexpected(ffmpegErrorSentence(copied));
  stream->time_base = encoder.time_base;
  if (encoder.codec_type == AVMEDIA_TYPE_VIDEO) stream->avg_frame_rate = encoder.framerate;
  if (codecTag.size() == 4) {
    stream->codecpar->codec_tag = MKTAG(codecTag[0], codecTag[1], codecTag[2], codecTag[3]);
  }
  return stream->index;
}

void Muxer::setStreamMetadata(int stream, const char* key, const char* value) {
  av_dict_set(&format_->streams[stream]->metadata, key, value, 0);
}

std::expected<void, std::string> Muxer::open() {
  if (!(format_->oformat->flags & AVFMT_NOFILE)) {
    const int opened = avio_open(&format_->pb, path_.string().c_str(), AVIO_FLAG_WRITE);
    if (opened < 0) return std::unexpected(ffmpegErrorSentence(opened));
  }
  fileOpen_ = true;
  created_ = true;
  AVDictionary* options = nullptr;
  for (const auto& [key, value] : container_.options) av_dict_set(&options, key.c_str(), value.c_str(), 0);
  const int written = avformat_write_header(format_, &options);
  av_dict_free(&options);
  if (written < 0) return std::unexpected(ffmpegErrorSentence(written));
  return {};
}

std::expected<void, std::string> Muxer::write(int stream, AVPacket& packet, AVRational encoderTimeBase) {
  std::scoped_lock guard(lock_);
  packet.stream_index = stream;
  av_packet_rescale_ts(&packet, encoderTimeBase, format_->streams[stream]->time_base);
  const int written = av_interleaved_write_frame(format_, &packet);
  if (written < 0) return std::unexpected(ffmpegErrorSentence(written));
  return {};
}

std::expected<void, std::string> Muxer::finish() {
  std::scoped_lock guard(lock_);
  const int trailer = av_write_trailer(format_);
  int closed = 0;
  if (!(format_->oformat->flags & AVFMT_NOFILE)) closed = avio_closep(&format_->pb);
  fileOpen_ = false;
  if (trailer < 0) {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
    return std::unexpected(ffmpegErrorSentence(trailer));
  }
  if (closed < 0) {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
    return std::unexpected(ffmpegErrorSentence(closed));
  }
  finished_ = true;
  return {};
}

void Muxer::discard() {
  if (format_ == nullptr) return;
  if (fileOpen_) {
    if (!(format_->oformat->flags & AVFMT_NOFILE)) avio_closep(&format_->pb);
    fileOpen_ = false;
  }
  // Only a file this muxer created is removed; before open() there is none.
  if (created_ && !finished_) {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  avformat_free_context(format_);
  format_ = nullptr;
}

}  // namespace orvane::export_
