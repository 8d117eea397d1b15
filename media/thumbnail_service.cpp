#include "media/thumbnail_service.hpp"

#include <QGuiApplication>
#include <QImageReader>
#include <QScreen>
#include <QString>
#include <QTransform>
#include <algorithm>
#include <cmath>

#include "media/video_decoder.hpp"

namespace orvane::media {

// ------------------------------------------------------------ picture making

std::optional<QImage> makeVideoFrameImage(const std::filesystem::path& path, const core::OVTime& at,
                                          int maxDimension) {
  auto decoder = VideoDecoder::open(path);
  if (!decoder) return std::nullopt;
  return videoFrameImage(**decoder, at, maxDimension);
}

std::optional<QImage> videoFrameImage(VideoDecoder& decoder, const core::OVTime& at, int maxDimension) {
  auto frame = decoder.bgraFrameAt(at, maxDimension, maxDimension);
  if (!frame || frame->width < 1 || frame->height < 1 ||
      frame->pixels.size() < static_cast<std::size_t>(frame->width) * static_cast<std::size_t>(frame->height) * 4) {
    return std::nullopt;
  }
  // BGRA bytes in memory are ARGB32 words on this little-endian machine.
  QImage image = QImage(frame->pixels.data(), frame->width, frame->height, frame->width * 4, QImage::Format_ARGB32)
                     .copy();
  if (image.isNull()) return std::nullopt;

  // The file's display transform works in the engine's y-up space; in the
  // bitmap's y-down rows the same turn runs the other way round.
  const core::Affine2D& t = decoder.geometry().preferredTransform;
  if (t.a != 1 || t.b != 0 || t.c != 0 || t.d != 1) {
    const QTransform turn(t.a, -t.b, -t.c, t.d, 0, 0);
    if (turn.isInvertible()) image = image.transformed(turn, Qt::SmoothTransformation);
  }
  if (image.width() > maxDimension || image.height() > maxDimension) {
    image = image.scaled(maxDimension, maxDimension, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  }
  return image;
}

std::optional<QImage> makeStillThumbnail(const std::filesystem::path& path, int maxDimension) {
  QImageReader reader(QString::fromStdString(path.string()));
  reader.setAutoTransform(true);
  const QSize size = reader.size();
  if (size.isValid() && (size.width() > maxDimension || size.height() > maxDimension)) {
    reader.setScaledSize(size.scaled(maxDimension, maxDimension, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
  }
  QImage image = reader.read();
  if (image.isNull()) return std::nullopt;
  if (image.width() > maxDimension || image.height() > maxDimension) {
    image = image.scaled(maxDimension, maxDimension, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  }
  return image;
}

// ------------------------------------------------------------ ThumbnailService

std::optional<QImage> ThumbnailService::defaultPosterMaker(const core::MediaAsset& asset,
                                                           const std::filesystem::path& file) {
  switch (asset.kind) {
    case core::MediaKind::image:
      return makeStillThumbnail(file, maxDimension);
    case core::MediaKind::video: {
      const double tenth = asset.duration.seconds() / 10;
      const double at = std::isfinite(tenth) ? std::clamp(tenth, 0.0, 1.0) : 0.0;
      return makeVideoFrameImage(file, core::OVTime::fromSeconds(at), maxDimension);
    }
    case core::MediaKind::audio:
      break;
  }
  return std::nullopt;
}

ThumbnailService::ThumbnailService(MainThreadPost post, PosterMaker maker)
    : maker_(std::move(maker)), posters_(std::move(post)) {}

ThumbnailService::~ThumbnailService() = default;

void ThumbnailService::request(const core::MediaAsset& asset) {
  if (asset.kind == core::MediaKind::audio) return;
  posters_.request(asset, [asset, maker = maker_](const std::filesystem::path& file) { return maker(asset, file); });
}

const std::unordered_map<core::Uuid, QImage>& ThumbnailService::thumbnails() const { return posters_.all(); }

const QImage* ThumbnailService::thumbnail(const core::Uuid& assetID) const { return posters_.find(assetID); }

bool ThumbnailService::isInFlight(const core::Uuid& assetID) const { return posters_.isInFlight(assetID); }

int ThumbnailService::addObserver(std::function<void(const core::Uuid&)> observer) {
  return posters_.addObserver(std::move(observer));
}

void ThumbnailService::removeObserver(int token) { posters_.removeObserver(token); }

// ------------------------------------------------------------ FileThumbnailService

namespace {

double mainScreenScale() {
  if (qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr) {
    if (const QScreen* screen = QGuiApplication::primaryScreen()) return screen->devicePixelRatio();
  }
  return 2;
}

}  // namespace

std::optional<QImage> FileThumbnailService::defaultFileThumbnail(const std::filesystem::path& file, int pixels) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return std::nullopt;
  if (QImageReader(QString::fromStdString(file.string())).canRead()) return makeStillThumbnail(file, pixels);
  return makeVideoFrameImage(file, core::OVTime::zero, pixels);
}

FileThumbnailService::FileThumbnailService(MainThreadPost post, double screenScale, FileThumbnailMaker maker)
    : post_(std::move(post)), maker_(std::move(maker)), state_(std::make_shared<State>()) {
  double scale = screenScale > 0 && std::isfinite(screenScale) ? screenScale : mainScreenScale();
  scale = std::clamp(scale, 1.0, 8.0);
  pixels_ = static_cast<int>(std::lround(pointSize * scale));
}

FileThumbnailService::~FileThumbnailService() = default;

void FileThumbnailService::request(const std::filesystem::path& file) {
  const std::string key = file.string();
  if (state_->cache.contains(key) || state_->inFlight.contains(key)) return;
  state_->inFlight.insert(key);
  worker_.post([this, key, file, post = post_, weak = std::weak_ptr<State>(state_)] {
    std::optional<QImage> image = maker_(file, pixels_);
    post([weak, key, image = std::move(image)]() mutable {
      const auto state = weak.lock();
      if (!state) return;
      state->inFlight.erase(key);
      if (!image || image->isNull()) return;
      state->cache[key] = std::move(*image);
      state->observers.notify(key);
    });
  });
}

const std::unordered_map<std::string, QImage>& FileThumbnailService::cache() const { return state_->cache; }

const QImage* FileThumbnailService::thumbnail(const std::filesystem::path& file) const {
  const auto it = state_->cache.find(file.string());
  return it == state_->cache.end() ? nullptr : &it->second;
}

bool FileThumbnailService::isInFlight(const std::filesystem::path& file) const {
  return state_->inFlight.contains(file.string());
}

int FileThumbnailService::addObserver(std::function<void(const std::string&)> observer) {
  return state_->observers.add(std::move(observer));
}

void FileThumbnailService::removeObserver(int token) { state_->observers.remove(token); }

}  // namespace orvane::media
