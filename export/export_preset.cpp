#include "export/export_preset.hpp"

#include <array>

namespace orvane::export_ {

namespace {

using Channels = ExportMediaChannels;
using Codec = ExportCodec;

std::array<ExportPreset, 10> makePresets() {
  return {{
      {"match", "Match Composition", "Same size and frame rate as the composition", std::nullopt, 16, 192,
       Channels::videoAndAudio, Codec::h264},
      {"youtube.1080", "YouTube 1080p", "1920 × 1080, 16 Mbps", core::OVSize{1920, 1080}, 16, 192,
       Channels::videoAndAudio, Codec::h264},
      {"youtube.4k", "YouTube 4K", "3840 × 2160, 45 Mbps", core::OVSize{3840, 2160}, 45, 192,
       Channels::videoAndAudio, Codec::h264},
      {"vertical.1080", "Shorts / Reels / TikTok", "1080 × 1920, 12 Mbps", core::OVSize{1080, 1920}, 12, 192,
       Channels::videoAndAudio, Codec::h264},
      {"square.1080", "Instagram Feed", "1080 × 1080, 10 Mbps", core::OVSize{1080, 1080}, 10, 192,
       Channels::videoAndAudio, Codec::h264},
      {"master", "High Quality Master", "Composition size, 60 Mbps", std::nullopt, 60, 320, Channels::videoAndAudio,
       Codec::h264},
      {"alpha.prores", "Transparent (ProRes 4444)",
       "MOV with alpha channel, composition size — for other editing apps", std::nullopt, 60, 320,
       Channels::videoAndAudio, Codec::proRes4444},
      {"alpha.hevc", "Transparent (HEVC)", "Small MOV with alpha channel, composition size", std::nullopt, 20, 192,
       Channels::videoAndAudio, Codec::hevcWithAlpha},
      {"video.silent", "Video Only (Silent)", "H.264 MP4 with no audio track", std::nullopt, 16, 192,
       Channels::videoOnly, Codec::h264},
      {"audio.master", "Audio Only", "AAC M4A, 320 kbps", std::nullopt, 16, 320, Channels::audioOnly, Codec::h264},
  }};
}

const std::array<ExportPreset, 10>& presets() {
  static const std::array<ExportPreset, 10> list = makePresets();
  return list;
}

}  // namespace

std::span<const ExportPreset> ExportPreset::all() { return presets(); }

std::optional<ExportPreset> ExportPreset::withID(std::string_view id) {
  for (const ExportPreset& preset : presets()) {
    if (preset.id == id) return preset;
  }
  return std::nullopt;
}

const ExportPreset& ExportPreset::recommended(const core::Composition& composition) {
  const double aspect = composition.aspectRatio();
  std::string_view id = "youtube.1080";
  if (aspect < 0.75) {
    id = "vertical.1080";
  } else if (aspect < 1.2) {
    id = "square.1080";
  } else if (composition.size.width > 2560) {
    id = "youtube.4k";
  }
  for (const ExportPreset& preset : presets()) {
    if (preset.id == id) return preset;
  }
  return presets()[1];
}

ExportSettings ExportPreset::settingsFor(const core::Composition& composition) const {
  ExportSettings settings;
  settings.codec = codec;
  settings.size = size.value_or(composition.size);
  settings.frameRate = composition.frameRate;
  settings.videoBitrateMbps = videoBitrateMbps;
  settings.channels = channels;
  settings.audioBitrateKbps = audioBitrateKbps;
  settings.audioSampleRate = composition.audioSampleRate;
  settings.audioChannels = 2;
  settings.range = composition.renderRange();
  settings.enableMotionBlur = composition.motionBlurEnabled;
  settings.motionBlurShutterAngle = composition.motionBlurShutterAngle;
  return settings;
}

}  // namespace orvane::export_
