#pragma once
// The window the program opens with instead of a blank document: "Welcome
// to Orvane", with the recent documents, the composition presets by group
// and the editing mode of the new composition. Choosing a preset asks for a
// new document through PendingNewProject; opening a recent file goes
// through the document controller. WelcomePresenter keeps the one window,
// shows it again when the last document closes and closes it when one
// opens. Main thread.

#include <QWidget>
#include <filesystem>
#include <functional>
#include <vector>

#include "core/composition.hpp"
#include "core/composition_preset.hpp"

class QButtonGroup;
class QListWidget;
class QPushButton;

namespace orvane::app {

class WelcomeWindow final : public QWidget {
 public:
  struct Callbacks {
    std::function<void(const core::CompositionPreset&, core::EditingMode)> presetChosen;
    std::function<void(const std::filesystem::path&)> openRecent;
    std::function<void()> openOther;
    // The user closed the window (not the program).
    std::function<void()> closedByUser;
  };

  explicit WelcomeWindow(Callbacks callbacks, QWidget* parent = nullptr);

  void setRecentDocuments(const std::vector<std::filesystem::path>& paths);
  core::EditingMode editingMode() const;
  void setEditingMode(core::EditingMode mode);
  // The button of the preset with this name; null when there is none.
  QPushButton* presetButton(const QString& name) const;
  QListWidget* recentList() const { return recent_; }
  // Closes without counting as the user's close.
  void closeQuietly();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QWidget* makeRecentColumn();
  QWidget* makePresetColumn();

  Callbacks callbacks_;
  QListWidget* recent_ = nullptr;
  QButtonGroup* modes_ = nullptr;
  std::vector<std::filesystem::path> recentPaths_;
  bool closingQuietly_ = false;
};

class WelcomePresenter {
 public:
  WelcomePresenter(WelcomeWindow::Callbacks callbacks,
                   std::function<std::vector<std::filesystem::path>()> recentDocuments);
  ~WelcomePresenter();

  // Brings the window to the front, making it first if need be.
  void show();
  void close();
  bool isVisible() const;
  WelcomeWindow* window() const { return window_; }

 private:
  void writeSnapshotIfAsked();

  WelcomeWindow::Callbacks callbacks_;
  std::function<std::vector<std::filesystem::path>()> recentDocuments_;
  WelcomeWindow* window_ = nullptr;
  bool snapshotWritten_ = false;
};

}  // namespace orvane::app
