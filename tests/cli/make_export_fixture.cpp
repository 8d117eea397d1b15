// Writes the export tests' project into the folder given as the only
// argument:
//   media/clip.mp4    160 × 120, 15 frames at 30 fps with a 440 Hz tone
//   export.orvane     "Main" (active): 161 × 121 at 30 fps, 0.5 s, grey, a
//                     red 30 × 30 solid centred at 20,20 and the clip with
//                     its sound centred at 120,90 (from 40,30 on; y up),
//                     work area from 0.1 to 0.3 s; "Silent": 64 × 48 transparent, 0.4 s, a
//                     green solid and no sound

#include <filesystem>
#include <iostream>

#include "core/project.hpp"
#include "document/project_codec.hpp"
#include "media/media_import_service.hpp"
#include "tests/media/media_fixtures.hpp"

namespace {

namespace fs = std::filesystem;
using namespace orvane;

core::OVTime secs(double s) { return core::OVTime::fromSeconds(s); }

core::Layer placed(const std::string& name, core::LayerContent content, double seconds, core::OVPoint at) {
  core::Layer layer(name, std::move(content), {secs(0), secs(seconds)});
  layer.transform.position = core::AnimatedProperty::point(at.x, at.y);
  return layer;
}

core::Composition mainComposition(const core::MediaAsset& clip) {
  core::Composition main;
  main.name = "Main";
  main.size = {161, 121};
  main.duration = secs(0.5);
  main.backgroundColor = {0.5, 0.5, 0.5, 1};
  main.workArea = core::OVTimeRange(secs(0.1), secs(0.2));
  main.layers = {placed("Red", core::LayerContent::solid({{1, 0, 0, 1}, {30, 30}}), 0.5, {20, 20}),
                 placed("Clip", core::LayerContent::video(clip.id), 0.5, {120, 90})};
  return main;
}

core::Composition silentComposition() {
  core::Composition silent;
  silent.name = "Silent";
  silent.size = {64, 48};
  silent.duration = secs(0.4);
  silent.isTransparent = true;
  silent.layers = {placed("Green", core::LayerContent::solid({{0, 1, 0, 1}, {16, 16}}), 0.4, {32, 24})};
  return silent;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_export_fixture FOLDER\n";
    return 2;
  }
  const fs::path folder = argv[1];
  std::error_code ignored;
  fs::create_directories(folder / "media", ignored);
  media::testing::VideoClipSpec spec;
  spec.width = 160;
  spec.height = 120;
  spec.frameCount = 15;
  spec.withAudio = true;
  if (const std::string written = media::testing::writeVideoClip(folder / "media/clip.mp4", spec); !written.empty()) {
    std::cerr << "make_export_fixture: " << written << "\n";
    return 1;
  }
  const auto clip = media::MediaImportService::importAsset(folder / "media/clip.mp4");
  if (!clip) {
    std::cerr << "make_export_fixture: the clip could not be imported\n";
    return 1;
  }
  core::OVProject project("Export", {mainComposition(*clip), silentComposition()});
  project.addAsset(*clip);
  if (!document::ProjectCodec::write(project, folder / "export.orvane")) {
    std::cerr << "make_export_fixture: could not write the project in " << folder << "\n";
    return 1;
  }
  return 0;
}
