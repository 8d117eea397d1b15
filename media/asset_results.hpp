#pragma once
// The per-asset results of a background service (posters, waveforms): made
// once per asset on the service's own thread, published on the main thread
// in a map by asset id, with observers told of each arrival. A request for
// an asset whose result is there or on its way does nothing; a failure
// leaves no result, so the next request tries again.
//
// Owned by its service; everything but the making belongs to the main
// thread. Results are posted back through the MainThreadPost and hold the
// published state weakly, so one that arrives after the owner is gone is
// dropped.

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "core/media_asset.hpp"
#include "core/uuid.hpp"
#include "document/media_access.hpp"
#include "media/serial_worker.hpp"

namespace orvane::media {

template <class Result>
class AssetResults {
 public:
  explicit AssetResults(MainThreadPost post) : post_(std::move(post)), state_(std::make_shared<State>()) {}

  // Makes the asset's result from its readable file with make(file) on the
  // service's thread, unless the file can't be reached.
  template <class Make>
  void request(const core::MediaAsset& asset, Make make) {
    if (state_->results.contains(asset.id) || state_->inFlight.contains(asset.id)) return;
    const auto file = document::MediaAccessManager::shared().restoreAccessFor(asset);
    if (!file) return;
    state_->inFlight.insert(asset.id);
    worker_.post([id = asset.id, file = *file, make = std::move(make), post = post_,
                  weak = std::weak_ptr<State>(state_)] {
      std::optional<Result> result = make(file);
      post([weak, id, result = std::move(result)]() mutable {
        const auto state = weak.lock();
        if (!state) return;
        state->inFlight.erase(id);
        if (!result) return;
        state->results[id] = std::move(*result);
        state->observers.notify(id);
      });
    });
  }

  const std::unordered_map<core::Uuid, Result>& all() const { return state_->results; }
  const Result* find(const core::Uuid& assetID) const {
    const auto it = state_->results.find(assetID);
    return it == state_->results.end() ? nullptr : &it->second;
  }
  bool isInFlight(const core::Uuid& assetID) const { return state_->inFlight.contains(assetID); }

  int addObserver(std::function<void(const core::Uuid&)> observer) { return state_->observers.add(std::move(observer)); }
  void removeObserver(int token) { state_->observers.remove(token); }

 private:
  struct State {
    std::unordered_map<core::Uuid, Result> results;
    std::unordered_set<core::Uuid> inFlight;
    ChangeObservers<core::Uuid> observers;
  };

  MainThreadPost post_;
  std::shared_ptr<State> state_;  // posted results hold it weakly
  SerialWorker worker_;           // last: stops before the rest goes
};

}  // namespace orvane::media
