// Writes the footage fixtures of the frame tests into the folder given as
// the only argument:
//   footage/numbered.mp4   320 × 240, 30 frames at 30 fps, each showing its
//                          frame number as ten black or white blocks
//   footage.orvane         "Cut": 320 × 240, red, the clip centred from 0 to
//                          1 s and again, nested, from 2 s on with its
//                          second half; a gap between
//   footage_gone.orvane    the same with a second clip whose file is missing

#include <filesystem>
#include <iostream>

#include "core/project.hpp"
#include "document/project_codec.hpp"
#include "media/media_probe.hpp"
#include "tests/media/media_fixtures.hpp"

namespace {

namespace fs = std::filesystem;
using namespace orvane;

core::OVTime secs(double s) { return core::OVTime::fromSeconds(s); }

core::Layer centred(core::Layer layer) {
  layer.transform.position = core::AnimatedProperty::point(160, 120);
  return layer;
}

core::MediaAsset clipAsset(const fs::path& path) {
  core::MediaAsset asset;
  asset.name = path.filename().string();
  asset.kind = core::MediaKind::video;
  asset.path = path.string();
  asset.duration = secs(1);
  asset.naturalSize = {320, 240};
  asset.hasVideoTrack = true;
  if (const auto probe = media::probeMediaFile(path)) asset.duration = probe->duration;
  return asset;
}

core::OVProject footageProject(const fs::path& folder, bool withMissing) {
  const core::MediaAsset clip = clipAsset(folder / "footage/numbered.mp4");
  core::Composition inner;
  inner.name = "Inner";
  inner.size = {320, 240};
  inner.duration = secs(1);
  inner.layers = {centred(core::Layer("Clip", core::LayerContent::video(clip.id), {secs(0), secs(1)}))};
  core::Composition cut;
  cut.name = "Cut";
  cut.size = {320, 240};
  cut.duration = secs(3);
  cut.backgroundColor = {1, 0, 0, 1};
  core::Layer nested = centred(core::Layer("Inner", core::LayerContent::precomposition(inner.id), {secs(2), secs(1)}));
  nested.sourceStart = secs(0.5);
  cut.layers = {centred(core::Layer("Clip", core::LayerContent::video(clip.id), {secs(0), secs(1)})), nested};
  core::OVProject project("Footage", {cut, inner});
  project.addAsset(clip);
  if (withMissing) {
    core::MediaAsset gone = clipAsset(folder / "footage/gone.mp4");
    project.addAsset(gone);
    project.updateComposition(cut.id, [&](core::Composition& c) {
      c.insert(centred(core::Layer("Gone", core::LayerContent::video(gone.id), {secs(0), secs(1)})), 0);
    });
  }
  return project;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_footage_fixture FOLDER\n";
    return 2;
  }
  const fs::path folder = argv[1];
  std::error_code ignored;
  fs::create_directories(folder / "footage", ignored);
  const std::string written = media::testing::writeVideoClip(folder / "footage/numbered.mp4", {});
  if (!written.empty()) {
    std::cerr << "make_footage_fixture: " << written << "\n";
    return 1;
  }
  const bool ok = document::ProjectCodec::write(footageProject(folder, false), folder / "footage.orvane").has_value() &&
                  document::ProjectCodec::write(footageProject(folder, true), folder / "footage_gone.orvane").has_value();
  if (!ok) std::cerr << "make_footage_fixture: could not write the projects in " << folder << "\n";
  return ok ? 0 : 1;
}
