#pragma once
// The start and the end of the desktop application: at launch it begins
// the autosave session (which tells whether the last one crashed), opens
// the files named on the command line, offers recovery after an unclean
// end, and shows the welcome window unless a document opened. While it
// runs it shows the welcome window again whenever the last document window
// has closed, so the program stays up. A clean quit asks about unsaved
// changes, ends the autosave session and releases media access. Owns the
// shared services of the desktop; one per application; main thread.

#include <chrono>
#include <filesystem>
#include <memory>
#include <vector>

#include "app/dialog_presenter.hpp"
#include "app/document_controller.hpp"
#include "app/interaction_watchdog.hpp"
#include "app/qt_timer_factory.hpp"
#include "app/recent_documents.hpp"
#include "app/welcome_window.hpp"
#include "document/autosave_service.hpp"

namespace orvane::app {

class AppDelegate {
 public:
  // How long after a window closes the welcome window is considered, so
  // that the closed document has left the list.
  static constexpr std::chrono::milliseconds kWelcomeDelay{200};

  // supportDirectory holds the autosave snapshots, the session lock and the
  // recovered copies.
  AppDelegate(DialogPresenter& dialogs, std::filesystem::path supportDirectory);
  ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  // Begins the session, opens files (errors shown, the rest still opens),
  // shows the welcome window when none opened and, right after, asks about
  // the crashed session's snapshots.
  void launch(const std::vector<std::filesystem::path>& files);
  // Asks about unsaved changes, then quits the event loop; false when the
  // user cancelled.
  bool quit();
  // The clean end: the autosave session ends and media access is released.
  // Runs once, also when the event loop ended some other way.
  void shutdown();

  // The welcome window when no document is open, else none.
  void showWelcomeIfNoDocuments();

  DocumentController& documents() { return *documents_; }
  WelcomePresenter& welcome() { return *welcome_; }
  document::AutosaveService& autosave() { return *autosave_; }
  InteractionWatchdog& watchdog() { return watchdog_; }

 private:
  void offerRecovery(const std::vector<document::RecoveryRecord>& records);
  void presetChosen(const core::CompositionPreset& preset, core::EditingMode mode);
  void showAbout();
  void showUpdates();

  DialogPresenter& dialogs_;
  QtOneShotTimerFactory timers_;
  std::unique_ptr<document::AutosaveService> autosave_;
  RecentDocuments recents_;
  InteractionWatchdog watchdog_;
  std::unique_ptr<DocumentController> documents_;
  std::unique_ptr<WelcomePresenter> welcome_;
  QObject lifetime_;  // context of delayed calls: they die with the delegate
  bool sessionBegun_ = false;
  bool shutDown_ = false;
};

}  // namespace orvane::app
