#pragma once
// What copying puts on the pasteboard: layers (with the media they use, so
// that a paste into another project works) or keyframes by channel, as JSON
// under the program's own types. Records inside are in their project-file
// form. Kept free of the document (and of <expected>) so that the fuzzing
// build compiles the decoders directly. Plain values; main thread for the
// pasteboard calls, any thread for encoding and decoding.
//
// The JSON: {"assets":[MediaAsset],"layers":[Layer],"origin":OVTime} and
// {"entries":[{"channel":Channel,"keyframes":[Keyframe]}],"origin":OVTime}.
// A Channel is an object of exactly one key, the name of its case, holding
// that case's payload: the raw text of the transform channel or crop edge,
// an object for an effect parameter, an empty object for the rest:
//   {"transform":"position"}  {"crop":"left"}
//   {"effectParameter":{"effectID":"blur","parameterID":"radius"}}
//   {"audioVolume":{}}  {"audioPan":{}}  {"textReveal":{}}
// Every key named here is required; other keys are ignored.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Commands/clipboard_channel.hpp"
#include "Commands/pasteboard.hpp"
#include "core/keyframe.hpp"
#include "core/layer.hpp"
#include "core/media_asset.hpp"
#include "core/ov_time.hpp"

namespace orvane::commands {

struct OVClipboard {
  static constexpr std::string_view layerType = "com.brightfold.orvane.layers";
  static constexpr std::string_view keyframeType = "com.brightfold.orvane.keyframes";

  struct LayerPayload {
    std::vector<core::Layer> layers;       // in stacking order
    std::vector<core::MediaAsset> assets;  // every asset the layers use
    core::OVTime origin;                   // the earliest start among the layers

    friend bool operator==(const LayerPayload&, const LayerPayload&) = default;
  };

  struct KeyframePayload {
    struct Entry {
      ClipboardChannel channel;
      std::vector<core::Keyframe> keyframes;

      friend bool operator==(const Entry&, const Entry&) = default;
    };
    std::vector<Entry> entries;
    core::OVTime origin;  // the earliest keyframe time

    friend bool operator==(const KeyframePayload&, const KeyframePayload&) = default;
  };

  // Compact JSON with sorted keys.
  static std::string encode(const LayerPayload& payload);
  static std::string encode(const KeyframePayload& payload);
  // None for anything that is not such a payload.
  static std::optional<LayerPayload> decodeLayers(std::string_view data);
  static std::optional<KeyframePayload> decodeKeyframes(std::string_view data);

  // Replaces the pasteboard's contents with the payload. The payload is
  // encoded before anything is cleared, so a failing encode (it throws)
  // leaves the pasteboard as it was.
  static void write(Pasteboard& pasteboard, const LayerPayload& payload);
  static void write(Pasteboard& pasteboard, const KeyframePayload& payload);
  // The payload on the pasteboard; none when absent, corrupt or foreign.
  static std::optional<LayerPayload> layers(const Pasteboard& pasteboard);
  static std::optional<KeyframePayload> keyframes(const Pasteboard& pasteboard);
};

}  // namespace orvane::commands
