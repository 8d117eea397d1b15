#pragma once
// Projects for the assembly tests: media records whose files exist (their
// content is never read by the assembler) and layers placed in seconds.

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "core/composition.hpp"
#include "core/layer.hpp"
#include "core/media_asset.hpp"
#include "core/project.hpp"

namespace orvane::media::testing {

inline core::OVTime secs(double s) { return core::OVTime::fromSeconds(s); }
inline core::OVTimeRange span(double start, double duration) { return {secs(start), secs(duration)}; }

// A folder of its own per test process, removed at the end.
class ScratchFolder {
 public:
  explicit ScratchFolder(const std::string& name)
      : path_(std::filesystem::temp_directory_path() / ("orvane-" + name + "-" + std::to_string(::getpid()))) {
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// A record of a file of `seconds` with the given tracks; the file is made
// (a few bytes) unless `onDisk` is false.
inline core::MediaAsset footageAsset(const ScratchFolder& folder, const std::string& name, double seconds,
                                     bool video = true, bool audio = true, bool onDisk = true) {
  core::MediaAsset asset;
  asset.name = name;
  asset.kind = video ? core::MediaKind::video : core::MediaKind::audio;
  asset.path = folder.file(name);
  asset.duration = secs(seconds);
  asset.naturalSize = video ? core::OVSize{320, 240} : core::OVSize{};
  asset.hasVideoTrack = video;
  asset.hasAudioTrack = audio;
  if (onDisk) std::ofstream(asset.path) << "media";
  return asset;
}

inline core::Layer videoLayer(const core::MediaAsset& asset, double start, double duration, double sourceStart = 0) {
  core::Layer layer(asset.name, core::LayerContent::video(asset.id), span(start, duration));
  layer.sourceStart = secs(sourceStart);
  return layer;
}

inline core::Layer audioLayer(const core::MediaAsset& asset, double start, double duration, double sourceStart = 0) {
  core::Layer layer(asset.name, core::LayerContent::audio(asset.id), span(start, duration));
  layer.sourceStart = secs(sourceStart);
  return layer;
}

inline core::Layer textLayer(double start, double duration) {
  return core::Layer("Title", core::LayerContent::text({}), span(start, duration));
}

inline core::Layer nestLayer(const core::Composition& nested, double start, double duration,
                             double sourceStart = 0) {
  core::Layer layer(nested.name, core::LayerContent::precomposition(nested.id), span(start, duration));
  layer.sourceStart = secs(sourceStart);
  return layer;
}

inline core::Composition composition(const std::string& name, double seconds, core::OVSize size = {320, 240}) {
  core::Composition c;
  c.name = name;
  c.size = size;
  c.frameRate = core::FrameRate::fps30;
  c.duration = secs(seconds);
  return c;
}

// Layers are given top first.
inline void addLayers(core::Composition& c, std::initializer_list<core::Layer> layers) {
  std::size_t index = 0;
  for (const core::Layer& layer : layers) c.insert(layer, index++);
}

inline core::OVProject projectOf(std::initializer_list<core::Composition> compositions,
                                 std::initializer_list<core::MediaAsset> assets) {
  core::OVProject project("Test", std::vector<core::Composition>(compositions));
  for (const core::MediaAsset& asset : assets) project.addAsset(asset);
  return project;
}

}  // namespace orvane::media::testing
