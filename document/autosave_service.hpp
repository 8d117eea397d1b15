#pragma once
// Crash insurance for open projects. A debounced background writer keeps one
// snapshot of every open project, with a small manifest beside it, in the
// Autosave folder of the program's data directory. A lock file that lives
// exactly as long as a session tells the next launch whether the last one
// ended cleanly; after an unclean end the snapshots are offered back
// (RecoveryPresenter). The snapshots are never the user's files.
//
// Threads: every public member is for the main thread, the one that owns the
// documents and on which the timers fire. All file work and the encoding of
// snapshots run in order on the service's own writer thread, so a discard
// that follows a write removes what the write made. Failures are logged
// ("Orvane autosave failed: ...") and swallowed: autosave never disturbs the
// user.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/project.hpp"
#include "core/timestamp.hpp"
#include "core/uuid.hpp"

namespace orvane::document {

// A running one-shot timer. After cancel() its callback does not run;
// destroying the handle cancels it too. Main thread.
class OneShotTimer {
 public:
  virtual ~OneShotTimer() = default;
  virtual void cancel() = 0;
};

// Starts one-shot timers whose callbacks run on the main thread (the desktop
// backs it with a single-shot toolkit timer). A callback may destroy its own
// handle while it runs, so the factory must keep the callback alive until it
// returns.
class OneShotTimerFactory {
 public:
  virtual ~OneShotTimerFactory() = default;
  virtual std::unique_ptr<OneShotTimer> start(std::chrono::milliseconds delay,
                                              std::function<void()> callback) = 0;
};

// One snapshot that can be offered back after a crash. Plain value.
struct RecoveryRecord {
  core::Uuid projectID;
  std::string projectName;
  core::Timestamp savedAt;
  std::optional<std::string> originalPath;  // the project's file, if it had one
  std::filesystem::path snapshotPath;

  friend bool operator==(const RecoveryRecord&, const RecoveryRecord&) = default;
};

// The program's data directory: $XDG_DATA_HOME/Orvane, else
// $HOME/.local/share/Orvane, else "Orvane" in the temporary directory.
std::filesystem::path defaultSupportDirectory();

class AutosaveService {
 public:
  // A busy document is written this long after its last change.
  static constexpr std::chrono::milliseconds debounceInterval{15'000};

  // supportDirectory holds the Autosave and Recovered folders and the lock
  // file. The timer factory must outlive the service.
  AutosaveService(std::filesystem::path supportDirectory, OneShotTimerFactory& timers);
  // Cancels pending timers, then finishes the queued file work.
  ~AutosaveService();
  AutosaveService(const AutosaveService&) = delete;
  AutosaveService& operator=(const AutosaveService&) = delete;

  const std::filesystem::path& supportDirectory() const { return root_; }
  std::filesystem::path autosaveDirectory() const;
  std::filesystem::path sessionLockPath() const;
  std::filesystem::path snapshotPath(const core::Uuid& projectID) const;
  std::filesystem::path manifestPath(const core::Uuid& projectID) const;

  // At launch. Without a lock file the last session ended cleanly: the
  // Autosave folder is stale and emptied, and nothing is offered. With one,
  // it crashed: the snapshots found are returned and kept. Either way the
  // folder and this session's lock file are made.
  std::vector<RecoveryRecord> beginSession();
  // At normal termination: pending timers stop and the lock file goes
  // (synchronously). Snapshots stay for the next launch to clear.
  void endSession();

  // At every revision of a document: restarts the project's debounce, so
  // that it is written once, debounceInterval after it goes quiet, with the
  // last value scheduled.
  void scheduleSnapshot(const core::OVProject& project,
                        std::optional<std::string> originalPath = std::nullopt);
  // Queues the snapshot, then its manifest, at once.
  void writeSnapshot(core::OVProject project, std::optional<std::string> originalPath = std::nullopt);
  // Stops the project's timer and queues removal of its snapshot and
  // manifest. Only the recovery flow calls it; closing or saving does not.
  void discardSnapshot(const core::Uuid& projectID);
  // Removes everything in the Autosave folder (waits for it).
  void clearAll();
  // Every snapshot that has a readable manifest, newest first (waits for the
  // queued work first).
  std::vector<RecoveryRecord> loadRecoveryRecords();

  // Blocks until the queued file work is done.
  void waitUntilIdle();

 private:
  class Writer;
  // What a timer callback holds: it goes with the service, so a callback
  // that outlives the service does nothing.
  struct Link {
    AutosaveService* service;
  };
  struct PendingTimer {
    std::uint64_t generation = 0;
    std::unique_ptr<OneShotTimer> timer;
  };

  void timerFired(const core::Uuid& projectID, std::uint64_t generation, core::OVProject project,
                  std::optional<std::string> originalPath);
  void cancelTimer(const core::Uuid& projectID);
  void cancelAllTimers();

  std::filesystem::path root_;
  OneShotTimerFactory& timers_;
  std::unordered_map<core::Uuid, PendingTimer> pendingTimers_;
  std::uint64_t nextGeneration_ = 1;
  std::shared_ptr<Link> link_;
  std::unique_ptr<Writer> writer_;
};

}  // namespace orvane::document
