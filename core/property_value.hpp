#pragma once
// The value of an animatable property: one of nine cases. Read accessors
// convert where the model allows it (bool and integer read as double, and so
// on) and yield no value otherwise. Plain value.

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "core/enum_text.hpp"
#include "core/geometry.hpp"
#include "core/hashing.hpp"
#include "core/mask_path.hpp"

namespace orvane::core {

class PropertyValue {
 public:
  // The cases in declared order; the raw text is the file tag. `double` and
  // `bool` are keywords, so those two cases take a trailing underscore.
  enum class Kind { double_, point, size, color, bool_, integer, choice, text, maskPath };

  static PropertyValue double_(double v) { return PropertyValue(Storage(std::in_place_index<0>, v)); }
  static PropertyValue point(OVPoint v) { return PropertyValue(Storage(std::in_place_index<1>, v)); }
  static PropertyValue point(double x, double y) { return point(OVPoint{x, y}); }
  static PropertyValue size(OVSize v) { return PropertyValue(Storage(std::in_place_index<2>, v)); }
  static PropertyValue size(double w, double h) { return size(OVSize{w, h}); }
  static PropertyValue color(OVColor v) { return PropertyValue(Storage(std::in_place_index<3>, v)); }
  static PropertyValue bool_(bool v) { return PropertyValue(Storage(std::in_place_index<4>, v)); }
  static PropertyValue integer(std::int64_t v) { return PropertyValue(Storage(std::in_place_index<5>, v)); }
  static PropertyValue choice(std::string v) {
    return PropertyValue(Storage(std::in_place_index<6>, Choice{std::move(v)}));
  }
  static PropertyValue text(std::string v) {
    return PropertyValue(Storage(std::in_place_index<7>, Text{std::move(v)}));
  }
  static PropertyValue maskPath(MaskPath v) {
    return PropertyValue(Storage(std::in_place_index<8>, std::move(v)));
  }

  // The double 0.
  PropertyValue() = default;

  Kind kind() const { return static_cast<Kind>(storage_.index()); }

  // double as is; bool as 1 or 0; integer converted.
  std::optional<double> doubleValue() const;
  std::optional<OVPoint> pointValue() const;
  std::optional<OVSize> sizeValue() const;
  std::optional<OVColor> colorValue() const;
  std::optional<MaskPath> maskPathValue() const;
  // bool as is; double and integer as "not zero".
  std::optional<bool> boolValue() const;
  // integer as is; double rounded half away from zero.
  std::optional<std::int64_t> integerValue() const;
  // The text of a choice or a text.
  std::optional<std::string> stringValue() const;

  // The same case, and only that: a double and an integer are not compatible.
  bool isCompatibleWith(const PropertyValue& other) const { return kind() == other.kind(); }

  // self at p ≤ 0, other at p ≥ 1; in between componentwise for numbers,
  // points, sizes, colours, integers (rounded) and like mask paths; any other
  // pair flips to other at p = 0.5.
  PropertyValue interpolatedTo(const PropertyValue& other, double progress) const;

  friend bool operator==(const PropertyValue&, const PropertyValue&) = default;
  friend std::size_t hashValue(const PropertyValue& v);

 private:
  struct Choice {
    std::string value;
    friend bool operator==(const Choice&, const Choice&) = default;
  };
  struct Text {
    std::string value;
    friend bool operator==(const Text&, const Text&) = default;
  };
  using Storage =
      std::variant<double, OVPoint, OVSize, OVColor, bool, std::int64_t, Choice, Text, MaskPath>;

  explicit PropertyValue(Storage s) : storage_(std::move(s)) {}

  Storage storage_{std::in_place_index<0>, 0.0};
};

template <>
struct EnumTable<PropertyValue::Kind> {
  using K = PropertyValue::Kind;
  static constexpr std::array<EnumEntry<K>, 9> entries{{
      {K::double_, "d", "Number"},
      {K::point, "pt", "Point"},
      {K::size, "sz", "Size"},
      {K::color, "c", "Colour"},
      {K::bool_, "b", "Switch"},
      {K::integer, "i", "Integer"},
      {K::choice, "ch", "Choice"},
      {K::text, "tx", "Text"},
      {K::maskPath, "mp", "Mask Path"},
  }};
};

}  // namespace orvane::core
