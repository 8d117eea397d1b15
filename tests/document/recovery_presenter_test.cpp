#include "document/recovery_presenter.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <fstream>

#include "core/log.hpp"
#include "tests/document/autosave_test_support.hpp"

namespace orvane::document {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing_support::ManualTimerFactory;
using testing_support::fileText;
using testing_support::TempFolder;

RecoveryRecord recordAt(std::string name, core::Timestamp savedAt) {
  return RecoveryRecord{core::Uuid::make(), std::move(name), savedAt, std::nullopt, {}};
}

class RecoveryPresenterTest : public ::testing::Test {
 protected:
  // Snapshots of projects with these names, as a crash leaves them.
  std::vector<RecoveryRecord> crashWith(const std::vector<std::string>& names) {
    for (const auto& name : names) {
      core::OVProject p = core::OVProject::starter();
      p.name = name;
      service.writeSnapshot(p);
    }
    return service.loadRecoveryRecords();
  }
  bool snapshotExists(const RecoveryRecord& r) {
    service.waitUntilIdle();
    return fs::exists(r.snapshotPath) && fs::exists(service.manifestPath(r.projectID));
  }

  TempFolder folder;
  ManualTimerFactory timers;
  AutosaveService service{folder.path(), timers};
};

TEST(RecoveryPresenterTexts, MessageNamesTheCount) {
  const auto now = core::nowTimestamp();
  EXPECT_EQ(RecoveryPresenter::messageText({recordAt("A", now)}), "Recover unsaved work?");
  EXPECT_EQ(RecoveryPresenter::messageText({recordAt("A", now), recordAt("B", now)}),
            "Recover 2 projects with unsaved work?");
  EXPECT_EQ(kRecoveryButtonTitles[static_cast<int>(RecoveryChoice::decideLater)], "Decide Later");
}

TEST(RecoveryPresenterTexts, SummaryListsEachRecordInLocalTime) {
  const char* previous = std::getenv("TZ");
  const std::string saved = previous ? previous : "";
  setenv("TZ", "UTC-2", 1);  // POSIX sign: two hours east of UTC
  tzset();
  using namespace std::chrono;
  const core::Timestamp first = sys_days{2026y / November / 21} + 12h + 5min + 59s;
  const core::Timestamp second = sys_days{2027y / January / 2} + 23h + 30min;
  EXPECT_EQ(RecoveryPresenter::summary({recordAt("Intro", first), recordAt("a/b", second)}),
            "Intro - autosaved 21/11/2026, 14:05\na/b - autosaved 03/01/2027, 01:30");
  previous ? setenv("TZ", saved.c_str(), 1) : unsetenv("TZ");
  tzset();
}

TEST_F(RecoveryPresenterTest, CopiesGetFreeNamesBesideTheSnapshots) {
  const auto records = crashWith({"Name", "a/b", "   "});
  ASSERT_EQ(records.size(), 3u);
  const struct {
    std::string name;
    std::vector<std::string> expected;  // files made by successive copies
  } cases[] = {
      {"Name", {"Name (Recovered).orvane", "Name (Recovered 2).orvane", "Name (Recovered 3).orvane"}},
      {"a/b", {"a-b (Recovered).orvane"}},
      {"   ", {"Untitled (Recovered).orvane"}},
  };
  for (const auto& c : cases) {
    const auto record = std::ranges::find(records, c.name, &RecoveryRecord::projectName);
    ASSERT_NE(record, records.end());
    for (const auto& expected : c.expected) {
      const auto copy = RecoveryPresenter::copyForRecovery(*record, folder.path());
      ASSERT_TRUE(copy.has_value()) << copy.error().message;
      EXPECT_EQ(*copy, folder.path() / "Recovered" / expected);
      EXPECT_EQ(fileText(*copy), fileText(record->snapshotPath));
    }
  }
}

TEST_F(RecoveryPresenterTest, RecoverOpensTheCopyThenDiscardsTheSnapshot) {
  const auto records = crashWith({"Opened", "Refused"});
  std::vector<std::string> logged;
  core::setLogSink([&](core::LogLevel, std::string_view, std::string_view text) {
    logged.emplace_back(text);
  });
  std::vector<fs::path> opened;
  const auto alerts = RecoveryPresenter::apply(
      RecoveryChoice::recover, records, service,
      [&](const fs::path& path) -> std::expected<void, std::string> {
        opened.push_back(path);
        if (path.filename().string().starts_with("Refused")) return std::unexpected("bad file");
        return {};
      });
  core::setLogSink({});

  EXPECT_TRUE(alerts.empty());
  ASSERT_EQ(opened.size(), 2u);
  for (const auto& path : opened) EXPECT_EQ(path.parent_path(), folder.path() / "Recovered");
  for (const auto& record : records) {
    // A copy that would not open keeps its snapshot for the next try.
    EXPECT_EQ(snapshotExists(record), record.projectName == "Refused") << record.projectName;
  }
  EXPECT_EQ(logged, std::vector<std::string>{"Orvane recovery failed to open: bad file"});
}

TEST_F(RecoveryPresenterTest, FailedCopyAlertsAndKeepsTheSnapshot) {
  auto records = crashWith({"Lost"});
  ASSERT_EQ(records.size(), 1u);
  // Something that is not a file in the way of the Recovered folder.
  std::ofstream(folder.path() / "Recovered") << "x";
  bool opened = false;
  const auto alerts = RecoveryPresenter::apply(RecoveryChoice::recover, records, service,
                                               [&](const fs::path&) -> std::expected<void, std::string> {
                                                 opened = true;
                                                 return {};
                                               });
  EXPECT_EQ(alerts, std::vector<std::string>{"Could not recover \"Lost\""});
  EXPECT_FALSE(opened);
  EXPECT_TRUE(snapshotExists(records[0]));
}

TEST_F(RecoveryPresenterTest, DiscardRemovesEverySnapshotAndDecideLaterNone) {
  const auto records = crashWith({"One", "Two"});
  RecoveryPresenter::apply(RecoveryChoice::decideLater, records, service, {});
  for (const auto& record : records) EXPECT_TRUE(snapshotExists(record));
  RecoveryPresenter::apply(RecoveryChoice::discard, records, service, {});
  for (const auto& record : records) EXPECT_FALSE(snapshotExists(record));
  EXPECT_TRUE(fs::is_empty(service.autosaveDirectory()));
}

}  // namespace
}  // namespace orvane::document
