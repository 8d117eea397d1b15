#include "app/qt_settings_store.hpp"

#include <QSettings>
#include <QString>

#include <charconv>
#include <cmath>
#include <string>

namespace orvane::app {

namespace {

QString settingsKey(std::string_view key) {
  return QStringLiteral("preferences/") + QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
}

std::string doubleText(double value) {
  char buffer[64];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
  return std::string(buffer, end);
}

}  // namespace

std::string encodeSettingValue(const core::SettingValue& value) {
  if (const bool* b = std::get_if<bool>(&value)) return *b ? "b:true" : "b:false";
  if (const double* d = std::get_if<double>(&value)) return "d:" + doubleText(*d);
  return "s:" + std::get<std::string>(value);
}

std::optional<core::SettingValue> decodeSettingValue(std::string_view text) {
  if (text.size() < 2 || text[1] != ':') return std::nullopt;
  const std::string_view body = text.substr(2);
  switch (text[0]) {
    case 'b':
      if (body == "true") return core::SettingValue(true);
      if (body == "false") return core::SettingValue(false);
      return std::nullopt;
    case 'd': {
      double number = 0;
      const auto [end, error] = std::from_chars(body.data(), body.data() + body.size(), number);
      if (error != std::errc() || end != body.data() + body.size() || !std::isfinite(number)) return std::nullopt;
      return core::SettingValue(number);
    }
    case 's':
      return core::SettingValue(std::string(body));
    default:
      return std::nullopt;
  }
}

std::optional<core::SettingValue> QtSettingsStore::value(std::string_view key) const {
  const QVariant stored = QSettings().value(settingsKey(key));
  if (!stored.isValid()) return std::nullopt;
  return decodeSettingValue(stored.toString().toStdString());
}

void QtSettingsStore::setValue(std::string_view key, core::SettingValue value) {
  QSettings().setValue(settingsKey(key), QString::fromStdString(encodeSettingValue(value)));
}

void QtSettingsStore::remove(std::string_view key) { QSettings().remove(settingsKey(key)); }

}  // namespace orvane::app
