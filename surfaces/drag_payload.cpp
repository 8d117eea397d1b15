#include "surfaces/drag_payload.hpp"

#include <nlohmann/json.hpp>

namespace orvane::surfaces {

namespace {

using nlohmann::json;

std::optional<std::string> textField(std::string_view data, const char* key) {
  const json j = json::parse(data.begin(), data.end(), nullptr, /*allow_exceptions=*/false);
  if (!j.is_object()) return std::nullopt;
  const auto it = j.find(key);
  if (it == j.end() || !it->is_string()) return std::nullopt;
  return it->get<std::string>();
}

std::optional<core::Uuid> uuidField(std::string_view data, const char* key) {
  const auto text = textField(data, key);
  return text ? core::Uuid::parse(*text) : std::nullopt;
}

std::string encodedField(const char* key, const std::string& value) { return json{{key, value}}.dump(); }

}  // namespace

std::string BehaviorDrag::encoded() const { return encodedField("behaviorID", behaviorID); }

std::optional<BehaviorDrag> BehaviorDrag::decode(std::string_view data) {
  auto id = textField(data, "behaviorID");
  if (!id) return std::nullopt;
  return BehaviorDrag{std::move(*id)};
}

std::string CompositionDrag::encoded() const { return encodedField("compositionID", compositionID.text()); }

std::optional<CompositionDrag> CompositionDrag::decode(std::string_view data) {
  const auto id = uuidField(data, "compositionID");
  if (!id) return std::nullopt;
  return CompositionDrag{*id};
}

std::string MediaAssetDrag::encoded() const { return encodedField("assetID", assetID.text()); }

std::optional<MediaAssetDrag> MediaAssetDrag::decode(std::string_view data) {
  const auto id = uuidField(data, "assetID");
  if (!id) return std::nullopt;
  return MediaAssetDrag{*id};
}

}  // namespace orvane::surfaces
