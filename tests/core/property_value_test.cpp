// PropertyValue: its nine cases, the read accessors with their conversions,
// compatibility and interpolation; and the points, sizes and colours it holds,
// with the colour's hex text in both directions.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/enum_text.hpp"
#include "core/geometry.hpp"
#include "core/mask_path.hpp"
#include "core/property_value.hpp"

namespace orvane::core {
namespace {

using Kind = PropertyValue::Kind;
using V = PropertyValue;

MaskPath mask(std::vector<MaskVertex> vertices, bool closed = true) { return MaskPath{closed, std::move(vertices)}; }

MaskPath twoVertexPath(OVPoint a, OVPoint b, bool closed = true) {
  return mask({{a, {-1, 0}, {1, 0}}, {b, {0, -2}, {0, 2}}}, closed);
}

// One value of every case, in declared order.
std::vector<PropertyValue> oneOfEach() {
  return {V::double_(1.5),    V::point(1, 2), V::size(3, 4),     V::color({0.1, 0.2, 0.3, 0.4}),
          V::bool_(true),     V::integer(7),  V::choice("fast"), V::text("Hello"),
          V::maskPath(twoVertexPath({0, 0}, {10, 0}))};
}

// --- Cases, tags, equality ---

TEST(PropertyValueTest, EachFactoryMakesItsOwnCaseWithItsOwnAccessorAndCompatibility) {
  EXPECT_EQ(PropertyValue{}, V::double_(0));
  const auto values = oneOfEach();
  const Kind expected[] = {Kind::double_, Kind::point,  Kind::size, Kind::color,   Kind::bool_,
                           Kind::integer, Kind::choice, Kind::text, Kind::maskPath};
  ASSERT_EQ(values.size(), std::size(expected));
  for (std::size_t i = 0; i < values.size(); ++i) {
    SCOPED_TRACE(i);
    const auto& v = values[i];
    EXPECT_EQ(v.kind(), expected[i]);
    EXPECT_EQ(v.pointValue().has_value(), i == 1);
    EXPECT_EQ(v.sizeValue().has_value(), i == 2);
    EXPECT_EQ(v.colorValue().has_value(), i == 3);
    EXPECT_EQ(v.maskPathValue().has_value(), i == 8);
    for (std::size_t j = 0; j < values.size(); ++j) EXPECT_EQ(v.isCompatibleWith(values[j]), i == j) << j;
  }
  EXPECT_EQ(values[1].pointValue(), (OVPoint{1, 2}));
  EXPECT_EQ(values[2].sizeValue(), (OVSize{3, 4}));
  EXPECT_EQ(values[3].colorValue(), (OVColor{0.1, 0.2, 0.3, 0.4}));
  EXPECT_EQ(values[8].maskPathValue(), twoVertexPath({0, 0}, {10, 0}));
  EXPECT_TRUE(V::point(1, 2).isCompatibleWith(V::point(-5, 9)));
  EXPECT_NE(V::choice("a"), V::text("a"));
  EXPECT_NE(V::double_(1), V::integer(1));
  EXPECT_EQ(hashValue(V::point(1, 2)), hashValue(V::point(OVPoint{1, 2})));
}

TEST(PropertyValueTest, KindReadsBackFromItsFileTagOnly) {
  EXPECT_EQ(rawValue(Kind::point), "pt");
  for (Kind k : allCases<Kind>()) EXPECT_EQ(fromRaw<Kind>(rawValue(k)), k) << rawValue(k);
  EXPECT_FALSE(fromRaw<Kind>("point").has_value());
}

// --- Read accessors ---

TEST(PropertyValueTest, ScalarAccessorsConvertWhereTheModelAllows) {
  // Integers read from numbers round half away from zero; bools read as
  // numbers but not as integers; numbers read as bools by "not zero".
  constexpr auto none = std::nullopt;
  constexpr std::int64_t minInt = std::numeric_limits<std::int64_t>::min();
  struct Case {
    PropertyValue value;
    std::optional<double> asDouble;
    std::optional<bool> asBool;
    std::optional<std::int64_t> asInteger;
    std::optional<std::string> asString;
  };
  const Case cases[] = {
      {V::double_(2.5), 2.5, true, 3, none},        {V::double_(-2.5), -2.5, true, -3, none},
      {V::double_(0.5), 0.5, true, 1, none},        {V::double_(2.4999), 2.4999, true, 2, none},
      {V::double_(-0.4), -0.4, true, 0, none},      {V::double_(-0.0), -0.0, false, 0, none},
      {V::double_(1e-300), 1e-300, true, 0, none},  {V::bool_(true), 1.0, true, none, none},
      {V::bool_(false), 0.0, false, none, none},    {V::integer(-3), -3.0, true, -3, none},
      {V::integer(0), 0.0, false, 0, none},         {V::integer(minInt), -0x1p63, true, minInt, none},
      {V::choice("1"), none, none, none, "1"},      {V::text(""), none, none, none, ""},
      {V::point(0, 0), none, none, none, none},     {V::color(OVColor::clear), none, none, none, none},
      {V::maskPath(MaskPath{}), none, none, none, none},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << rawValue(c.value.kind()) << " " << c.value.doubleValue().value_or(-1));
    EXPECT_EQ(c.value.doubleValue(), c.asDouble);
    EXPECT_EQ(c.value.boolValue(), c.asBool);
    EXPECT_EQ(c.value.integerValue(), c.asInteger);
    EXPECT_EQ(c.value.stringValue(), c.asString);
  }
}

// --- Interpolation ---

TEST(PropertyValueInterpolationTest, InterpolableCasesGiveHandComputedValues) {
  const auto maskFrom = V::maskPath(mask({{{0, 0}, {-1, 0}, {1, 0}}, {{10, 0}, {0, -2}, {0, 2}}}));
  const auto maskTo = V::maskPath(mask({{{10, 10}, {1, 0}, {3, 0}}, {{20, 20}, {0, 2}, {0, 4}}}));
  const auto maskQuarter = V::maskPath(mask({{{2.5, 2.5}, {-0.5, 0}, {1.5, 0}}, {{12.5, 5}, {0, -1}, {0, 2.5}}}));
  struct Case {
    PropertyValue from, to;
    double progress;
    PropertyValue expected;
  };
  const Case cases[] = {
      {V::double_(10), V::double_(20), 0.25, V::double_(12.5)},
      {V::double_(20), V::double_(10), 0.75, V::double_(12.5)},
      {V::double_(-4), V::double_(4), 0.125, V::double_(-3)},
      {V::point(-8, 4), V::point(8, 0), 0.25, V::point(-4, 3)},
      {V::size(100, 50), V::size(200, 0), 0.25, V::size(125, 37.5)},
      // Colours blend unpremultiplied (premultiplied would give less red), unclamped.
      {V::color({1, 0, 0, 0}), V::color({0, 0, 1, 1}), 0.5, V::color({0.5, 0, 0.5, 0.5})},
      {V::color({2, -1, 0.5, 1}), V::color({0, 1, 0.5, 0}), 0.25, V::color({1.5, -0.5, 0.5, 0.75})},
      // Integers round half away from zero and stay integers.
      {V::integer(0), V::integer(10), 0.25, V::integer(3)},
      {V::integer(0), V::integer(-10), 0.25, V::integer(-3)},
      {V::integer(0), V::integer(10), 0.24, V::integer(2)},
      {V::integer(5), V::integer(-5), 0.5, V::integer(0)},
      // Like mask paths move vertex by vertex and keep their closed flag.
      {maskFrom, maskTo, 0.25, maskQuarter},
      {V::maskPath(twoVertexPath({0, 0}, {10, 0}, false)), V::maskPath(twoVertexPath({4, 8}, {10, 0}, false)), 0.5,
       V::maskPath(twoVertexPath({2, 4}, {10, 0}, false))},
      // At or past the ends: an end value, never extrapolated.
      {V::double_(10), V::double_(20), -0.5, V::double_(10)},
      {V::double_(10), V::double_(20), 1.5, V::double_(20)},
      {V::color(OVColor::black), V::color(OVColor::white), -2, V::color(OVColor::black)},
      {V::point(0, 0), V::point(10, 10), 1.25, V::point(10, 10)},
      {V::integer(0), V::integer(10), 3, V::integer(10)},
      {V::double_(10), V::text("x"), -1, V::double_(10)},
      // 1e16 + (1 − 1e16) × 1 is 0 in 64-bit floats; the end is still exact.
      {V::double_(1e16), V::double_(1), 1, V::double_(1)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << rawValue(c.from.kind()) << " at " << c.progress);
    EXPECT_EQ(c.from.interpolatedTo(c.to, c.progress), c.expected);
  }
}

TEST(PropertyValueInterpolationTest, OtherPairsFlipAtHalfWay) {
  const MaskPath twoClosed = twoVertexPath({0, 0}, {10, 0});
  MaskPath three = twoClosed;
  three.vertices.push_back(MaskVertex{{5, 5}, {}, {}});
  struct Pair {
    const char* what;
    PropertyValue a, b;
  };
  const Pair pairs[] = {
      {"bool", V::bool_(false), V::bool_(true)},
      {"choice", V::choice("slow"), V::choice("fast")},
      {"text", V::text("Hello"), V::text("World")},
      {"number to integer", V::double_(3), V::integer(9)},
      {"integer to number", V::integer(9), V::double_(3)},
      {"point to size", V::point(1, 1), V::size(1, 1)},
      {"closed to open mask", V::maskPath(twoClosed), V::maskPath(twoVertexPath({4, 4}, {6, 6}, false))},
      {"mask of another count", V::maskPath(twoClosed), V::maskPath(three)},
  };
  for (const auto& [what, a, b] : pairs) {
    SCOPED_TRACE(what);
    for (double p : {0.01, 0.4999999}) EXPECT_EQ(a.interpolatedTo(b, p), a) << p;
    for (double p : {0.5, 0.9}) EXPECT_EQ(a.interpolatedTo(b, p), b) << p;
  }
}

// --- Points, sizes and colours ---

TEST(GeometryTest, PointAndSizeArithmetic) {
  const OVPoint a{1.5, -2}, b{4, 10};
  EXPECT_EQ(a + b, (OVPoint{5.5, 8}));
  EXPECT_EQ(b - a, (OVPoint{2.5, 12}));
  EXPECT_EQ(a * 2, (OVPoint{3, -4}));
  EXPECT_EQ(a.scaledBy(-3), (OVPoint{-4.5, 6}));
  EXPECT_DOUBLE_EQ((OVPoint{-5, 12}).length(), 13.0);
  EXPECT_DOUBLE_EQ((OVSize{3, 2}).aspectRatio(), 1.5);
  EXPECT_EQ((OVSize{1920, 0}).aspectRatio(), 0.0);
}

TEST(OVColorTest, IsOpaqueByDefaultAndWithAlphaReplacesOnlyAlphaUnclamped) {
  const OVColor c{0.25, 0.5, 0.75};
  EXPECT_EQ(c.alpha, 1.0);
  EXPECT_EQ(c.withAlpha(0.4), (OVColor{0.25, 0.5, 0.75, 0.4}));
  EXPECT_EQ(c.withAlpha(1.5).alpha, 1.5);
}

TEST(OVColorTest, FromHexReadsSixDigitsWithOrWithoutHashAndWhitespace) {
  const OVColor orange{1, 128 / 255.0, 0, 1};
  const std::pair<const char*, OVColor> cases[] = {
      {"#ff8000", orange},       {"ff8000", orange},         {" ff8000 \n", orange},
      {"\t#ff8000\r\n", orange}, {"  #FF8000  ", orange},    {"000000", OVColor::black},
      {"FFFFFF", OVColor::white}, {"12aB9f", {0x12 / 255.0, 0xAB / 255.0, 0x9F / 255.0, 1}}};
  for (const auto& [text, expected] : cases) EXPECT_EQ(OVColor::fromHex(text), expected) << '"' << text << '"';
}

TEST(OVColorTest, FromHexRejectsShortLongAndMalformedText) {
  for (const char* text : {"abc", "#abc", "ff800080", "#ff800080", "ff800", "#ff80001", "", "   ", "#", "##ff8000",
                           "gg0000", "ff 800", "0xff00", "ff8000#", "#ff80 0"}) {
    EXPECT_FALSE(OVColor::fromHex(text).has_value()) << '"' << text << '"';
  }
}

TEST(OVColorTest, HexStringIsUpperCaseRoundedUnclampedWithoutHashOrAlpha) {
  const std::pair<OVColor, const char*> cases[] = {
      {{1, 128 / 255.0, 0, 1}, "FF8000"},
      {{0xAB / 255.0, 0xCD / 255.0, 0xEF / 255.0, 0.2}, "ABCDEF"},  // alpha ignored
      {OVColor::clear, "000000"},
      {{0.5, 0, 0}, "800000"},                          // 127.5 rounds up
      {{0, 0.002, 0.001}, "000100"},                    // 0.51 and 0.255
      {{2.4 / 255, 2.6 / 255, 254.6 / 255}, "0203FF"},  // 2.4, 2.6, 254.6
      {{2, 1, 0}, "1FEFF00"}};                          // 510 = 0x1FE, not clamped
  for (const auto& [color, expected] : cases) EXPECT_EQ(color.hexString(), expected);
}

TEST(OVColorTest, EveryByteSurvivesHexRoundTrip) {
  for (int v = 0; v < 256; ++v) {
    char expected[8];
    std::snprintf(expected, sizeof expected, "%02X%02X%02X", v, 255 - v, (v * 7) % 256);
    const OVColor c{v / 255.0, (255 - v) / 255.0, ((v * 7) % 256) / 255.0};
    ASSERT_EQ(c.hexString(), expected) << "byte " << v;
    EXPECT_EQ(OVColor::fromHex(expected), c);
  }
}

}  // namespace
}  // namespace orvane::core
