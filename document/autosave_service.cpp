#include "document/autosave_service.hpp"

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <exception>
#include <future>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include <nlohmann/json.hpp>

#include "core/log.hpp"
#include "document/atomic_file.hpp"
#include "document/project_codec.hpp"

namespace orvane::document {
namespace fs = std::filesystem;

namespace {

constexpr std::string_view kLogCategory = "autosave";
constexpr std::string_view kManifestSuffix = ".manifest.json";

void logFailure(std::string_view description) {
  core::logError(kLogCategory, "Orvane autosave failed: " + std::string(description));
}

void logFailure(const std::error_code& ec, const fs::path& path) {
  logFailure(ec.message() + " (" + path.string() + ")");
}

fs::path autosaveDirectoryIn(const fs::path& root) { return root / "Autosave"; }
fs::path sessionLockIn(const fs::path& root) { return root / "session.lock"; }
fs::path snapshotIn(const fs::path& root, const core::Uuid& id) {
  return autosaveDirectoryIn(root) / (id.text() + ".orvane");
}
fs::path manifestIn(const fs::path& root, const core::Uuid& id) {
  return autosaveDirectoryIn(root) / (id.text() + std::string(kManifestSuffix));
}

// --- Manifest: the record beside each snapshot ---

std::string encodeManifest(const core::OVProject& project, core::Timestamp savedAt,
                           const std::optional<std::string>& originalPath) {
  nlohmann::json j;  // an ordered map: keys come out sorted
  j["projectID"] = project.id.text();
  j["projectName"] = project.name;
  j["savedAt"] = ProjectCodec::encodeDate(savedAt);
  if (originalPath) j["originalPath"] = *originalPath;
  // A name that is not valid UTF-8 must not cost the snapshot its manifest.
  return j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

const std::string* stringField(const nlohmann::json& j, const char* key) {
  auto it = j.find(key);
  return it != j.end() && it->is_string() ? it->get_ptr<const std::string*>() : nullptr;
}

// The record a manifest describes, or nothing when it is not one.
std::optional<RecoveryRecord> decodeManifest(const fs::path& root, std::string_view text) {
  const auto j = nlohmann::json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (!j.is_object()) return std::nullopt;  // a parse failure is "discarded", not an object
  const std::string* id = stringField(j, "projectID");
  const std::string* name = stringField(j, "projectName");
  const std::string* savedAt = stringField(j, "savedAt");
  if (id == nullptr || name == nullptr || savedAt == nullptr) return std::nullopt;
  const auto uuid = core::Uuid::parse(*id);
  const auto date = ProjectCodec::decodeDate(*savedAt);
  if (!uuid || !date) return std::nullopt;
  RecoveryRecord record{*uuid, *name, *date, std::nullopt, snapshotIn(root, *uuid)};
  if (const std::string* path = stringField(j, "originalPath")) record.originalPath = *path;
  return record;
}

// --- File work, on the writer thread only ---

bool ensureDirectories(const fs::path& root) {
  std::error_code ec;
  fs::create_directories(autosaveDirectoryIn(root), ec);
  if (ec) logFailure(ec, autosaveDirectoryIn(root));
  return !ec;
}

// Only a lock file known to be absent means a clean end: when its state
// cannot be read, keeping the snapshots is the safe side.
bool lastSessionEndedCleanly(const fs::path& root) {
  std::error_code ec;
  return fs::symlink_status(sessionLockIn(root), ec).type() == fs::file_type::not_found;
}

void clearAllNow(const fs::path& root) {
  const fs::path dir = autosaveDirectoryIn(root);
  std::error_code ec;
  fs::directory_iterator it(dir, ec);
  if (ec) {
    if (ec != std::errc::no_such_file_or_directory) logFailure(ec, dir);
    return;
  }
  for (; it != fs::directory_iterator(); it.increment(ec)) {
    std::error_code removeError;
    fs::remove_all(it->path(), removeError);
    if (removeError) logFailure(removeError, it->path());
  }
  if (ec) logFailure(ec, dir);
}

std::vector<RecoveryRecord> loadRecordsNow(const fs::path& root) {
  std::vector<RecoveryRecord> records;
  std::error_code ec;
  for (fs::directory_iterator it(autosaveDirectoryIn(root), ec);
       !ec && it != fs::directory_iterator(); it.increment(ec)) {
    if (!it->path().filename().string().ends_with(kManifestSuffix)) continue;
    const auto text = readRegularFile(it->path(), "The manifest is empty or is a folder.");
    if (!text) continue;
    auto record = decodeManifest(root, *text);
    std::error_code statError;
    if (record && fs::is_regular_file(record->snapshotPath, statError)) {
      records.push_back(std::move(*record));
    }
  }
  std::ranges::sort(records, [](const RecoveryRecord& a, const RecoveryRecord& b) {
    if (a.savedAt != b.savedAt) return a.savedAt > b.savedAt;
    return a.projectID < b.projectID;
  });
  return records;
}

void createSessionLock(const fs::path& root) {
  if (auto written = writeFileAtomically(sessionLockIn(root), ""); !written) {
    logFailure(written.error().message);
  }
}

void removeSessionLock(const fs::path& root) {
  std::error_code ec;
  fs::remove(sessionLockIn(root), ec);
  if (ec) logFailure(ec, sessionLockIn(root));
}

// The snapshot first, then its manifest: a manifest never names a snapshot
// that was not there.
void writeSnapshotNow(const fs::path& root, const core::OVProject& project,
                      const std::optional<std::string>& originalPath) {
  if (!ensureDirectories(root)) return;
  if (auto written = ProjectCodec::write(project, snapshotIn(root, project.id)); !written) {
    logFailure(written.error().message);
    return;
  }
  const std::string manifest = encodeManifest(project, core::nowTimestamp(), originalPath);
  if (auto written = writeFileAtomically(manifestIn(root, project.id), manifest); !written) {
    logFailure(written.error().message);
  }
}

void removeSnapshotNow(const fs::path& root, const core::Uuid& id) {
  for (const fs::path& path : {snapshotIn(root, id), manifestIn(root, id)}) {
    std::error_code ec;
    fs::remove(path, ec);  // a missing file is no error here
    if (ec) logFailure(ec, path);
  }
}

void runGuarded(const std::function<void()>& task) {
  try {
    task();
  } catch (const std::exception& e) {
    logFailure(e.what());
  } catch (...) {
    logFailure("unknown error");
  }
}

}  // namespace

// --- The serial writer: one thread running queued tasks in order ---

class AutosaveService::Writer {
 public:
  Writer() : thread_([this] { run(); }) {}

  // Runs what is queued, then stops.
  ~Writer() {
    {
      std::lock_guard lock(mutex_);
      stopping_ = true;
    }
    wake_.notify_all();
    thread_.join();
  }

  void post(std::function<void()> task) {
    {
      std::lock_guard lock(mutex_);
      tasks_.push_back(std::move(task));
    }
    wake_.notify_one();
  }

  // Runs task after everything queued before it, and waits for it. Never
  // from the writer thread itself.
  void runSync(const std::function<void()>& task) {
    std::promise<void> done;
    auto finished = done.get_future();
    post([&] {
      runGuarded(task);
      done.set_value();
    });
    finished.wait();
  }

  void waitUntilIdle() {
    std::unique_lock lock(mutex_);
    idle_.wait(lock, [&] { return tasks_.empty() && !busy_; });
  }

 private:
  void run() {
    std::unique_lock lock(mutex_);
    for (;;) {
      wake_.wait(lock, [&] { return stopping_ || !tasks_.empty(); });
      if (tasks_.empty()) return;  // stopping, and drained
      auto task = std::move(tasks_.front());
      tasks_.pop_front();
      busy_ = true;
      lock.unlock();
      runGuarded(task);
      task = nullptr;  // let the project copy go outside the lock
      lock.lock();
      busy_ = false;
      if (tasks_.empty()) idle_.notify_all();
    }
  }

  std::mutex mutex_;
  std::condition_variable wake_;
  std::condition_variable idle_;
  std::deque<std::function<void()>> tasks_;
  bool busy_ = false;
  bool stopping_ = false;
  std::thread thread_;  // last: starts once the rest is ready
};

// --- Locations ---

fs::path defaultSupportDirectory() {
  // XDG asks to ignore a relative XDG_DATA_HOME.
  if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr && fs::path(xdg).is_absolute()) {
    return fs::path(xdg) / "Orvane";
  }
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
    return fs::path(home) / ".local" / "share" / "Orvane";
  }
  std::error_code ec;
  fs::path temp = fs::temp_directory_path(ec);
  return (ec ? fs::path("/tmp") : temp) / "Orvane";
}

AutosaveService::AutosaveService(fs::path supportDirectory, OneShotTimerFactory& timers)
    : root_(std::move(supportDirectory)),
      timers_(timers),
      link_(std::make_shared<Link>(Link{this})),
      writer_(std::make_unique<Writer>()) {}

AutosaveService::~AutosaveService() {
  link_.reset();
  cancelAllTimers();
  writer_.reset();
}

fs::path AutosaveService::autosaveDirectory() const { return autosaveDirectoryIn(root_); }
fs::path AutosaveService::sessionLockPath() const { return sessionLockIn(root_); }
fs::path AutosaveService::snapshotPath(const core::Uuid& id) const { return snapshotIn(root_, id); }
fs::path AutosaveService::manifestPath(const core::Uuid& id) const { return manifestIn(root_, id); }

// --- Session ---

std::vector<RecoveryRecord> AutosaveService::beginSession() {
  std::vector<RecoveryRecord> records;
  writer_->runSync([&] {
    if (lastSessionEndedCleanly(root_)) {
      clearAllNow(root_);
    } else {
      records = loadRecordsNow(root_);
    }
    if (ensureDirectories(root_)) createSessionLock(root_);
  });
  return records;
}

void AutosaveService::endSession() {
  cancelAllTimers();
  writer_->runSync([&] { removeSessionLock(root_); });
}

// --- Snapshots ---

void AutosaveService::scheduleSnapshot(const core::OVProject& project,
                                       std::optional<std::string> originalPath) {
  cancelTimer(project.id);
  const std::uint64_t generation = nextGeneration_++;
  std::weak_ptr<Link> link = link_;
  auto timer = timers_.start(
      debounceInterval, [link, generation, project, originalPath = std::move(originalPath)] {
        if (auto alive = link.lock()) {
          alive->service->timerFired(project.id, generation, project, originalPath);
        }
      });
  pendingTimers_[project.id] = PendingTimer{generation, std::move(timer)};
}

void AutosaveService::timerFired(const core::Uuid& projectID, std::uint64_t generation,
                                 core::OVProject project, std::optional<std::string> originalPath) {
  auto it = pendingTimers_.find(projectID);
  // A timer that was replaced or cancelled but fired all the same is stale.
  if (it == pendingTimers_.end() || it->second.generation != generation) return;
  pendingTimers_.erase(it);  // may destroy the running callback: use only the copies
  writeSnapshot(std::move(project), std::move(originalPath));
}

void AutosaveService::writeSnapshot(core::OVProject project, std::optional<std::string> originalPath) {
  writer_->post([root = root_, project = std::move(project), originalPath = std::move(originalPath)] {
    writeSnapshotNow(root, project, originalPath);
  });
}

void AutosaveService::discardSnapshot(const core::Uuid& projectID) {
  cancelTimer(projectID);
  writer_->post([root = root_, projectID] { removeSnapshotNow(root, projectID); });
}

void AutosaveService::clearAll() {
  writer_->runSync([&] { clearAllNow(root_); });
}

std::vector<RecoveryRecord> AutosaveService::loadRecoveryRecords() {
  std::vector<RecoveryRecord> records;
  writer_->runSync([&] { records = loadRecordsNow(root_); });
  return records;
}

void AutosaveService::waitUntilIdle() { writer_->waitUntilIdle(); }

// --- Timers ---

void AutosaveService::cancelTimer(const core::Uuid& projectID) {
  auto it = pendingTimers_.find(projectID);
  if (it == pendingTimers_.end()) return;
  if (it->second.timer) it->second.timer->cancel();
  pendingTimers_.erase(it);
}

void AutosaveService::cancelAllTimers() {
  for (auto& [id, pending] : pendingTimers_) {
    if (pending.timer) pending.timer->cancel();
  }
  pendingTimers_.clear();
}

}  // namespace orvane::document
