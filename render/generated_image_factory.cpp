#include "render/generated_image_factory.hpp"

#include <charconv>
#include <cmath>

#include "core/numeric.hpp"
#include "render/qimage_bridge.hpp"
#include "render/rgba.hpp"
#include "render/shape_path_builder.hpp"
#include "render/text_drawing.hpp"
#include "render/text_layout_builder.hpp"

namespace orvane::render {

namespace {

// Keys are asked for by every layer of every frame: they are written into
// a buffer each thread keeps, so a cache hit allocates nothing.
template <class Number>
void appendNumber(std::string& key, Number n) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, n).ptr;
  key.append(digits, end);
}

const std::string& textKey(const core::TextContent& text, int revealed) {
  thread_local std::string key;
  key.assign("text:");
  appendNumber(key, hashValue(text));
  key.push_back(':');
  appendNumber(key, revealed);
  return key;
}

const std::string& shapeKey(const core::ShapeContent& shape) {
  thread_local std::string key;
  key.assign("shape:");
  appendNumber(key, hashValue(shape));
  return key;
}

}  // namespace

GeneratedImageFactory& GeneratedImageFactory::shared() {
  // Never destroyed: render threads may still ask while the process exits.
  static auto* factory = new GeneratedImageFactory();
  return *factory;
}

std::optional<std::string> GeneratedImageFactory::cacheKeyFor(const core::LayerContent& content, double textReveal) {
  if (const core::TextContent* text = content.textContent()) {
    return textKey(*text, TextLayoutBuilder::revealedCount(textReveal, text->string));
  }
  if (const core::ShapeContent* shape = content.shapeContent()) return shapeKey(*shape);
  return std::nullopt;
}

std::optional<GeneratedImage> GeneratedImageFactory::imageFor(const core::LayerContent& content, double textReveal) {
  if (const core::TextContent* text = content.textContent()) {
    const int revealed = TextLayoutBuilder::revealedCount(textReveal, text->string);
    return cached(textKey(*text, revealed), [&] { return drawText(*text, revealed); });
  }
  if (const core::ShapeContent* shape = content.shapeContent()) {
    return cached(shapeKey(*shape), [&] { return drawShape(*shape); });
  }
  if (const core::SolidContent* solid = content.solidContent()) return solidImage(*solid);
  return std::nullopt;
}

template <class Build>
std::optional<GeneratedImage> GeneratedImageFactory::cached(const std::string& key, Build&& build) {
  {
    std::lock_guard lock(mutex_);
    if (auto hit = cache_.find(key)) return hit;
  }
  std::optional<GeneratedImage> built = build();
  if (!built) return std::nullopt;
  std::lock_guard lock(mutex_);
  cache_.store(key, *built, pictureCost(built->image));
  return built;
}

void GeneratedImageFactory::clearCache() {
  std::lock_guard lock(mutex_);
  cache_.clear();
}

std::size_t GeneratedImageFactory::cachedCount() const {
  std::lock_guard lock(mutex_);
  return cache_.count();
}

std::optional<GeneratedImage> GeneratedImageFactory::solidImage(const core::SolidContent& content) {
  const core::OVColor& c = content.color;
  if (std::isnan(c.red) || std::isnan(c.green) || std::isnan(c.blue) || std::isnan(c.alpha)) return std::nullopt;
  if (!std::isfinite(content.size.width) || !std::isfinite(content.size.height)) return std::nullopt;
  const double width = std::max(1.0, content.size.width);
  const double height = std::max(1.0, content.size.height);
  if (width > kMaxImageSide || height > kMaxImageSide) return std::nullopt;
  // Whole pixels as bitmaps round them, so a solid lines up with the rest.
  const PixelRect rect{0, 0, std::max(1, static_cast<int>(core::roundHalfAway(width))),
                       std::max(1, static_cast<int>(core::roundHalfAway(height)))};
  return GeneratedImage{crop(Image::constant(premultiplied(c)), rect), {width, height}};
}

}  // namespace orvane::render
