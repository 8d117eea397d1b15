#pragma once
// Small media files for the media tests, written with FFmpeg's encoders and
// Qt into a temporary folder: video clips whose frame number is drawn into
// every picture as ten large black or white blocks (bit 0 at the top left,
// row by row, five to a row), so that a decoded picture says which frame it
// is; flat colour clips for colour checks; tones in WAV, MP3 and M4A; stills
// with EXIF orientation; SVG and PDF. Each writer returns an empty string
// on success, else what went wrong.

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/frame_rate.hpp"
#include "core/geometry.hpp"
#include "core/media_asset.hpp"
#include "render/image.hpp"

namespace orvane::media::testing {

// A folder of its own under the system's temporary folder, removed with
// everything in it when this goes.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

enum class VideoCodec { h264, hevc };

struct VideoClipSpec {
  int width = 320;
  int height = 240;
  core::FrameRate rate = core::FrameRate::fps30;
  int frameCount = 30;
  VideoCodec codec = VideoCodec::h264;
  // Key frames every this many frames (0: the encoder's choice).
  int keyFrameInterval = 0;
  // Frame times in seconds for a variable rate clip; when set they replace
  // rate and frameCount (rate stays the nominal hint).
  std::vector<double> frameTimes;
  // A display matrix rotating the picture by this many degrees clockwise
  // for display, as phones write it.
  std::optional<int> clockwiseRotation;
  // A flat colour instead of the frame number (sRGB values 0 ... 1), with
  // the matrix and range it is encoded with; tagged or not in the stream.
  std::optional<core::OVColor> fill;
  bool bt709 = false;
  bool fullRange = false;
  bool tagColour = false;
  // Texture around the blocks (a moving ramp and fine noise), so that a
  // large clip costs what camera footage costs to decode; blocks are kept
  // in the middle two thirds of each block.
  bool busyPicture = false;
  // An AAC tone of 440 Hz beside the picture.
  bool withAudio = false;
  // Encoder speed: "veryfast" keeps B-frames, so frames are reordered.
  std::string preset = "veryfast";
};

// Writes a clip into an MP4 (or MOV/MKV by the extension of path).
std::string writeVideoClip(const std::filesystem::path& path, const VideoClipSpec& spec);

// The record that importing the file writes; an empty one (named after the
// file) when import refuses it, for the caller's checks to fail on.
core::MediaAsset importedAsset(const std::filesystem::path& path);

// The frame number drawn into a decoded picture of a clip of the default
// layout; none when a block is neither clearly black nor clearly white.
std::optional<int> readFrameNumber(const render::Image& picture);

enum class AudioCodec { pcm16, mp3, aac };

struct ToneSpec {
  AudioCodec codec = AudioCodec::pcm16;
  int sampleRate = 48000;
  int channels = 2;
  double seconds = 1.0;
  // The left channel (and a mono one) sounds frequency, the right one
  // twice it; amplitude 0.5.
  double frequency = 440.0;
};

// Writes a tone as WAV, MP3 or M4A (as the codec says; the path's extension
// should agree).
std::string writeTone(const std::filesystem::path& path, const ToneSpec& spec);

// A still of width × height in one colour, in the format of the extension.
std::string writeStill(const std::filesystem::path& path, int width, int height, core::OVColor colour);
// A JPEG of width × height stored as is, carrying EXIF orientation tag.
std::string writeJpegWithOrientation(const std::filesystem::path& path, int width, int height, int orientation);
// An SVG declaring width × height.
std::string writeSvg(const std::filesystem::path& path, double width, double height);
// A one-page PDF of width × height points.
std::string writePdf(const std::filesystem::path& path, double widthPoints, double heightPoints);
// A Matroska file with one subtitle stream and nothing else.
std::string writeSubtitlesOnly(const std::filesystem::path& path);
// A file holding bytes as given.
std::string writeBytes(const std::filesystem::path& path, const std::string& bytes);

}  // namespace orvane::media::testing
