#pragma once
// The user's preferences by key ("stagePreview.gpu", "export.userPresets",
// "ai.provider", ...), as the services read and write them. The desktop
// application backs it with QSettings; MemorySettingsStore serves tests and
// the command line. Values are booleans, numbers or text (structured values
// are stored as JSON text). Main thread, like the services that use it.

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace orvane::core {

using SettingValue = std::variant<bool, double, std::string>;

class SettingsStore {
 public:
  virtual ~SettingsStore() = default;

  // The stored value; none when the key is absent.
  virtual std::optional<SettingValue> value(std::string_view key) const = 0;
  virtual void setValue(std::string_view key, SettingValue value) = 0;
  virtual void remove(std::string_view key) = 0;

  // The value when it is stored with that type; none otherwise.
  std::optional<bool> boolValue(std::string_view key) const;
  std::optional<double> doubleValue(std::string_view key) const;
  std::optional<std::string> stringValue(std::string_view key) const;
};

class MemorySettingsStore final : public SettingsStore {
 public:
  std::optional<SettingValue> value(std::string_view key) const override;
  void setValue(std::string_view key, SettingValue value) override;
  void remove(std::string_view key) override;

 private:
  std::map<std::string, SettingValue, std::less<>> values_;
};

}  // namespace orvane::core
