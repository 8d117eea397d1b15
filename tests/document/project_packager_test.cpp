#include "document/project_packager.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "document/packaged_media.hpp"
#include "document/project_codec.hpp"
#include "document/project_document.hpp"
#include "tests/document/temp_folder.hpp"

namespace orvane::document {
namespace {

namespace fs = std::filesystem;
using testing_support::TempFolder;

std::string contents(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void writeText(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

core::MediaAsset assetAt(const fs::path& path) {
  core::MediaAsset a;
  a.name = path.stem().string();
  a.path = path.string();
  a.bookmark = core::Bytes{1, 2, 3};
  return a;
}

core::OVProject projectWith(const std::vector<core::MediaAsset>& assets) {
  core::OVProject p("Trip", {core::Composition()});
  for (const auto& a : assets) p.addAsset(a);
  return p;
}

core::OVProject packagedProject(const ProjectPackager::Report& report) {
  auto project = ProjectCodec::read(report.projectURL);
  EXPECT_TRUE(project.has_value());
  return project.value_or(core::OVProject());
}

std::size_t entryCount(const fs::path& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

class ProjectPackagerTest : public ::testing::Test {
 protected:
  TempFolder temp;
  fs::path destination = temp.path() / "out";
};

TEST_F(ProjectPackagerTest, PackagingTwiceTakesTheNextFreeFolderName) {
  const core::OVProject project = projectWith({});
  const auto first = ProjectPackager::package(project, "X", destination);
  const auto second = ProjectPackager::package(project, "X", destination);
  ASSERT_TRUE(first && second);
  EXPECT_EQ(first->packageURL, destination / "X Package");
  EXPECT_EQ(second->packageURL, destination / "X Package 2");
  for (const auto& report : {*first, *second}) {
    EXPECT_EQ(report.projectURL, report.packageURL / "X.orvane");
    EXPECT_TRUE(fs::is_regular_file(report.packageURL / "README.txt"));
    EXPECT_EQ(packagedProject(report).name, "Trip");
  }
}

TEST_F(ProjectPackagerTest, LikeNamedFilesFromTwoFoldersEachKeepTheirOwnCopy) {
  writeText(temp.path() / "a/clip.mov", "first clip");
  writeText(temp.path() / "b/clip.mov", "the second clip");
  const core::OVProject project =
      projectWith({assetAt(temp.path() / "a/clip.mov"), assetAt(temp.path() / "b/clip.mov")});
  const core::OVProject before = project;
  std::vector<double> fractions;
  const auto report =
      ProjectPackager::package(project, "Trip", destination, [&](double f) { fractions.push_back(f); });
  ASSERT_TRUE(report) << report.error().message;

  EXPECT_EQ(project, before);
  EXPECT_EQ(fractions, (std::vector<double>{0.5, 1.0}));
  EXPECT_EQ(report->totalBytes, 25);
  ASSERT_EQ(report->copied.size(), 2u);
  EXPECT_EQ(report->copied[1].fileSizeBytes, 15);
  const core::OVProject packaged = packagedProject(*report);
  const std::vector<std::string> expectedPaths{"Media/clip.mov", "Media/clip 2.mov"};
  for (std::size_t i = 0; i < 2; ++i) {
    const core::MediaAsset& copy = packaged.assets[i];
    EXPECT_EQ(copy.path, expectedPaths[i]);
    EXPECT_FALSE(copy.bookmark.has_value());
    EXPECT_EQ(contents(report->packageURL / copy.path), contents(project.assets[i].path));
  }
}

TEST_F(ProjectPackagerTest, ProjectWithoutAssetsHasAnEmptyMediaFolder) {
  bool progressed = false;
  const auto report =
      ProjectPackager::package(projectWith({}), "Trip", destination, [&](double) { progressed = true; });
  ASSERT_TRUE(report);
  EXPECT_FALSE(progressed);
  EXPECT_EQ(entryCount(report->packageURL / "Media"), 0u);
  const std::string readme = contents(report->packageURL / "README.txt");
  EXPECT_NE(readme.find("\nMEDIA\n  (none)\n"), std::string::npos);
  EXPECT_NE(readme.find("  Media/ \u2014 0 files, 0 bytes\n"), std::string::npos);
  EXPECT_EQ(readme.find("MISSING"), std::string::npos);
}

TEST_F(ProjectPackagerTest, MissingAssetIsReportedAndKeepsItsOldPath) {
  writeText(temp.path() / "here.png", "png");
  const core::MediaAsset gone = assetAt(temp.path() / "gone.mov");
  const auto report = ProjectPackager::package(
      projectWith({gone, assetAt(temp.path() / "here.png")}), "Trip", destination);
  ASSERT_TRUE(report);

  ASSERT_EQ(report->missing.size(), 1u);
  EXPECT_EQ(report->missing[0], gone);
  EXPECT_EQ(entryCount(report->packageURL / "Media"), 1u);
  const core::OVProject packaged = packagedProject(*report);
  EXPECT_EQ(packaged.asset(gone.id)->path, gone.path);
  EXPECT_EQ(packaged.asset(gone.id)->bookmark, gone.bookmark);
  const std::string readme = contents(report->packageURL / "README.txt");
  EXPECT_NE(readme.find("\nMISSING \u2014 these files could not be found when packaging and are NOT "
                        "included:\n  gone \u2014 was at " + gone.path + "\n"),
            std::string::npos);
  EXPECT_NE(readme.find("\nMEDIA\n  here.png \u2014 3 bytes\n"), std::string::npos);
}

TEST_F(ProjectPackagerTest, MovedPackageResolvesAgainstItsNewFolder) {
  writeText(temp.path() / "src/clip.mov", "clip");
  writeText(temp.path() / "src/still.png", "still");
  const auto report = ProjectPackager::package(
      projectWith({assetAt(temp.path() / "src/clip.mov"), assetAt(temp.path() / "src/still.png")}),
      "Trip", destination);
  ASSERT_TRUE(report);
  const fs::path moved = temp.path() / "elsewhere/Moved";
  fs::create_directories(moved.parent_path());
  fs::rename(report->packageURL, moved);
  fs::remove_all(temp.path() / "src");

  // Reached through a path with ".." in it: the result is still clean.
  const fs::path projectPath = moved / ".." / "Moved" / "Trip.orvane";
  auto project = ProjectCodec::read(projectPath);
  ASSERT_TRUE(project);
  ProjectDocument document(*project);
  ASSERT_TRUE(document.hasPackagedMedia());
  const auto revision = document.revision();
  const auto modifiedAt = document.project().modifiedAt;

  document.resolvePackagedMedia(projectPath);
  EXPECT_FALSE(document.hasPackagedMedia());
  EXPECT_GT(document.revision(), revision);
  EXPECT_EQ(document.project().modifiedAt, modifiedAt);
  for (const auto& asset : document.project().assets) {
    EXPECT_EQ(fs::path(asset.path).parent_path(), moved / "Media");
    EXPECT_TRUE(fs::is_regular_file(asset.path)) << asset.path;
    EXPECT_EQ(MediaAccessManager::shared().activePathFor(asset.id), fs::path(asset.path));
  }
}

TEST_F(ProjectPackagerTest, UnreadablePackageFolderLeavesPathsRelative) {
  core::OVProject project = projectWith({assetAt("Media/clip.mov")});
  ProjectDocument document(project);
  const auto revision = document.revision();
  document.resolvePackagedMedia(temp.path() / "no-such-folder/Trip.orvane");
  EXPECT_EQ(document.project().assets[0].path, "Media/clip.mov");
  EXPECT_EQ(document.revision(), revision);
}

TEST(PackagedMediaTest, OneRelativePathMakesAProjectPackaged) {
  const struct {
    std::vector<std::string> paths;
    bool packaged;
  } cases[] = {
      {{}, false},
      {{"/a/clip.mov", "/b/still.png"}, false},
      {{"/a/clip.mov", "Media/still.png", "/c/x.wav"}, true},
      {{"clip.mov"}, true},
      {{""}, false},  // a record without a path names no file at all
  };
  for (const auto& c : cases) {
    std::vector<core::MediaAsset> assets;
    for (const auto& p : c.paths) assets.push_back(assetAt(p));
    EXPECT_EQ(hasPackagedMedia(projectWith(assets)), c.packaged) << ::testing::PrintToString(c.paths);
  }
}

TEST(ProjectPackagerNamesTest, CollidingFileNamesGetTheNextNumberBeforeTheExtension) {
  const struct {
    std::string wanted;
    std::unordered_set<std::string> taken;
    std::string expected;
  } cases[] = {
      {"clip.mov", {}, "clip.mov"},
      {"clip.mov", {"clip.mov"}, "clip 2.mov"},
      {"clip.mov", {"clip.mov", "clip 2.mov"}, "clip 3.mov"},
      {"notes", {"notes"}, "notes 2"},
      {"take.final.mov", {"take.final.mov"}, "take.final 2.mov"},
      {"Clip.mov", {"clip.mov"}, "Clip.mov"},
  };
  for (const auto& c : cases) EXPECT_EQ(uniqueFileName(c.wanted, c.taken), c.expected) << c.wanted;
}

TEST(ProjectPackagerNamesTest, ByteCountsUseDecimalFileUnits) {
  const std::pair<std::int64_t, std::string> cases[] = {
      {0, "0 bytes"},          {1, "1 byte"},          {999, "999 bytes"},
      {1000, "1 KB"},          {999'499, "999 KB"},    {999'500, "1 MB"},
      {1'234'567, "1.2 MB"},   {1'000'000'000, "1 GB"}, {3'456'789'012, "3.46 GB"},
      {-5, "0 bytes"},
  };
  for (const auto& [bytes, expected] : cases) EXPECT_EQ(fileByteCountText(bytes), expected) << bytes;
}

TEST(ProjectPackagerReadmeTest, HeadingDateAndCompositionLines) {
  core::Composition broken;
  broken.name = "Broken";
  broken.frameRate = core::FrameRate::unchecked(0, 1);
  core::OVProject project("Café", {broken});
  // Noon UTC is the same day in every time zone within eleven hours.
  const auto date = core::parseISO8601("2026-11-21T12:00:00Z").value();
  const std::string text = ProjectPackager::readmeText(project, "Trip", {}, {}, 0, date);
  EXPECT_TRUE(text.starts_with("Café \u2014 Orvane project package\n" + std::string(29, '=') + "\n"));
  EXPECT_NE(text.find("\nPackaged 21 November 2026 with Orvane "), std::string::npos);
  EXPECT_NE(text.find("\n  2. Double-click Trip.orvane (or File \u25b8 Open in Orvane).\n"),
            std::string::npos);
  EXPECT_NE(text.find("\n  Broken \u2014 1920 \u00d7 1080, invalid frame rate, 10.0 s, 0 layers\n"),
            std::string::npos);
}

TEST(MediaAccessManagerTest, RestoresNotedPathsElseReadableStoredPaths) {
  TempFolder temp;
  writeText(temp.path() / "clip.mov", "clip");
  MediaAccessManager access;
  const core::MediaAsset present = assetAt(temp.path() / "clip.mov");
  const core::MediaAsset missing = assetAt(temp.path() / "gone.mov");
  core::MediaAsset folder = assetAt(temp.path());

  EXPECT_FALSE(access.makeBookmarkFor(present.path).has_value());
  EXPECT_EQ(access.restoreAccessFor(present), fs::path(present.path));
  EXPECT_FALSE(access.restoreAccessFor(missing).has_value());
  EXPECT_FALSE(access.restoreAccessFor(folder).has_value());

  access.noteDirectAccess(missing.id, present.path);
  EXPECT_EQ(access.restoreAccessFor(missing), fs::path(present.path));
  access.release(missing.id);
  EXPECT_FALSE(access.restoreAccessFor(missing).has_value());
  access.noteDirectAccess(missing.id, present.path);
  access.releaseAll();
  EXPECT_FALSE(access.activePathFor(missing.id).has_value());
}

}  // namespace
}  // namespace orvane::document
