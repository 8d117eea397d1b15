#include "Commands/layer_factory.hpp"

#include <algorithm>
#include <string>

namespace orvane::commands {

using core::Composition;
using core::Layer;
using core::LayerContent;
using core::OVTime;
using core::OVTimeRange;

namespace {

// Cut to the room left after start when that room is more than a frame;
// otherwise the layer keeps its length and runs past the end.
OVTime cutToRoom(const OVTime& length, const Composition& composition, const OVTime& start) {
  const OVTime room = composition.duration - start;
  if (room > composition.minimumLayerDuration()) return std::min(length, room);
  return length;
}

Layer generated(std::string name, LayerContent content, const Composition& composition, const OVTime& start) {
  Layer layer(std::move(name), std::move(content), {start, LayerFactory::durationToEnd(composition, start)});
  layer.transform = core::LayerTransform::centeredIn(composition.size);
  return layer;
}

}  // namespace

OVTime LayerFactory::sourceLength(const core::MediaAsset& asset, const OVTime& sourceStart,
                                  const std::optional<OVTime>& sourceDuration) {
  if (asset.isStill()) return ProjectDefaults::stillDuration;
  const OVTime available = std::max(asset.duration - sourceStart, OVTime::zero);
  return sourceDuration ? OVTime::clamp(*sourceDuration, OVTime::zero, available) : available;
}

OVTime LayerFactory::duration(const core::MediaAsset& asset, const Composition& composition, const OVTime& start,
                              const OVTime& sourceStart, const std::optional<OVTime>& sourceDuration) {
  const OVTime length = sourceLength(asset, sourceStart, sourceDuration);
  if (!length.isPositive()) return ProjectDefaults::stillDuration;
  return cutToRoom(length, composition, start);
}

OVTime LayerFactory::durationToEnd(const Composition& composition, const OVTime& from) {
  const OVTime left = composition.duration - from;
  return left > composition.minimumLayerDuration() ? left : composition.minimumLayerDuration();
}

core::LayerTransform LayerFactory::fittedTransform(const core::OVSize& contentSize, const Composition& composition) {
  core::LayerTransform transform = core::LayerTransform::centeredIn(composition.size);
  if (contentSize.width > 0 && contentSize.height > 0) {
    const double fit = std::min({composition.size.width / contentSize.width,
                                 composition.size.height / contentSize.height, 1.0});
    transform.scale = core::AnimatedProperty::point(fit * 100, fit * 100);
  }
  return transform;
}

Layer LayerFactory::layerFor(const core::MediaAsset& asset, const Composition& composition, const OVTime& start,
                             const OVTime& sourceStart, const std::optional<OVTime>& sourceDuration) {
  const OVTime clampedSource =
      asset.isStill() ? OVTime::zero : OVTime::clamp(sourceStart, OVTime::zero, asset.duration);
  const OVTime length = duration(asset, composition, start, clampedSource, sourceDuration);
  LayerContent content = LayerContent::video(asset.id);
  if (asset.kind == core::MediaKind::audio) content = LayerContent::audio(asset.id);
  if (asset.kind == core::MediaKind::image) content = LayerContent::image(asset.id);

  Layer layer(asset.name, std::move(content), {start, length});
  layer.sourceStart = clampedSource;
  if (asset.kind != core::MediaKind::audio) layer.transform = fittedTransform(asset.naturalSize, composition);
  return layer;
}

Layer LayerFactory::textLayer(const Composition& composition, const OVTime& start) {
  core::TextContent text;
  text.fontSize = std::max(24.0, composition.size.height * 0.08);
  return generated(composition.uniqueLayerName(std::string(ProjectDefaults::textLayerName)),
                   LayerContent::text(std::move(text)), composition, start);
}

Layer LayerFactory::shapeLayer(core::ShapeContent::ShapeType type, const Composition& composition,
                               const OVTime& start) {
  core::ShapeContent shape;
  shape.type = type;
  const double side = std::min(composition.size.width, composition.size.height) * 0.4;
  shape.size = {side, side};
  return generated(composition.uniqueLayerName(std::string(core::displayName(type))), LayerContent::shape(shape),
                   composition, start);
}

Layer LayerFactory::solidLayer(const core::OVColor& color, const Composition& composition, const OVTime& start) {
  const double f = ProjectDefaults::solidSizeFraction;
  const core::SolidContent solid{color, {composition.size.width * f, composition.size.height * f}};
  return generated(composition.uniqueLayerName(std::string(ProjectDefaults::solidLayerName)),
                   LayerContent::solid(solid), composition, start);
}

Layer LayerFactory::adjustmentLayer(const Composition& composition, const OVTime& start) {
  return generated(composition.uniqueLayerName("Adjustment"), LayerContent::adjustment(composition.size),
                   composition, start);
}

Layer LayerFactory::precompositionLayer(const core::Uuid& compositionID, const Composition& nested,
                                        const Composition& host, const OVTime& start) {
  const OVTime length = nested.duration.isPositive() ? nested.duration : host.minimumLayerDuration();
  Layer layer(host.uniqueLayerName(nested.name), LayerContent::precomposition(compositionID),
              {start, cutToRoom(length, host, start)});
  layer.transform = fittedTransform(nested.size, host);
  return layer;
}

Layer LayerFactory::detachedAudioLayer(const Layer& source, const core::Uuid& assetID) {
  Layer layer(source.name + " Audio", LayerContent::audio(assetID), source.timeRange);
  layer.sourceStart = source.sourceStart;
  layer.audio = source.audio;
  return layer;
}

}  // namespace orvane::commands
