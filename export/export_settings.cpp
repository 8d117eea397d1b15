#include "export/export_settings.hpp"

#include <cmath>
#include <limits>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace orvane::export_ {

namespace {

struct CodecInfo {
  std::string_view raw;
  std::string_view display;
  std::string_view description;
  std::string_view shortName;  // for sentences about availability
  std::string_view encoder;
  bool alpha;
};

const CodecInfo& info(ExportCodec codec) {
  static const CodecInfo table[] = {
      {"h264", "H.264 · MP4",
       "Universal playback. Transparent areas are filled with the background colour.", "H.264", "libx264", false},
      {"proRes4444", "ProRes 4444 · MOV (alpha)",
       "Lossless-quality with transparency preserved. Best for use in other editing apps.", "ProRes 4444",
       "prores_ks", true},
      {"hevcWithAlpha", "HEVC · MOV (alpha)", "Compressed with transparency preserved. Much smaller than ProRes.",
       "HEVC with alpha", "libx265", true},
      {"vp9Alpha", "VP9 · WebM (alpha)",
       "Compressed with transparency preserved. Plays in web browsers; smaller than ProRes.", "VP9 with alpha",
       "libvpx-vp9", true},
  };
  return table[static_cast<int>(codec)];
}

struct ChannelsInfo {
  std::string_view raw;
  std::string_view display;
  std::string_view description;
};

const ChannelsInfo& info(ExportMediaChannels channels) {
  static const ChannelsInfo table[] = {
      {"videoAndAudio", "Video + Audio", "Picture and sound in one file"},
      {"videoOnly", "Video Only", "Silent video (no audio track)"},
      {"audioOnly", "Audio Only", "Sound only (M4A / AAC)"},
  };
  return table[static_cast<int>(channels)];
}

// Side / 2 rounded half away from zero, × 2. Non-finite and tiny sides give
// the smallest even size; absurd ones are capped so the int cannot overflow.
int evenSide(double side) {
  constexpr double kLargestHalf = 1 << 24;
  if (!std::isfinite(side)) return 2;
  const double half = std::round(side / 2);
  if (half < 1) return 2;
  return static_cast<int>(std::min(half, kLargestHalf)) * 2;
}

bool hasAlpha(AVPixelFormat format) {
  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
  return descriptor && (descriptor->flags & AV_PIX_FMT_FLAG_ALPHA);
}

bool encoderTakesAlpha(const AVCodec* encoder) {
  if (!encoder->pix_fmts) return false;
  for (const AVPixelFormat* f = encoder->pix_fmts; *f != AV_PIX_FMT_NONE; ++f) {
    if (hasAlpha(*f)) return true;
  }
  return false;
}

// The alpha pixel format the installed libx265 accepts (newer FFmpeg builds
// have one); yuva420p names the one they use when probing finds none.
std::string hevcAlphaPixelFormat() {
  const AVCodec* encoder = avcodec_find_encoder_by_name("libx265");
  if (encoder && encoder->pix_fmts) {
    for (const AVPixelFormat* f = encoder->pix_fmts; *f != AV_PIX_FMT_NONE; ++f) {
      if (hasAlpha(*f)) return av_get_pix_fmt_name(*f);
    }
  }
  return "yuva420p";
}

// Whether the installed encoder has a private option of this name.
bool encoderHasOption(std::string_view encoderName, const char* option) {
  const AVCodec* encoder = avcodec_find_encoder_by_name(std::string(encoderName).c_str());
  if (!encoder || !encoder->priv_class) return false;
  const AVClass* privClass = encoder->priv_class;
  return av_opt_find(&privClass, option, nullptr, 0, AV_OPT_SEARCH_FAKE_OBJ) != nullptr;
}

// The integer part of value, held inside 64 bits, so that a bitrate typed or
// decoded as anything converts without overflow; not a number gives 0, which
// leaves the encoder its own rate.
std::int64_t wholeNumber(double value) {
  constexpr double kTwoTo63 = 0x1p63;
  if (std::isnan(value)) return 0;
  if (value >= kTwoTo63) return std::numeric_limits<std::int64_t>::max();
  if (value < -kTwoTo63) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

// Bitrate, rate and key-frame spacing shared by the long-GOP codecs.
void setCompression(VideoEncoderSettings& video, const ExportSettings& settings) {
  const double fps = settings.frameRate.fps();
  video.averageBitRate = wholeNumber(settings.videoBitrateMbps * 1'000'000);
  video.expectedFrameRate = static_cast<int>(std::lround(fps));
  video.maxKeyFrameInterval = static_cast<int>(std::lround(fps * 2));
  video.allowFrameReordering = false;
}

}  // namespace

std::string_view rawValue(ExportCodec codec) { return info(codec).raw; }
std::string_view displayName(ExportCodec codec) { return info(codec).display; }
std::string_view description(ExportCodec codec) { return info(codec).description; }
bool preservesAlpha(ExportCodec codec) { return info(codec).alpha; }

std::optional<ExportCodec> exportCodecFromRaw(std::string_view raw) {
  for (ExportCodec codec : allExportCodecs) {
    if (rawValue(codec) == raw) return codec;
  }
  return std::nullopt;
}

std::optional<std::string> unavailableReason(ExportCodec codec) {
  const CodecInfo& codecInfo = info(codec);
  const std::string name(codecInfo.shortName);
  const std::string encoderName(codecInfo.encoder);
  const AVCodec* encoder = avcodec_find_encoder_by_name(encoderName.c_str());
  if (!encoder) return name + " is not available: FFmpeg was built without the " + encoderName + " encoder.";
  if (codecInfo.alpha && !encoderTakesAlpha(encoder)) {
    return name + " is not available: the installed " + encoderName +
           " encoder has no alpha channel support. Use ProRes 4444 or VP9 WebM for transparency.";
  }
  return std::nullopt;
}

std::string_view rawValue(ExportMediaChannels channels) { return info(channels).raw; }
std::string_view displayName(ExportMediaChannels channels) { return info(channels).display; }
std::string_view description(ExportMediaChannels channels) { return info(channels).description; }

std::optional<ExportMediaChannels> exportMediaChannelsFromRaw(std::string_view raw) {
  for (ExportMediaChannels channels : allExportMediaChannels) {
    if (rawValue(channels) == raw) return channels;
  }
  return std::nullopt;
}

std::string_view ExportSettings::fileExtension() const {
  if (!includeVideo()) return "m4a";
  switch (codec) {
    case ExportCodec::h264: return "mp4";
    case ExportCodec::vp9Alpha: return "webm";
    case ExportCodec::proRes4444:
    case ExportCodec::hevcWithAlpha: return "mov";
  }
  return "mov";
}

std::string_view ExportSettings::contentType() const {
  if (!includeVideo()) return "audio/mp4";
  switch (codec) {
    case ExportCodec::h264: return "video/mp4";
    case ExportCodec::vp9Alpha: return "video/webm";
    case ExportCodec::proRes4444:
    case ExportCodec::hevcWithAlpha: return "video/quicktime";
  }
  return "video/quicktime";
}

int ExportSettings::pixelWidth() const { return evenSide(size.width); }
int ExportSettings::pixelHeight() const { return evenSide(size.height); }

std::int64_t ExportSettings::estimatedByteCount() const {
  constexpr double kProResBitsPerPixel = 5.3;
  const double seconds = range.duration.seconds();
  double videoBits = 0;
  if (includeVideo()) {
    videoBits = codec == ExportCodec::proRes4444
                    ? double(pixelWidth()) * pixelHeight() * frameRate.fps() * kProResBitsPerPixel * seconds
                    : videoBitrateMbps * 1'000'000 * seconds;
  }
  const double audioBits = includeAudio() ? audioBitrateKbps * 1000 * seconds : 0;
  // A negative or undefined part adds nothing to the size shown.
  const auto counted = [](double bits) { return bits > 0 ? bits : 0.0; };
  return wholeNumber((counted(videoBits) + counted(audioBits)) / 8);
}

VideoEncoderSettings ExportSettings::videoOutputSettings() const {
  VideoEncoderSettings video;
  if (!includeVideo()) return video;
  video.width = pixelWidth();
  video.height = pixelHeight();
  video.encoderName = std::string(info(codec).encoder);
  switch (codec) {
    case ExportCodec::h264:
      video.pixelFormat = "yuv420p";
      video.profile = "high";
      setCompression(video, *this);
      video.options = {{"preset", "veryfast"}};
      break;
    case ExportCodec::proRes4444:
      video.pixelFormat = "yuva444p10le";
      video.profile = "4444";
      video.allowFrameReordering = false;
      break;
    case ExportCodec::hevcWithAlpha:
      video.pixelFormat = hevcAlphaPixelFormat();
      video.codecTag = "hvc1";
      setCompression(video, *this);
      video.options = {{"preset", "veryfast"}};
      if (encoderHasOption(video.encoderName, "alpha_quality")) video.options.emplace_back("alpha_quality", "0.75");
      break;
    case ExportCodec::vp9Alpha:
      video.pixelFormat = "yuva420p";
      setCompression(video, *this);
      // The alpha plane is encoded beside the picture; libvpx refuses
      // alternate reference frames with it, and lag would reorder frames.
      video.options = {{"deadline", "good"}, {"cpu-used", "5"}, {"row-mt", "1"},
                       {"auto-alt-ref", "0"}, {"lag-in-frames", "0"}};
      break;
  }
  return video;
}

AudioEncoderSettings ExportSettings::audioOutputSettings() const {
  AudioEncoderSettings audio;
  audio.encoderName = "aac";
  audio.channels = audioChannels;
  // A rate that is not a sensible number leaves the encoder's usual one.
  const bool usableRate = std::isfinite(audioSampleRate) && audioSampleRate >= 1 && audioSampleRate <= 768000;
  audio.sampleRate = usableRate ? static_cast<int>(std::lround(audioSampleRate)) : 48000;
  audio.bitRate = wholeNumber(audioBitrateKbps * 1000);
  return audio;
}

ContainerSettings ExportSettings::containerSettings() const {
  const std::pair<std::string, std::string> faststart{"movflags", "+faststart"};
  if (!includeVideo()) return {"ipod", {faststart}};
  switch (codec) {
    case ExportCodec::h264: return {"mp4", {faststart}};
    case ExportCodec::vp9Alpha: return {"webm", {}};
    case ExportCodec::proRes4444:
    case ExportCodec::hevcWithAlpha: return {"mov", {faststart}};
  }
  return {"mov", {faststart}};
}

}  // namespace orvane::export_
