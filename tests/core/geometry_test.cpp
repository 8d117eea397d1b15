// Points, sizes and colours: arithmetic, aspect ratio, and the colour's hex
// text in both directions.

#include <gtest/gtest.h>

#include <cstdio>
#include <optional>
#include <string>

#include "core/geometry.hpp"

namespace orvane::core {
namespace {

// --- OVPoint and OVSize ---

TEST(GeometryTest, PointZeroHasBothComponentsZero) {
  EXPECT_EQ(OVPoint::zero.x, 0.0);
  EXPECT_EQ(OVPoint::zero.y, 0.0);
  EXPECT_EQ(OVPoint{}, OVPoint::zero);
}

TEST(GeometryTest, PointLengthIsEuclidean) {
  EXPECT_DOUBLE_EQ((OVPoint{3, 4}).length(), 5.0);
  EXPECT_DOUBLE_EQ((OVPoint{-5, 12}).length(), 13.0);
  EXPECT_EQ(OVPoint::zero.length(), 0.0);
}

TEST(GeometryTest, PointArithmeticIsComponentwise) {
  const OVPoint a{1.5, -2};
  const OVPoint b{4, 10};
  EXPECT_EQ(a + b, (OVPoint{5.5, 8}));
  EXPECT_EQ(b - a, (OVPoint{2.5, 12}));
  EXPECT_EQ(a * 2, (OVPoint{3, -4}));
  EXPECT_EQ(a.scaledBy(-3), (OVPoint{-4.5, 6}));
  EXPECT_NE(a, b);
}

TEST(GeometryTest, SizeAspectRatioIsWidthOverHeight) {
  EXPECT_DOUBLE_EQ((OVSize{1920, 1080}).aspectRatio(), 1920.0 / 1080.0);
  EXPECT_DOUBLE_EQ((OVSize{100, 400}).aspectRatio(), 0.25);
}

TEST(GeometryTest, SizeAspectRatioIsZeroWhenHeightIsZero) {
  EXPECT_EQ((OVSize{1920, 0}).aspectRatio(), 0.0);
  EXPECT_EQ(OVSize::zero.aspectRatio(), 0.0);
  EXPECT_EQ(OVSize::zero, (OVSize{0, 0}));
}

// --- OVColor values ---

TEST(OVColorTest, AlphaDefaultsToOpaque) {
  const OVColor c{0.1, 0.2, 0.3};
  EXPECT_EQ(c.red, 0.1);
  EXPECT_EQ(c.green, 0.2);
  EXPECT_EQ(c.blue, 0.3);
  EXPECT_EQ(c.alpha, 1.0);
}

TEST(OVColorTest, NamedColoursHaveTheirComponents) {
  EXPECT_EQ(OVColor::black, (OVColor{0, 0, 0, 1}));
  EXPECT_EQ(OVColor::white, (OVColor{1, 1, 1, 1}));
  EXPECT_EQ(OVColor::clear, (OVColor{0, 0, 0, 0}));
  EXPECT_EQ(OVColor::red_, (OVColor{1, 0, 0, 1}));
}

TEST(OVColorTest, WithAlphaReplacesOnlyAlphaAndDoesNotClamp) {
  const OVColor c{0.25, 0.5, 0.75, 1};
  EXPECT_EQ(c.withAlpha(0.4), (OVColor{0.25, 0.5, 0.75, 0.4}));
  EXPECT_EQ(c.withAlpha(1.5).alpha, 1.5);
  EXPECT_EQ(c.alpha, 1.0);  // the original is untouched
}

// --- Hex text to colour ---

TEST(OVColorTest, FromHexReadsSixDigitsWithHash) {
  const auto c = OVColor::fromHex("#ff8000");
  ASSERT_TRUE(c.has_value());
  EXPECT_EQ(c->red, 1.0);
  EXPECT_DOUBLE_EQ(c->green, 128.0 / 255.0);
  EXPECT_EQ(c->blue, 0.0);
  EXPECT_EQ(c->alpha, 1.0);
}

TEST(OVColorTest, FromHexWithoutHashAndWithSurroundingWhitespaceReadsTheSame) {
  const auto withHash = OVColor::fromHex("#ff8000");
  ASSERT_TRUE(withHash.has_value());
  for (const char* text : {"ff8000", " ff8000 \n", "\t#ff8000\r\n", "  #FF8000  ", "\nff8000"}) {
    SCOPED_TRACE(text);
    const auto c = OVColor::fromHex(text);
    ASSERT_TRUE(c.has_value());
    EXPECT_EQ(*c, *withHash);
  }
}

TEST(OVColorTest, FromHexSplitsChannelsByByte) {
  const auto c = OVColor::fromHex("12aB9f");
  ASSERT_TRUE(c.has_value());
  EXPECT_DOUBLE_EQ(c->red, 0x12 / 255.0);
  EXPECT_DOUBLE_EQ(c->green, 0xAB / 255.0);
  EXPECT_DOUBLE_EQ(c->blue, 0x9F / 255.0);
  EXPECT_EQ(c->alpha, 1.0);

  const auto black = OVColor::fromHex("000000");
  ASSERT_TRUE(black.has_value());
  EXPECT_EQ(*black, OVColor::black);
  const auto white = OVColor::fromHex("FFFFFF");
  ASSERT_TRUE(white.has_value());
  EXPECT_EQ(*white, OVColor::white);
}

TEST(OVColorTest, FromHexRejectsShortLongAndMalformedText) {
  for (const char* text : {"abc", "#abc", "ff800080", "#ff800080", "ff800", "#ff80001", "", "   ",
                           "#", "##ff8000", "gg0000", "ff 800", "0xff00", "ff8000#", "#ff80 0"}) {
    SCOPED_TRACE(std::string("\"") + text + "\"");
    EXPECT_FALSE(OVColor::fromHex(text).has_value());
  }
}

// --- Colour to hex text ---

TEST(OVColorTest, HexStringIsUpperCaseWithoutHashOrAlpha) {
  EXPECT_EQ((OVColor{1, 128.0 / 255.0, 0, 1}).hexString(), "FF8000");
  EXPECT_EQ((OVColor{0xAB / 255.0, 0xCD / 255.0, 0xEF / 255.0, 0.2}).hexString(), "ABCDEF");
  EXPECT_EQ(OVColor::white.hexString(), "FFFFFF");
  EXPECT_EQ(OVColor::red_.hexString(), "FF0000");
}

TEST(OVColorTest, HexStringOfClearBlackIsSixZeros) {
  EXPECT_EQ(OVColor::clear.hexString(), "000000");
  EXPECT_EQ(OVColor::black.hexString(), "000000");
}

TEST(OVColorTest, HexStringRoundsHalvesAwayFromZero) {
  // 0.5 × 255 = 127.5 exactly, which rounds up to 128 (0x80).
  EXPECT_EQ((OVColor{0.5, 0, 0}).hexString(), "800000");
  // 0.51 and 0.255 before rounding: 1 and 0.
  EXPECT_EQ((OVColor{0, 0.002, 0.001}).hexString(), "000100");
  // 2.4 and 2.6 before rounding: 2 and 3.
  EXPECT_EQ((OVColor{2.4 / 255, 2.6 / 255, 254.6 / 255}).hexString(), "0203FF");
}

TEST(OVColorTest, HexStringDoesNotClampChannelsAboveOne) {
  // 2 × 255 = 510 = 0x1FE, printed in full.
  EXPECT_EQ((OVColor{2, 1, 0}).hexString(), "1FEFF00");
}

TEST(OVColorTest, EveryByteSurvivesHexRoundTrip) {
  for (int v = 0; v < 256; ++v) {
    char expected[8];
    std::snprintf(expected, sizeof expected, "%02X%02X%02X", v, 255 - v, (v * 7) % 256);
    const OVColor c{v / 255.0, (255 - v) / 255.0, ((v * 7) % 256) / 255.0};
    ASSERT_EQ(c.hexString(), expected) << "byte " << v;
    const auto back = OVColor::fromHex(expected);
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(*back, c);
  }
}

}  // namespace
}  // namespace orvane::core
