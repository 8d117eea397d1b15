#include "document/project_codec.hpp"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <fstream>

#include "core/build_info.hpp"
#include "core/enum_text.hpp"
#include "tests/document/sample_project.hpp"
#include "tests/document/temp_folder.hpp"

namespace orvane::document {
namespace {

using namespace core;
using testing_support::sampleProject;
using testing_support::secs;

OVProject decoded(std::string_view json) {
  auto p = ProjectCodec::decode(json);
  EXPECT_TRUE(p.has_value()) << (p ? "" : p.error().message());
  return p ? *p : OVProject();
}

ProjectCodecError failure(std::string_view json) {
  auto p = ProjectCodec::decode(json);
  EXPECT_FALSE(p.has_value()) << json;
  return p ? ProjectCodecError() : p.error();
}

// The text with the values of "av" and "modified" blanked out.
std::string withoutStamps(std::string text) {
  for (const std::string key : {"\"av\":\"", "\"modified\":\""}) {
    const auto start = text.find(key);
    if (start == std::string::npos) continue;
    const auto valueStart = start + key.size();
    text.erase(valueStart, text.find('"', valueStart) - valueStart);
  }
  return text;
}

TEST(ProjectCodecTest, EveryKindAndValueSurvivesARoundTrip) {
  const OVProject p = sampleProject();
  const std::string bytes = ProjectCodec::encodeUnstamped(p);
  EXPECT_EQ(decoded(bytes), p);
  // Same value, same bytes: saving twice gives identical files.
  EXPECT_EQ(ProjectCodec::encodeUnstamped(decoded(bytes)), bytes);
}

TEST(ProjectCodecTest, EncodeStampsVersionAndTimeOnACopy) {
  OVProject p = sampleProject();
  p.appVersion = "0.0.1 (old)";
  p.modifiedAt = Timestamp(std::chrono::milliseconds(1000));
  const OVProject before = p;
  const OVProject back = decoded(ProjectCodec::encode(p));
  EXPECT_EQ(p, before);
  EXPECT_EQ(back.appVersion, buildVersion());
  EXPECT_GT(back.modifiedAt, before.modifiedAt);
  OVProject expected = before;
  expected.appVersion = back.appVersion;
  expected.modifiedAt = back.modifiedAt;
  EXPECT_EQ(back, expected);
}

// A file as another writer of the format would produce it: decoded key for
// key, it is written back byte for byte.
constexpr std::string_view kHandWritten =
    R"json({"active":"6B1C1D2E-0000-4000-8000-000000000001","assets":[{"audioChannelCount":2,"audioSampleRate":48000,"bookmark":"AAEC","dateAdded":"2026-01-02T03:04:05.678Z","duration":{"ts":600,"v":6000},"fileSizeBytes":1234,"folderID":"6B1C1D2E-0000-4000-8000-000000000005","frameRate":{"denominator":1001,"numerator":30000},"hasAudioTrack":true,"hasVideoTrack":true,"id":"6B1C1D2E-0000-4000-8000-000000000004","kind":"video","name":"clip.mov","naturalSize":{"h":1080,"w":1920},"path":"/m/clip.mov"}],"av":"1.0 (7)","bfolders":[{"id":"6B1C1D2E-0000-4000-8000-000000000006","n":"Stock","p":"/stock"}],"comps":[{"bg":{"a":1,"b":0.25,"g":0.5,"r":0},"d":{"ts":600000,"v":6000000},"fr":{"denominator":1,"numerator":25},"id":"6B1C1D2E-0000-4000-8000-000000000001","l":[{"au":{"ed":180,"ef":35,"em":0,"m":false,"ng":1,"p":{"b":{"t":"d","v":0}},"pc":0,"pm":"keepDuration","ps":0,"rd":50,"rm":0,"v":{"b":{"t":"d","v":100}}},"bm":"screen","c":{"a":"6B1C1D2E-0000-4000-8000-000000000004","k":"video"},"cr":{"b":{"b":{"t":"d","v":0}},"l":{"b":{"t":"d","v":0}},"r":{"b":{"t":"d","v":0}},"t":{"b":{"t":"d","v":0}}},"en":true,"exp":false,"fi":{"ts":600000,"v":0},"fo":{"ts":600000,"v":300000},"fx":[],"id":"6B1C1D2E-0000-4000-8000-000000000002","lc":"teal","lk":false,"mk":[],"msk":[],"n":"clip.mov","so":false,"ss":{"ts":600000,"v":0},"tf":{"a":{"b":{"t":"pt","v":{"x":0.5,"y":0.5}}},"fh":false,"fv":true,"k":{"b":{"t":"d","v":0}},"o":{"b":{"t":"d","v":100},"k":[{"id":"6B1C1D2E-0000-4000-8000-000000000003","m":"hold","t":{"ts":600000,"v":0},"v":{"t":"d","v":50}}]},"p":{"b":{"t":"pt","v":{"x":960,"y":540}}},"r":{"b":{"t":"d","v":-12.5}},"s":{"b":{"t":"pt","v":{"x":100,"y":100}}}},"tr":{"d":{"ts":600000,"v":6000000},"s":{"ts":600000,"v":0}},"trv":{"b":{"t":"d","v":100}},"usa":true,"xfi":false,"xfo":false}],"mb":false,"mk":[],"mode":"layers","msa":180,"n":"Main","ph":{"ts":600000,"v":0},"sr":48000,"sz":{"h":1080,"w":1920},"tr":false,"tracks":[],"wa":{"d":{"ts":600000,"v":1200000},"s":{"ts":600000,"v":600000}},"xf":true}],"created":"2026-01-02T03:04:05.000Z","fv":1,"id":"6B1C1D2E-0000-4000-8000-000000000009","mfolders":[{"c":"2026-01-02T03:04:05.678Z","id":"6B1C1D2E-0000-4000-8000-000000000005","n":"Footage"}],"modified":"2026-03-04T05:06:07.890Z","n":"Hand Made"})json";

TEST(ProjectCodecTest, HandWrittenFileDecodesKeyForKeyAndIsWrittenBackTheSame) {
  const OVProject p = decoded(kHandWritten);
  EXPECT_EQ(p.name, "Hand Made");
  EXPECT_EQ(p.appVersion, "1.0 (7)");
  EXPECT_EQ(formatISO8601(p.modifiedAt), "2026-03-04T05:06:07.890Z");
  ASSERT_EQ(p.compositions.size(), 1u);
  const Composition& c = p.compositions[0];
  EXPECT_EQ(c.frameRate, FrameRate::fps25);
  EXPECT_EQ(c.backgroundColor, (OVColor{0, 0.5, 0.25, 1}));
  EXPECT_EQ(c.workArea, (OVTimeRange{secs(1), secs(2)}));
  ASSERT_EQ(c.layers.size(), 1u);
  const Layer& l = c.layers[0];
  EXPECT_EQ(l.blendMode, OVBlendMode::screen);
  EXPECT_EQ(l.labelColor, LayerLabelColor::teal);
  EXPECT_EQ(l.fadeOut, secs(0.5));
  EXPECT_TRUE(l.transform.flipVertically);
  EXPECT_EQ(l.transform.rotation.baseValue, PropertyValue::double_(-12.5));
  ASSERT_EQ(l.transform.opacity.keyframes().size(), 1u);
  EXPECT_EQ(l.transform.opacity.keyframes()[0].mode, InterpolationMode::hold);
  EXPECT_EQ(l.content.assetID(), p.assets[0].id);
  EXPECT_EQ(p.assets[0].bookmark, (Bytes{0, 1, 2}));
  EXPECT_EQ(p.assets[0].frameRate, FrameRate::fps29_97);
  EXPECT_EQ(p.assets[0].folderID, p.mediaFolders[0].id);
  EXPECT_EQ(p.activeCompositionID, c.id);

  EXPECT_EQ(withoutStamps(ProjectCodec::encode(p)), withoutStamps(std::string(kHandWritten)));
}

TEST(ProjectCodecTest, TopLevelIsForgiving) {
  for (std::string_view json : {R"({})", R"({"fv":1})", R"({"n":null,"comps":null,"unknown":[1,2]})"}) {
    const OVProject p = decoded(json);
    EXPECT_EQ(p.name, "Untitled") << json;
    EXPECT_EQ(p.formatVersion, 1);
    EXPECT_EQ(p.appVersion, "unknown");
    EXPECT_TRUE(p.compositions.empty());
    EXPECT_FALSE(p.id.isNil());
  }
}

TEST(ProjectCodecTest, NewerVersionIsRefusedBeforeReadingTheRest) {
  const ProjectCodecError e = failure(R"({"fv":2,"comps":"garbage","n":7})");
  EXPECT_EQ(e, ProjectCodecError::unsupportedFormatVersion(2));
  EXPECT_EQ(e.message(), "This project was created by a newer version of Orvane (format 2).");
}

TEST(ProjectCodecTest, DamagedFilesAreCorruptDataWithTheirSentence) {
  const std::string_view cases[] = {
      "not json",
      R"([1,2])",
      R"({"fv":"x"})",
      R"({"fv":1.5})",
      R"({"comps":[{}]})",
      R"({"comps":[{"id":"6B1C1D2E-0000-4000-8000-000000000001","n":null,"sz":{"w":1,"h":1},"fr":{"numerator":30,"denominator":1},"d":{"v":1,"ts":1}}]})",
      R"({"comps":[{"id":"nope","n":"x","sz":{"w":1,"h":1},"fr":{"numerator":30,"denominator":1},"d":{"v":1,"ts":1}}]})",
      R"({"comps":[{"id":"6B1C1D2E-0000-4000-8000-000000000001","n":"x","sz":{"w":1,"h":1},"fr":{"numerator":30,"denominator":1},"d":{"v":1,"ts":1},"mode":"timeline"}]})",
      R"({"comps":[{"id":"6B1C1D2E-0000-4000-8000-000000000001","n":"x","sz":{"w":1,"h":"1"},"fr":{"numerator":30,"denominator":1},"d":{"v":1,"ts":1}}]})",
      R"({"comps":[{"id":"6B1C1D2E-0000-4000-8000-000000000001","n":"x","sz":{"w":1,"h":1},"fr":{"numerator":30,"denominator":1},"d":{"v":9223372036854775807,"ts":1}}]})",
      R"({"comps":[{"id":"6B1C1D2E-0000-4000-8000-000000000001","n":"x","sz":{"w":1,"h":1},"fr":{"numerator":30,"denominator":1},"d":{"v":1,"ts":4294967296}}]})",
      R"({"created":"yesterday"})",
      R"({"bfolders":[{"id":"6B1C1D2E-0000-4000-8000-000000000001","n":"x","p":"/","bm":"***"}]})",
  };
  for (std::string_view json : cases) {
    const ProjectCodecError e = failure(json);
    EXPECT_EQ(e.kind, ProjectCodecError::Kind::corruptData) << json;
    EXPECT_TRUE(e.message().starts_with("The project file could not be read. ")) << e.message();
    EXPECT_GT(e.message().size(), std::string_view("The project file could not be read. ").size());
  }
  EXPECT_EQ(failure(R"({"created":"yesterday"})").message(),
            "The project file could not be read. Unreadable date \"yesterday\".");
}

// A composition holding the given layer JSON.
std::string withLayer(std::string_view layerJSON, std::string_view compositionExtra = "") {
  return R"({"comps":[{"id":"6B1C1D2E-0000-4000-8000-000000000001","n":"C","sz":{"w":100,"h":100},)"
         R"("fr":{"numerator":30,"denominator":1},"d":{"v":10,"ts":1})" +
         std::string(compositionExtra) + R"(,"l":[)" + std::string(layerJSON) + "]}]}";
}

constexpr std::string_view kSolid = R"("c":{"k":"solid","so":{"color":{"r":1,"g":0,"b":0,"a":1},"size":{"w":10,"h":10}}})";

std::string layerJSON(std::string_view id, std::string_view extra, std::string_view range = R"({"s":{"v":0,"ts":1},"d":{"v":5,"ts":1}})") {
  return R"({"id":")" + std::string(id) + R"(","n":"L",)" + std::string(kSolid) + R"(,"tr":)" + std::string(range) +
         std::string(extra) + "}";
}

TEST(ProjectCodecTest, LayerDefaultsAndStrictness) {
  const OVProject p = decoded(withLayer(layerJSON("6B1C1D2E-0000-4000-8000-0000000000AA", R"(,"pid":"6B1C1D2E-0000-4000-8000-0000000000FF","tf":null)")));
  const Layer& l = p.compositions[0].layers[0];
  EXPECT_EQ(l.labelColor, LayerLabelColor::none);  // not the suggested colour
  EXPECT_TRUE(l.isEnabled);
  EXPECT_TRUE(l.usesSourceAudio);
  EXPECT_EQ(l.transform, LayerTransform());
  EXPECT_EQ(l.textReveal, AnimatedProperty::double_(100));
  EXPECT_EQ(l.audio, AudioProperties());
  // References are checked where they are used, not here.
  EXPECT_TRUE(l.parentLayerID.has_value());

  EXPECT_EQ(failure(withLayer(R"({"id":"6B1C1D2E-0000-4000-8000-0000000000AA","n":"L","c":{"k":"hologram"},"tr":{"s":{"v":0,"ts":1},"d":{"v":5,"ts":1}}})")).kind,
            ProjectCodecError::Kind::corruptData);
  EXPECT_EQ(failure(withLayer(R"({"id":"6B1C1D2E-0000-4000-8000-0000000000AA","n":"L","c":{"k":"text"},"tr":{"s":{"v":0,"ts":1},"d":{"v":5,"ts":1}}})")).kind,
            ProjectCodecError::Kind::corruptData);
  EXPECT_EQ(failure(withLayer(layerJSON("6B1C1D2E-0000-4000-8000-0000000000AA", R"(,"trv":{"b":{"t":"q","v":1}})"))).kind,
            ProjectCodecError::Kind::corruptData);
}

TEST(ProjectCodecTest, ZeroTimescaleReadsAsTheDefaultKeepingTheValue) {
  const OVProject p = decoded(withLayer(layerJSON("6B1C1D2E-0000-4000-8000-0000000000AA", "", R"({"s":{"v":300000,"ts":0},"d":{"v":5,"ts":-3}})")));
  const Layer& l = p.compositions[0].layers[0];
  EXPECT_EQ(l.timeRange.start, secs(0.5));
  EXPECT_EQ(l.timeRange.start.timescale, OVTime::defaultTimescale);
  EXPECT_EQ(l.timeRange.duration, OVTime(5, OVTime::defaultTimescale));
}

TEST(ProjectCodecTest, DatesWithoutFractionReadAndAreWrittenWithMilliseconds) {
  const OVProject p = decoded(R"({"created":"2026-01-02T03:04:05Z"})");
  EXPECT_EQ(formatISO8601(p.createdAt), "2026-01-02T03:04:05.000Z");
  EXPECT_NE(ProjectCodec::encode(p).find(R"("created":"2026-01-02T03:04:05.000Z")"), std::string::npos);
}

TEST(ProjectCodecTest, KeyframesComeBackSortedWithTheirIdsAndSpatialDefaults) {
  const std::string trv =
      R"(,"trv":{"b":{"t":"d","v":0},"k":[)"
      R"({"id":"6B1C1D2E-0000-4000-8000-0000000000B2","t":{"v":2,"ts":1},"v":{"t":"d","v":2},"sm":"bezier"},)"
      R"({"id":"6B1C1D2E-0000-4000-8000-0000000000B1","t":{"v":1,"ts":1},"v":{"t":"d","v":1},"m":"easeIn"}]})";
  const OVProject p = decoded(withLayer(layerJSON("6B1C1D2E-0000-4000-8000-0000000000AA", trv)));
  const auto& keys = p.compositions[0].layers[0].textReveal.keyframes();
  ASSERT_EQ(keys.size(), 2u);
  EXPECT_EQ(keys[0].id.text(), "6B1C1D2E-0000-4000-8000-0000000000B1");
  EXPECT_EQ(keys[0].mode, InterpolationMode::easeIn);
  EXPECT_EQ(keys[1].mode, InterpolationMode::linear);
  EXPECT_EQ(keys[1].spatialMode, SpatialInterpolation::bezier);
  EXPECT_EQ(keys[1].spatialHandles, SpatialHandles::zero);
}

TEST(ProjectCodecTest, PlainPointKeyWritesNoSpatialKeysAndReadsBackLinear) {
  Keyframe key(secs(1), PropertyValue::point(1, 2));
  ASSERT_EQ(key.spatialMode, SpatialInterpolation::autoBezier);  // what the constructor makes
  key.spatialMode = SpatialInterpolation::linear;
  OVProject p = sampleProject();
  p.updateActiveComposition([&](Composition& c) {
    c.update(c.layers[0].id, [&](Layer& l) { l.transform.anchorPoint.setKeyframes({key}); });
  });
  const std::string bytes = ProjectCodec::encodeUnstamped(p);
  const std::string written = R"("k":[{"id":")" + key.id.text() + R"(","m":"linear","t":)";
  EXPECT_NE(bytes.find(written), std::string::npos);
  EXPECT_EQ(decoded(bytes), p);
}

TEST(ProjectCodecTest, SequenceOrderInTheFileIsNotTrusted) {
  const std::string tracks = R"(,"mode":"sequence","tracks":[{"id":"6B1C1D2E-0000-4000-8000-0000000000C1","n":"V1"}])";
  const std::string early = layerJSON("6B1C1D2E-0000-4000-8000-0000000000A1", R"(,"trk":"6B1C1D2E-0000-4000-8000-0000000000C1")",
                                      R"({"s":{"v":0,"ts":1},"d":{"v":4,"ts":1}})");
  const std::string late = layerJSON("6B1C1D2E-0000-4000-8000-0000000000A2", R"(,"trk":"6B1C1D2E-0000-4000-8000-0000000000C1")",
                                     R"({"s":{"v":3,"ts":1},"d":{"v":4,"ts":1}})");
  const OVProject p = decoded(withLayer(early + "," + late, tracks));
  const Composition& c = p.compositions[0];
  ASSERT_EQ(c.layers.size(), 2u);
  EXPECT_EQ(c.layers[0].id.text(), "6B1C1D2E-0000-4000-8000-0000000000A2");  // later clip first
  EXPECT_TRUE(c.layers[0].crossfadeIn);
  EXPECT_EQ(c.layers[1].fadeOut, secs(1));
}

TEST(ProjectCodecTest, NumbersThatAreNotFiniteStillGiveAReadableFile) {
  OVProject p = sampleProject();
  p.updateActiveComposition([](Composition& c) { c.motionBlurShutterAngle = std::nan(""); });
  const OVProject back = decoded(ProjectCodec::encodeUnstamped(p));
  EXPECT_EQ(back.activeComposition()->motionBlurShutterAngle, 0);
}

TEST(ProjectCodecFileTest, WriteReplacesAtomicallyAndKeepsTheMode) {
  testing_support::TempFolder dir;
  const auto path = dir.path() / "My Project.orvane";
  const OVProject p = sampleProject();
  ASSERT_TRUE(ProjectCodec::write(p, path));
  ::chmod(path.c_str(), 0640);
  OVProject changed = p;
  changed.name = "Renamed";
  ASSERT_TRUE(ProjectCodec::write(changed, path));
  auto back = ProjectCodec::read(path);
  ASSERT_TRUE(back) << back.error().message();
  EXPECT_EQ(back->name, "Renamed");
  struct stat info {};
  ASSERT_EQ(::stat(path.c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0640u);
  // Nothing but the project is left in the folder.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
}

TEST(ProjectCodecFileTest, FailuresAreSentencesAndLeaveNothingBehind) {
  testing_support::TempFolder dir;
  const auto missingFolder = dir.path() / "gone" / "p.orvane";
  const auto written = ProjectCodec::write(sampleProject(), missingFolder);
  ASSERT_FALSE(written);
  EXPECT_NE(written.error().message.find("p.orvane"), std::string::npos);

  EXPECT_EQ(ProjectCodec::read(dir.path()).error().message(), "The file is empty or is a folder.");
  std::ofstream(dir.path() / "empty.orvane").close();
  EXPECT_EQ(ProjectCodec::read(dir.path() / "empty.orvane").error().message(), "The file is empty or is a folder.");
  EXPECT_EQ(ProjectCodec::read(dir.path() / "none.orvane").error().kind, ProjectCodecError::Kind::unreadableFile);
  std::ofstream(dir.path() / "bad.orvane") << "{\"fv\":3}";
  EXPECT_EQ(ProjectCodec::read(dir.path() / "bad.orvane").error(), ProjectCodecError::unsupportedFormatVersion(3));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 2);
}

}  // namespace
}  // namespace orvane::document
