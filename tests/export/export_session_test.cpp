#include "export/export_session.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <mutex>

#include "media/composition_reader.hpp"
#include "render/gui_runtime.hpp"
#include "tests/export/export_test_support.hpp"
#include "tests/media/assembly_test_support.hpp"
#include "tests/media/media_fixtures.hpp"

namespace orvane::export_ {
namespace {

using namespace media::testing;
using namespace export_::testing;
using core::OVTime;

core::Layer placed(core::Layer layer, double x, double y, double opacity = 100) {
  layer.transform.position = core::AnimatedProperty::point(x, y);
  layer.transform.opacity = core::AnimatedProperty::double_(opacity);
  return layer;
}

core::Layer shapeLayer(double seconds, core::OVColor colour, core::OVSize size) {
  core::ShapeContent shape;
  shape.type = core::ShapeContent::ShapeType::ellipse;
  shape.size = size;
  shape.fillColor = colour;
  return core::Layer("Shape", core::LayerContent::shape(shape), span(0, seconds));
}

std::string readAll(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A numbered clip with a tone beside it and a separate tone, generated once.
class ExportSessionTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    ASSERT_TRUE(render::ensureGuiRuntime());
    media = new TempFolder();
    ASSERT_EQ(writeVideoClip(*media / "clip.mp4", {.frameCount = 60, .withAudio = true}), "");
    ASSERT_EQ(writeTone(*media / "tone.wav", {.seconds = 2.0}), "");
  }
  static void TearDownTestSuite() {
    delete media;
    media = nullptr;
  }

  void SetUp() override {
    clip = importedAsset(*media / "clip.mp4");
    tone = importedAsset(*media / "tone.wav");
  }

  // 320 × 240, two seconds: the clip with its sound, a half-transparent
  // ellipse and a title over a coloured background.
  core::Composition footageComposition() const {
    core::Composition c = composition("Main", 2);
    c.backgroundColor = {0.2, 0.3, 0.5, 1};
    core::TextContent title;
    title.string = "Orvane";
    title.fontSize = 40;
    addLayers(c, {placed(core::Layer("Title", core::LayerContent::text(title), span(0, 2)), 160, 200),
                  placed(shapeLayer(2, {0.9, 0.6, 0.1, 1}, {120, 90}), 90, 80, 60),
                  placed(videoLayer(clip, 0, 2), 160, 120)});
    return c;
  }
  // Nothing but generated layers: no sound at all.
  static core::Composition silentComposition(core::OVSize size = {320, 240}) {
    core::Composition c = composition("Silent", 1, size);
    c.backgroundColor = {0.1, 0.5, 0.3, 1};
    addLayers(c, {placed(shapeLayer(1, {1, 1, 1, 1}, {size.width / 2, size.height / 2}), size.width / 2,
                         size.height / 2, 60)});
    return c;
  }
  core::OVProject projectWith(const core::Composition& c) const { return projectOf({c}, {clip, tone}); }

  static ExportSettings settingsFor(const core::Composition& c, ExportCodec codec = ExportCodec::h264) {
    ExportSettings settings;
    settings.codec = codec;
    settings.size = c.size;
    settings.frameRate = c.frameRate;
    settings.videoBitrateMbps = 16;
    settings.range = c.fullRange();
    return settings;
  }

  // The composed picture at t of the composition as exported (alpha kept or not).
  std::vector<std::uint8_t> composed(core::Composition c, double seconds, bool straight) const {
    if (straight) c.isTransparent = true;
    auto assembled = media::CompositionAssembler{}.assemble(c, projectWith(c), 1);
    EXPECT_TRUE(assembled.has_value());
    media::CompositionReader reader(std::move(*assembled));
    auto picture = reader.videoFrameAt(secs(seconds));
    EXPECT_TRUE(picture.has_value());
    return rgbaOf(*picture, int(c.size.width), int(c.size.height), straight);
  }

  static TempFolder* media;
  core::MediaAsset clip;
  core::MediaAsset tone;
  TempFolder out;
};

TempFolder* ExportSessionTest::media = nullptr;

TEST_F(ExportSessionTest, H264WithAudioMatchesTheComposedFrames) {
  const core::Composition c = footageComposition();
  const auto path = out / "movie.mp4";
  std::vector<double> fractions;
  ExportSession session;
  auto result = session.exportTo(c, projectWith(c), settingsFor(c), path,
                                 [&](double f) { fractions.push_back(f); });
  ASSERT_TRUE(result.has_value()) << result.error().message();

  const auto file = decodeFile(path, {0, 17, 59});
  ASSERT_TRUE(file.has_value());
  EXPECT_NE(file->formatName.find("mp4"), std::string::npos);
  EXPECT_TRUE(movieHeaderFirst(path));
  ASSERT_TRUE(file->video.has_value());
  EXPECT_EQ(file->video->codec, "h264");
  EXPECT_EQ(file->video->pixelFormat, "yuv420p");
  EXPECT_EQ(file->video->width, 320);
  EXPECT_EQ(file->video->height, 240);
  EXPECT_EQ(file->video->frameCount, 60);
  EXPECT_NEAR(file->video->seconds, 2.0, 0.01);
  for (const int frame : {0, 17, 59}) {
    EXPECT_GE(psnr(file->video->pictures.at(frame), composed(c, frame / 30.0, false)), 35) << frame;
  }
  ASSERT_TRUE(file->audio.has_value());
  EXPECT_EQ(file->audio->codec, "aac");
  EXPECT_EQ(file->audio->channels, 2);
  EXPECT_EQ(file->audio->sampleRate, 48000);
  EXPECT_NEAR(double(file->audio->samples), 2.0 * 48000, 2048);
  EXPECT_GT(file->audio->rms, 0.1);

  // The progress moves forward only and ends at 1.
  ASSERT_FALSE(fractions.empty());
  EXPECT_TRUE(std::ranges::is_sorted(fractions));
  EXPECT_DOUBLE_EQ(fractions.back(), 1.0);
}

// A player sounds a tone placed at 0.5 s at 0.5 s against a picture that
// starts at 0: the encoder's priming samples are hidden by the container,
// and neither pump shifts its stream. In MP4 and MOV.
TEST_F(ExportSessionTest, PictureAndSoundKeepTheirTimes) {
  core::Composition c = composition("Sync", 1.5);
  addLayers(c, {audioLayer(tone, 0.5, 1.0), placed(shapeLayer(1.5, {1, 1, 1, 1}, {80, 60}), 160, 120)});
  for (const ExportCodec codec : {ExportCodec::h264, ExportCodec::proRes4444}) {
    const auto path = out / (codec == ExportCodec::h264 ? "sync.mp4" : "sync.mov");
    auto result = ExportSession().exportTo(c, projectWith(c), settingsFor(c, codec), path);
    ASSERT_TRUE(result.has_value()) << result.error().message();
    const auto file = decodeFile(path);
    ASSERT_TRUE(file && file->video && file->audio);
    EXPECT_NEAR(file->video->firstFrameSeconds, 0.0, 1e-6);
    ASSERT_TRUE(file->audio->firstSoundSeconds.has_value());
    // 5 ms: an AAC frame of priming (1024 samples, 21 ms) left in would show.
    EXPECT_NEAR(*file->audio->firstSoundSeconds, 0.5, 0.005) << rawValue(codec);
  }
}

TEST_F(ExportSessionTest, RangeAndRateChooseTheFramesWritten) {
  core::Composition c = composition("Clip", 2);
  addLayers(c, {placed(videoLayer(clip, 0, 2), 160, 120)});
  ExportSettings settings = settingsFor(c);
  settings.range = span(0.5, 1.0);
  settings.frameRate = core::FrameRate::fps25;
  settings.channels = ExportMediaChannels::videoOnly;
  const auto path = out / "range.mp4";
  ExportSession session;
  ASSERT_TRUE(session.exportTo(c, projectWith(c), settings, path).has_value());

  const auto file = decodeFile(path, {0, 10, 24});
  ASSERT_TRUE(file && file->video);
  EXPECT_FALSE(file->audio.has_value());
  EXPECT_EQ(file->video->frameCount, 25);
  EXPECT_NEAR(file->video->seconds, 1.0, 0.01);
  // Frame n of the file shows the clip at 0.5 s + n / 25 s.
  for (const int frame : {0, 10, 24}) {
    auto picture = render::imageFromRgba8(file->video->pictures.at(frame), 320, 240, 320 * 4);
    ASSERT_TRUE(picture.has_value());
    EXPECT_EQ(readFrameNumber(*picture), int(std::floor((0.5 + frame / 25.0) * 30 + 1e-6))) << frame;
  }
}

TEST_F(ExportSessionTest, OddSizesRoundToEvenAndSilenceGivesNoAudioTrack) {
  const core::Composition c = silentComposition({161, 121});
  const auto path = out / "odd.mp4";
  ExportSession session;
  ExportSettings settings = settingsFor(c);
  ASSERT_EQ(settings.channels, ExportMediaChannels::videoAndAudio);
  ASSERT_TRUE(session.exportTo(c, projectWith(c), settings, path).has_value());
  const auto file = decodeFile(path);
  ASSERT_TRUE(file && file->video);
  EXPECT_EQ(file->video->width, 162);
  EXPECT_EQ(file->video->height, 122);
  EXPECT_EQ(file->video->frameCount, 30);
  EXPECT_FALSE(file->audio.has_value());
}

// Rows whose bytes are no multiple of the converter's row alignment: each
// row must still land under the one before, in 8 and in 16 bits.
TEST_F(ExportSessionTest, WidthsOffTheRowAlignmentKeepTheirPicture) {
  core::Composition c = silentComposition({162, 122});
  c.duration = secs(0.2);
  for (ExportCodec codec : {ExportCodec::h264, ExportCodec::proRes4444}) {
    const bool alpha = preservesAlpha(codec);
    const auto path = out / (alpha ? "rows.mov" : "rows.mp4");
    ASSERT_TRUE(ExportSession().exportTo(c, projectWith(c), settingsFor(c, codec), path).has_value());
    const auto file = decodeFile(path, {2});
    ASSERT_TRUE(file && file->video);
    EXPECT_GE(psnr(file->video->pictures.at(2), composed(c, 2 / 30.0, alpha), alpha), alpha ? 45 : 35)
        << rawValue(codec);
  }
}

TEST_F(ExportSessionTest, ProRes4444KeepsAlpha) {
  core::Composition c = silentComposition();
  c.duration = secs(0.5);
  const auto path = out / "alpha.mov";
  ExportSettings settings = settingsFor(c, ExportCodec::proRes4444);
  settings.range = c.fullRange();
  ExportSession session;
  ASSERT_TRUE(session.exportTo(c, projectWith(c), settings, path).has_value());
  const auto file = decodeFile(path, {3});
  ASSERT_TRUE(file && file->video);
  EXPECT_NE(file->formatName.find("mov"), std::string::npos);
  EXPECT_EQ(file->video->codec, "prores");
  // FFmpeg's ProRes decoder hands out 12 bits; what counts is the alpha plane.
  EXPECT_TRUE(file->video->pixelFormat.starts_with("yuva444p")) << file->video->pixelFormat;
  EXPECT_EQ(file->video->frameCount, 15);
  const std::vector<std::uint8_t>& picture = file->video->pictures.at(3);
  // The corner is transparent, the ellipse's middle half covered (60 %).
  EXPECT_LE(picture[3], 2);
  const std::size_t middle = (120 * 320 + 160) * 4;
  EXPECT_NEAR(picture[middle + 3], 0.6 * 255, 3);
  EXPECT_GE(psnr(picture, composed(c, 3 / 30.0, true), true), 45);
}

TEST_F(ExportSessionTest, Vp9WebmCarriesAlphaBesideThePicture) {
  core::Composition c = silentComposition();
  c.duration = secs(0.5);
  const auto path = out / "alpha.webm";
  ExportSession session;
  ASSERT_TRUE(session.exportTo(c, projectWith(c), settingsFor(c, ExportCodec::vp9Alpha), path).has_value());
  // FFmpeg's own VP9 decoder drops the alpha side stream; libvpx reads it.
  const auto file = decodeFile(path, {5}, "libvpx-vp9");
  ASSERT_TRUE(file && file->video);
  EXPECT_NE(file->formatName.find("webm"), std::string::npos);
  EXPECT_EQ(file->video->codec, "vp9");
  EXPECT_EQ(file->video->tags.contains("alpha_mode") ? file->video->tags.at("alpha_mode") : "", "1");
  EXPECT_EQ(file->video->pixelFormat, "yuva420p");
  EXPECT_EQ(file->video->frameCount, 15);
  const std::vector<std::uint8_t>& picture = file->video->pictures.at(5);
  EXPECT_LE(picture[3], 8);
  EXPECT_NEAR(picture[(120 * 320 + 160) * 4 + 3], 0.6 * 255, 12);
}

TEST_F(ExportSessionTest, HevcWithAlphaFailsCleanlyWhereTheEncoderCannot) {
  const core::Composition c = silentComposition();
  const auto path = out / "alpha-hevc.mov";
  ExportSession session;
  auto result = session.exportTo(c, projectWith(c), settingsFor(c, ExportCodec::hevcWithAlpha), path);
  if (const auto reason = unavailableReason(ExportCodec::hevcWithAlpha)) {
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(result.error(), ExportError::writerFailed(*reason));
    EXPECT_FALSE(std::filesystem::exists(path));
  } else {
    ASSERT_TRUE(result.has_value()) << result.error().message();
    const auto file = decodeFile(path);
    ASSERT_TRUE(file && file->video);
    EXPECT_EQ(file->video->codec, "hevc");
  }
}

TEST_F(ExportSessionTest, AudioOnlyWritesTheMixToM4a) {
  core::Composition c = composition("Sound", 1.5);
  addLayers(c, {audioLayer(tone, 0, 1.5)});
  ExportSettings settings = settingsFor(c);
  settings.channels = ExportMediaChannels::audioOnly;
  settings.audioChannels = 1;
  settings.audioSampleRate = 44100;
  const auto path = out / "sound.m4a";
  std::vector<double> fractions;
  ExportSession session;
  ASSERT_TRUE(session.exportTo(c, projectWith(c), settings, path, [&](double f) { fractions.push_back(f); }));
  const auto file = decodeFile(path);
  ASSERT_TRUE(file.has_value());
  EXPECT_FALSE(file->video.has_value());
  ASSERT_TRUE(file->audio.has_value());
  EXPECT_EQ(file->audio->codec, "aac");
  EXPECT_EQ(file->audio->channels, 1);
  EXPECT_EQ(file->audio->sampleRate, 44100);
  EXPECT_NEAR(file->seconds, 1.5, 0.05);
  // The tone's left channel (0.5 peak, a sine) and its right one mixed to
  // mono: an RMS near 0.35.
  EXPECT_NEAR(file->audio->rms, 0.35, 0.08);
  // Progress comes from the audio when there is no picture.
  ASSERT_GT(fractions.size(), 2u);
  EXPECT_GT(fractions[fractions.size() - 2], 0.5);
}

TEST_F(ExportSessionTest, NothingToExportLeavesTheFileSystemAlone) {
  const core::Composition c = silentComposition();
  const auto path = out / "existing.mp4";
  std::ofstream(path) << "older file";

  ExportSettings audioOnly = settingsFor(c);
  audioOnly.channels = ExportMediaChannels::audioOnly;
  ExportSession session;
  auto silent = session.exportTo(c, projectWith(c), audioOnly, path);
  ASSERT_FALSE(silent.has_value());
  EXPECT_EQ(silent.error().message(), "The composition has nothing to export.");

  ExportSettings empty = settingsFor(c);
  empty.range = span(0.5, 0);
  auto zero = ExportSession().exportTo(c, projectWith(c), empty, path);
  ASSERT_FALSE(zero.has_value());
  EXPECT_EQ(zero.error(), ExportError::nothingToRender());
  EXPECT_EQ(readAll(path), "older file");
}

TEST_F(ExportSessionTest, CancellingMidwayRemovesThePartialFile) {
  const core::Composition c = footageComposition();
  const auto path = out / "cancelled.mp4";
  std::ofstream(path) << "older file";
  ExportSession session;
  std::once_flag once;
  auto result = session.exportTo(c, projectWith(c), settingsFor(c), path, [&](double f) {
    if (f >= 0.3) std::call_once(once, [&] {
        EXPECT_TRUE(std::filesystem::exists(path));
        session.cancel();
      });
  });
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error().message(), "The export was cancelled.");
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(ExportSessionTest, MissingMediaAndUnwritableFoldersFailWithTheirSentence) {
  core::Composition c = footageComposition();
  core::MediaAsset gone = clip;
  gone.id = core::Uuid::make();
  gone.name = "gone.mp4";
  gone.path = (out / "gone.mp4").string();
  addLayers(c, {videoLayer(gone, 0, 1)});
  const auto path = out / "missing.mp4";
  auto missing = ExportSession().exportTo(c, projectOf({c}, {clip, tone, gone}), settingsFor(c), path);
  ASSERT_FALSE(missing.has_value());
  EXPECT_EQ(missing.error().message(), "Reading the composition failed. Missing media: gone.mp4.");
  EXPECT_FALSE(std::filesystem::exists(path));

  // A folder that is a file: nothing can be created in it, whoever runs this.
  const core::Composition silent = silentComposition();
  std::ofstream(out / "plain") << "not a folder";
  auto unwritable = ExportSession().exportTo(silent, projectWith(silent), settingsFor(silent), out / "plain" / "x.mp4");
  ASSERT_FALSE(unwritable.has_value());
  EXPECT_EQ(unwritable.error().kind, ExportError::Kind::writerFailed);
  EXPECT_TRUE(unwritable.error().message().starts_with("Writing the output file failed. ")) << unwritable.error().message();
}

}  // namespace
}  // namespace orvane::export_
