#pragma once
// What the panels put on a drag that the timeline may receive: a behavior
// from the behaviors library, a composition from the project panel, a media
// asset from the media library. Each is a plain value with its own content
// type, carried as JSON text ({"behaviorID": "..."} and the like). Decoding
// is safe on any bytes: anything but the expected record yields no value.

#include <optional>
#include <string>
#include <string_view>

#include "core/uuid.hpp"

namespace orvane::surfaces {

struct BehaviorDrag {
  static constexpr std::string_view contentType = "com.brightfold.orvane.behavior";
  std::string behaviorID;

  std::string encoded() const;
  static std::optional<BehaviorDrag> decode(std::string_view data);
  friend bool operator==(const BehaviorDrag&, const BehaviorDrag&) = default;
};

struct CompositionDrag {
  static constexpr std::string_view contentType = "com.brightfold.orvane.composition";
  core::Uuid compositionID;

  std::string encoded() const;
  static std::optional<CompositionDrag> decode(std::string_view data);
  friend bool operator==(const CompositionDrag&, const CompositionDrag&) = default;
};

struct MediaAssetDrag {
  static constexpr std::string_view contentType = "com.brightfold.orvane.asset";
  core::Uuid assetID;

  std::string encoded() const;
  static std::optional<MediaAssetDrag> decode(std::string_view data);
  friend bool operator==(const MediaAssetDrag&, const MediaAssetDrag&) = default;
};

}  // namespace orvane::surfaces
