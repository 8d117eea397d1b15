// Writes the media and projects that the probe and import tests read, into
// the folder given: a short video with sound, a tone, a text file, an empty
// "video", and two new projects to import into.

#include <cstdio>
#include <filesystem>
#include <string>

#include "core/project.hpp"
#include "document/project_codec.hpp"
#include "tests/media/media_fixtures.hpp"

int main(int argc, char** argv) {
  namespace testing = orvane::media::testing;
  if (argc != 2) {
    std::fprintf(stderr, "usage: orvane_cli_make_media FOLDER\n");
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  std::error_code ec;
  std::filesystem::create_directories(folder, ec);
  testing::VideoClipSpec clip;
  clip.rate = orvane::core::FrameRate::fps25;
  clip.frameCount = 10;
  clip.withAudio = true;
  std::string failed = testing::writeVideoClip(folder / "clip.mp4", clip);
  if (failed.empty()) failed = testing::writeTone(folder / "tone.wav", {});
  if (failed.empty()) failed = testing::writeBytes(folder / "notes.txt", "Not media.\n");
  if (failed.empty()) failed = testing::writeBytes(folder / "empty.mp4", "");
  for (const char* name : {"import.orvane", "partial.orvane"}) {
    if (!failed.empty()) break;
    if (!orvane::document::ProjectCodec::write(orvane::core::OVProject::starter(), folder / name)) {
      failed = std::string("cannot write ") + name;
    }
  }
  if (!failed.empty()) {
    std::fprintf(stderr, "orvane_cli_make_media: %s\n", failed.c_str());
    return 1;
  }
  return 0;
}
