#include "core/media_asset.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "core/numeric.hpp"

namespace orvane::core {
namespace {

// "0:10", "12:05", "1:02:03": whole seconds, rounded to nearest.
std::string durationText(const OVTime& d) {
  // Clamped so that the widest OVTime still converts safely.
  const double s = std::clamp(std::round(d.seconds()), 0.0, 9.0e18);
  const auto total = static_cast<std::int64_t>(s);
  const std::int64_t hours = total / 3600;
  const std::int64_t minutes = total / 60 % 60;
  const std::int64_t seconds = total % 60;
  char buffer[64];
  if (hours > 0) {
    std::snprintf(buffer, sizeof buffer, "%lld:%02lld:%02lld", static_cast<long long>(hours),
                  static_cast<long long>(minutes), static_cast<long long>(seconds));
  } else {
    std::snprintf(buffer, sizeof buffer, "%lld:%02lld", static_cast<long long>(minutes),
                  static_cast<long long>(seconds));
  }
  return buffer;
}

std::string sizeText(const OVSize& s) { return numberText(s.width) + " x " + numberText(s.height); }

}  // namespace

std::string MediaAsset::fileName() const {
  // The last component as a URL names it: trailing slashes do not count, and
  // the root alone is "/".
  std::string_view p = path;
  while (p.size() > 1 && p.back() == '/') p.remove_suffix(1);
  if (p == "/") return std::string(p);
  const auto slash = p.rfind('/');
  return std::string(slash == std::string_view::npos ? p : p.substr(slash + 1));
}

bool MediaAsset::fileExists() const {
  if (path.empty()) return false;
  std::error_code error;
  return std::filesystem::exists(std::filesystem::path(path), error);
}

std::string MediaAsset::displaySubtitle() const {
  switch (kind) {
    case MediaKind::video: {
      const std::string rate = frameRate ? frameRate->displayName() : "-";
      return sizeText(naturalSize) + " - " + rate + " - " + durationText(duration);
    }
    case MediaKind::audio: {
      const std::string channels = audioChannelCount == 1 ? "mono" : std::to_string(audioChannelCount) + " ch";
      return channels + " - " + numberText(audioSampleRate) + " Hz - " + durationText(duration);
    }
    case MediaKind::image:
      return sizeText(naturalSize);
  }
  return {};
}

std::size_t hashValue(const MediaAsset& a) {
  std::size_t seed = hashAll(a.id, a.name, a.kind, a.path, a.duration, a.naturalSize,
                             a.frameRate, a.hasVideoTrack, a.hasAudioTrack, a.audioChannelCount);
  hashCombine(seed, hashValue(a.bookmark));
  hashCombine(seed, hashAll(a.audioSampleRate, a.fileSizeBytes, a.folderID));
  hashCombine(seed, hashValue(a.dateAdded));
  return seed;
}

std::size_t hashValue(const MediaFolder& f) {
  std::size_t seed = hashAll(f.id, f.name, f.parentFolderID);
  hashCombine(seed, hashValue(f.dateCreated));
  return seed;
}

std::size_t hashValue(const BrowseFolder& f) {
  std::size_t seed = hashAll(f.id, f.name, f.path);
  hashCombine(seed, hashValue(f.bookmark));
  return seed;
}

}  // namespace orvane::core
