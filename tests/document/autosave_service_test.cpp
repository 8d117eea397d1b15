#include "document/autosave_service.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <thread>

#include "core/log.hpp"
#include "document/project_codec.hpp"
#include "tests/document/autosave_test_support.hpp"

namespace orvane::document {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing_support::ManualTimerFactory;
using testing_support::fileText;
using testing_support::TempFolder;

core::OVProject projectNamed(const std::string& name) {
  core::OVProject p = core::OVProject::starter();
  p.name = name;
  return p;
}

void writeText(const fs::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

bool isEmptyFolder(const fs::path& path) {
  return fs::is_directory(path) && fs::is_empty(path);
}

// Collects error lines while alive.
struct ErrorLog {
  ErrorLog() {
    core::setLogSink([this](core::LogLevel level, std::string_view, std::string_view text) {
      if (level == core::LogLevel::error) lines.emplace_back(text);
    });
  }
  ~ErrorLog() { core::setLogSink({}); }
  std::vector<std::string> lines;
};

class AutosaveServiceTest : public ::testing::Test {
 protected:
  TempFolder folder;
  fs::path root = folder.path() / "Orvane";
  ManualTimerFactory timers;
};

TEST_F(AutosaveServiceTest, CleanQuitThenLaunchOffersNothingAndEmptiesTheFolder) {
  ErrorLog errors;
  {
    AutosaveService service(root, timers);
    EXPECT_TRUE(service.beginSession().empty());  // before any session at all
    EXPECT_TRUE(fs::exists(service.sessionLockPath()));
    service.writeSnapshot(projectNamed("Written"));
    service.scheduleSnapshot(projectNamed("Pending"));
    service.endSession();
    EXPECT_FALSE(fs::exists(service.sessionLockPath()));
    timers.advance(AutosaveService::debounceInterval);  // the pending timer was stopped
    service.waitUntilIdle();
    // Snapshots outlive a clean end; the next launch clears them.
    EXPECT_EQ(std::distance(fs::directory_iterator(service.autosaveDirectory()), {}), 2);
  }
  AutosaveService next(root, timers);
  EXPECT_TRUE(next.beginSession().empty());
  EXPECT_TRUE(isEmptyFolder(next.autosaveDirectory()));
  EXPECT_TRUE(fs::exists(next.sessionLockPath()));
  EXPECT_TRUE(errors.lines.empty());
}

TEST_F(AutosaveServiceTest, CrashWithTwoProjectsOffersBothNewestFirst) {
  const auto older = projectNamed("Older");
  const auto newer = projectNamed("Newer");
  {
    AutosaveService service(root, timers);
    service.beginSession();
    service.writeSnapshot(older, "/home/me/older.orvane");
    service.waitUntilIdle();
    std::this_thread::sleep_for(5ms);  // savedAt has millisecond precision
    service.writeSnapshot(newer);
    service.waitUntilIdle();
    // The service ends without endSession, as in a crash.
  }
  AutosaveService next(root, timers);
  const auto records = next.beginSession();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].projectID, newer.id);
  EXPECT_EQ(records[0].projectName, "Newer");
  EXPECT_EQ(records[0].originalPath, std::nullopt);
  EXPECT_EQ(records[1].projectID, older.id);
  EXPECT_EQ(records[1].originalPath, "/home/me/older.orvane");
  EXPECT_GT(records[0].savedAt, records[1].savedAt);
  EXPECT_EQ(records[1].snapshotPath, next.snapshotPath(older.id));
  // Offered, not cleared: they stay until recovered or discarded.
  EXPECT_EQ(next.loadRecoveryRecords(), records);

  // The manifest: sorted keys, no originalPath when the project has no file.
  const std::string manifest = fileText(next.manifestPath(newer.id));
  EXPECT_EQ(manifest.find("originalPath"), std::string::npos);
  EXPECT_LT(manifest.find("\"projectID\""), manifest.find("\"projectName\""));
  EXPECT_LT(manifest.find("\"projectName\""), manifest.find("\"savedAt\""));
}

TEST_F(AutosaveServiceTest, OnlyCompletePairsWithReadableManifestsAreOffered) {
  AutosaveService service(root, timers);
  service.beginSession();
  const auto kept = projectNamed("Kept");
  service.writeSnapshot(kept);
  service.waitUntilIdle();
  const std::string goodManifest = fileText(service.manifestPath(kept.id));

  const auto noManifest = core::Uuid::make();
  writeText(service.snapshotPath(noManifest), fileText(service.snapshotPath(kept.id)));
  const auto noSnapshot = core::Uuid::make();
  std::string orphan = goodManifest;
  orphan.replace(orphan.find(kept.id.text()), 36, noSnapshot.text());
  writeText(service.manifestPath(noSnapshot), orphan);

  // Damaged manifests, each beside a snapshot of its own.
  const std::vector<std::string> damaged = {
      "", "not json", "[]", R"({"projectID":"X","projectName":"A","savedAt":"2026-01-02T03:04:05Z"})",
      R"({"projectID":"%ID%","projectName":"A"})",
      R"({"projectID":"%ID%","projectName":"A","savedAt":"yesterday"})",
      R"({"projectID":"%ID%","projectName":7,"savedAt":"2026-01-02T03:04:05Z"})"};
  for (std::string text : damaged) {
    const auto id = core::Uuid::make();
    if (auto at = text.find("%ID%"); at != std::string::npos) text.replace(at, 4, id.text());
    writeText(service.snapshotPath(id), fileText(service.snapshotPath(kept.id)));
    writeText(service.manifestPath(id), text);
  }

  const auto records = service.loadRecoveryRecords();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].projectID, kept.id);
}

TEST_F(AutosaveServiceTest, DiscardRemovesSnapshotAndManifestAndStopsTheTimer) {
  AutosaveService service(root, timers);
  service.beginSession();
  const auto project = projectNamed("Gone");
  service.writeSnapshot(project);
  service.scheduleSnapshot(project);
  service.discardSnapshot(project.id);  // queued after the write: removes what it made
  timers.advance(AutosaveService::debounceInterval);
  service.waitUntilIdle();
  EXPECT_FALSE(fs::exists(service.snapshotPath(project.id)));
  EXPECT_FALSE(fs::exists(service.manifestPath(project.id)));
  EXPECT_TRUE(service.loadRecoveryRecords().empty());
}

TEST_F(AutosaveServiceTest, DebounceWritesOnlyAfterQuietWithTheLastState) {
  AutosaveService service(root, timers);
  service.beginSession();
  core::OVProject project = projectNamed("Draft 0");
  for (int change = 1; change <= 4; ++change) {  // a change every 10 seconds
    project.name = "Draft " + std::to_string(change);
    service.scheduleSnapshot(project, "/work/draft.orvane");
    timers.advance(10s);
    service.waitUntilIdle();
    EXPECT_FALSE(fs::exists(service.snapshotPath(project.id))) << "after change " << change;
  }
  timers.advance(5s);  // 15 seconds of quiet
  service.waitUntilIdle();

  auto written = ProjectCodec::read(service.snapshotPath(project.id));
  ASSERT_TRUE(written.has_value());
  // The codec stamps these two on every write.
  written->appVersion = project.appVersion;
  written->modifiedAt = project.modifiedAt;
  EXPECT_EQ(*written, project);
  const auto records = service.loadRecoveryRecords();
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].projectName, "Draft 4");
  EXPECT_EQ(records[0].originalPath, "/work/draft.orvane");

  // Written once: nothing comes back after more time.
  fs::remove(service.snapshotPath(project.id));
  timers.advance(60s);
  service.waitUntilIdle();
  EXPECT_FALSE(fs::exists(service.snapshotPath(project.id)));
}

TEST_F(AutosaveServiceTest, EachProjectHasItsOwnDebounce) {
  AutosaveService service(root, timers);
  service.beginSession();
  const auto first = projectNamed("First");
  const auto second = projectNamed("Second");
  service.scheduleSnapshot(first);
  timers.advance(10s);
  service.scheduleSnapshot(second);  // must not restart the first one's timer
  timers.advance(5s);
  service.waitUntilIdle();
  EXPECT_TRUE(fs::exists(service.manifestPath(first.id)));
  EXPECT_FALSE(fs::exists(service.snapshotPath(second.id)));
  timers.advance(10s);
  service.waitUntilIdle();
  EXPECT_TRUE(fs::exists(service.manifestPath(second.id)));
}

TEST_F(AutosaveServiceTest, TimerOutlivingTheServiceDoesNothing) {
  const auto project = projectNamed("Late");
  {
    AutosaveService service(root, timers);
    service.beginSession();
    service.scheduleSnapshot(project);
  }
  timers.advance(AutosaveService::debounceInterval);
  EXPECT_FALSE(fs::exists(root / "Autosave" / (project.id.text() + ".orvane")));
}

TEST_F(AutosaveServiceTest, UnwritableFolderIsLoggedAndSwallowed) {
  ErrorLog errors;
  writeText(root, "a file where the folder should be");
  AutosaveService service(root, timers);
  EXPECT_TRUE(service.beginSession().empty());
  service.writeSnapshot(projectNamed("Nowhere"));
  service.waitUntilIdle();
  ASSERT_FALSE(errors.lines.empty());
  for (const auto& line : errors.lines) {
    EXPECT_TRUE(line.starts_with("Orvane autosave failed: ")) << line;
  }
}

}  // namespace
}  // namespace orvane::document
