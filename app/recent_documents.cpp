#include "app/recent_documents.hpp"

#include <QSettings>
#include <system_error>

namespace orvane::app {

namespace {

const QString kKey = QStringLiteral("recentDocuments");

QStringList stored() { return QSettings().value(kKey).toStringList(); }

}  // namespace

std::vector<std::filesystem::path> RecentDocuments::paths() const {
  std::vector<std::filesystem::path> out;
  for (const QString& entry : stored()) {
    std::filesystem::path path(entry.toStdString());
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error)) out.push_back(std::move(path));
  }
  return out;
}

void RecentDocuments::noteOpened(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::path absolute = std::filesystem::absolute(path, error);
  const QString entry = QString::fromStdString((error ? path : absolute).lexically_normal().string());
  QStringList list = stored();
  list.removeAll(entry);
  list.prepend(entry);
  while (list.size() > kLimit) list.removeLast();
  QSettings().setValue(kKey, list);
}

void RecentDocuments::clear() { QSettings().remove(kKey); }

}  // namespace orvane::app
