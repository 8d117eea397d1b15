// Saves a growing project over and over in a real child process and kills it
// with SIGKILL at random moments: the file on disk must always decode, to
// the last project the child finished saving or to the one after it.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <vector>
#include <random>
#include <thread>

#include "document/project_codec.hpp"
#include "tests/document/sample_project.hpp"
#include "tests/document/temp_folder.hpp"

namespace orvane::document {
namespace {

namespace fs = std::filesystem;

// Big enough (about a megabyte) that many kills land in the middle of a write.
core::OVProject versionNumbered(int version) {
  core::OVProject p = testing_support::largeProject(60, 6, 12);
  p.name = std::to_string(version);
  return p;
}

// The child: saves version from, from + 1, ... and reports each one saved.
[[noreturn]] void saveForever(const fs::path& path, int from, int reportFd) {
  for (int version = from;; ++version) {
    if (!ProjectCodec::write(versionNumbered(version), path)) _exit(1);
    if (write(reportFd, &version, sizeof version) != sizeof version) _exit(1);
  }
}

// Every version the child reported before it died; the last one, or
// fallback when it reported none.
int lastReported(int fd, int fallback) {
  int version = 0;
  int last = fallback;
  while (read(fd, &version, sizeof version) == sizeof version) last = version;
  return last;
}

TEST(ProjectWriteCrashTest, AKillAtAnyMomentLeavesTheOldOrTheNewFile) {
  testing_support::TempFolder dir;
  const fs::path path = dir.path() / "Growing.orvane";
  ASSERT_TRUE(ProjectCodec::write(versionNumbered(0), path));
  std::mt19937 random(20261121);
  std::uniform_int_distribution<int> delayMicroseconds(0, 30000);

  int onDisk = 0;
  int killedBeforeNextSave = 0;
  for (int round = 0; round < 60; ++round) {
    int report[2];
    ASSERT_EQ(pipe(report), 0);
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      close(report[0]);
      saveForever(path, onDisk + 1, report[1]);
    }
    close(report[1]);
    std::this_thread::sleep_for(std::chrono::microseconds(delayMicroseconds(random)));
    kill(pid, SIGKILL);
    int status = 0;
    waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the saving child stopped by itself in round " << round;
    const int saved = lastReported(report[0], onDisk);
    close(report[0]);

    const auto back = ProjectCodec::read(path);
    ASSERT_TRUE(back) << "round " << round << ": " << back.error().message();
    const int version = std::stoi(back->name);
    ASSERT_TRUE(version == saved || version == saved + 1)
        << "round " << round << ": found " << version << " after saving " << saved;
    if (version == saved) ++killedBeforeNextSave;
    onDisk = version;
  }
  // The timing must really have hit writes in progress some of the time.
  EXPECT_GT(killedBeforeNextSave, 0);

  // What the killed saves left behind goes with the next save once it is
  // old enough not to belong to a save in progress.
  const auto leftovers = [&] {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(dir.path()))
      if (entry.path().filename().string().starts_with(".Growing.orvane.tmp-")) found.push_back(entry.path());
    return found;
  };
  const fs::path fresh = dir.path() / ".Growing.orvane.tmp-fresh1";
  const fs::path old = dir.path() / ".Growing.orvane.tmp-stale1";
  std::ofstream(fresh) << "{";
  std::ofstream(old) << "{";
  for (const fs::path& p : leftovers())
    if (p != fresh) fs::last_write_time(p, fs::file_time_type::clock::now() - std::chrono::hours(1));
  ASSERT_TRUE(ProjectCodec::write(versionNumbered(onDisk + 1), path));
  EXPECT_EQ(leftovers(), std::vector<fs::path>{fresh});
}

}  // namespace
}  // namespace orvane::document
