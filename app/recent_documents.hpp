#pragma once
// The list behind File > Open Recent and the welcome window: the project
// files opened or saved last, newest first, at most kLimit, kept in the
// program's settings (QSettings "Brightfold"/"Orvane", key
// "recentDocuments"). Main thread.

#include <QStringList>
#include <filesystem>
#include <vector>

namespace orvane::app {

class RecentDocuments {
 public:
  static constexpr int kLimit = 10;

  // The files, newest first; ones no longer on disk are left out.
  std::vector<std::filesystem::path> paths() const;
  // Moves path to the front (absolute, so that the list survives a change
  // of working folder).
  void noteOpened(const std::filesystem::path& path);
  void clear();
};

}  // namespace orvane::app
