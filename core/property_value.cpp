#include "core/property_value.hpp"

#include "core/numeric.hpp"

namespace orvane::core {

namespace {

double lerp(double a, double b, double p) { return a + (b - a) * p; }

template <class... Fs>
struct Overloaded : Fs... {
  using Fs::operator()...;
};
// clang 14 (the fuzzing build) still needs the deduction guide.
template <class... Fs>
Overloaded(Fs...) -> Overloaded<Fs...>;

}  // namespace

std::optional<double> PropertyValue::doubleValue() const {
  switch (kind()) {
    case Kind::double_: return std::get<0>(storage_);
    case Kind::bool_: return std::get<4>(storage_) ? 1.0 : 0.0;
    case Kind::integer: return static_cast<double>(std::get<5>(storage_));
    default: return std::nullopt;
  }
}

std::optional<OVPoint> PropertyValue::pointValue() const {
  if (const auto* p = std::get_if<1>(&storage_)) return *p;
  return std::nullopt;
}

std::optional<OVSize> PropertyValue::sizeValue() const {
  if (const auto* s = std::get_if<2>(&storage_)) return *s;
  return std::nullopt;
}

std::optional<OVColor> PropertyValue::colorValue() const {
  if (const auto* c = std::get_if<3>(&storage_)) return *c;
  return std::nullopt;
}

std::optional<MaskPath> PropertyValue::maskPathValue() const {
  if (const auto* m = std::get_if<8>(&storage_)) return *m;
  return std::nullopt;
}

std::optional<bool> PropertyValue::boolValue() const {
  switch (kind()) {
    case Kind::bool_: return std::get<4>(storage_);
    case Kind::double_: return std::get<0>(storage_) != 0;
    case Kind::integer: return std::get<5>(storage_) != 0;
    default: return std::nullopt;
  }
}

std::optional<std::int64_t> PropertyValue::integerValue() const {
  switch (kind()) {
    case Kind::integer: return std::get<5>(storage_);
    case Kind::double_: {
      // A value that does not fit an integer has no integer reading.
      const double r = roundHalfAway(std::get<0>(storage_));
      if (!std::isfinite(r) || r >= 9223372036854775808.0 || r < -9223372036854775808.0) return std::nullopt;
      return static_cast<std::int64_t>(r);
    }
    default: return std::nullopt;
  }
}

std::optional<std::string> PropertyValue::stringValue() const {
  if (const auto* c = std::get_if<6>(&storage_)) return c->value;
  if (const auto* t = std::get_if<7>(&storage_)) return t->value;
  return std::nullopt;
}

PropertyValue PropertyValue::interpolatedTo(const PropertyValue& other, double p) const {
  if (p <= 0) return *this;
  if (p >= 1) return other;
  if (kind() != other.kind()) return p < 0.5 ? *this : other;
  switch (kind()) {
    case Kind::double_: return double_(lerp(std::get<0>(storage_), std::get<0>(other.storage_), p));
    case Kind::point: {
      const OVPoint& a = std::get<1>(storage_);
      const OVPoint& b = std::get<1>(other.storage_);
      return point(lerp(a.x, b.x, p), lerp(a.y, b.y, p));
    }
    case Kind::size: {
      const OVSize& a = std::get<2>(storage_);
      const OVSize& b = std::get<2>(other.storage_);
      return size(lerp(a.width, b.width, p), lerp(a.height, b.height, p));
    }
    case Kind::color: {
      const OVColor& a = std::get<3>(storage_);
      const OVColor& b = std::get<3>(other.storage_);
      return color({lerp(a.red, b.red, p), lerp(a.green, b.green, p), lerp(a.blue, b.blue, p),
                    lerp(a.alpha, b.alpha, p)});
    }
    case Kind::integer: {
      const double v = lerp(static_cast<double>(std::get<5>(storage_)),
                            static_cast<double>(std::get<5>(other.storage_)), p);
      return integer(roundedInt64(v));
    }
    case Kind::maskPath: return maskPath(std::get<8>(storage_).interpolatedTo(std::get<8>(other.storage_), p));
    default: return p < 0.5 ? *this : other;
  }
}

std::size_t hashValue(const PropertyValue& v) {
  std::size_t seed = static_cast<std::size_t>(v.storage_.index());
  std::visit(Overloaded{[&](const PropertyValue::Choice& c) { hashCombine(seed, hashValue(c.value)); },
                        [&](const PropertyValue::Text& t) { hashCombine(seed, hashValue(t.value)); },
                        [&](const auto& payload) { hashCombine(seed, hashValue(payload)); }},
             v.storage_);
  return seed;
}

}  // namespace orvane::core
