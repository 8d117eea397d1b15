#pragma once
// Records of imported media, the media bin's folders, and the disk folders
// pinned to the file browser. Plain values.

#include <array>
#include <optional>
#include <string>

#include "core/base64.hpp"
#include "core/enum_text.hpp"
#include "core/frame_rate.hpp"
#include "core/geometry.hpp"
#include "core/ov_time.hpp"
#include "core/timestamp.hpp"
#include "core/uuid.hpp"

namespace orvane::core {

enum class MediaKind { video, audio, image };

template <>
struct EnumTable<MediaKind> {
  using K = MediaKind;
  static constexpr std::array<EnumEntry<K>, 3> entries{{
      {K::video, "video", "Video"}, {K::audio, "audio", "Audio"}, {K::image, "image", "Image"}}};
};

struct MediaAsset {
  Uuid id = Uuid::make();
  std::string name;
  MediaKind kind = MediaKind::video;
  std::string path;  // absolute, or relative to the project inside a package
  std::optional<Bytes> bookmark;
  OVTime duration;
  OVSize naturalSize;
  std::optional<FrameRate> frameRate;
  bool hasVideoTrack = false;
  bool hasAudioTrack = false;
  std::int64_t audioChannelCount = 0;
  double audioSampleRate = 0;
  std::int64_t fileSizeBytes = 0;
  Timestamp dateAdded = nowTimestamp();
  std::optional<Uuid> folderID;

  // The last path component.
  std::string fileName() const;
  bool isStill() const { return kind == MediaKind::image; }
  // Whether a file exists at path now (touches the file system).
  bool fileExists() const;
  // "1920 x 1080 - 30 fps - 0:10", "mono - 48000 Hz - 0:10", "640 x 480".
  std::string displaySubtitle() const;

  friend bool operator==(const MediaAsset&, const MediaAsset&) = default;
};

struct MediaFolder {
  Uuid id = Uuid::make();
  std::string name;
  std::optional<Uuid> parentFolderID;  // none: top level
  Timestamp dateCreated = nowTimestamp();

  friend bool operator==(const MediaFolder&, const MediaFolder&) = default;
};

// A disk folder pinned to the file browser; not a media record.
struct BrowseFolder {
  Uuid id = Uuid::make();
  std::string name;
  std::string path;
  std::optional<Bytes> bookmark;

  friend bool operator==(const BrowseFolder&, const BrowseFolder&) = default;
};

std::size_t hashValue(const MediaAsset& a);
std::size_t hashValue(const MediaFolder& f);
std::size_t hashValue(const BrowseFolder& f);

}  // namespace orvane::core
