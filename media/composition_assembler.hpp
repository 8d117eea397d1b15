#pragma once
// Flattens one composition and everything nested in it into what the media
// engine plays: a timed composition with one track per piece of footage at
// outer time, the render plan that tells the compositor where each layer's
// frames arrive, and an audio mix with volume ramps, pans and taps. It only
// arranges media; every pixel is drawn later, frame by frame, by the frame
// compositor. Missing files are collected over the whole tree and reported
// once; nothing that plays only in part is returned.
//
// Playback and export both assemble; an assembler is a plain value and
// assemble() may run on any thread, over value copies of the project.

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/composition.hpp"
#include "core/media_asset.hpp"
#include "core/project.hpp"
#include "media/audio_mix.hpp"
#include "media/audio_tap.hpp"
#include "media/timed_composition.hpp"
#include "render/render_plan.hpp"
#include "render/video_compositor.hpp"

namespace orvane::media {

struct CompositionAssemblyError {
  enum class Kind { missingMedia };
  Kind kind = Kind::missingMedia;
  std::vector<std::string> names;

  // "Missing media: a.mov, b.mov."
  std::string message() const;
  friend bool operator==(const CompositionAssemblyError&, const CompositionAssemblyError&) = default;
};

// Keeps the taps of an assembled mix alive as long as whatever plays it.
struct AudioTapRetention {
  std::vector<std::shared_ptr<AudioTrackTap>> taps;
  void add(std::shared_ptr<AudioTrackTap> tap) { taps.push_back(std::move(tap)); }
  void removeAll() { taps.clear(); }
};

// What the engine needs to call the compositor once per output frame.
struct VideoComposition {
  render::PixelSize renderSize;
  core::OVTime frameDuration;
  std::shared_ptr<const render::CompositionInstruction> instruction;
};

struct AssembledComposition {
  TimedComposition asset;
  VideoComposition videoComposition;
  std::optional<AudioMix> audioMix;  // only with audio tracks
  render::RenderPlan plan;
  std::shared_ptr<AudioTapRetention> audioTapRetention;  // null without taps
};

// What a source file offers, as far as assembly cares.
struct SourceMediaInfo {
  core::OVTime duration;
  bool hasVideo = false;
  bool hasAudio = false;
  render::FootageGeometry geometry;
};
// Where the assembler learns about a file that can be read at path.
using SourceInfoProvider = std::function<std::optional<SourceMediaInfo>(const core::MediaAsset&,
                                                                        const std::string& path)>;
// From the media record as the import wrote it: no file is touched.
std::optional<SourceMediaInfo> sourceInfoFromRecord(const core::MediaAsset& asset, const std::string& path);
// From the file's probe (kept per path by the shared asset cache), which
// knows its rotation and true length; from the record when the file can't
// be probed, so that a damaged file still takes its place (and is left out
// frame by frame by the reader).
std::optional<SourceMediaInfo> sourceInfoFromFile(const core::MediaAsset& asset, const std::string& path);

// A composition lasts at least its duration, its content and one frame.
core::OVTime assembledDuration(const core::Composition& composition);

// The part of a file that a layer can play from sourceStart for duration:
// the start clamped into the file, the length cut at its end; none when
// nothing is left.
std::optional<core::OVTimeRange> clampedSourceRange(const core::OVTime& sourceStart, const core::OVTime& duration,
                                                    const core::OVTime& assetDuration);

// A copy without the layers whose asset the project lacks or whose file
// can't be reached (layers without an asset stay), so that a preview can
// play everything else after a missing-media error. Nested compositions
// are left as they are.
core::Composition withoutMissingMedia(const core::Composition& composition, const core::OVProject& project);

struct CompositionAssembler {
  double volumeRampInterval = 0.1;  // seconds
  int maxNestingDepth = 8;
  // Makes the processing tap of a layer's audio (echo, reverb, pitch); none
  // leaves every track untapped.
  AudioTapMaker tapMaker;
  SourceInfoProvider sourceInfo = sourceInfoFromFile;

  std::expected<AssembledComposition, CompositionAssemblyError> assemble(const core::Composition& composition,
                                                                         const core::OVProject& project,
                                                                         double renderScale) const;

  static VideoComposition makeVideoComposition(const render::RenderPlan& plan, const core::OVTime& duration);
};

}  // namespace orvane::media
