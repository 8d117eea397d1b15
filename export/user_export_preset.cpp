#include "export/user_export_preset.hpp"

#include <cmath>
#include <cstdio>

#include <nlohmann/json.hpp>

namespace orvane::export_ {

namespace {

using nlohmann::json;

// 16 -> "16", 12.5 -> "12.5".
std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%g", value);
  return text;
}

std::string sizeSummary(const UserExportPreset& preset) {
  if (preset.channels == ExportMediaChannels::audioOnly) return "Audio only";
  if (!preset.size) return "Composition size";
  return number(preset.size->width) + " × " + number(preset.size->height);
}

std::string bitrateSummary(const UserExportPreset& preset) {
  if (preset.channels == ExportMediaChannels::audioOnly) return number(preset.audioBitrateKbps) + " kbps";
  if (preset.codec == ExportCodec::proRes4444) return "ProRes 4444";
  return number(preset.videoBitrateMbps) + " Mbps";
}

bool finite(const UserExportPreset& preset) {
  const bool sizeFinite = !preset.size || (std::isfinite(preset.size->width) && std::isfinite(preset.size->height));
  return sizeFinite && std::isfinite(preset.videoBitrateMbps) && std::isfinite(preset.audioBitrateKbps);
}

json toJSON(const UserExportPreset& preset) {
  json object = {{"id", preset.id.text()},
                 {"name", preset.name},
                 {"videoBitrateMbps", preset.videoBitrateMbps},
                 {"audioBitrateKbps", preset.audioBitrateKbps},
                 {"channels", rawValue(preset.channels)},
                 {"codec", rawValue(preset.codec)}};
  if (preset.size) {
    object["sizeWidth"] = preset.size->width;
    object["sizeHeight"] = preset.size->height;
  }
  return object;
}

std::optional<double> optionalNumber(const json& object, const char* key) {
  auto it = object.find(key);
  if (it == object.end() || it->is_null()) return std::nullopt;
  return it->get<double>();  // throws for anything but a number
}

std::optional<UserExportPreset> fromJSON(const json& object) {
  auto id = core::Uuid::parse(object.at("id").get<std::string>());
  auto channels = exportMediaChannelsFromRaw(object.at("channels").get<std::string>());
  auto codec = exportCodecFromRaw(object.at("codec").get<std::string>());
  if (!id || !channels || !codec) return std::nullopt;
  UserExportPreset preset;
  preset.id = *id;
  preset.name = object.at("name").get<std::string>();
  preset.videoBitrateMbps = object.at("videoBitrateMbps").get<double>();
  preset.audioBitrateKbps = object.at("audioBitrateKbps").get<double>();
  preset.channels = *channels;
  preset.codec = *codec;
  auto width = optionalNumber(object, "sizeWidth");
  auto height = optionalNumber(object, "sizeHeight");
  if (width && height) preset.size = core::OVSize{*width, *height};
  return preset;
}

}  // namespace

UserExportPreset UserExportPreset::make(std::string name, const ExportSettings& settings,
                                        bool matchCompositionSize) {
  UserExportPreset preset;
  preset.name = std::move(name);
  if (!matchCompositionSize) preset.size = settings.size;
  preset.videoBitrateMbps = settings.videoBitrateMbps;
  preset.audioBitrateKbps = settings.audioBitrateKbps;
  preset.channels = settings.channels;
  preset.codec = settings.codec;
  return preset;
}

ExportPreset UserExportPreset::asBuiltIn() const {
  ExportPreset preset;
  preset.id = "user." + id.text();
  preset.name = name;
  preset.detail = "Saved preset · " + sizeSummary(*this) + " · " + bitrateSummary(*this);
  preset.size = size;
  preset.videoBitrateMbps = videoBitrateMbps;
  preset.audioBitrateKbps = audioBitrateKbps;
  preset.channels = channels;
  preset.codec = codec;
  return preset;
}

std::optional<std::string> encodeUserExportPresets(const std::vector<UserExportPreset>& presets) {
  json list = json::array();
  for (const UserExportPreset& preset : presets) {
    if (!finite(preset)) return std::nullopt;
    list.push_back(toJSON(preset));
  }
  try {
    return list.dump();
  } catch (const json::exception&) {
    return std::nullopt;  // a name that is not UTF-8
  }
}

std::optional<std::vector<UserExportPreset>> decodeUserExportPresets(std::string_view text) {
  try {
    const json list = json::parse(text);
    if (!list.is_array()) return std::nullopt;
    std::vector<UserExportPreset> presets;
    for (const json& object : list) {
      auto preset = fromJSON(object);
      if (!preset) return std::nullopt;
      presets.push_back(std::move(*preset));
    }
    return presets;
  } catch (const json::exception&) {
    return std::nullopt;
  }
}

std::vector<UserExportPreset> UserExportPresetStore::load() const {
  const auto text = settings_.stringValue(key);
  if (!text) return {};
  return decodeUserExportPresets(*text).value_or(std::vector<UserExportPreset>{});
}

void UserExportPresetStore::save(const std::vector<UserExportPreset>& presets) {
  if (auto text = encodeUserExportPresets(presets)) settings_.setValue(key, std::move(*text));
}

}  // namespace orvane::export_
