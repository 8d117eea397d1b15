// Moving files to the home trash, and deleting media files through it.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <regex>
#include <sstream>
#include <string>

#include "Commands/media_edits.hpp"
#include "Commands/trash.hpp"
#include "tests/commands/commands_test_support.hpp"
#include "tests/document/temp_folder.hpp"

namespace orvane::commands {
namespace {

namespace fs = std::filesystem;
using namespace testing_support;

std::string contentsOf(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

void touch(const fs::path& file) {
  fs::create_directories(file.parent_path());
  std::ofstream(file) << "data";
}

// Points XDG_DATA_HOME into a temporary folder for the test's length.
class TrashTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const char* old = std::getenv("XDG_DATA_HOME")) saved_ = old;
    ::setenv("XDG_DATA_HOME", (temp.path() / "data").c_str(), 1);
  }
  void TearDown() override {
    if (saved_) {
      ::setenv("XDG_DATA_HOME", saved_->c_str(), 1);
    } else {
      ::unsetenv("XDG_DATA_HOME");
    }
  }
  fs::path trash() const { return temp.path() / "data" / "Trash"; }

  document::testing_support::TempFolder temp;

 private:
  std::optional<std::string> saved_;
};

TEST_F(TrashTest, MovesTheFileAndDescribesItsOrigin) {
  const fs::path file = temp.path() / "src" / "my clip \u00E9.mov";
  touch(file);
  const auto trashed = moveToTrash(file);
  ASSERT_TRUE(trashed.has_value()) << trashed.error().message();
  EXPECT_EQ(*trashed, trash() / "files" / "my clip \u00E9.mov");
  EXPECT_FALSE(fs::exists(file));
  EXPECT_EQ(contentsOf(*trashed), "data");
  const std::string info = contentsOf(trash() / "info" / "my clip \u00E9.mov.trashinfo");
  const std::string head = "[Trash Info]\nPath=" + (temp.path() / "src").string() + "/my%20clip%20%C3%A9.mov\n";
  EXPECT_EQ(info.substr(0, head.size()), head);
  EXPECT_TRUE(std::regex_match(info.substr(head.size()),
                               std::regex(R"(DeletionDate=\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\n)")))
      << info;
  struct stat s {};
  ASSERT_EQ(::stat((trash() / "info").c_str(), &s), 0);
  EXPECT_EQ(s.st_mode & 0777, 0700u);
}

TEST_F(TrashTest, ATakenNameGetsANumber) {
  touch(temp.path() / "a" / "clip.mov");
  touch(temp.path() / "b" / "clip.mov");
  ASSERT_TRUE(moveToTrash(temp.path() / "a" / "clip.mov"));
  const auto second = moveToTrash(temp.path() / "b" / "clip.mov");
  ASSERT_TRUE(second);
  EXPECT_EQ(second->filename(), "clip 2.mov");
  EXPECT_TRUE(fs::exists(trash() / "info" / "clip 2.mov.trashinfo"));
}

TEST_F(TrashTest, AFailedMoveLeavesNoInfoBehind) {
  EXPECT_FALSE(moveToTrash(temp.path() / "missing.mov"));
  // The trash lies inside the folder, which cannot move into itself.
  ::setenv("XDG_DATA_HOME", (temp.path() / "box" / "data").c_str(), 1);
  touch(temp.path() / "box" / "file");
  const auto result = moveToTrash(temp.path() / "box");
  ASSERT_FALSE(result);
  EXPECT_TRUE(result.error().message().starts_with("Could not move the file to the Trash: "));
  EXPECT_TRUE(fs::is_empty(temp.path() / "box" / "data" / "Trash" / "info"));
  EXPECT_TRUE(fs::exists(temp.path() / "box" / "file"));
}

TEST_F(TrashTest, DeletingFromDiskReportsFailuresAndRemovesEveryEntry) {
  MediaAsset onDisk = imageAsset("still"), missing = imageAsset("gone");
  onDisk.path = (temp.path() / "still.png").string();
  missing.path = (temp.path() / "gone.png").string();
  touch(onDisk.path);
  ProjectDocument doc(projectWith({}));
  UndoStack undo;
  addAssets(doc, {onDisk, missing}, &undo);
  // A trash that cannot be made: its place is taken by a file.
  touch(trash());
  std::vector<Uuid> invalidated;
  const MediaCacheHooks hooks{{}, [&](const Uuid& id, bool) { invalidated.push_back(id); }};
  std::vector<std::string> failures;
  expectUndoableEdit(doc, undo, "Remove Media",
                     [&] { failures = deleteAssetsFromDisk(doc, {onDisk.id, missing.id}, hooks, &undo); });
  EXPECT_EQ(failures, (std::vector<std::string>{"still.png: Could not move the file to the Trash: Not a directory."}));
  EXPECT_TRUE(doc.project().assets.empty());
  EXPECT_EQ(invalidated, (std::vector<Uuid>{onDisk.id, missing.id}));
  EXPECT_TRUE(fs::exists(onDisk.path));
}

TEST_F(TrashTest, DeletingFromDiskTrashesTheFile) {
  MediaAsset a = imageAsset("a");
  a.path = (temp.path() / "a.png").string();
  touch(a.path);
  ProjectDocument doc(projectWith({}));
  addAssets(doc, {a}, nullptr);
  EXPECT_TRUE(deleteAssetsFromDisk(doc, {a.id}, {}, nullptr).empty());
  EXPECT_FALSE(fs::exists(a.path));
  EXPECT_TRUE(fs::exists(trash() / "files" / "a.png"));
  EXPECT_EQ(doc.project().asset(a.id), nullptr);
}

}  // namespace
}  // namespace orvane::commands
