// Kills a real process that autosaves, at chosen and at random moments, and
// checks what the next launch finds: the last snapshot written whole, never
// a torn one.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <random>
#include <string>
#include <thread>

#include "document/autosave_service.hpp"
#include "document/project_codec.hpp"
#include "tests/document/autosave_test_support.hpp"

namespace orvane::document {
namespace {

namespace fs = std::filesystem;
using testing_support::ManualTimerFactory;
using testing_support::TempFolder;

std::string revisionName(int revision) { return "Revision " + std::to_string(revision); }

// The child: edits a project in a loop; each revision is scheduled, its
// timer fired, and once the writer is done the revision number goes to the
// parent. With a go pipe it then waits for the parent's word. Never returns.
[[noreturn]] void runEditor(const fs::path& root, int reportFd, int goFd) {
  ManualTimerFactory timers;
  AutosaveService service(root, timers);
  service.beginSession();
  core::OVProject project = core::OVProject::starter();
  for (int revision = 1;; ++revision) {
    project.name = revisionName(revision);
    service.scheduleSnapshot(project);
    timers.advance(AutosaveService::debounceInterval);
    service.waitUntilIdle();
    if (write(reportFd, &revision, sizeof revision) != sizeof revision) _exit(1);
    char go = 0;
    if (goFd >= 0 && read(goFd, &go, 1) != 1) _exit(0);
  }
}

struct Editor {
  pid_t pid = -1;
  int reports = -1;  // read end
  int go = -1;       // write end, or -1 when the editor runs freely

  static Editor start(const fs::path& root, bool waitsForGo) {
    int report[2];
    int go[2] = {-1, -1};
    if (pipe(report) != 0 || (waitsForGo && pipe(go) != 0)) return {};
    const pid_t pid = fork();
    if (pid == 0) {
      close(report[0]);
      if (waitsForGo) close(go[1]);
      runEditor(root, report[1], go[0]);
    }
    close(report[1]);
    if (waitsForGo) close(go[0]);
    return Editor{pid, report[0], go[1]};
  }

  // The next revision reported, or 0 at the end of the stream.
  int nextReport() const {
    int revision = 0;
    return read(reports, &revision, sizeof revision) == sizeof revision ? revision : 0;
  }

  // SIGKILL, then every revision the editor still reported; returns the last.
  int kill(int lastSeen) {
    ::kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    if (go >= 0) close(go);
    while (int revision = nextReport()) lastSeen = revision;
    close(reports);
    return lastSeen;
  }
};

// What the next launch offers: the one record and the revision its snapshot
// holds, 0 when there is none or it does not decode.
std::pair<std::vector<RecoveryRecord>, int> relaunch(const fs::path& root) {
  ManualTimerFactory timers;
  AutosaveService service(root, timers);
  auto records = service.beginSession();
  if (records.size() != 1) return {records, 0};
  const auto project = ProjectCodec::read(records[0].snapshotPath);
  if (!project) return {records, 0};
  const std::string_view name = project->name;
  const std::string_view prefix = "Revision ";
  int revision = 0;
  if (name.starts_with(prefix)) std::from_chars(name.data() + prefix.size(), name.data() + name.size(), revision);
  return {records, revision};
}

TEST(AutosaveCrashTest, KillAfterAWriteOffersExactlyThatState) {
  TempFolder folder;
  Editor editor = Editor::start(folder.path(), /*waitsForGo=*/true);
  ASSERT_GT(editor.pid, 0);
  constexpr int kLast = 5;
  for (int expected = 1; expected < kLast; ++expected) {
    ASSERT_EQ(editor.nextReport(), expected);
    ASSERT_EQ(write(editor.go, "g", 1), 1);
  }
  ASSERT_EQ(editor.nextReport(), kLast);
  ASSERT_EQ(editor.kill(kLast), kLast);  // nothing after the one it waits on

  const auto [records, revision] = relaunch(folder.path());
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].projectName, revisionName(kLast));
  EXPECT_EQ(revision, kLast);
}

TEST(AutosaveCrashTest, KillMidWriteLeavesTheOldOrTheNewStateWhole) {
  const unsigned seed = std::random_device{}();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  std::uniform_int_distribution<int> delayMicros(0, 30'000);
  for (int round = 0; round < 4; ++round) {
    TempFolder folder;
    Editor editor = Editor::start(folder.path(), /*waitsForGo=*/false);
    ASSERT_GT(editor.pid, 0);
    const int first = editor.nextReport();  // a first snapshot exists
    ASSERT_EQ(first, 1);
    std::this_thread::sleep_for(std::chrono::microseconds(delayMicros(random)));
    const int lastReported = editor.kill(first);

    // Killed after reporting lastReported, perhaps while writing the next.
    const auto [records, revision] = relaunch(folder.path());
    ASSERT_EQ(records.size(), 1u) << "round " << round;
    EXPECT_TRUE(revision == lastReported || revision == lastReported + 1)
        << "round " << round << ": snapshot holds " << revision << ", last reported "
        << lastReported;
    EXPECT_TRUE(records[0].projectName == revisionName(lastReported) ||
                records[0].projectName == revisionName(lastReported + 1))
        << records[0].projectName;
  }
}

}  // namespace
}  // namespace orvane::document
