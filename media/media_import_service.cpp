#include "media/media_import_service.hpp"

#include <QMimeDatabase>
#include <QString>
#include <algorithm>
#include <cctype>

#include "core/composition_preset.hpp"
#include "document/media_access.hpp"
#include "media/media_probe.hpp"
#include "render/still_image_loader.hpp"

namespace orvane::media {

namespace {

using core::MediaKind;
using Kind = MediaImportError::Kind;

std::string lowerExtension(const std::filesystem::path& path) {
  std::string ext = path.extension().string();
  if (!ext.empty() && ext.front() == '.') ext.erase(0, 1);
  std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
  return ext;
}

MediaImportError failure(Kind kind, const std::filesystem::path& path) {
  return {kind, path.filename().string()};
}

std::expected<void, MediaImportError> importImage(const std::filesystem::path& path, core::MediaAsset& asset) {
  const std::optional<core::OVSize> size = render::stillImageSize(path.string());
  if (!size || !(size->width > 0) || !(size->height > 0)) return std::unexpected(failure(Kind::unreadable, path));
  asset.naturalSize = *size;
  asset.duration = core::ProjectDefaults::stillDuration;
  return {};
}

std::expected<void, MediaImportError> importTimeBased(const std::filesystem::path& path, core::MediaAsset& asset) {
  const auto probe = probeMediaFile(path);
  if (!probe) return std::unexpected(failure(Kind::unreadable, path));
  if (!probe->video && !probe->audio) return std::unexpected(failure(Kind::noUsableTracks, path));
  asset.duration = probe->duration;
  if (probe->video) {
    asset.hasVideoTrack = true;
    asset.naturalSize = probe->video->displaySize;
    asset.frameRate = probe->video->nominalFrameRate;
  }
  if (probe->audio) {
    asset.hasAudioTrack = true;
    asset.audioChannelCount = probe->audio->channelCount;
    asset.audioSampleRate = probe->audio->sampleRate;
  }
  return {};
}

}  // namespace

std::string MediaImportError::message() const {
  switch (kind) {
    case Kind::unsupportedType: return fileName + " is not a supported media type.";
    case Kind::unreadable:
      return fileName + " could not be read. The file may be damaged or use an unavailable codec.";
    case Kind::noUsableTracks: return fileName + " contains no video or audio that Orvane can use.";
  }
  return fileName + " could not be read. The file may be damaged or use an unavailable codec.";
}

std::optional<MediaKind> MediaImportService::mediaKindByExtension(const std::filesystem::path& path) {
  static constexpr std::string_view video[] = {"mp4", "mov", "m4v", "mpg", "mpeg", "avi", "mkv"};
  static constexpr std::string_view audio[] = {"wav", "aif", "aiff", "mp3", "m4a", "aac", "flac", "caf"};
  static constexpr std::string_view image[] = {"png",  "jpg", "jpeg", "heic", "heif", "tif",
                                               "tiff", "gif", "webp", "pdf",  "svg",  "bmp"};
  const std::string ext = lowerExtension(path);
  const auto in = [&](const auto& list) { return std::find(std::begin(list), std::end(list), ext) != std::end(list); };
  if (in(video)) return MediaKind::video;
  if (in(audio)) return MediaKind::audio;
  if (in(image)) return MediaKind::image;
  return std::nullopt;
}

std::optional<MediaKind> MediaImportService::mediaKindFor(const std::filesystem::path& path) {
  // The type read from the content; a name alone proves nothing here, and
  // an empty or unknown file falls through to its extension.
  const QMimeType type = QMimeDatabase().mimeTypeForFile(QString::fromStdString(path.string()),
                                                         QMimeDatabase::MatchContent);
  const auto conforms = [&](const char* name) { return type.inherits(QString::fromLatin1(name)); };
  const QString top = type.name().section('/', 0, 0);
  if (top == "video") return MediaKind::video;
  if (top == "audio") return MediaKind::audio;
  if (top == "image" || conforms("application/pdf")) return MediaKind::image;
  return mediaKindByExtension(path);
}

std::expected<core::MediaAsset, MediaImportError> MediaImportService::importAsset(const std::filesystem::path& given) {
  std::error_code ec;
  std::filesystem::path path = std::filesystem::absolute(given, ec).lexically_normal();
  if (ec) path = given;
  const std::optional<MediaKind> kind = mediaKindFor(path);
  if (!kind) return std::unexpected(failure(Kind::unsupportedType, path));
  if (!document::isReadableFile(path)) return std::unexpected(failure(Kind::unreadable, path));
  core::MediaAsset asset;
  asset.name = path.filename().string();
  asset.kind = *kind;
  asset.path = path.string();
  asset.bookmark = document::MediaAccessManager::shared().makeBookmarkFor(path);
  const auto size = std::filesystem::file_size(path, ec);
  asset.fileSizeBytes = ec ? 0 : static_cast<std::int64_t>(size);
  auto read = *kind == MediaKind::image ? importImage(path, asset) : importTimeBased(path, asset);
  if (!read) return std::unexpected(read.error());
  document::MediaAccessManager::shared().noteDirectAccess(asset.id, path);
  return asset;
}

MediaImportResults MediaImportService::importAssets(const std::vector<std::filesystem::path>& paths) {
  MediaImportResults results;
  for (const std::filesystem::path& path : paths) {
    auto asset = importAsset(path);
    if (asset) {
      results.assets.push_back(std::move(*asset));
    } else {
      results.failures.push_back({path, asset.error()});
    }
  }
  return results;
}

}  // namespace orvane::media
