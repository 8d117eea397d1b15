#include "core/layer_content.hpp"

namespace orvane::core {

std::optional<Uuid> LayerContent::assetID() const {
  switch (kind()) {
    case LayerKind::video: return std::get<0>(storage_);
    case LayerKind::audio: return std::get<1>(storage_);
    case LayerKind::image: return std::get<2>(storage_);
    default: return std::nullopt;
  }
}

std::optional<Uuid> LayerContent::compositionID() const {
  if (kind() != LayerKind::precomposition) return std::nullopt;
  return std::get<7>(storage_);
}

std::optional<OVSize> LayerContent::adjustmentSize() const {
  if (const auto* size = std::get_if<6>(&storage_)) return *size;
  return std::nullopt;
}

std::optional<OVSize> LayerContent::intrinsicSize() const {
  switch (kind()) {
    case LayerKind::text: return textContent()->boxSize;
    case LayerKind::shape: return shapeContent()->size;
    case LayerKind::solid: return solidContent()->size;
    case LayerKind::adjustment: return adjustmentSize();
    default: return std::nullopt;
  }
}

std::size_t hashValue(const TextContent& t) {
  return hashAll(t.string, t.fontName, t.fontSize, t.color, t.alignment, t.lineSpacing,
                 t.letterSpacing, t.strokeColor, t.strokeWidth, t.backgroundColor,
                 t.backgroundPadding, t.shadowColor, t.shadowOffset, t.shadowBlur, t.hasShadow,
                 t.boxSize);
}

std::size_t hashValue(const ShapeContent& s) {
  return hashAll(s.type, s.size, s.fillColor, s.isFilled, s.strokeColor, s.strokeWidth,
                 s.isStroked, s.cornerRadius, s.sideCount, s.innerRadiusRatio);
}

std::size_t hashValue(const LayerContent& c) {
  // The case takes part: a video and an image of one asset differ.
  std::size_t seed = hashValue(static_cast<std::int64_t>(c.storage_.index()));
  hashCombine(seed, std::visit([](const auto& payload) { return hashValue(payload); }, c.storage_));
  return seed;
}

}  // namespace orvane::core
