#pragma once
// Poster images of the project's media for the media browser, one per asset
// at most maxDimension on a side: a still image scaled down with its EXIF
// orientation applied, a video's frame at the smaller of one second and a
// tenth of its length, upright. Audio has no poster.
//
// The service is shared by the windows and lives on the main thread:
// request, thumbnails and inFlight are touched there only. The pictures are
// made on one background thread; each result comes back through the
// MainThreadPost given at construction, which must run its closure on the
// main thread (the application posts to the Qt event loop; tests queue and
// drain). Observers hear of every asset whose poster arrived.

#include <QImage>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "core/media_asset.hpp"
#include "core/ov_time.hpp"
#include "core/uuid.hpp"
#include "media/asset_results.hpp"
#include "media/serial_worker.hpp"

namespace orvane::media {

class VideoDecoder;

// The decoder's frame at the given time, upright, fitted into maxDimension ×
// maxDimension; none when it can't be decoded. The decoder's thread.
std::optional<QImage> videoFrameImage(VideoDecoder& decoder, const core::OVTime& at, int maxDimension);
// The same from the video at path, opened for this one frame. Any thread.
std::optional<QImage> makeVideoFrameImage(const std::filesystem::path& path, const core::OVTime& at,
                                          int maxDimension);
// The still image at path fitted into maxDimension × maxDimension, EXIF
// orientation applied; none when it can't be read. Any thread.
std::optional<QImage> makeStillThumbnail(const std::filesystem::path& path, int maxDimension);

class ThumbnailService {
 public:
  static constexpr int maxDimension = 240;

  // Makes a poster for an asset of the kind, from the readable file; none
  // when it fails. Runs on the service's thread.
  using PosterMaker = std::function<std::optional<QImage>(const core::MediaAsset& asset,
                                                         const std::filesystem::path& file)>;

  explicit ThumbnailService(MainThreadPost post, PosterMaker maker = defaultPosterMaker);
  ~ThumbnailService();

  // Asks for the asset's poster; it appears in thumbnails() later. Nothing
  // for audio, for a poster already there or on its way, or an unreadable file.
  void request(const core::MediaAsset& asset);

  const std::unordered_map<core::Uuid, QImage>& thumbnails() const;
  const QImage* thumbnail(const core::Uuid& assetID) const;
  bool isInFlight(const core::Uuid& assetID) const;

  int addObserver(std::function<void(const core::Uuid&)> observer);
  void removeObserver(int token);

  // Still images scaled, videos at min(1 s, duration / 10), audio none.
  static std::optional<QImage> defaultPosterMaker(const core::MediaAsset& asset, const std::filesystem::path& file);

 private:
  PosterMaker maker_;
  AssetResults<QImage> posters_;
};

// Thumbnails of files on disk for the file browser, before they are in the
// project: 64 × 64 points at the main screen's scale (2 without a screen),
// by path. A still image is scaled down upright, a video shows its first
// frame; other files get none, and a failure stores nothing, so the next
// request tries again.
//
// request, cache and inFlight belong to the main thread; the pictures are
// made on one background thread and come back through the MainThreadPost.
class FileThumbnailService {
 public:
  static constexpr int pointSize = 64;

  // Makes the thumbnail of the file fitted into pixels × pixels; none when
  // the file is neither a picture nor a video. Runs on the service's thread.
  using FileThumbnailMaker = std::function<std::optional<QImage>(const std::filesystem::path& file, int pixels)>;

  // screenScale: the main screen's device pixel ratio; 0 asks the running
  // application for it (main thread), 2 when there is no screen.
  explicit FileThumbnailService(MainThreadPost post, double screenScale = 0,
                                FileThumbnailMaker maker = defaultFileThumbnail);
  ~FileThumbnailService();

  // Asks for the file's thumbnail; it appears in cache() later. Nothing
  // when it is there or on its way.
  void request(const std::filesystem::path& file);

  const std::unordered_map<std::string, QImage>& cache() const;
  const QImage* thumbnail(const std::filesystem::path& file) const;
  bool isInFlight(const std::filesystem::path& file) const;
  // The side of a thumbnail in pixels: pointSize at the screen's scale.
  int pixelSize() const { return pixels_; }

  int addObserver(std::function<void(const std::string&)> observer);
  void removeObserver(int token);

  static std::optional<QImage> defaultFileThumbnail(const std::filesystem::path& file, int pixels);

 private:
  struct State {
    std::unordered_map<std::string, QImage> cache;
    std::unordered_set<std::string> inFlight;
    ChangeObservers<std::string> observers;
  };

  MainThreadPost post_;
  FileThumbnailMaker maker_;
  int pixels_;
  std::shared_ptr<State> state_;  // main thread; posted results hold it weakly
  SerialWorker worker_;           // last: stops before the rest goes
};

}  // namespace orvane::media
