#include "render/font_resolver.hpp"

#include <QFontDatabase>
#include <QFontInfo>
#include <QHash>
#include <QStringList>
#include <array>
#include <cstring>
#include <mutex>
#include <optional>
#include <unordered_map>

namespace orvane::render {

namespace {

struct ResolvedName {
  QString family;
  QFont::Weight weight = QFont::Normal;
  bool italic = false;
  bool found = false;
};

struct StyleWord {
  const char* word;
  QFont::Weight weight;
};

// Compound words before the words they contain ("semibold" before "bold").
constexpr std::array<StyleWord, 17> kStyleWords{{
    {"extralight", QFont::ExtraLight}, {"ultralight", QFont::ExtraLight}, {"semibold", QFont::DemiBold},
    {"demibold", QFont::DemiBold},     {"extrabold", QFont::ExtraBold},   {"ultrabold", QFont::ExtraBold},
    {"extrablack", QFont::Black},      {"black", QFont::Black},           {"heavy", QFont::ExtraBold},
    {"bold", QFont::Bold},             {"medium", QFont::Medium},         {"light", QFont::Light},
    {"thin", QFont::Thin},             {"hairline", QFont::Thin},         {"regular", QFont::Normal},
    {"roman", QFont::Normal},          {"book", QFont::Normal},
}};

// Lower case letters and digits only: "Nimbus Sans" and "NimbusSans" meet.
QString normalised(const QString& name) {
  QString out;
  for (const QChar c : name) {
    if (c.isLetterOrNumber()) out.append(c.toLower());
  }
  return out;
}

// "AvenirNext" -> "Avenir Next"; "TimesNewRomanPS" -> "Times New Roman PS".
QString spacedAtCapitals(const QString& name) {
  QString out;
  for (qsizetype i = 0; i < name.size(); ++i) {
    const QChar c = name.at(i);
    if (i > 0 && c.isUpper() && name.at(i - 1).isLower()) out.append(u' ');
    out.append(c);
  }
  return out;
}

QStringList familyVariants(const QString& family) {
  QStringList variants{family, spacedAtCapitals(family)};
  for (const QString& variant : QStringList(variants)) {
    for (const char* suffix : {" PS", " MT", "PS", "MT"}) {
      if (variant.endsWith(QLatin1String(suffix)) && variant.size() > qsizetype(std::strlen(suffix))) {
        variants.append(variant.left(variant.size() - qsizetype(std::strlen(suffix))).trimmed());
      }
    }
  }
  variants.removeDuplicates();
  return variants;
}

// The installed families by normalised name, foundries ("[urw]") dropped.
QHash<QString, QString> installedFamilies() {
  QHash<QString, QString> families;
  for (QString family : QFontDatabase::families()) {
    if (const qsizetype bracket = family.indexOf(u" ["); bracket > 0) family.truncate(bracket);
    families.insert(normalised(family), family);
  }
  return families;
}

QString resolvedFamily(const QString& family) { return QFontInfo(QFont(family)).family(); }

// What fontconfig falls back on for a name it doesn't know.
const QString& catchAllFamily() {
  static const QString family = resolvedFamily(QStringLiteral("Orvane No Such Family 7f3a"));
  return family;
}

std::optional<QString> existingFamily(const QString& family, const QHash<QString, QString>& installed) {
  for (const QString& variant : familyVariants(family)) {
    if (const auto known = installed.find(normalised(variant)); known != installed.end()) return known.value();
  }
  for (const QString& variant : familyVariants(family)) {
    if (!variant.isEmpty() && resolvedFamily(variant) != catchAllFamily()) return variant;
  }
  return std::nullopt;
}

void applyStyle(const QString& style, ResolvedName& resolved) {
  const QString lower = style.toLower();
  for (const StyleWord& entry : kStyleWords) {
    if (lower.contains(QLatin1String(entry.word))) {
      resolved.weight = entry.weight;
      break;
    }
  }
  resolved.italic = lower.contains(u"italic") || lower.contains(u"oblique");
}

ResolvedName resolve(const std::string& name) {
  const QString full = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())).trimmed();
  const QHash<QString, QString> installed = installedFamilies();
  ResolvedName resolved;
  if (const qsizetype dash = full.lastIndexOf(u'-'); dash > 0) {
    if (auto family = existingFamily(full.left(dash), installed)) {
      resolved.family = *family;
      resolved.found = true;
      applyStyle(full.mid(dash + 1), resolved);
      return resolved;
    }
  }
  if (auto family = existingFamily(full, installed)) {
    resolved.family = *family;
    resolved.found = true;
    return resolved;
  }
  resolved.family = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
  resolved.weight = QFont::Bold;
  return resolved;
}

ResolvedName resolveRemembered(const std::string& name) {
  static std::mutex mutex;
  static std::unordered_map<std::string, ResolvedName> remembered;
  {
    std::lock_guard lock(mutex);
    if (const auto found = remembered.find(name); found != remembered.end()) return found->second;
  }
  ResolvedName resolved = resolve(name);
  std::lock_guard lock(mutex);
  remembered.emplace(name, resolved);
  return resolved;
}

// Points per layer pixel for fonts laid out without a paint device, which
// take the screen's resolution: a size in points of pixelSize × this gives
// pixelSize pixels.
double pointsPerPixel() {
  static const double ratio = [] {
    QFont probe;
    probe.setPixelSize(1000);
    const double points = QFontInfo(probe).pointSizeF();
    return points > 0 ? points / 1000 : 0.75;
  }();
  return ratio;
}

}  // namespace

QFont fontNamed(const std::string& name, double pixelSize) {
  const ResolvedName resolved = resolveRemembered(name);
  QFont font(resolved.family);
  font.setWeight(resolved.weight);
  font.setItalic(resolved.italic);
  font.setPointSizeF(pixelSize * pointsPerPixel());
  font.setHintingPreference(QFont::PreferNoHinting);
  font.setStyleStrategy(QFont::PreferOutline);
  return font;
}

bool fontNameResolves(const std::string& name) { return resolveRemembered(name).found; }

}  // namespace orvane::render
