#include "media/clip_frame_service.hpp"

#include <algorithm>
#include <cmath>

#include "core/hashing.hpp"
#include "document/media_access.hpp"
#include "media/thumbnail_service.hpp"
#include "media/video_decoder.hpp"

namespace orvane::media {
namespace {

// The decoder of the last file asked for, kept on the service's thread so
// that the frames of one filmstrip seek within one open file.
class KeptDecoderMaker {
 public:
  std::optional<QImage> operator()(const std::filesystem::path& file, const core::OVTime& at) {
    if (!decoder_ || decoder_->path() != file) {
      decoder_.reset();
      auto opened = VideoDecoder::open(file);
      if (!opened) return std::nullopt;
      decoder_ = std::move(*opened);
    }
    return videoFrameImage(*decoder_, at, ClipFrameService::maxDimension);
  }

 private:
  std::shared_ptr<VideoDecoder> decoder_;
};

}  // namespace

std::size_t ClipFrameService::KeyHash::operator()(const Key& k) const {
  std::size_t seed = core::hashValue(k.assetID);
  core::hashCombine(seed, core::hashValue(k.tenths));
  return seed;
}

void ClipFrameService::State::finish(const Key& key, std::optional<QImage> image) {
  inFlight.erase(key);
  if (!image) return;
  frames[key] = std::move(*image);
  order.push_back(key);
  while (order.size() > cacheLimit) {
    frames.erase(order.front());
    order.pop_front();
  }
  observers.notify(key);
}

ClipFrameService::ClipFrameService(MainThreadPost post, FrameMaker maker)
    : post_(std::move(post)),
      maker_(maker ? std::move(maker) : FrameMaker(KeptDecoderMaker())),
      state_(std::make_shared<State>()) {}

ClipFrameService::~ClipFrameService() = default;

ClipFrameService::Key ClipFrameService::key(const core::MediaAsset& asset, double seconds) {
  double tenths = seconds * 10;
  if (!std::isfinite(tenths)) tenths = 0;
  tenths = std::clamp(tenths, -1e15, 1e15);
  return {asset.id, static_cast<std::int64_t>(std::round(tenths))};
}

void ClipFrameService::request(const core::MediaAsset& asset, double seconds) {
  if (asset.kind != core::MediaKind::video) return;
  const Key k = key(asset, seconds);
  if (state_->frames.contains(k) || state_->inFlight.contains(k)) return;
  state_->inFlight.insert(k);
  const auto file = document::MediaAccessManager::shared().restoreAccessFor(asset);
  if (!file) {
    state_->inFlight.erase(k);
    return;
  }
  const auto at = core::OVTime(k.tenths, 10);
  // The maker is copied into the job only by reference: it lives as long as
  // the worker, which the service destroys first.
  worker_.post([this, k, at, file = *file, post = post_, weak = std::weak_ptr<State>(state_)] {
    std::optional<QImage> image = maker_(file, at);
    post([weak, k, image = std::move(image)]() mutable {
      if (const auto state = weak.lock()) state->finish(k, std::move(image));
    });
  });
}

const std::unordered_map<ClipFrameService::Key, QImage, ClipFrameService::KeyHash>& ClipFrameService::frames() const {
  return state_->frames;
}

const QImage* ClipFrameService::frame(const Key& key) const {
  const auto it = state_->frames.find(key);
  return it == state_->frames.end() ? nullptr : &it->second;
}

const std::deque<ClipFrameService::Key>& ClipFrameService::order() const { return state_->order; }

bool ClipFrameService::isInFlight(const Key& key) const { return state_->inFlight.contains(key); }

int ClipFrameService::addObserver(std::function<void(const Key&)> observer) {
  return state_->observers.add(std::move(observer));
}

void ClipFrameService::removeObserver(int token) { state_->observers.remove(token); }

}  // namespace orvane::media
