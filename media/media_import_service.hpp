#pragma once
// Turning media files into MediaAsset records: the kind of media a file is,
// and what the rest of the program needs to know about it (duration, the
// upright picture size, the nominal frame rate, the audio format, the file
// size), read once at import so that nothing opens the file again for it.
// Images go through Qt (EXIF orientation applied), SVG and PDF through the
// renderer's rasterisers, everything else through FFmpeg.
//
// Stateless: the calls block while files are read, so callers with a window
// run them on a worker thread. Any thread. A successful import notes the
// file with MediaAccessManager::shared().

#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/media_asset.hpp"

namespace orvane::media {

struct MediaImportError {
  enum class Kind { unsupportedType, unreadable, noUsableTracks };

  Kind kind = Kind::unreadable;
  std::string fileName;

  // The sentence shown to people.
  std::string message() const;

  friend bool operator==(const MediaImportError&, const MediaImportError&) = default;
};

struct MediaImportFailure {
  std::filesystem::path path;
  MediaImportError error;
};

struct MediaImportResults {
  std::vector<core::MediaAsset> assets;     // in the order of the paths given
  std::vector<MediaImportFailure> failures; // likewise
};

struct MediaImportService {
  // The kind by the file's detected type (from its content, when Qt's type
  // database recognises it as video, audio, an image or PDF), else by its
  // extension; none when neither says.
  static std::optional<core::MediaKind> mediaKindFor(const std::filesystem::path& path);
  // The kind by the lower-cased extension alone.
  static std::optional<core::MediaKind> mediaKindByExtension(const std::filesystem::path& path);

  static std::expected<core::MediaAsset, MediaImportError> importAsset(const std::filesystem::path& path);
  // Each path in turn; one failure doesn't stop the others.
  static MediaImportResults importAssets(const std::vector<std::filesystem::path>& paths);
};

}  // namespace orvane::media
