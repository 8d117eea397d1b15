#pragma once
// The user's preferences in QSettings (the desktop's per-user settings file
// of the organisation and application names set at start-up), for the
// services that read them through core::SettingsStore: export presets, the
// assistant's provider, the stage preview. The command line uses the same
// store, so `orvane assist` finds the provider the desktop chose.
//
// INI files give every value back as text, so each value is kept with its
// type in front ("b:true", "d:16", "s:text"). Main thread.

#include "core/settings_store.hpp"

namespace orvane::app {

class QtSettingsStore final : public core::SettingsStore {
 public:
  std::optional<core::SettingValue> value(std::string_view key) const override;
  void setValue(std::string_view key, core::SettingValue value) override;
  void remove(std::string_view key) override;
};

// The text form of a value, and back; none for text without a known prefix.
std::string encodeSettingValue(const core::SettingValue& value);
std::optional<core::SettingValue> decodeSettingValue(std::string_view text);

}  // namespace orvane::app
