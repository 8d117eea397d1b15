#pragma once
// What a layer shows or plays: footage by asset id, generated content (text,
// shape, solid), an adjustment area, or a nested composition. Plain values.

#include <array>
#include <optional>
#include <string>
#include <variant>

#include "core/enum_text.hpp"
#include "core/geometry.hpp"
#include "core/hashing.hpp"
#include "core/uuid.hpp"

namespace orvane::core {

enum class LayerKind { video, audio, image, text, shape, solid, adjustment, precomposition };

template <>
struct EnumTable<LayerKind> {
  using K = LayerKind;
  static constexpr std::array<EnumEntry<K>, 8> entries{{
      {K::video, "video", "Video"},
      {K::audio, "audio", "Audio"},
      {K::image, "image", "Image"},
      {K::text, "text", "Text"},
      {K::shape, "shape", "Shape"},
      {K::solid, "solid", "Solid"},
      {K::adjustment, "adjustment", "Adjustment"},
      {K::precomposition, "precomposition", "Composition"},
  }};
};

struct TextContent {
  enum class Alignment { left, center, right };

  std::string string = "Text";
  std::string fontName = "Helvetica-Bold";
  double fontSize = 96;
  OVColor color = OVColor::white;
  Alignment alignment = Alignment::center;
  double lineSpacing = 0;
  double letterSpacing = 0;
  OVColor strokeColor = OVColor::black;
  double strokeWidth = 0;
  OVColor backgroundColor = OVColor::clear;
  double backgroundPadding = 16;
  OVColor shadowColor = OVColor::black.withAlpha(0.6);
  OVPoint shadowOffset{0, -4};
  double shadowBlur = 8;
  bool hasShadow = false;
  std::optional<OVSize> boxSize;

  bool hasBackground() const { return backgroundColor.alpha > 0; }
  bool hasStroke() const { return strokeWidth > 0 && strokeColor.alpha > 0; }

  friend bool operator==(const TextContent&, const TextContent&) = default;
};

template <>
struct EnumTable<TextContent::Alignment> {
  using A = TextContent::Alignment;
  static constexpr std::array<EnumEntry<A>, 3> entries{{
      {A::left, "left", "Left"}, {A::center, "center", "Center"}, {A::right, "right", "Right"}}};
};

std::size_t hashValue(const TextContent& t);

struct ShapeContent {
  enum class ShapeType { rectangle, ellipse, line, polygon, star };

  ShapeType type = ShapeType::rectangle;
  OVSize size{400, 400};
  OVColor fillColor{0.24, 0.55, 0.98, 1};
  bool isFilled = true;
  OVColor strokeColor = OVColor::white;
  double strokeWidth = 8;
  bool isStroked = false;
  double cornerRadius = 0;
  std::int64_t sideCount = 5;
  double innerRadiusRatio = 0.5;

  friend bool operator==(const ShapeContent&, const ShapeContent&) = default;
};

template <>
struct EnumTable<ShapeContent::ShapeType> {
  using S = ShapeContent::ShapeType;
  static constexpr std::array<EnumEntry<S>, 5> entries{{
      {S::rectangle, "rectangle", "Rectangle"},
      {S::ellipse, "ellipse", "Ellipse"},
      {S::line, "line", "Line"},
      {S::polygon, "polygon", "Polygon"},
      {S::star, "star", "Star"},
  }};
};

std::size_t hashValue(const ShapeContent& s);

struct SolidContent {
  OVColor color;
  OVSize size;

  friend bool operator==(const SolidContent&, const SolidContent&) = default;
};
inline std::size_t hashValue(const SolidContent& s) { return hashAll(s.color, s.size); }

class LayerContent {
 public:
  static LayerContent video(Uuid assetID) { return LayerContent(Storage(std::in_place_index<0>, assetID)); }
  static LayerContent audio(Uuid assetID) { return LayerContent(Storage(std::in_place_index<1>, assetID)); }
  static LayerContent image(Uuid assetID) { return LayerContent(Storage(std::in_place_index<2>, assetID)); }
  static LayerContent text(TextContent c) { return LayerContent(Storage(std::in_place_index<3>, std::move(c))); }
  static LayerContent shape(ShapeContent c) { return LayerContent(Storage(std::in_place_index<4>, c)); }
  static LayerContent solid(SolidContent c) { return LayerContent(Storage(std::in_place_index<5>, c)); }
  static LayerContent adjustment(OVSize size) { return LayerContent(Storage(std::in_place_index<6>, size)); }
  static LayerContent precomposition(Uuid compositionID) {
    return LayerContent(Storage(std::in_place_index<7>, compositionID));
  }

  // An adjustment layer of zero size; only for default-constructed records.
  LayerContent() = default;

  LayerKind kind() const { return static_cast<LayerKind>(storage_.index()); }
  // The asset of a video, audio or image layer.
  std::optional<Uuid> assetID() const;
  // The nested composition of a precomposition layer.
  std::optional<Uuid> compositionID() const;
  // Payloads; null when the content is of another kind.
  const TextContent* textContent() const { return std::get_if<3>(&storage_); }
  const ShapeContent* shapeContent() const { return std::get_if<4>(&storage_); }
  const SolidContent* solidContent() const { return std::get_if<5>(&storage_); }
  std::optional<OVSize> adjustmentSize() const;

  // Every kind but audio.
  bool isVisual() const { return kind() != LayerKind::audio; }
  // Video, audio and nested compositions.
  bool canProduceAudio() const {
    const LayerKind k = kind();
    return k == LayerKind::video || k == LayerKind::audio || k == LayerKind::precomposition;
  }
  // The generated size: text (its box, when set), shape, solid, adjustment.
  // None for the rest, which take their size from an asset or composition.
  std::optional<OVSize> intrinsicSize() const;

  friend bool operator==(const LayerContent&, const LayerContent&) = default;
  friend std::size_t hashValue(const LayerContent& c);

 private:
  using Storage = std::variant<Uuid, Uuid, Uuid, TextContent, ShapeContent, SolidContent, OVSize, Uuid>;
  explicit LayerContent(Storage s) : storage_(std::move(s)) {}
  Storage storage_{std::in_place_index<6>, OVSize{}};
};

}  // namespace orvane::core
