// The clipboard payloads as JSON. The records inside use the project file's
// encoders and decoders; only the envelope and the channel tag live here.

#include "Commands/clipboard_payload.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include <nlohmann/json.hpp>

#include "core/enum_text.hpp"
#include "document/json_reading.hpp"
#include "document/record_json.hpp"

namespace orvane::commands {
namespace {

using nlohmann::json;
using namespace document::json_reading;
using Kind = ClipboardChannel::Kind;

constexpr std::array<std::pair<Kind, std::string_view>, 6> kKindKeys{{
    {Kind::transform, "transform"},
    {Kind::crop, "crop"},
    {Kind::effectParameter, "effectParameter"},
    {Kind::audioVolume, "audioVolume"},
    {Kind::audioPan, "audioPan"},
    {Kind::textReveal, "textReveal"},
}};

std::string_view keyOf(Kind kind) {
  for (const auto& [k, key] : kKindKeys)
    if (k == kind) return key;
  return {};
}

template <class T, class F>
json list(const std::vector<T>& items, F&& write) {
  json out = json::array();
  for (const auto& item : items) out.push_back(write(item));
  return out;
}

json channelJson(const ClipboardChannel& c) {
  json payload = json::object();
  switch (c.kind) {
    case Kind::transform: payload = std::string(core::rawValue(c.channel)); break;
    case Kind::crop: payload = std::string(core::rawValue(c.edge)); break;
    case Kind::effectParameter: payload = {{"effectID", c.effectID}, {"parameterID", c.parameterID}}; break;
    case Kind::audioVolume:
    case Kind::audioPan:
    case Kind::textReveal: break;
  }
  return {{std::string(keyOf(c.kind)), std::move(payload)}};
}

template <class E>
E readRaw(const json& j, const Where& w) {
  const auto v = core::fromRaw<E>(readString(j, w));
  if (!v) fail(w, "is not a known case");
  return *v;
}

ClipboardChannel readChannel(const json& j, const Where& w) {
  const Object o(j, w);
  if (j.size() != 1) fail(w, "does not hold exactly one case");
  const auto it = j.begin();
  const std::string& key = it.key();
  const json& value = it.value();
  const Where vw = w.child(key);
  ClipboardChannel c;
  const auto* kind = std::find_if(kKindKeys.begin(), kKindKeys.end(), [&](const auto& k) { return k.second == key; });
  if (kind == kKindKeys.end()) fail(vw, "is not a known channel");
  c.kind = kind->first;
  switch (c.kind) {
    case Kind::transform: c.channel = readRaw<core::LayerTransform::Channel>(value, vw); break;
    case Kind::crop: c.edge = readRaw<core::LayerCrop::Edge>(value, vw); break;
    case Kind::effectParameter: {
      const Object p(value, vw);
      c.effectID = required(p, "effectID", readString);
      c.parameterID = required(p, "parameterID", readString);
      break;
    }
    case Kind::audioVolume:
    case Kind::audioPan:
    case Kind::textReveal:
      if (!value.is_object()) fail(vw, "is not an object");
      break;
  }
  return c;
}

OVClipboard::KeyframePayload::Entry readEntry(const json& j, const Where& w) {
  const Object o(j, w);
  return {required(o, "channel", readChannel), required(o, "keyframes", listOf(document::decodeKeyframe))};
}

std::string dump(const json& j) { return j.dump(-1, ' ', false, json::error_handler_t::replace); }

// Parses and reads; any failure of either is no payload.
template <class Read>
auto decodeWith(std::string_view data, Read&& read) -> std::optional<decltype(read(json(), Where{}))> {
  try {
    const json j = json::parse(data);
    return read(j, Where{});
  } catch (const document::ProjectCodecError&) {
    return std::nullopt;
  } catch (const json::exception&) {
    return std::nullopt;
  }
}

}  // namespace

std::string OVClipboard::encode(const LayerPayload& p) {
  return dump({{"layers", list(p.layers, document::encodeLayer)},
               {"assets", list(p.assets, document::encodeMediaAsset)},
               {"origin", document::encodeTime(p.origin)}});
}

std::string OVClipboard::encode(const KeyframePayload& p) {
  const json entries = list(p.entries, [](const KeyframePayload::Entry& e) {
    return json{{"channel", channelJson(e.channel)}, {"keyframes", list(e.keyframes, document::encodeKeyframe)}};
  });
  return dump({{"entries", entries}, {"origin", document::encodeTime(p.origin)}});
}

std::optional<OVClipboard::LayerPayload> OVClipboard::decodeLayers(std::string_view data) {
  return decodeWith(data, [](const json& j, const Where& w) {
    const Object o(j, w);
    return LayerPayload{required(o, "layers", listOf(document::decodeLayer)),
                        required(o, "assets", listOf(document::decodeMediaAsset)),
                        required(o, "origin", document::decodeTime)};
  });
}

std::optional<OVClipboard::KeyframePayload> OVClipboard::decodeKeyframes(std::string_view data) {
  return decodeWith(data, [](const json& j, const Where& w) {
    const Object o(j, w);
    return KeyframePayload{required(o, "entries", listOf(readEntry)), required(o, "origin", document::decodeTime)};
  });
}

namespace {
void replaceContents(Pasteboard& pasteboard, std::string_view type, std::string bytes) {
  pasteboard.clear();
  pasteboard.setData(type, std::move(bytes));
}
}  // namespace

void OVClipboard::write(Pasteboard& pasteboard, const LayerPayload& payload) {
  replaceContents(pasteboard, layerType, encode(payload));
}

void OVClipboard::write(Pasteboard& pasteboard, const KeyframePayload& payload) {
  replaceContents(pasteboard, keyframeType, encode(payload));
}

std::optional<OVClipboard::LayerPayload> OVClipboard::layers(const Pasteboard& pasteboard) {
  const auto data = pasteboard.data(layerType);
  return data ? decodeLayers(*data) : std::nullopt;
}

std::optional<OVClipboard::KeyframePayload> OVClipboard::keyframes(const Pasteboard& pasteboard) {
  const auto data = pasteboard.data(keyframeType);
  return data ? decodeKeyframes(*data) : std::nullopt;
}

}  // namespace orvane::commands
