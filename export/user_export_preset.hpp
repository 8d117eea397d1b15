#pragma once
// Export presets the user saves from the export sheet, and their home in the
// settings store: the whole list as one JSON text under "export.userPresets".
// UserExportPreset is a plain value; the store is used on the main thread,
// like the SettingsStore it wraps (which it does not own).

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/geometry.hpp"
#include "core/settings_store.hpp"
#include "core/uuid.hpp"
#include "export/export_preset.hpp"
#include "export/export_settings.hpp"

namespace orvane::export_ {

struct UserExportPreset {
  core::Uuid id = core::Uuid::make();
  std::string name;
  std::optional<core::OVSize> size;  // none: follows the composition's size
  double videoBitrateMbps = 16;
  double audioBitrateKbps = 192;
  ExportMediaChannels channels = ExportMediaChannels::videoAndAudio;
  ExportCodec codec = ExportCodec::h264;

  // A new preset (fresh id) with the settings' codec, channels, bitrates and,
  // unless matchCompositionSize, their size.
  static UserExportPreset make(std::string name, const ExportSettings& settings, bool matchCompositionSize);

  // id "user." + the id's text; detail "Saved preset · " + size · bitrate.
  ExportPreset asBuiltIn() const;

  friend bool operator==(const UserExportPreset&, const UserExportPreset&) = default;
};

// The list as JSON (keys id, name, sizeWidth, sizeHeight, videoBitrateMbps,
// audioBitrateKbps, channels, codec); none when a value cannot be written
// (a bitrate or size that is not finite, a name that is not UTF-8).
std::optional<std::string> encodeUserExportPresets(const std::vector<UserExportPreset>& presets);
// None for anything that is not such a list, one bad entry included.
std::optional<std::vector<UserExportPreset>> decodeUserExportPresets(std::string_view json);

class UserExportPresetStore {
 public:
  static constexpr std::string_view key = "export.userPresets";

  explicit UserExportPresetStore(core::SettingsStore& settings) : settings_(settings) {}

  // Empty when nothing is stored or the stored value cannot be read.
  std::vector<UserExportPreset> load() const;
  // Replaces the whole list; a list that cannot be encoded leaves the stored one.
  void save(const std::vector<UserExportPreset>& presets);

 private:
  core::SettingsStore& settings_;
};

}  // namespace orvane::export_
