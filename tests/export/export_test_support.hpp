#pragma once
// What the export tests learn from an exported file, read back through
// FFmpeg's own demuxers and decoders: the container, each stream's codec and
// format, frame and sample counts, chosen pictures as 8-bit RGBA (rows from
// the top, straight alpha) and the loudness of the audio.

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "render/image.hpp"

namespace orvane::export_::testing {

struct DecodedVideo {
  std::string codec;        // FFmpeg's codec name, "h264", "prores", "vp9"
  std::string pixelFormat;  // of the decoded frames
  int width = 0;
  int height = 0;
  int frameCount = 0;
  double seconds = 0;       // the stream's duration
  double firstFrameSeconds = -1;  // presentation time of the first decoded frame
  std::map<std::string, std::string> tags;  // keys in lower case
  std::map<int, std::vector<std::uint8_t>> pictures;  // frame index to RGBA
};

struct DecodedAudio {
  std::string codec;
  int channels = 0;
  int sampleRate = 0;
  std::int64_t samples = 0;  // decoded per channel
  double rms = 0;            // of the first channel over the middle half
  // Presentation time of the first sample of the first channel louder than
  // 0.05, as a player would sound it; none for silence.
  std::optional<double> firstSoundSeconds;
};

struct DecodedFile {
  std::string formatName;  // the demuxer's
  double seconds = 0;      // the container's duration
  std::optional<DecodedVideo> video;
  std::optional<DecodedAudio> audio;
};

// Decodes everything in path, keeping the pictures of the frames asked for.
// videoDecoder names the decoder to use instead of FFmpeg's default one.
// None when the file can't be opened.
std::optional<DecodedFile> decodeFile(const std::filesystem::path& path, const std::set<int>& keepFrames = {},
                                      const char* videoDecoder = nullptr);

// The composed picture as 8-bit RGBA rows from the top, premultiplied or not.
std::vector<std::uint8_t> rgbaOf(const render::Image& picture, int width, int height, bool straight);

// Peak signal to noise ratio of two RGBA pictures in dB over red, green and
// blue; alpha multiplied in first when premultiply is set (so that the
// colour of invisible pixels does not count).
double psnr(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b, bool premultiply = false);

// Whether the file's "moov" box comes before its "mdat" box (faststart).
bool movieHeaderFirst(const std::filesystem::path& path);

}  // namespace orvane::export_::testing
