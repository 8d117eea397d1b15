#include <gtest/gtest.h>

#include "core/composition_preset.hpp"
#include "document/media_access.hpp"
#include "media/media_import_service.hpp"
#include "render/gui_runtime.hpp"
#include "tests/media/media_fixtures.hpp"

namespace orvane::media {
namespace {

using core::MediaKind;
using Kind = MediaImportError::Kind;
using testing::TempFolder;

TEST(MediaImportServiceTest, KindsByExtensionIgnoreCase) {
  EXPECT_EQ(MediaImportService::mediaKindByExtension("/a/CLIP.MP4"), MediaKind::video);
  EXPECT_EQ(MediaImportService::mediaKindByExtension("x.mkv"), MediaKind::video);
  EXPECT_EQ(MediaImportService::mediaKindByExtension("x.Aiff"), MediaKind::audio);
  EXPECT_EQ(MediaImportService::mediaKindByExtension("x.caf"), MediaKind::audio);
  EXPECT_EQ(MediaImportService::mediaKindByExtension("x.pdf"), MediaKind::image);
  EXPECT_EQ(MediaImportService::mediaKindByExtension("x.HEIC"), MediaKind::image);
  EXPECT_EQ(MediaImportService::mediaKindByExtension("x.txt"), std::nullopt);
  EXPECT_EQ(MediaImportService::mediaKindByExtension("mp4"), std::nullopt);
  EXPECT_EQ(MediaImportService::mediaKindByExtension("x."), std::nullopt);
}

TEST(MediaImportServiceTest, DetectedTypeWinsOverTheExtension) {
  TempFolder folder;
  ASSERT_EQ(testing::writeTone(folder / "sound.wav", {}), "");
  std::filesystem::rename(folder / "sound.wav", folder / "sound.bin");
  ASSERT_EQ(testing::writeStill(folder / "picture.png", 8, 8, core::OVColor::white), "");
  std::filesystem::rename(folder / "picture.png", folder / "picture.data");
  ASSERT_EQ(testing::writeBytes(folder / "empty.MP4", ""), "");
  EXPECT_EQ(MediaImportService::mediaKindFor(folder / "sound.bin"), MediaKind::audio);
  EXPECT_EQ(MediaImportService::mediaKindFor(folder / "picture.data"), MediaKind::image);
  // Nothing to detect: the extension decides.
  EXPECT_EQ(MediaImportService::mediaKindFor(folder / "empty.MP4"), MediaKind::video);
}

TEST(MediaImportServiceTest, SentencesNameTheFile) {
  EXPECT_EQ((MediaImportError{Kind::unsupportedType, "notes.txt"}).message(),
            "notes.txt is not a supported media type.");
  EXPECT_EQ((MediaImportError{Kind::unreadable, "clip.mov"}).message(),
            "clip.mov could not be read. The file may be damaged or use an unavailable codec.");
  EXPECT_EQ((MediaImportError{Kind::noUsableTracks, "subs.mkv"}).message(),
            "subs.mkv contains no video or audio that Orvane can use.");
}

TEST(MediaImportServiceTest, BadFilesGiveTheirSentenceAndNothingElse) {
  TempFolder folder;
  ASSERT_EQ(testing::writeBytes(folder / "notes.txt", "Some words for a text file.\n"), "");
  ASSERT_EQ(testing::writeBytes(folder / "empty.mp4", ""), "");
  ASSERT_EQ(testing::writeBytes(folder / "garbage.mov", std::string(4096, '\x5a')), "");
  ASSERT_EQ(testing::writeBytes(folder / "broken.png", "\x89PNG\r\n\x1a\n not really"), "");
  ASSERT_EQ(testing::writeSubtitlesOnly(folder / "subs.mkv"), "");
  testing::VideoClipSpec spec;
  spec.frameCount = 10;
  ASSERT_EQ(testing::writeVideoClip(folder / "whole.mp4", spec), "");
  std::filesystem::copy_file(folder / "whole.mp4", folder / "cut.mp4");
  std::filesystem::resize_file(folder / "cut.mp4", std::filesystem::file_size(folder / "whole.mp4") / 2);
  const std::pair<const char*, Kind> cases[] = {
      {"notes.txt", Kind::unsupportedType}, {"empty.mp4", Kind::unreadable}, {"garbage.mov", Kind::unreadable},
      {"broken.png", Kind::unreadable},     {"cut.mp4", Kind::unreadable},   {"missing.wav", Kind::unreadable},
      {"subs.mkv", Kind::noUsableTracks}};
  for (const auto& [name, kind] : cases) {
    auto asset = MediaImportService::importAsset(folder / name);
    ASSERT_FALSE(asset) << name;
    EXPECT_EQ(asset.error(), (MediaImportError{kind, name})) << name;
  }
}

TEST(MediaImportServiceTest, VideoRecordsWhatTheRestOfTheProgramNeeds) {
  TempFolder folder;
  testing::VideoClipSpec spec;
  spec.rate = core::FrameRate::fps29_97;
  spec.frameCount = 15;
  spec.withAudio = true;
  ASSERT_EQ(testing::writeVideoClip(folder / "clip.mp4", spec), "");
  auto asset = MediaImportService::importAsset(folder / "clip.mp4");
  ASSERT_TRUE(asset);
  EXPECT_EQ(asset->name, "clip.mp4");
  EXPECT_EQ(asset->kind, MediaKind::video);
  EXPECT_EQ(asset->path, (folder / "clip.mp4").string());
  EXPECT_EQ(asset->naturalSize, (core::OVSize{320, 240}));
  EXPECT_EQ(asset->frameRate, core::FrameRate::fps29_97);
  EXPECT_TRUE(asset->hasVideoTrack);
  EXPECT_TRUE(asset->hasAudioTrack);
  EXPECT_EQ(asset->audioChannelCount, 2);
  EXPECT_EQ(asset->audioSampleRate, 48000);
  EXPECT_NEAR(asset->duration.seconds(), 0.5, 0.05);
  EXPECT_EQ(asset->fileSizeBytes, static_cast<std::int64_t>(std::filesystem::file_size(folder / "clip.mp4")));
  EXPECT_FALSE(asset->bookmark);
  EXPECT_EQ(document::MediaAccessManager::shared().activePathFor(asset->id), folder / "clip.mp4");
  document::MediaAccessManager::shared().release(asset->id);
}

TEST(MediaImportServiceTest, RotatedPhoneClipIsRecordedUpright) {
  TempFolder folder;
  testing::VideoClipSpec spec;
  spec.frameCount = 3;
  spec.clockwiseRotation = 90;
  ASSERT_EQ(testing::writeVideoClip(folder / "phone.MOV", spec), "");
  auto asset = MediaImportService::importAsset(folder / "phone.MOV");
  ASSERT_TRUE(asset);
  EXPECT_EQ(asset->naturalSize, (core::OVSize{240, 320}));
  EXPECT_FALSE(asset->hasAudioTrack);
  EXPECT_EQ(asset->audioChannelCount, 0);
}

TEST(MediaImportServiceTest, AudioFilesHaveNoVideoTrack) {
  TempFolder folder;
  testing::ToneSpec tone;
  tone.codec = testing::AudioCodec::mp3;
  tone.sampleRate = 44100;
  tone.channels = 1;
  ASSERT_EQ(testing::writeTone(folder / "voice.mp3", tone), "");
  auto asset = MediaImportService::importAsset(folder / "voice.mp3");
  ASSERT_TRUE(asset);
  EXPECT_EQ(asset->kind, MediaKind::audio);
  EXPECT_FALSE(asset->hasVideoTrack);
  EXPECT_TRUE(asset->hasAudioTrack);
  EXPECT_EQ(asset->audioChannelCount, 1);
  EXPECT_EQ(asset->audioSampleRate, 44100);
  EXPECT_EQ(asset->frameRate, std::nullopt);
  EXPECT_NEAR(asset->duration.seconds(), 1.0, 0.06);
}

TEST(MediaImportServiceTest, StillsTakeTheirUprightSizeAndTheStillDuration) {
  ASSERT_TRUE(render::ensureGuiRuntime());
  TempFolder folder;
  ASSERT_EQ(testing::writeStill(folder / "flat.png", 64, 48, core::OVColor::red_), "");
  ASSERT_EQ(testing::writeJpegWithOrientation(folder / "turned.jpg", 40, 30, 6), "");
  ASSERT_EQ(testing::writeJpegWithOrientation(folder / "upright.jpeg", 40, 30, 1), "");
  ASSERT_EQ(testing::writeJpegWithOrientation(folder / "mirrored.jpg", 40, 30, 2), "");
  // Orientations 5 to 8 all turn the picture a quarter; 3 and 4 don't.
  for (const int orientation : {3, 4, 5, 7, 8}) {
    const std::string name = "o" + std::to_string(orientation) + ".jpg";
    ASSERT_EQ(testing::writeJpegWithOrientation(folder / name, 40, 30, orientation), "");
    auto asset = MediaImportService::importAsset(folder / name);
    ASSERT_TRUE(asset) << name;
    EXPECT_EQ(asset->naturalSize, (orientation >= 5 ? core::OVSize{30, 40} : core::OVSize{40, 30})) << name;
  }
  ASSERT_EQ(testing::writeSvg(folder / "logo.svg", 200, 100), "");
  ASSERT_EQ(testing::writePdf(folder / "page.pdf", 300, 200), "");
  const std::pair<const char*, core::OVSize> cases[] = {{"flat.png", {64, 48}},     {"turned.jpg", {30, 40}},
                                                        {"upright.jpeg", {40, 30}}, {"mirrored.jpg", {40, 30}},
                                                        {"logo.svg", {200, 100}},   {"page.pdf", {300, 200}}};
  for (const auto& [name, size] : cases) {
    auto asset = MediaImportService::importAsset(folder / name);
    ASSERT_TRUE(asset) << name;
    EXPECT_EQ(asset->kind, MediaKind::image) << name;
    EXPECT_EQ(asset->naturalSize, size) << name;
    EXPECT_EQ(asset->duration, core::ProjectDefaults::stillDuration) << name;
    EXPECT_EQ(asset->frameRate, std::nullopt) << name;
    EXPECT_FALSE(asset->hasVideoTrack || asset->hasAudioTrack) << name;
  }
}

TEST(MediaImportServiceTest, ImportingSeveralKeepsTheOrderOfAssetsAndFailures) {
  TempFolder folder;
  ASSERT_EQ(testing::writeTone(folder / "a.wav", {}), "");
  ASSERT_EQ(testing::writeBytes(folder / "b.txt", "text"), "");
  ASSERT_EQ(testing::writeStill(folder / "c.png", 4, 4, core::OVColor::white), "");
  ASSERT_EQ(testing::writeBytes(folder / "d.mp4", ""), "");
  ASSERT_EQ(testing::writeTone(folder / "e.wav", {}), "");
  const std::vector<std::filesystem::path> paths = {folder / "a.wav", folder / "b.txt", folder / "c.png",
                                                    folder / "d.mp4", folder / "e.wav"};
  const MediaImportResults results = MediaImportService::importAssets(paths);
  ASSERT_EQ(results.assets.size(), 3u);
  EXPECT_EQ(results.assets[0].name, "a.wav");
  EXPECT_EQ(results.assets[1].name, "c.png");
  EXPECT_EQ(results.assets[2].name, "e.wav");
  EXPECT_NE(results.assets[0].id, results.assets[2].id);
  ASSERT_EQ(results.failures.size(), 2u);
  EXPECT_EQ(results.failures[0].path, folder / "b.txt");
  EXPECT_EQ(results.failures[0].error.kind, Kind::unsupportedType);
  EXPECT_EQ(results.failures[1].path, folder / "d.mp4");
  EXPECT_EQ(results.failures[1].error.kind, Kind::unreadable);
  EXPECT_TRUE(MediaImportService::importAssets({}).assets.empty());
}

}  // namespace
}  // namespace orvane::media
