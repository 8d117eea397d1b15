#include "export/export_preset.hpp"

#include <gtest/gtest.h>

#include "export/user_export_preset.hpp"

namespace orvane::export_ {
namespace {

using core::OVSize;
using core::OVTime;
using core::OVTimeRange;

core::Composition compositionOf(double width, double height) {
  core::Composition composition;
  composition.size = {width, height};
  return composition;
}

TEST(ExportPresetTest, BuiltInListInMenuOrder) {
  std::vector<std::string> ids;
  for (const ExportPreset& preset : ExportPreset::all()) ids.push_back(preset.id);
  EXPECT_EQ(ids, (std::vector<std::string>{"match", "youtube.1080", "youtube.4k", "vertical.1080", "square.1080",
                                           "master", "alpha.prores", "alpha.hevc", "video.silent", "audio.master"}));
  const ExportPreset vertical = *ExportPreset::withID("vertical.1080");
  EXPECT_EQ(vertical.name, "Shorts / Reels / TikTok");
  EXPECT_EQ(vertical.detail, "1080 × 1920, 12 Mbps");
  EXPECT_EQ(vertical.size, (OVSize{1080, 1920}));
  EXPECT_EQ(vertical.videoBitrateMbps, 12);
  const ExportPreset proRes = *ExportPreset::withID("alpha.prores");
  EXPECT_EQ(proRes.codec, ExportCodec::proRes4444);
  EXPECT_EQ(proRes.audioBitrateKbps, 320);
  EXPECT_EQ(proRes.size, std::nullopt);
  EXPECT_EQ(ExportPreset::withID("video.silent")->channels, ExportMediaChannels::videoOnly);
  EXPECT_EQ(ExportPreset::withID("alpha.hevc")->codec, ExportCodec::hevcWithAlpha);
  EXPECT_EQ(ExportPreset::matchComposition().name, "Match Composition");
  EXPECT_EQ(ExportPreset::withID("youtube"), std::nullopt);
}

TEST(ExportPresetTest, RecommendedFollowsAspectRatioAndWidth) {
  EXPECT_EQ(ExportPreset::recommended(compositionOf(1080, 1080)).id, "square.1080");
  EXPECT_EQ(ExportPreset::recommended(compositionOf(4096, 2160)).id, "youtube.4k");
  EXPECT_EQ(ExportPreset::recommended(compositionOf(2560, 1440)).id, "youtube.1080");
  EXPECT_EQ(ExportPreset::recommended(compositionOf(1080, 1920)).id, "vertical.1080");
  // 0.75 and 1.2 themselves fall into the next band up.
  EXPECT_EQ(ExportPreset::recommended(compositionOf(750, 1000)).id, "square.1080");
  EXPECT_EQ(ExportPreset::recommended(compositionOf(1200, 1000)).id, "youtube.1080");
}

TEST(ExportPresetTest, SettingsTakeTheCompositionWhereThePresetIsSilent) {
  core::Composition composition = compositionOf(1280, 720);
  composition.frameRate = core::FrameRate::fps25;
  composition.audioSampleRate = 44100;
  composition.motionBlurEnabled = true;
  composition.motionBlurShutterAngle = 90;
  composition.workArea = OVTimeRange(OVTime::fromSeconds(2), OVTime::fromSeconds(3));

  const ExportSettings match = ExportPreset::matchComposition().settingsFor(composition);
  EXPECT_EQ(match.size, (OVSize{1280, 720}));
  EXPECT_EQ(match.frameRate, core::FrameRate::fps25);
  EXPECT_EQ(match.audioSampleRate, 44100);
  EXPECT_EQ(match.audioChannels, 2);
  EXPECT_EQ(match.range, *composition.workArea);
  EXPECT_TRUE(match.enableMotionBlur);
  EXPECT_EQ(match.motionBlurShutterAngle, 90);

  composition.workArea.reset();
  const ExportSettings audio = ExportPreset::withID("audio.master")->settingsFor(composition);
  EXPECT_EQ(audio.range, composition.fullRange());
  EXPECT_EQ(audio.fileExtension(), "m4a");
  EXPECT_EQ(audio.audioBitrateKbps, 320);
  const ExportSettings youTube4K = ExportPreset::withID("youtube.4k")->settingsFor(composition);
  EXPECT_EQ(youTube4K.size, (OVSize{3840, 2160}));
  EXPECT_EQ(youTube4K.videoBitrateMbps, 45);
}

TEST(UserExportPresetTest, MadeFromSettingsAndShownAsBuiltIn) {
  ExportSettings settings;
  settings.size = {1920, 1080};
  settings.videoBitrateMbps = 16;
  settings.codec = ExportCodec::vp9Alpha;
  const UserExportPreset sized = UserExportPreset::make("Web loop", settings, false);
  EXPECT_EQ(sized.size, (OVSize{1920, 1080}));
  EXPECT_EQ(sized.codec, ExportCodec::vp9Alpha);
  const ExportPreset builtIn = sized.asBuiltIn();
  EXPECT_EQ(builtIn.id, "user." + sized.id.text());
  EXPECT_EQ(builtIn.name, "Web loop");
  EXPECT_EQ(builtIn.detail, "Saved preset · 1920 × 1080 · 16 Mbps");
  EXPECT_EQ(builtIn.codec, ExportCodec::vp9Alpha);

  settings.videoBitrateMbps = 12.5;
  const UserExportPreset following = UserExportPreset::make("Follow", settings, true);
  EXPECT_EQ(following.size, std::nullopt);
  EXPECT_NE(following.id, sized.id);
  EXPECT_EQ(following.asBuiltIn().detail, "Saved preset · Composition size · 12.5 Mbps");
  core::Composition composition = compositionOf(640, 360);
  EXPECT_EQ(following.asBuiltIn().settingsFor(composition).size, (OVSize{640, 360}));
}

TEST(UserExportPresetStoreTest, SavesAndLoadsTheWholeList) {
  core::MemorySettingsStore settings;
  UserExportPresetStore store(settings);
  EXPECT_TRUE(store.load().empty());
  ExportSettings exportSettings;
  exportSettings.channels = ExportMediaChannels::audioOnly;
  exportSettings.audioBitrateKbps = 256;
  const std::vector<UserExportPreset> presets = {
      UserExportPreset::make("Sized", ExportSettings{}, false),
      UserExportPreset::make("Voice «über»", exportSettings, true)};
  store.save(presets);
  EXPECT_EQ(store.load(), presets);
  ASSERT_TRUE(settings.stringValue(UserExportPresetStore::key));
  EXPECT_NE(settings.stringValue(UserExportPresetStore::key)->find("\"sizeWidth\":1920"), std::string::npos);
  store.save({});
  EXPECT_TRUE(store.load().empty());
}

TEST(UserExportPresetStoreTest, UnreadableValuesLoadAsEmpty) {
  core::MemorySettingsStore settings;
  UserExportPresetStore store(settings);
  for (const char* text : {"not json", "{}", "[1]", "[{\"id\":\"x\"}]",
                           R"([{"id":"6F9619FF-8B86-D011-B42D-00CF4FC964FF","name":"A","videoBitrateMbps":16,)"
                           R"("audioBitrateKbps":192,"channels":"stereo","codec":"h264"}])"}) {
    settings.setValue(UserExportPresetStore::key, std::string(text));
    EXPECT_TRUE(store.load().empty()) << text;
  }
  settings.setValue(UserExportPresetStore::key, 3.0);
  EXPECT_TRUE(store.load().empty());
  // A hand-written entry without a size follows the composition.
  settings.setValue(UserExportPresetStore::key,
                    std::string(R"([{"id":"6f9619ff-8b86-d011-b42d-00cf4fc964ff","name":"A","videoBitrateMbps":8,)"
                                R"("audioBitrateKbps":128,"channels":"videoOnly","codec":"proRes4444"}])"));
  const auto loaded = store.load();
  ASSERT_EQ(loaded.size(), 1u);
  EXPECT_EQ(loaded[0].size, std::nullopt);
  EXPECT_EQ(loaded[0].codec, ExportCodec::proRes4444);
  EXPECT_EQ(loaded[0].asBuiltIn().id, "user.6F9619FF-8B86-D011-B42D-00CF4FC964FF");
}

TEST(UserExportPresetStoreTest, UnencodableListLeavesTheStoredOne) {
  core::MemorySettingsStore settings;
  UserExportPresetStore store(settings);
  const std::vector<UserExportPreset> kept = {UserExportPreset::make("Kept", ExportSettings{}, true)};
  store.save(kept);
  UserExportPreset broken = UserExportPreset::make("Broken", ExportSettings{}, true);
  broken.videoBitrateMbps = std::numeric_limits<double>::infinity();
  store.save({broken});
  UserExportPreset badName = UserExportPreset::make(std::string("\xff\xfe"), ExportSettings{}, true);
  store.save({badName});
  EXPECT_EQ(store.load(), kept);
}

}  // namespace
}  // namespace orvane::export_
