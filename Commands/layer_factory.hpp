#pragma once
// Builds the layers that the add operations put into a composition: media
// clips, generated content (text, shapes, solids, adjustment areas), nested
// compositions and the audio twin of a video clip. Pure functions over
// values; they read the composition only for its size, rate, length and
// the names already taken.

#include <optional>

#include "core/composition.hpp"
#include "core/composition_preset.hpp"
#include "core/layer.hpp"
#include "core/media_asset.hpp"

namespace orvane::commands {

// The still length, the solid size fraction and the base names of new
// generated layers; kept in core next to the composition presets.
namespace ProjectDefaults = core::ProjectDefaults;

struct LayerFactory {
  // How long a clip of asset starting at start runs: the still length for an
  // image; else what the source has left after sourceStart, limited by
  // sourceDuration when given. Cut to the room left in the composition when
  // that is more than a frame; the still length when nothing is left.
  // The clip's own length, before any cut to the composition: the still
  // length for an image; else what the source has left after sourceStart,
  // limited by sourceDuration when given (zero when nothing is left).
  static core::OVTime sourceLength(const core::MediaAsset& asset, const core::OVTime& sourceStart,
                                   const std::optional<core::OVTime>& sourceDuration);
  static core::OVTime duration(const core::MediaAsset& asset, const core::Composition& composition,
                               const core::OVTime& start, const core::OVTime& sourceStart,
                               const std::optional<core::OVTime>& sourceDuration);
  // From `from` to the end of the composition, at least one frame.
  static core::OVTime durationToEnd(const core::Composition& composition, const core::OVTime& from);
  // Centred, and scaled down (never up) so that the content fits.
  static core::LayerTransform fittedTransform(const core::OVSize& contentSize, const core::Composition& composition);

  // A clip of the asset, named after it as it is (two clips may share it).
  static core::Layer layerFor(const core::MediaAsset& asset, const core::Composition& composition,
                              const core::OVTime& start, const core::OVTime& sourceStart = core::OVTime::zero,
                              const std::optional<core::OVTime>& sourceDuration = std::nullopt);
  static core::Layer textLayer(const core::Composition& composition, const core::OVTime& start);
  static core::Layer shapeLayer(core::ShapeContent::ShapeType type, const core::Composition& composition,
                                const core::OVTime& start);
  static core::Layer solidLayer(const core::OVColor& color, const core::Composition& composition,
                                const core::OVTime& start);
  static core::Layer adjustmentLayer(const core::Composition& composition, const core::OVTime& start);
  // A layer showing nested (whose id is compositionID) inside host.
  static core::Layer precompositionLayer(const core::Uuid& compositionID, const core::Composition& nested,
                                         const core::Composition& host, const core::OVTime& start);
  // The audio of a video clip as a layer of its own: same times, same audio
  // settings, named "<source> Audio".
  static core::Layer detachedAudioLayer(const core::Layer& source, const core::Uuid& assetID);
};

}  // namespace orvane::commands
