#include "media/composition_assembler.hpp"

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "document/media_access.hpp"
#include "media/media_asset_cache.hpp"
#include "render/still_image_cache.hpp"

namespace orvane::media {

namespace {

using core::OVTime;
using core::OVTimeRange;

// Mutated through the recursion of one assembly, then frozen into the result.
struct AssemblyScratch {
  const core::OVProject* project = nullptr;
  std::unordered_map<core::Uuid, core::Composition> compositionsByID;
  std::unordered_map<core::Uuid, std::int32_t> videoTrackIDs;
  std::unordered_map<core::Uuid, render::FootageGeometry> footageGeometry;
  std::unordered_map<core::Uuid, std::string> stillImagePaths;
  std::vector<AudioMixInputParameters> audioParameters;
  std::vector<std::string> missingNames;
  std::shared_ptr<AudioTapRetention> audioTapRetention;
  TimedComposition asset;
};

// Where a piece of footage lands: outer time, the file time it starts at,
// how long it plays, and the layer's own clock at that moment.
struct FootagePlacement {
  OVTime at;
  OVTime sourceStart;
  OVTime duration;
  OVTime compositionTimeOfLayer;
};

class Collector {
 public:
  Collector(const CompositionAssembler& assembler, AssemblyScratch& scratch)
      : assembler_(assembler), scratch_(scratch) {}

  void collectLayers(const core::Composition& composition, const std::optional<OVTimeRange>& parentRange,
                     const std::optional<OVTimeRange>& localWindow, bool audioEnabled, int depth) {
    if (depth >= assembler_.maxNestingDepth) return;
    // A solo on a layer that contributes audio silences its unsoloed
    // neighbours of the same composition, as the timeline shows it.
    const bool audioSolo = composition.hasSoloedAudioLayers();
    for (const core::Layer& layer : composition.layers) {
      if (!layer.isEnabled) continue;
      const bool audible = audioEnabled && (!audioSolo || layer.isSolo);
      if (parentRange && localWindow) {
        collectMappedLayer(layer, *parentRange, *localWindow, audible, depth);
      } else {
        collectRootLayer(layer, audible, depth);
      }
    }
  }

 private:
  void collectRootLayer(const core::Layer& layer, bool audioEnabled, int depth) {
    switch (layer.kind()) {
      case core::LayerKind::video:
      case core::LayerKind::audio:
        insertFootage(layer, {layer.timeRange.start, layer.sourceStart, layer.timeRange.duration,
                              layer.timeRange.start},
                      audioEnabled);
        break;
      case core::LayerKind::image: registerStill(layer); break;
      case core::LayerKind::precomposition:
        collectPrecomposition(layer, layer.timeRange, {layer.sourceStart, layer.timeRange.duration},
                              audioEnabled && layer.contributesAudio(), depth);
        break;
      default: break;  // generated content needs no track
    }
  }

  // A nested layer is clipped to the window of its timeline that the parent
  // shows, and mapped to outer time.
  void collectMappedLayer(const core::Layer& layer, const OVTimeRange& parentRange, const OVTimeRange& localWindow,
                          bool audioEnabled, int depth) {
    const std::optional<OVTimeRange> visible = localWindow.intersection(layer.timeRange);
    if (!visible || visible->isEmpty()) return;
    const OVTime outerStart = parentRange.start + (visible->start - localWindow.start);
    const OVTime sourceStart = layer.sourceStart + (visible->start - layer.timeRange.start);
    switch (layer.kind()) {
      case core::LayerKind::video:
      case core::LayerKind::audio:
        insertFootage(layer, {outerStart, sourceStart, visible->duration, visible->start}, audioEnabled);
        break;
      case core::LayerKind::image: registerStill(layer); break;
      case core::LayerKind::precomposition:
        collectPrecomposition(layer, {outerStart, visible->duration}, {sourceStart, visible->duration},
                              audioEnabled && layer.contributesAudio(), depth);
        break;
      default: break;
    }
  }

  // The nested footage goes straight onto tracks of the one outer
  // composition; a precomposition's own volume and fades stay outside.
  void collectPrecomposition(const core::Layer& layer, const OVTimeRange& parentRange, const OVTimeRange& localWindow,
                             bool audioEnabled, int depth) {
    const auto found = scratch_.compositionsByID.find(*layer.content.compositionID());
    if (found == scratch_.compositionsByID.end()) return;
    collectLayers(found->second, parentRange, localWindow, audioEnabled, depth + 1);
  }

  // The readable path of the layer's asset; none when the project has no
  // such asset, or (noting its name) when its file can't be reached.
  std::optional<std::pair<const core::MediaAsset*, std::string>> readableAsset(const core::Layer& layer) {
    const core::MediaAsset* asset = scratch_.project->asset(*layer.content.assetID());
    if (asset == nullptr) return std::nullopt;
    const auto path = document::MediaAccessManager::shared().restoreAccessFor(*asset);
    if (!path) {
      if (std::ranges::find(scratch_.missingNames, asset->name) == scratch_.missingNames.end()) {
        scratch_.missingNames.push_back(asset->name);
      }
      return std::nullopt;
    }
    return std::pair{asset, path->string()};
  }

  void registerStill(const core::Layer& layer) {
    if (auto readable = readableAsset(layer)) scratch_.stillImagePaths[layer.id] = readable->second;
  }

  void insertFootage(const core::Layer& layer, const FootagePlacement& placement, bool audioEnabled) {
    const auto readable = readableAsset(layer);
    if (!readable) return;
    const auto& [asset, path] = *readable;
    const std::optional<SourceMediaInfo> info = assembler_.sourceInfo(*asset, path);
    if (!info) return;
    const std::optional<OVTimeRange> range =
        clampedSourceRange(placement.sourceStart, placement.duration, info->duration);
    if (!range) return;
    if (layer.kind() == core::LayerKind::video && info->hasVideo) {
      // Every layer gets a track of its own, so overlapping layers never collide.
      TimedTrack& track = scratch_.asset.addTrack(TrackMediaType::video);
      const std::int32_t id = track.trackID;
      scratch_.asset.insertTimeRange(id, path, *range, placement.at, asset->name);
      scratch_.videoTrackIDs[layer.id] = id;
      scratch_.footageGeometry[layer.id] = info->geometry;
    }
    if (audioEnabled && layer.contributesAudio() && info->hasAudio) {
      insertAudio(layer, *asset, path, *range, placement);
    }
  }

  void insertAudio(const core::Layer& layer, const core::MediaAsset& asset, const std::string& path,
                   const OVTimeRange& range,
                   const FootagePlacement& placement) {
    TimedTrack& track = scratch_.asset.addTrack(TrackMediaType::audio);
    const std::int32_t id = track.trackID;
    scratch_.asset.insertTimeRange(id, path, range, placement.at, asset.name);
    AudioMixInputParameters params;
    params.trackID = id;
    applyVolume(layer, {placement.at, range.duration}, placement.compositionTimeOfLayer, params);
    params.pan = layer.audio.pan;
    params.layerTimeOffset = placement.compositionTimeOfLayer - placement.at;
    if (assembler_.tapMaker) {
      if (std::shared_ptr<AudioTrackTap> tap = assembler_.tapMaker(layer)) {
        if (!scratch_.audioTapRetention) scratch_.audioTapRetention = std::make_shared<AudioTapRetention>();
        scratch_.audioTapRetention->add(tap);
        params.audioTapProcessor = std::move(tap);
      }
    }
    scratch_.audioParameters.push_back(std::move(params));
  }

  // The layer's fades as its picture has them: at the layer's end the
  // multiplier is 0, so the last ramp of a curve that reaches the end closes
  // to silence even without a fade-out.
  static float audioGain(const core::Layer& layer, const OVTime& layerTime) {
    const double volume = std::max(0.0, layer.audio.volume.doubleValueAt(layerTime, 100) / 100.0);
    const double normalize = std::isfinite(layer.audio.normalizeGain) ? std::max(0.0, layer.audio.normalizeGain) : 1.0;
    const double gain = volume * normalize * layer.fadeMultiplierAt(layerTime);
    return std::isfinite(gain) ? static_cast<float>(gain) : 0.0f;
  }

  void applyVolume(const core::Layer& layer, const OVTimeRange& range, const OVTime& layerTimeAtStart,
                   AudioMixInputParameters& params) const {
    if (!layer.audio.volume.isAnimated() && !layer.fadeIn.isPositive() && !layer.fadeOut.isPositive()) {
      params.setVolume(audioGain(layer, layerTimeAtStart));
      return;
    }
    const double interval = assembler_.volumeRampInterval > 0.001 ? assembler_.volumeRampInterval : 0.1;
    const OVTime step = OVTime::fromSeconds(interval);
    for (OVTime t = range.start; t < range.end();) {
      const OVTime next = std::min(t + step, range.end());
      params.setVolumeRamp(audioGain(layer, layerTimeAtStart + (t - range.start)),
                           audioGain(layer, layerTimeAtStart + (next - range.start)),
                           OVTimeRange::fromStartEnd(t, next));
      t = next;
    }
  }

  const CompositionAssembler& assembler_;
  AssemblyScratch& scratch_;
};

// Every composition that nesting reaches from this one; the given copy
// stands for its own id, as export assembles an altered copy.
std::unordered_map<core::Uuid, core::Composition> reachableCompositions(const core::Composition& composition,
                                                                        const core::OVProject& project) {
  std::unordered_map<core::Uuid, core::Composition> found{{composition.id, composition}};
  for (const core::Layer& layer : composition.layers) {
    const auto nestedID = layer.content.compositionID();
    if (!nestedID) continue;
    for (const auto& [id, nested] : project.reachableCompositionsFrom(*nestedID)) found.try_emplace(id, *nested);
  }
  return found;
}

}  // namespace

std::string CompositionAssemblyError::message() const {
  std::string text = "Missing media: ";
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += ", ";
    text += names[i];
  }
  return text + ".";
}

std::optional<SourceMediaInfo> sourceInfoFromRecord(const core::MediaAsset& asset, const std::string&) {
  SourceMediaInfo info;
  info.duration = asset.duration;
  info.hasVideo = asset.hasVideoTrack;
  info.hasAudio = asset.hasAudioTrack;
  info.geometry.naturalSize = asset.naturalSize;
  return info;
}

std::optional<SourceMediaInfo> sourceInfoFromFile(const core::MediaAsset& asset, const std::string& path) {
  const auto probe = MediaAssetCache::shared().probe(path);
  if (!probe) return sourceInfoFromRecord(asset, path);
  SourceMediaInfo info;
  info.duration = probe->duration;
  info.hasVideo = probe->video.has_value();
  info.hasAudio = probe->audio.has_value();
  if (probe->video) info.geometry = probe->video->geometry;
  return info;
}

OVTime assembledDuration(const core::Composition& composition) {
  OVTime duration = std::max(composition.duration, composition.contentEnd());
  if (composition.frameRate.numerator > 0 && composition.frameRate.denominator > 0) {
    duration = std::max(duration, composition.frameRate.frameDuration());
  }
  return duration;
}

std::optional<OVTimeRange> clampedSourceRange(const OVTime& sourceStart, const OVTime& duration,
                                              const OVTime& assetDuration) {
  const OVTime start = OVTime::clamp(sourceStart, OVTime::zero, assetDuration);
  const OVTime available = assetDuration - start;
  if (!available.isPositive()) return std::nullopt;
  const OVTime length = std::min(duration, available);
  if (!length.isPositive()) return std::nullopt;
  return OVTimeRange{start, length};
}

core::Composition withoutMissingMedia(const core::Composition& composition, const core::OVProject& project) {
  core::Composition stripped = composition;
  for (const core::Layer& layer : composition.layers) {
    const auto assetID = layer.content.assetID();
    if (!assetID) continue;
    const core::MediaAsset* asset = project.asset(*assetID);
    if (asset == nullptr || !document::MediaAccessManager::shared().restoreAccessFor(*asset)) stripped.remove(layer.id);
  }
  return stripped;
}

std::expected<AssembledComposition, CompositionAssemblyError> CompositionAssembler::assemble(
    const core::Composition& composition, const core::OVProject& project, double renderScale) const {
  AssemblyScratch scratch;
  scratch.project = &project;
  scratch.compositionsByID = reachableCompositions(composition, project);
  const OVTime duration = assembledDuration(composition);
  scratch.asset.duration = duration;

  Collector(*this, scratch).collectLayers(composition, std::nullopt, std::nullopt, true, 0);
  if (!scratch.missingNames.empty()) return std::unexpected(CompositionAssemblyError{.names = scratch.missingNames});

  AssembledComposition result;
  result.plan.composition = composition;
  result.plan.compositionsByID = std::move(scratch.compositionsByID);
  result.plan.videoTrackIDs = std::move(scratch.videoTrackIDs);
  result.plan.footageGeometry = std::move(scratch.footageGeometry);
  result.plan.stillImagePaths = std::move(scratch.stillImagePaths);
  result.plan.renderScale = std::isfinite(renderScale) && renderScale > 0 ? renderScale : 1.0;

  if (!result.plan.stillImagePaths.empty()) {
    std::vector<std::string> paths;
    for (const auto& [id, path] : result.plan.stillImagePaths) paths.push_back(path);
    render::StillImageCache::shared().prewarm(paths);
  }
  result.videoComposition = makeVideoComposition(result.plan, duration);
  if (!scratch.audioParameters.empty()) result.audioMix = AudioMix{std::move(scratch.audioParameters)};
  result.asset = std::move(scratch.asset);
  result.audioTapRetention = std::move(scratch.audioTapRetention);
  return result;
}

VideoComposition CompositionAssembler::makeVideoComposition(const render::RenderPlan& plan, const OVTime& duration) {
  VideoComposition video;
  video.renderSize = plan.renderSize();
  const core::FrameRate rate = plan.composition.frameRate;
  video.frameDuration = rate.numerator > 0 && rate.denominator > 0 ? rate.frameDuration() : OVTime(1, 30);
  video.instruction = std::make_shared<const render::CompositionInstruction>(
      render::CompositionInstruction{plan, OVTimeRange{OVTime::zero, duration}});
  return video;
}

}  // namespace orvane::media
