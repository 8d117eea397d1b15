#pragma once
// Frames of video assets at given times, for the filmstrips of timeline
// clips: at most maxDimension on a side, by tenths of a second, so that all
// requests within a tenth share one frame. The cache keeps cacheLimit
// frames and evicts in the order they were stored, first in first out: a
// frame that is used often goes all the same.
//
// Shared by the windows; request, frames, order and inFlight belong to the
// main thread. Frames are made on one background thread and come back
// through the MainThreadPost given at construction (see ThumbnailService).
// The background thread keeps the last file's decoder open, so a filmstrip
// costs one open per asset.

#include <QImage>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "core/media_asset.hpp"
#include "core/uuid.hpp"
#include "media/serial_worker.hpp"

namespace orvane::media {

class ClipFrameService {
 public:
  static constexpr int maxDimension = 160;
  static constexpr std::size_t cacheLimit = 240;

  struct Key {
    core::Uuid assetID;
    std::int64_t tenths = 0;  // seconds × 10, rounded half away from zero

    friend bool operator==(const Key&, const Key&) = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& k) const;
  };

  // Makes the frame of the video at path at the time, fitted into
  // maxDimension × maxDimension; none when it fails. Runs on the service's
  // thread, one call at a time.
  using FrameMaker = std::function<std::optional<QImage>(const std::filesystem::path& file, const core::OVTime& at)>;

  // The default maker decodes with a VideoDecoder kept open between calls.
  explicit ClipFrameService(MainThreadPost post, FrameMaker maker = {});
  ~ClipFrameService();

  // The key of the frame at seconds; non-finite seconds count as 0.
  static Key key(const core::MediaAsset& asset, double seconds);

  // Asks for the frame of a video asset at seconds; it appears in frames()
  // later. Other kinds, a frame there or on its way, an unreadable file: nothing.
  void request(const core::MediaAsset& asset, double seconds);

  const std::unordered_map<Key, QImage, KeyHash>& frames() const;
  const QImage* frame(const Key& key) const;
  const std::deque<Key>& order() const;
  bool isInFlight(const Key& key) const;

  int addObserver(std::function<void(const Key&)> observer);
  void removeObserver(int token);

 private:
  struct State {
    std::unordered_map<Key, QImage, KeyHash> frames;
    std::deque<Key> order;  // oldest first
    std::unordered_set<Key, KeyHash> inFlight;
    ChangeObservers<Key> observers;

    void finish(const Key& key, std::optional<QImage> image);
  };

  MainThreadPost post_;
  FrameMaker maker_;
  std::shared_ptr<State> state_;  // main thread; posted results hold it weakly
  SerialWorker worker_;
};

}  // namespace orvane::media
