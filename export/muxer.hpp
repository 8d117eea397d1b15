#pragma once
// The output file of one export: FFmpeg's muxer for the container, the
// streams of the encoders, and packets written interleaved. The session
// makes it, adds its streams and opens the file on one thread; afterwards
// the two pumps write packets from their own threads, which the muxer
// serialises with its lock. Until finish() succeeds, discard() (or the
// destructor) closes the file and deletes it.

#include <expected>
#include <filesystem>
#include <mutex>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include "export/export_settings.hpp"

namespace orvane::export_ {

// FFmpeg's text for an error code as a sentence ("Permission denied.").
std::string ffmpegErrorSentence(int code);

class Muxer {
 public:
  // The container without a file yet. Fails with a sentence when FFmpeg has
  // no such muxer.
  static std::expected<Muxer, std::string> make(const ContainerSettings& container, const std::filesystem::path& path);
  Muxer(Muxer&& other) noexcept;
  Muxer& operator=(Muxer&&) = delete;
  ~Muxer();

  // Whether encoders must put their headers in the stream's extradata.
  bool wantsGlobalHeader() const;
  // A stream carrying what the opened encoder makes; its index. codecTag is
  // the four-character tag to store (empty for the muxer's choice).
  std::expected<int, std::string> addStream(const AVCodecContext& encoder, const std::string& codecTag = {});
  void setStreamMetadata(int stream, const char* key, const char* value);

  // Creates the file and writes the header with the container's options.
  std::expected<void, std::string> open();
  // A packet of the stream, its times in the encoder's time base. Any thread.
  std::expected<void, std::string> write(int stream, AVPacket& packet, AVRational encoderTimeBase);
  // The trailer; the file is complete and stays.
  std::expected<void, std::string> finish();
  // Closes and deletes whatever was written.
  void discard();

 private:
  Muxer() = default;

  AVFormatContext* format_ = nullptr;
  ContainerSettings container_;
  std::filesystem::path path_;
  bool fileOpen_ = false;
  bool created_ = false;
  bool finished_ = false;
  std::mutex lock_;  // guards format_ while the pumps write
};

}  // namespace orvane::export_
