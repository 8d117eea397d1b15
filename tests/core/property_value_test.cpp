// PropertyValue: its nine cases, the read accessors with their conversions,
// compatibility, and interpolation between two values.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "core/enum_text.hpp"
#include "core/mask_path.hpp"
#include "core/property_value.hpp"

namespace orvane::core {
namespace {

using Kind = PropertyValue::Kind;

MaskPath twoVertexPath(OVPoint a, OVPoint b, bool closed = true) {
  MaskPath path;
  path.closed = closed;
  path.vertices = {MaskVertex{a, {-1, 0}, {1, 0}}, MaskVertex{b, {0, -2}, {0, 2}}};
  return path;
}

// One value of every case, in declared order.
std::vector<PropertyValue> oneOfEach() {
  return {PropertyValue::double_(1.5),
          PropertyValue::point(1, 2),
          PropertyValue::size(3, 4),
          PropertyValue::color(OVColor{0.1, 0.2, 0.3, 0.4}),
          PropertyValue::bool_(true),
          PropertyValue::integer(7),
          PropertyValue::choice("fast"),
          PropertyValue::text("Hello"),
          PropertyValue::maskPath(twoVertexPath({0, 0}, {10, 0}))};
}

// --- Cases and tags ---

TEST(PropertyValueTest, DefaultValueIsTheNumberZero) {
  const PropertyValue v;
  EXPECT_EQ(v.kind(), Kind::double_);
  EXPECT_EQ(v.doubleValue(), 0.0);
  EXPECT_EQ(v, PropertyValue::double_(0));
}

TEST(PropertyValueTest, EachFactoryMakesItsOwnCase) {
  const auto values = oneOfEach();
  const Kind expected[] = {Kind::double_, Kind::point,   Kind::size,   Kind::color,   Kind::bool_,
                           Kind::integer, Kind::choice, Kind::text, Kind::maskPath};
  ASSERT_EQ(values.size(), std::size(expected));
  for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(values[i].kind(), expected[i]) << i;
}

TEST(PropertyValueTest, KindRawTextIsTheFileTag) {
  EXPECT_EQ(rawValue(Kind::double_), "d");
  EXPECT_EQ(rawValue(Kind::point), "pt");
  EXPECT_EQ(rawValue(Kind::size), "sz");
  EXPECT_EQ(rawValue(Kind::color), "c");
  EXPECT_EQ(rawValue(Kind::bool_), "b");
  EXPECT_EQ(rawValue(Kind::integer), "i");
  EXPECT_EQ(rawValue(Kind::choice), "ch");
  EXPECT_EQ(rawValue(Kind::text), "tx");
  EXPECT_EQ(rawValue(Kind::maskPath), "mp");
}

TEST(PropertyValueTest, KindReadsBackFromItsTagOnly) {
  EXPECT_EQ(fromRaw<Kind>("pt"), Kind::point);
  EXPECT_EQ(fromRaw<Kind>("mp"), Kind::maskPath);
  EXPECT_EQ(fromRaw<Kind>("i"), Kind::integer);
  EXPECT_FALSE(fromRaw<Kind>("point").has_value());
  EXPECT_FALSE(fromRaw<Kind>("D").has_value());
  EXPECT_FALSE(fromRaw<Kind>("").has_value());
  const auto all = allCases<Kind>();
  ASSERT_EQ(all.size(), 9u);
  EXPECT_EQ(all.front(), Kind::double_);
  EXPECT_EQ(all.back(), Kind::maskPath);
}

TEST(PropertyValueTest, ChoiceAndTextWithTheSameWordsDiffer) {
  EXPECT_NE(PropertyValue::choice("a"), PropertyValue::text("a"));
  EXPECT_NE(PropertyValue::double_(1), PropertyValue::integer(1));
  EXPECT_NE(PropertyValue::double_(1), PropertyValue::bool_(true));
  EXPECT_EQ(PropertyValue::point(1, 2), PropertyValue::point(OVPoint{1, 2}));
  EXPECT_EQ(PropertyValue::size(3, 4), PropertyValue::size(OVSize{3, 4}));
}

TEST(PropertyValueTest, EqualValuesHashAlike) {
  EXPECT_EQ(hashValue(PropertyValue::point(1, 2)), hashValue(PropertyValue::point(1, 2)));
  EXPECT_EQ(hashValue(PropertyValue::text("x")), hashValue(PropertyValue::text("x")));
}

// --- Read accessors ---

TEST(PropertyValueTest, DoubleValueReadsNumbersBoolsAndIntegers) {
  EXPECT_EQ(PropertyValue::double_(2.5).doubleValue(), 2.5);
  EXPECT_EQ(PropertyValue::double_(-0.125).doubleValue(), -0.125);
  EXPECT_EQ(PropertyValue::bool_(true).doubleValue(), 1.0);
  EXPECT_EQ(PropertyValue::bool_(false).doubleValue(), 0.0);
  EXPECT_EQ(PropertyValue::integer(7).doubleValue(), 7.0);
  EXPECT_EQ(PropertyValue::integer(-3).doubleValue(), -3.0);
}

TEST(PropertyValueTest, DoubleValueIsAbsentForOtherCases) {
  EXPECT_FALSE(PropertyValue::point(1, 2).doubleValue().has_value());
  EXPECT_FALSE(PropertyValue::size(1, 2).doubleValue().has_value());
  EXPECT_FALSE(PropertyValue::color(OVColor::white).doubleValue().has_value());
  EXPECT_FALSE(PropertyValue::choice("1").doubleValue().has_value());
  EXPECT_FALSE(PropertyValue::text("2").doubleValue().has_value());
  EXPECT_FALSE(PropertyValue::maskPath(MaskPath{}).doubleValue().has_value());
}

TEST(PropertyValueTest, GeometricAccessorsReadOnlyTheirOwnCase) {
  const auto values = oneOfEach();
  for (const auto& v : values) {
    SCOPED_TRACE(std::string(rawValue(v.kind())));
    EXPECT_EQ(v.pointValue().has_value(), v.kind() == Kind::point);
    EXPECT_EQ(v.sizeValue().has_value(), v.kind() == Kind::size);
    EXPECT_EQ(v.colorValue().has_value(), v.kind() == Kind::color);
    EXPECT_EQ(v.maskPathValue().has_value(), v.kind() == Kind::maskPath);
  }
  EXPECT_EQ(values[1].pointValue(), (OVPoint{1, 2}));
  EXPECT_EQ(values[2].sizeValue(), (OVSize{3, 4}));
  EXPECT_EQ(values[3].colorValue(), (OVColor{0.1, 0.2, 0.3, 0.4}));
  EXPECT_EQ(values[8].maskPathValue(), twoVertexPath({0, 0}, {10, 0}));
}

TEST(PropertyValueTest, BoolValueReadsBoolsAndNonZeroNumbers) {
  EXPECT_EQ(PropertyValue::bool_(true).boolValue(), true);
  EXPECT_EQ(PropertyValue::bool_(false).boolValue(), false);
  EXPECT_EQ(PropertyValue::double_(0).boolValue(), false);
  EXPECT_EQ(PropertyValue::double_(-0.0).boolValue(), false);
  EXPECT_EQ(PropertyValue::double_(0.5).boolValue(), true);
  EXPECT_EQ(PropertyValue::double_(-1).boolValue(), true);
  EXPECT_EQ(PropertyValue::double_(1e-300).boolValue(), true);
  EXPECT_EQ(PropertyValue::integer(0).boolValue(), false);
  EXPECT_EQ(PropertyValue::integer(5).boolValue(), true);
  EXPECT_EQ(PropertyValue::integer(-1).boolValue(), true);
}

TEST(PropertyValueTest, BoolValueIsAbsentForOtherCases) {
  EXPECT_FALSE(PropertyValue::choice("true").boolValue().has_value());
  EXPECT_FALSE(PropertyValue::text("1").boolValue().has_value());
  EXPECT_FALSE(PropertyValue::point(0, 0).boolValue().has_value());
  EXPECT_FALSE(PropertyValue::color(OVColor::clear).boolValue().has_value());
}

TEST(PropertyValueTest, IntegerValueRoundsNumbersHalfAwayFromZero) {
  EXPECT_EQ(PropertyValue::integer(42).integerValue(), 42);
  EXPECT_EQ(PropertyValue::integer(std::numeric_limits<std::int64_t>::min()).integerValue(),
            std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(PropertyValue::double_(2.5).integerValue(), 3);
  EXPECT_EQ(PropertyValue::double_(-2.5).integerValue(), -3);
  EXPECT_EQ(PropertyValue::double_(0.5).integerValue(), 1);
  EXPECT_EQ(PropertyValue::double_(-0.5).integerValue(), -1);
  EXPECT_EQ(PropertyValue::double_(2.4999).integerValue(), 2);
  EXPECT_EQ(PropertyValue::double_(1.6).integerValue(), 2);
  EXPECT_EQ(PropertyValue::double_(-0.4).integerValue(), 0);
}

TEST(PropertyValueTest, IntegerValueIsAbsentForBoolsAndEverythingElse) {
  EXPECT_FALSE(PropertyValue::bool_(true).integerValue().has_value());
  EXPECT_FALSE(PropertyValue::point(1, 1).integerValue().has_value());
  EXPECT_FALSE(PropertyValue::choice("3").integerValue().has_value());
  EXPECT_FALSE(PropertyValue::text("3").integerValue().has_value());
}

TEST(PropertyValueTest, StringValueReadsChoicesAndTexts) {
  EXPECT_EQ(PropertyValue::choice("fast").stringValue(), "fast");
  EXPECT_EQ(PropertyValue::text("Hello").stringValue(), "Hello");
  EXPECT_EQ(PropertyValue::text("").stringValue(), "");
  EXPECT_FALSE(PropertyValue::double_(1).stringValue().has_value());
  EXPECT_FALSE(PropertyValue::bool_(false).stringValue().has_value());
  EXPECT_FALSE(PropertyValue::integer(1).stringValue().has_value());
}

// --- Compatibility ---

TEST(PropertyValueTest, CompatibleExactlyWhenTheCaseMatches) {
  const auto values = oneOfEach();
  for (std::size_t i = 0; i < values.size(); ++i) {
    for (std::size_t j = 0; j < values.size(); ++j) {
      EXPECT_EQ(values[i].isCompatibleWith(values[j]), i == j) << i << " with " << j;
    }
  }
}

TEST(PropertyValueTest, CompatibilityIgnoresThePayload) {
  EXPECT_TRUE(PropertyValue::point(1, 2).isCompatibleWith(PropertyValue::point(-5, 9)));
  EXPECT_TRUE(PropertyValue::choice("a").isCompatibleWith(PropertyValue::choice("b")));
  EXPECT_FALSE(PropertyValue::double_(1).isCompatibleWith(PropertyValue::integer(1)));
  EXPECT_FALSE(PropertyValue::integer(1).isCompatibleWith(PropertyValue::double_(1)));
  EXPECT_FALSE(PropertyValue::choice("a").isCompatibleWith(PropertyValue::text("a")));
}

// --- Interpolation ---

TEST(PropertyValueInterpolationTest, NumbersMoveProportionally) {
  const auto a = PropertyValue::double_(10);
  const auto b = PropertyValue::double_(20);
  EXPECT_EQ(a.interpolatedTo(b, 0.25), PropertyValue::double_(12.5));
  EXPECT_EQ(a.interpolatedTo(b, 0.5), PropertyValue::double_(15));
  EXPECT_EQ(b.interpolatedTo(a, 0.75), PropertyValue::double_(12.5));
  EXPECT_EQ(PropertyValue::double_(-4).interpolatedTo(PropertyValue::double_(4), 0.125),
            PropertyValue::double_(-3));
}

TEST(PropertyValueInterpolationTest, ProgressAtOrBelowZeroGivesSelf) {
  const auto a = PropertyValue::double_(10);
  const auto b = PropertyValue::double_(20);
  EXPECT_EQ(a.interpolatedTo(b, 0), a);
  EXPECT_EQ(a.interpolatedTo(b, -0.5), a);
  EXPECT_EQ(a.interpolatedTo(PropertyValue::text("x"), -1), a);
  EXPECT_EQ(PropertyValue::color(OVColor::black).interpolatedTo(PropertyValue::color(OVColor::white), -2),
            PropertyValue::color(OVColor::black));
}

TEST(PropertyValueInterpolationTest, ProgressAtOrAboveOneGivesOtherWithoutExtrapolating) {
  const auto a = PropertyValue::double_(10);
  const auto b = PropertyValue::double_(20);
  EXPECT_EQ(a.interpolatedTo(b, 1), b);
  EXPECT_EQ(a.interpolatedTo(b, 1.5), b);
  EXPECT_EQ(PropertyValue::point(0, 0).interpolatedTo(PropertyValue::point(10, 10), 1.25),
            PropertyValue::point(10, 10));
  EXPECT_EQ(PropertyValue::integer(0).interpolatedTo(PropertyValue::integer(10), 3),
            PropertyValue::integer(10));
  EXPECT_EQ(PropertyValue::color(OVColor::black).interpolatedTo(PropertyValue::color(OVColor::white), 1.3),
            PropertyValue::color(OVColor::white));
}

TEST(PropertyValueInterpolationTest, ProgressOneGivesOtherExactlyWhereArithmeticWouldNot) {
  // 1e16 + (1 − 1e16) × 1 is 0 in 64-bit floats; the end must still be exact.
  const auto a = PropertyValue::double_(1e16);
  const auto b = PropertyValue::double_(1);
  EXPECT_EQ(a.interpolatedTo(b, 1), b);
}

TEST(PropertyValueInterpolationTest, PointsAndSizesMoveComponentwise) {
  EXPECT_EQ(PropertyValue::point(0, 10).interpolatedTo(PropertyValue::point(10, 30), 0.5),
            PropertyValue::point(5, 20));
  EXPECT_EQ(PropertyValue::point(-8, 4).interpolatedTo(PropertyValue::point(8, 0), 0.25),
            PropertyValue::point(-4, 3));
  EXPECT_EQ(PropertyValue::size(100, 50).interpolatedTo(PropertyValue::size(200, 0), 0.25),
            PropertyValue::size(125, 37.5));
}

TEST(PropertyValueInterpolationTest, ColoursMoveChannelByChannelUnpremultiplied) {
  // Red at alpha 0 to blue at alpha 1: a premultiplied blend would give less red.
  const auto a = PropertyValue::color(OVColor{1, 0, 0, 0});
  const auto b = PropertyValue::color(OVColor{0, 0, 1, 1});
  EXPECT_EQ(a.interpolatedTo(b, 0.5), PropertyValue::color(OVColor{0.5, 0, 0.5, 0.5}));
  EXPECT_EQ(a.interpolatedTo(b, 0.25), PropertyValue::color(OVColor{0.75, 0, 0.25, 0.25}));
}

TEST(PropertyValueInterpolationTest, ColoursAreNotClamped) {
  const auto a = PropertyValue::color(OVColor{2, -1, 0.5, 1});
  const auto b = PropertyValue::color(OVColor{0, 1, 0.5, 0});
  EXPECT_EQ(a.interpolatedTo(b, 0.25), PropertyValue::color(OVColor{1.5, -0.5, 0.5, 0.75}));
}

TEST(PropertyValueInterpolationTest, IntegersRoundHalfAwayFromZero) {
  const auto zero = PropertyValue::integer(0);
  EXPECT_EQ(zero.interpolatedTo(PropertyValue::integer(10), 0.25), PropertyValue::integer(3));    // 2.5
  EXPECT_EQ(zero.interpolatedTo(PropertyValue::integer(-10), 0.25), PropertyValue::integer(-3));  // -2.5
  EXPECT_EQ(zero.interpolatedTo(PropertyValue::integer(10), 0.24), PropertyValue::integer(2));    // 2.4
  EXPECT_EQ(zero.interpolatedTo(PropertyValue::integer(10), 0.26), PropertyValue::integer(3));    // 2.6
  EXPECT_EQ(PropertyValue::integer(1).interpolatedTo(PropertyValue::integer(2), 0.5),
            PropertyValue::integer(2));  // 1.5
  EXPECT_EQ(PropertyValue::integer(5).interpolatedTo(PropertyValue::integer(-5), 0.5),
            PropertyValue::integer(0));
}

TEST(PropertyValueInterpolationTest, IntegersStayIntegers) {
  const auto v = PropertyValue::integer(0).interpolatedTo(PropertyValue::integer(9), 0.5);
  EXPECT_EQ(v.kind(), Kind::integer);
  EXPECT_EQ(v.integerValue(), 5);  // 4.5
}

TEST(PropertyValueInterpolationTest, UninterpolableCasesFlipAtHalfWay) {
  struct Pair {
    PropertyValue a, b;
  };
  const std::vector<Pair> pairs = {
      {PropertyValue::bool_(false), PropertyValue::bool_(true)},
      {PropertyValue::choice("slow"), PropertyValue::choice("fast")},
      {PropertyValue::text("Hello"), PropertyValue::text("World")},
  };
  for (const auto& [a, b] : pairs) {
    SCOPED_TRACE(std::string(rawValue(a.kind())));
    EXPECT_EQ(a.interpolatedTo(b, 0.01), a);
    EXPECT_EQ(a.interpolatedTo(b, 0.49), a);
    EXPECT_EQ(a.interpolatedTo(b, 0.4999999), a);
    EXPECT_EQ(a.interpolatedTo(b, 0.5), b);
    EXPECT_EQ(a.interpolatedTo(b, 0.9), b);
  }
}

TEST(PropertyValueInterpolationTest, MixedCasesFlipAtHalfWay) {
  const auto number = PropertyValue::double_(3);
  const auto integer = PropertyValue::integer(9);
  EXPECT_EQ(number.interpolatedTo(integer, 0.4), number);
  EXPECT_EQ(number.interpolatedTo(integer, 0.5), integer);
  EXPECT_EQ(integer.interpolatedTo(number, 0.49), integer);
  EXPECT_EQ(integer.interpolatedTo(number, 0.51), number);

  const auto point = PropertyValue::point(1, 1);
  const auto size = PropertyValue::size(1, 1);
  EXPECT_EQ(point.interpolatedTo(size, 0.3), point);
  EXPECT_EQ(point.interpolatedTo(size, 0.7), size);
  EXPECT_EQ(number.interpolatedTo(PropertyValue::text("x"), 0.5), PropertyValue::text("x"));
}

TEST(PropertyValueInterpolationTest, LikeMaskPathsMoveVertexByVertex) {
  MaskPath a;
  a.vertices = {MaskVertex{{0, 0}, {-1, 0}, {1, 0}}, MaskVertex{{10, 0}, {0, -2}, {0, 2}}};
  MaskPath b;
  b.vertices = {MaskVertex{{10, 10}, {1, 0}, {3, 0}}, MaskVertex{{20, 20}, {0, 2}, {0, 4}}};
  MaskPath expected;
  expected.vertices = {MaskVertex{{2.5, 2.5}, {-0.5, 0}, {1.5, 0}},
                       MaskVertex{{12.5, 5}, {0, -1}, {0, 2.5}}};
  const auto v = PropertyValue::maskPath(a).interpolatedTo(PropertyValue::maskPath(b), 0.25);
  EXPECT_EQ(v.kind(), Kind::maskPath);
  EXPECT_EQ(v.maskPathValue(), expected);
}

TEST(PropertyValueInterpolationTest, OpenMaskPathsKeepTheirOpenness) {
  const auto a = twoVertexPath({0, 0}, {10, 0}, false);
  const auto b = twoVertexPath({4, 8}, {10, 0}, false);
  const auto v = PropertyValue::maskPath(a).interpolatedTo(PropertyValue::maskPath(b), 0.5);
  ASSERT_TRUE(v.maskPathValue().has_value());
  EXPECT_FALSE(v.maskPathValue()->closed);
  EXPECT_EQ(v.maskPathValue()->vertices.at(0).point, (OVPoint{2, 4}));
}

TEST(PropertyValueInterpolationTest, UnlikeMaskPathsFlipAtHalfWay) {
  const auto twoClosed = twoVertexPath({0, 0}, {10, 0}, true);
  const auto twoOpen = twoVertexPath({4, 4}, {6, 6}, false);
  MaskPath three = twoClosed;
  three.vertices.push_back(MaskVertex{{5, 5}, {}, {}});

  const auto a = PropertyValue::maskPath(twoClosed);
  for (const auto& other : {twoOpen, three}) {
    const auto b = PropertyValue::maskPath(other);
    EXPECT_EQ(a.interpolatedTo(b, 0.25), a);
    EXPECT_EQ(a.interpolatedTo(b, 0.49), a);
    EXPECT_EQ(a.interpolatedTo(b, 0.5), b);
    EXPECT_EQ(a.interpolatedTo(b, 0.75), b);
  }
}

}  // namespace
}  // namespace orvane::core
