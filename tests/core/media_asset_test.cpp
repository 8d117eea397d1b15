#include "core/media_asset.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace orvane::core {
namespace {

OVTime sec(double s) { return OVTime::fromSeconds(s); }

MediaAsset video(double width, double height, std::optional<FrameRate> rate, double seconds) {
  MediaAsset a;
  a.kind = MediaKind::video;
  a.naturalSize = {width, height};
  a.frameRate = rate;
  a.duration = sec(seconds);
  return a;
}

MediaAsset audio(std::int64_t channels, double sampleRate, double seconds) {
  MediaAsset a;
  a.kind = MediaKind::audio;
  a.audioChannelCount = channels;
  a.audioSampleRate = sampleRate;
  a.duration = sec(seconds);
  return a;
}

std::string fileNameOf(std::string path) {
  MediaAsset a;
  a.path = std::move(path);
  return a.fileName();
}

TEST(MediaAssetTest, MediaKindIsTextValued) {
  EXPECT_EQ(rawValue(MediaKind::video), "video");
  EXPECT_EQ(displayName(MediaKind::audio), "Audio");
  EXPECT_EQ(fromRaw<MediaKind>("image"), MediaKind::image);
  EXPECT_FALSE(fromRaw<MediaKind>("Image").has_value());
}

TEST(MediaAssetTest, FileNameIsLastPathComponent) {
  EXPECT_EQ(fileNameOf("/Users/me/Movies/clip.mov"), "clip.mov");
  EXPECT_EQ(fileNameOf("Media/a b.wav"), "a b.wav");
  EXPECT_EQ(fileNameOf("still.png"), "still.png");
  EXPECT_EQ(fileNameOf("/Users/me/Footage/"), "Footage");
  EXPECT_EQ(fileNameOf("/"), "/");
  EXPECT_EQ(fileNameOf(""), "");
}

TEST(MediaAssetTest, OnlyImagesAreStill) {
  MediaAsset a;
  a.kind = MediaKind::image;
  EXPECT_TRUE(a.isStill());
  a.kind = MediaKind::video;
  EXPECT_FALSE(a.isStill());
  a.kind = MediaKind::audio;
  EXPECT_FALSE(a.isStill());
}

TEST(MediaAssetTest, FileExistsFollowsTheDisk) {
  const auto file = std::filesystem::temp_directory_path() / ("orvane-asset-test-" + Uuid::make().text() + ".mov");
  MediaAsset a;
  a.path = file.string();
  EXPECT_FALSE(a.fileExists());
  std::ofstream(file) << "frames";
  EXPECT_TRUE(a.fileExists());
  std::filesystem::remove(file);
  EXPECT_FALSE(a.fileExists());
  a.path.clear();
  EXPECT_FALSE(a.fileExists());
}

TEST(MediaAssetTest, VideoSubtitleShowsSizeRateAndDuration) {
  EXPECT_EQ(video(1920, 1080, FrameRate::fps30, 10).displaySubtitle(), "1920 x 1080 - 30 fps - 0:10");
  EXPECT_EQ(video(1280, 720, FrameRate::fps29_97, 62.4).displaySubtitle(), "1280 x 720 - 29.970 fps - 1:02");
  EXPECT_EQ(video(640, 480, std::nullopt, 3723).displaySubtitle(), "640 x 480 - - - 1:02:03");
  EXPECT_EQ(video(640, 480, FrameRate::fps25, 9.5).displaySubtitle(), "640 x 480 - 25 fps - 0:10");
}

TEST(MediaAssetTest, AudioSubtitleShowsChannelsRateAndDuration) {
  EXPECT_EQ(audio(1, 48000, 10).displaySubtitle(), "mono - 48000 Hz - 0:10");
  EXPECT_EQ(audio(2, 44100, 125).displaySubtitle(), "2 ch - 44100 Hz - 2:05");
  EXPECT_EQ(audio(6, 48000, 0).displaySubtitle(), "6 ch - 48000 Hz - 0:00");
}

TEST(MediaAssetTest, ImageSubtitleIsItsSize) {
  MediaAsset a;
  a.kind = MediaKind::image;
  a.naturalSize = {640, 480};
  a.duration = sec(5);
  EXPECT_EQ(a.displaySubtitle(), "640 x 480");
}

TEST(MediaAssetTest, EqualRecordsHashAlike) {
  MediaAsset a = video(1920, 1080, FrameRate::fps30, 10);
  a.bookmark = Bytes{1, 2, 3};
  MediaAsset b = a;
  EXPECT_EQ(a, b);
  EXPECT_EQ(hashValue(a), hashValue(b));
  b.bookmark = Bytes{1, 2, 4};
  EXPECT_NE(a, b);
  EXPECT_NE(hashValue(a), hashValue(b));
  b = a;
  b.dateAdded += std::chrono::milliseconds(1);
  EXPECT_NE(a, b);
  EXPECT_NE(hashValue(a), hashValue(b));

  MediaFolder folder{.name = "Footage"};
  MediaFolder sameFolder = folder;
  EXPECT_EQ(hashValue(folder), hashValue(sameFolder));
  sameFolder.parentFolderID = Uuid::make();
  EXPECT_NE(folder, sameFolder);

  BrowseFolder pinned{.name = "Desktop", .path = "/Users/me/Desktop"};
  BrowseFolder samePinned = pinned;
  EXPECT_EQ(hashValue(pinned), hashValue(samePinned));
  samePinned.bookmark = Bytes{};
  EXPECT_NE(pinned, samePinned);
  EXPECT_NE(hashValue(pinned), hashValue(samePinned));
}

}  // namespace
}  // namespace orvane::core
