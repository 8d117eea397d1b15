#include "core/settings_store.hpp"

namespace orvane::core {

namespace {

template <class T>
std::optional<T> typed(const std::optional<SettingValue>& value) {
  if (!value) return std::nullopt;
  if (const T* v = std::get_if<T>(&*value)) return *v;
  return std::nullopt;
}

}  // namespace

std::optional<bool> SettingsStore::boolValue(std::string_view key) const { return typed<bool>(value(key)); }
std::optional<double> SettingsStore::doubleValue(std::string_view key) const { return typed<double>(value(key)); }
std::optional<std::string> SettingsStore::stringValue(std::string_view key) const {
  return typed<std::string>(value(key));
}

std::optional<SettingValue> MemorySettingsStore::value(std::string_view key) const {
  const auto found = values_.find(key);
  if (found == values_.end()) return std::nullopt;
  return found->second;
}

void MemorySettingsStore::setValue(std::string_view key, SettingValue value) {
  values_.insert_or_assign(std::string(key), std::move(value));
}

void MemorySettingsStore::remove(std::string_view key) {
  const auto found = values_.find(key);
  if (found != values_.end()) values_.erase(found);
}

}  // namespace orvane::core
