#pragma once
// A channel of a layer independent of the layer: what the keyframe
// clipboard stores. An effect parameter names the catalog id of the effect
// (not the instance), so that it can meet the same effect on another layer.
// Kept in a header of its own, free of the document, so that the clipboard
// payload codec builds without it. Plain value.

#include <string>

#include "core/layer_parts.hpp"

namespace orvane::commands {

struct ClipboardChannel {
  enum class Kind { transform, crop, effectParameter, audioVolume, audioPan, textReveal };
  Kind kind = Kind::transform;
  core::LayerTransform::Channel channel = core::LayerTransform::Channel::position;  // transform
  core::LayerCrop::Edge edge = core::LayerCrop::Edge::left;                          // crop
  std::string effectID;     // effectParameter: catalog id
  std::string parameterID;  // effectParameter

  friend bool operator==(const ClipboardChannel&, const ClipboardChannel&) = default;
};

}  // namespace orvane::commands
