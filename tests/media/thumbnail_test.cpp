#include <gtest/gtest.h>

#include <atomic>

#include "media/clip_frame_service.hpp"
#include "media/thumbnail_service.hpp"
#include "render/qimage_bridge.hpp"
#include "tests/media/main_queue.hpp"
#include "tests/media/media_fixtures.hpp"

namespace orvane::media {
namespace {

using testing::MainQueue;

core::MediaAsset assetAt(const std::filesystem::path& file, core::MediaKind kind, double seconds = 1) {
  core::MediaAsset asset;
  asset.kind = kind;
  asset.path = file.string();
  asset.duration = core::OVTime::fromSeconds(seconds);
  asset.hasVideoTrack = kind == core::MediaKind::video;
  asset.hasAudioTrack = kind == core::MediaKind::audio;
  return asset;
}

std::optional<int> frameNumberOf(const QImage& image) {
  const auto picture = render::imageFromBitmap(image);
  return picture ? testing::readFrameNumber(*picture) : std::nullopt;
}

bool isWhiteAt(const QImage& image, int x, int y) { return qGray(image.pixel(x, y)) > 190; }

TEST(ThumbnailServiceTest, PostersOfVideosAndStills) {
  testing::TempFolder folder;
  ASSERT_EQ(testing::writeVideoClip(folder / "clip.mp4", {}), "");
  testing::VideoClipSpec turned;
  turned.clockwiseRotation = 90;
  ASSERT_EQ(testing::writeVideoClip(folder / "turned.mp4", turned), "");
  ASSERT_EQ(testing::writeJpegWithOrientation(folder / "photo.jpg", 480, 300, 6), "");

  MainQueue main;
  ThumbnailService service(main.poster());
  const auto clip = assetAt(folder / "clip.mp4", core::MediaKind::video);
  const auto turnedClip = assetAt(folder / "turned.mp4", core::MediaKind::video);
  const auto photo = assetAt(folder / "photo.jpg", core::MediaKind::image);
  for (const auto* a : {&clip, &turnedClip, &photo}) service.request(*a);
  ASSERT_TRUE(main.drainUntil([&] { return service.thumbnails().size() == 3; }));

  // A one-second clip shows its frame at a tenth of its length: frame 3 of 30.
  const QImage& poster = *service.thumbnail(clip.id);
  EXPECT_EQ(poster.size(), QSize(240, 180));
  EXPECT_EQ(frameNumberOf(poster), 3);

  // Turned upright: the stored top row (bits 0 and 1 of frame 3) runs down
  // the right-hand side.
  const QImage& upright = *service.thumbnail(turnedClip.id);
  ASSERT_EQ(upright.size(), QSize(180, 240));
  EXPECT_TRUE(isWhiteAt(upright, 134, 24));
  EXPECT_TRUE(isWhiteAt(upright, 134, 72));
  EXPECT_FALSE(isWhiteAt(upright, 134, 120));
  EXPECT_FALSE(isWhiteAt(upright, 45, 215));

  // EXIF orientation 6 stands the photo up.
  EXPECT_EQ(service.thumbnail(photo.id)->size(), QSize(150, 240));
  EXPECT_FALSE(service.isInFlight(photo.id));
}

TEST(ThumbnailServiceTest, AudioMissingFilesAndRepeatsAskForNothing) {
  testing::TempFolder folder;
  ASSERT_EQ(testing::writeBytes(folder / "clip.mp4", "anything"), "");
  ASSERT_EQ(testing::writeBytes(folder / "broken.jpg", "not a picture"), "");
  std::atomic<int> made = 0;
  MainQueue main;
  ThumbnailService service(main.poster(), [&](const core::MediaAsset& asset, const std::filesystem::path& file) {
    ++made;
    return ThumbnailService::defaultPosterMaker(asset, file);
  });

  service.request(assetAt(folder / "clip.mp4", core::MediaKind::audio));
  service.request(assetAt(folder / "missing.mp4", core::MediaKind::video));
  EXPECT_TRUE(service.thumbnails().empty());

  const auto broken = assetAt(folder / "broken.jpg", core::MediaKind::image);
  service.request(broken);
  service.request(broken);  // in flight: no second maker
  EXPECT_TRUE(service.isInFlight(broken.id));
  ASSERT_TRUE(main.drainUntil([&] { return !service.isInFlight(broken.id); }));
  EXPECT_EQ(made.load(), 1);
  EXPECT_EQ(service.thumbnail(broken.id), nullptr);
}

TEST(ClipFrameServiceTest, KeysAreTenthsOfASecond) {
  const auto asset = assetAt("/nowhere.mp4", core::MediaKind::video);
  EXPECT_EQ(ClipFrameService::key(asset, 1.01).tenths, 10);
  EXPECT_EQ(ClipFrameService::key(asset, 1.04), ClipFrameService::key(asset, 1.01));
  EXPECT_EQ(ClipFrameService::key(asset, 1.06).tenths, 11);
  EXPECT_EQ(ClipFrameService::key(asset, -0.05).tenths, -1);  // halves away from zero
  EXPECT_EQ(ClipFrameService::key(asset, std::nan("")).tenths, 0);
  EXPECT_EQ(ClipFrameService::key(asset, 1.01).assetID, asset.id);
}

TEST(ClipFrameServiceTest, FramesOfAClipAtTheirTenth) {
  testing::TempFolder folder;
  ASSERT_EQ(testing::writeVideoClip(folder / "clip.mp4", {}), "");
  MainQueue main;
  ClipFrameService service(main.poster());
  const auto clip = assetAt(folder / "clip.mp4", core::MediaKind::video);
  std::vector<ClipFrameService::Key> heard;
  service.addObserver([&](const ClipFrameService::Key& k) { heard.push_back(k); });

  service.request(clip, 0.52);
  service.request(clip, 0.2);
  const auto half = ClipFrameService::key(clip, 0.5);
  const auto fifth = ClipFrameService::key(clip, 0.2);
  ASSERT_TRUE(main.drainUntil([&] { return service.frames().size() == 2; }));
  EXPECT_EQ(service.frame(half)->size(), QSize(160, 120));
  EXPECT_EQ(frameNumberOf(*service.frame(half)), 15);
  EXPECT_EQ(frameNumberOf(*service.frame(fifth)), 6);
  EXPECT_EQ(heard, (std::vector<ClipFrameService::Key>{half, fifth}));

  service.request(assetAt(folder / "clip.mp4", core::MediaKind::audio), 0.5);
  service.request(assetAt(folder / "clip.mp4", core::MediaKind::image), 0.5);
  EXPECT_TRUE(service.order().size() == 2 && !service.isInFlight(half));
}

TEST(ClipFrameServiceTest, OneMakerPerKeyAndFirstInFirstOut) {
  testing::TempFolder folder;
  ASSERT_EQ(testing::writeBytes(folder / "clip.mp4", "frames come from the fake maker"), "");
  std::atomic<int> made = 0;
  MainQueue main;
  ClipFrameService service(main.poster(), [&](const std::filesystem::path&, const core::OVTime&) {
    ++made;
    QImage image(4, 3, QImage::Format_ARGB32);
    image.fill(Qt::white);
    return std::optional<QImage>(image);
  });
  const auto clip = assetAt(folder / "clip.mp4", core::MediaKind::video);

  service.request(clip, 1.01);
  service.request(clip, 1.04);  // the same tenth, in flight
  ASSERT_TRUE(main.drainUntil([&] { return service.frames().size() == 1; }));
  EXPECT_EQ(made.load(), 1);
  service.request(clip, 0.96);  // stored already
  EXPECT_FALSE(service.isInFlight(ClipFrameService::key(clip, 1.0)));

  // 240 more: the 241st stored evicts the first one stored.
  for (int tenth = 11; tenth < 251; ++tenth) service.request(clip, tenth / 10.0);
  // Results come back in order: the last one stored means all are.
  ASSERT_TRUE(main.drainUntil([&] { return service.frame(ClipFrameService::key(clip, 25.0)) != nullptr; }));
  EXPECT_EQ(made.load(), 241);
  EXPECT_EQ(service.frames().size(), 240u);
  EXPECT_EQ(service.frame(ClipFrameService::key(clip, 1.0)), nullptr);
  EXPECT_EQ(service.order().front(), ClipFrameService::key(clip, 1.1));
  EXPECT_EQ(service.order().back(), ClipFrameService::key(clip, 25.0));

  // Asked again, the evicted frame is made again and pushes out the next oldest.
  service.request(clip, 1.0);
  ASSERT_TRUE(main.drainUntil([&] { return service.frame(ClipFrameService::key(clip, 1.0)) != nullptr; }));
  EXPECT_EQ(made.load(), 242);
  EXPECT_EQ(service.frame(ClipFrameService::key(clip, 1.1)), nullptr);
  EXPECT_EQ(service.order().size(), 240u);
}

TEST(FileThumbnailServiceTest, PicturesAndVideosAtTheScreensScale) {
  testing::TempFolder folder;
  ASSERT_EQ(testing::writeVideoClip(folder / "clip.mp4", {}), "");
  ASSERT_EQ(testing::writeJpegWithOrientation(folder / "photo.jpg", 480, 300, 6), "");
  MainQueue main;
  // A screen of scale 2 (the program's own screen depends on which tests
  // started the GUI runtime before this one).
  FileThumbnailService service(main.poster(), 2);
  ASSERT_EQ(service.pixelSize(), 128);
  service.request(folder / "clip.mp4");
  service.request(folder / "photo.jpg");
  ASSERT_TRUE(main.drainUntil([&] { return service.cache().size() == 2; }));
  EXPECT_EQ(service.thumbnail(folder / "clip.mp4")->size(), QSize(128, 96));
  EXPECT_EQ(frameNumberOf(*service.thumbnail(folder / "clip.mp4")), 0);
  EXPECT_EQ(service.thumbnail(folder / "photo.jpg")->size(), QSize(80, 128));  // stood up
  EXPECT_EQ(FileThumbnailService(main.poster(), 1).pixelSize(), 64);
}

TEST(FileThumbnailServiceTest, FailuresStoreNothingAndTheNextRequestTriesAgain) {
  testing::TempFolder folder;
  ASSERT_EQ(testing::writeBytes(folder / "notes.txt", "neither picture nor video"), "");
  std::atomic<int> made = 0;
  MainQueue main;
  FileThumbnailService service(main.poster(), 2, [&](const std::filesystem::path& file, int pixels) {
    ++made;
    return FileThumbnailService::defaultFileThumbnail(file, pixels);
  });
  for (const auto& file : {folder / "notes.txt", folder / "missing.png", folder.path()}) {
    service.request(file);
    service.request(file);  // in flight: no second maker
    ASSERT_TRUE(main.drainUntil([&] { return !service.isInFlight(file); }));
    EXPECT_EQ(service.thumbnail(file), nullptr);
  }
  EXPECT_EQ(made.load(), 3);
  service.request(folder / "notes.txt");
  ASSERT_TRUE(main.drainUntil([&] { return !service.isInFlight(folder / "notes.txt"); }));
  EXPECT_EQ(made.load(), 4);
  EXPECT_TRUE(service.cache().empty());
}

}  // namespace
}  // namespace orvane::media
