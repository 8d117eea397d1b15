// Text: the type-on count, margins, measuring, font look-up, and the drawn
// picture (upright, revealed in place, wrapped, with stroke and shadow).

#include <gtest/gtest.h>

#include <QFontDatabase>
#include <QFontInfo>
#include <cmath>
#include <string>
#include <thread>
#include <vector>

#include "render/font_resolver.hpp"
#include "render/generated_image_factory.hpp"
#include "render/text_drawing.hpp"
#include "render/text_layout_builder.hpp"
#include "render/text_shadow.hpp"
#include "tests/render/golden.hpp"

namespace orvane::render {
namespace {

using core::OVColor;
using core::TextContent;
using testing_support::matchesGolden;

TextContent plain(std::string string, double fontSize = 40) {
  TextContent content;
  content.string = std::move(string);
  content.fontSize = fontSize;
  content.alignment = TextContent::Alignment::left;
  return content;
}

GeneratedImage drawn(const TextContent& content, int revealed = 1 << 30) {
  auto generated = drawText(content, revealed);
  EXPECT_TRUE(generated.has_value());
  return generated ? *generated : GeneratedImage{};
}

// The pixels whose alpha passes a threshold, as a bounding rectangle.
PixelRect inkBounds(const Image& image, float threshold = 0.5f) {
  PixelRect bounds;
  const PixelRect e = image.extent();
  for (int y = e.y; y < e.maxY(); ++y) {
    for (int x = e.x; x < e.maxX(); ++x) {
      if (image.pixelAt(x, y).a > threshold) bounds = bounds.united({x, y, 1, 1});
    }
  }
  return bounds;
}

int inkInRow(const Image& image, int y, int* leftmost = nullptr) {
  int count = 0;
  for (int x = image.extent().x; x < image.extent().maxX(); ++x) {
    if (image.pixelAt(x, y).a > 0.5f) {
      if (count == 0 && leftmost) *leftmost = x;
      ++count;
    }
  }
  return count;
}

TEST(TextRevealTest, CountsUserPerceivedCharactersAndRoundsUp) {
  const struct {
    const char* string;
    double value;
    int expected;
  } cases[] = {
      {"Hello", 50, 3},       {"Hello", 0, 0},       {"Hello", 100, 5},    {"Hello", 250, 5},
      {"Hello", -4, 0},       {"Hello", 0.001, 1},   {"Hello", 99.9, 5},   {"Hello", NAN, 0},
      {"", 50, 0},            {"", 100, 0},          {"e\u0301te\u0301", 100, 3},
      {"\U0001F44D\U0001F3FD!", 100, 2},              {"\U0001F1EB\U0001F1F7ab", 50, 2},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(TextLayoutBuilder::revealedCount(c.value, c.string), c.expected) << c.string << " at " << c.value;
  }
}

TEST(TextRevealTest, HidesFromAUtf16PositionThatCountsCharacters) {
  TextContent content = plain("Hello");
  EXPECT_EQ(TextLayoutBuilder::attributedStringFor(content, 3).visibleEnd, 3);
  EXPECT_EQ(TextLayoutBuilder::attributedStringFor(content, 5).visibleEnd, 5);
  EXPECT_EQ(TextLayoutBuilder::attributedStringFor(content, -2).visibleEnd, 0);
  EXPECT_EQ(TextLayoutBuilder::attributedStringFor(content).visibleEnd, 5);
  // Two characters beyond the basic plane are four UTF-16 units: a full
  // reveal counts 2 and so leaves the second hidden, as intended.
  content.string = "\U0001D400\U0001D401";
  const int all = TextLayoutBuilder::revealedCount(100, content.string);
  EXPECT_EQ(all, 2);
  EXPECT_EQ(TextLayoutBuilder::attributedStringFor(content, all).visibleEnd, 2);
  EXPECT_EQ(TextLayoutBuilder::attributedStringFor(content, all).string.size(), 4);
}

TEST(TextAttributesTest, StrokeWidthIsAShareOfTheFontSize) {
  const struct {
    double fontSize;
    double expected;
  } cases[] = {{96, 4}, {1, 4}, {0.5, 2}, {0, 48}};  // a size of 0 is drawn at 12
  for (const auto& c : cases) {
    TextContent content = plain("x", c.fontSize);
    content.strokeWidth = 4;
    const AttributedText text = TextLayoutBuilder::attributedStringFor(content);
    ASSERT_TRUE(text.stroke.has_value());
    EXPECT_DOUBLE_EQ(text.stroke->width, c.expected) << c.fontSize;
  }
  TextContent clearStroke = plain("x");
  clearStroke.strokeWidth = 4;
  clearStroke.strokeColor = OVColor::clear;
  EXPECT_FALSE(TextLayoutBuilder::attributedStringFor(clearStroke).stroke.has_value());
}

TEST(TextPaddingTest, HoldsTheWidestOfBackingStrokeAndShadowRoundedUp) {
  const auto padding = [](auto edit) {
    TextContent content;
    edit(content);
    return TextLayoutBuilder::padding(content);
  };
  EXPECT_EQ(padding([](TextContent&) {}), 0);
  EXPECT_EQ(padding([](TextContent& c) { c.backgroundColor = OVColor::black; }), 16);
  EXPECT_EQ(padding([](TextContent& c) { c.backgroundColor = OVColor::black.withAlpha(0); }), 0);
  EXPECT_EQ(padding([](TextContent& c) { c.strokeWidth = 3.2; }), 7);
  EXPECT_EQ(padding([](TextContent& c) {
              c.strokeWidth = 3;
              c.strokeColor = OVColor::clear;
            }),
            0);
  EXPECT_EQ(padding([](TextContent& c) { c.hasShadow = true; }), 20);
  EXPECT_EQ(padding([](TextContent& c) {
              c.hasShadow = true;
              c.shadowBlur = 2.3;
              c.shadowOffset = {1.2, -0.5};
            }),
            6);
  EXPECT_EQ(padding([](TextContent& c) {
              c.hasShadow = true;
              c.shadowBlur = 1;
              c.shadowOffset = {0, -30};
              c.backgroundColor = OVColor::white;
              c.strokeWidth = 10;
            }),
            32);
}

TEST(TextFontTest, ResolvesPostScriptNamesAndFallsBackToTheBoldSystemFont) {
  const struct {
    const char* name;
    const char* family;  // as resolved; null for the fallback
    int weight;
    bool italic;
  } cases[] = {
      {"Helvetica-Bold", "Nimbus Sans", QFont::Bold, false},
      {"Helvetica", "Nimbus Sans", QFont::Normal, false},
      {"Helvetica-BoldOblique", "Nimbus Sans", QFont::Bold, true},
      {"DejaVuSans-Bold", "DejaVu Sans", QFont::Bold, false},
      {"TimesNewRomanPS-BoldMT", "Liberation Serif", QFont::Bold, false},
      {"Avenir-Heavy", nullptr, QFont::Bold, false},
      {"Menlo-Regular", nullptr, QFont::Bold, false},
      {"", nullptr, QFont::Bold, false},
  };
  const QString systemFamily = QFontInfo(QFontDatabase::systemFont(QFontDatabase::GeneralFont)).family();
  for (const auto& c : cases) {
    TextContent content = plain("x");
    content.fontName = c.name;
    const QFont font = TextLayoutBuilder::fontFor(content);
    const QFontInfo info(font);
    EXPECT_EQ(fontNameResolves(c.name), c.family != nullptr) << c.name;
    // Families may carry their foundry: "Nimbus Sans [urw]".
    EXPECT_TRUE(info.family().startsWith(c.family ? QString(c.family) : systemFamily))
        << c.name << " gave " << info.family().toStdString();
    EXPECT_EQ(font.weight(), c.weight) << c.name;
    EXPECT_EQ(info.italic(), c.italic) << c.name;
  }
}

TEST(TextFontTest, SizeIsInLayerPixels) {
  for (const double size : {12.0, 120.0, 37.0}) {
    EXPECT_EQ(QFontInfo(TextLayoutBuilder::fontFor(plain("x", size))).pixelSize(), size);
  }
  EXPECT_EQ(QFontInfo(TextLayoutBuilder::fontFor(plain("x", 0))).pixelSize(), 12);
  EXPECT_EQ(QFontInfo(TextLayoutBuilder::fontFor(plain("x", NAN))).pixelSize(), 12);
}

TEST(TextMeasureTest, LetterSpacingWidensEveryCharacter) {
  TextContent content = plain("Hello");
  const core::OVSize base = TextLayoutBuilder::measure(content, std::nullopt);
  content.letterSpacing = 10;
  const core::OVSize spaced = TextLayoutBuilder::measure(content, std::nullopt);
  EXPECT_NEAR(spaced.width - base.width, 50, 1);
  EXPECT_EQ(spaced.height, base.height);
  content.letterSpacing = -2;
  EXPECT_LT(TextLayoutBuilder::measure(content, std::nullopt).width, base.width);
}

TEST(TextMeasureTest, WrapsAtTheWidthAndSpacesLines) {
  TextContent content = plain("one two three four five six");
  const core::OVSize line = TextLayoutBuilder::measure(plain("one"), std::nullopt);
  const core::OVSize wrapped = TextLayoutBuilder::measure(content, 120);
  EXPECT_LE(wrapped.width, 120);
  EXPECT_GE(wrapped.height, 3 * line.height - 2);
  EXPECT_GT(TextLayoutBuilder::measure(content, std::nullopt).width, 300);

  content.string = "a\nb\r\nc";
  const core::OVSize threeLines = TextLayoutBuilder::measure(content, std::nullopt);
  EXPECT_NEAR(threeLines.height, 3 * line.height, 2);
  content.lineSpacing = 10;
  EXPECT_NEAR(TextLayoutBuilder::measure(content, std::nullopt).height - threeLines.height, 20, 1);
  content.lineSpacing = -10;  // no negative spacing: lines never overlap
  EXPECT_EQ(TextLayoutBuilder::measure(content, std::nullopt).height, threeLines.height);
}

TEST(TextMeasureTest, AddsTheMarginOnEverySideAndIsZeroForEmptyText) {
  TextContent content = plain("Title");
  const core::OVSize bare = TextLayoutBuilder::measure(content, std::nullopt);
  content.strokeWidth = 5;
  const core::OVSize stroked = TextLayoutBuilder::measure(content, std::nullopt);
  EXPECT_EQ(stroked.width, bare.width + 20);
  EXPECT_EQ(stroked.height, bare.height + 20);
  EXPECT_EQ(bare.width, std::ceil(bare.width));
  EXPECT_EQ(TextLayoutBuilder::measure(plain(""), std::nullopt), (core::OVSize{0, 0}));
}

TEST(TextDrawingTest, RevealZeroDrawsOnlyTheBackingAtFullSize) {
  TextContent content = plain("Typing");
  content.backgroundColor = {0, 0, 1, 1};
  const GeneratedImage full = drawn(content);
  const GeneratedImage none = drawn(content, 0);
  EXPECT_EQ(none.size, full.size);
  EXPECT_EQ(none.image.extent(), full.image.extent());
  const PixelRect e = none.image.extent();
  for (int y = 0; y < e.height; ++y) {
    for (int x = 0; x < e.width; ++x) ASSERT_EQ(none.image.pixelAt(x, y), (Rgba{0, 0, 1, 1})) << x << ", " << y;
  }
  int differing = 0;  // the full text does draw over the backing
  for (int x = 0; x < e.width; ++x) differing += full.image.pixelAt(x, e.height / 2) != Rgba{0, 0, 1, 1};
  EXPECT_GT(differing, 0);
  EXPECT_TRUE(GeneratedImageFactory::cacheKeyFor(core::LayerContent::text(content), 0)->ends_with(":0"));

  content.backgroundColor = {1, 0, 0, 0.5};  // a translucent backing, premultiplied
  const Rgba backing = drawn(content, 0).image.pixelAt(0, 0);
  EXPECT_NEAR(backing.r, 0.5f, 1.0f / 255);
  EXPECT_EQ(backing.g, 0);
  EXPECT_NEAR(backing.a, 0.5f, 1.0f / 255);
}

TEST(TextDrawingTest, RevealedLettersKeepTheirPlaceAndTheRestTakesItsSpace) {
  TextContent hello = plain("Hello");
  const int revealed = TextLayoutBuilder::revealedCount(50, hello.string);
  ASSERT_EQ(revealed, 3);
  const GeneratedImage partial = drawn(hello, revealed);
  const GeneratedImage full = drawn(hello);
  const GeneratedImage hel = drawn(plain("Hel"));
  EXPECT_EQ(partial.size, full.size);
  ASSERT_EQ(partial.image.extent().height, hel.image.extent().height);
  const PixelRect e = partial.image.extent();
  for (int y = 0; y < e.height; ++y) {
    for (int x = 0; x < e.width; ++x) {
      const Rgba expected = x < hel.image.extent().width ? hel.image.pixelAt(x, y) : Rgba{};
      ASSERT_EQ(partial.image.pixelAt(x, y), expected) << x << ", " << y;
    }
  }
}

TEST(TextDrawingTest, EmptyTextIsOnePixelPlusTheMargin) {
  TextContent content = plain("");
  EXPECT_EQ(drawn(content).size, (core::OVSize{1, 1}));
  content.backgroundColor = OVColor::white;
  const GeneratedImage generated = drawn(content);
  EXPECT_EQ(generated.size, (core::OVSize{33, 33}));
  EXPECT_EQ(generated.image.extent(), (PixelRect{0, 0, 33, 33}));
}

TEST(TextDrawingTest, TextIsUprightAndNotMirrored) {
  const Image image = drawn(plain("L", 80)).image;
  const PixelRect ink = inkBounds(image);
  ASSERT_FALSE(ink.isEmpty());
  int bottomLeft = 0, topLeft = 0;
  // y-up: the foot of the L is its lowest ink row, wide; the stem above it
  // is narrow, and both start at the left.
  const int foot = inkInRow(image, ink.y + 2, &bottomLeft);
  const int stem = inkInRow(image, ink.maxY() - 3, &topLeft);
  EXPECT_GT(foot, 2 * stem);
  EXPECT_NEAR(bottomLeft, topLeft, 1);
}

TEST(TextDrawingTest, WrapsInsideTheBoxAlignsAndGrowsPastAShortBox) {
  TextContent content = plain("wrap these words inside a narrow box", 30);
  content.alignment = TextContent::Alignment::right;
  content.boxSize = core::OVSize{150, 10};
  const GeneratedImage generated = drawn(content);
  EXPECT_EQ(generated.size.width, 150);
  EXPECT_GT(generated.size.height, 3 * 30);  // taller than the box: it grows
  // Right-aligned lines end near the box's right edge.
  const PixelRect ink = inkBounds(generated.image);
  EXPECT_GE(ink.maxX(), 145);

  content.boxSize = core::OVSize{400, 300};
  content.string = "top";
  const GeneratedImage tall = drawn(content);
  EXPECT_EQ(tall.size, (core::OVSize{400, 300}));
  // The text sits at the top of its box (high y in the y-up picture).
  EXPECT_GT(inkBounds(tall.image).y, 220);
}

TEST(TextDrawingTest, ShadowFallsByItsYUpOffsetBehindTheText) {
  TextContent content = plain("I", 80);
  content.color = OVColor::white;
  content.hasShadow = true;
  content.shadowBlur = 0;
  content.shadowColor = OVColor::black;
  content.shadowOffset = {12, -20};
  const Image image = drawn(content).image;
  // White ink and black shadow: find each by colour.
  PixelRect white, black;
  const PixelRect e = image.extent();
  for (int y = 0; y < e.height; ++y) {
    for (int x = 0; x < e.width; ++x) {
      const Rgba p = image.pixelAt(x, y);
      if (p.a > 0.99f && p.r > 0.99f) white = white.united({x, y, 1, 1});
      if (p.a > 0.99f && p.r < 0.01f) black = black.united({x, y, 1, 1});
    }
  }
  ASSERT_FALSE(white.isEmpty());
  ASSERT_FALSE(black.isEmpty());
  EXPECT_NEAR(black.maxX() - white.maxX(), 12, 1);
  EXPECT_NEAR(black.y - white.y, -20, 1);
}

TEST(TextShadowTest, KeepsTheCoverageAndSpreadsItByHalfTheBlurRadius) {
  QImage bitmap(101, 101, QImage::Format_RGBA8888_Premultiplied);
  bitmap.fill(Qt::transparent);
  QPainterPath square;
  square.addRect(46, 46, 9, 9);
  drawTextShadow(bitmap, square, Qt::white, std::nullopt, TextShadow{Qt::black, {0, 0}, 8.0});
  double total = 0, spread = 0;
  for (int y = 0; y < 101; ++y) {
    for (int x = 0; x < 101; ++x) {
      const double a = bitmap.pixelColor(x, y).alphaF();
      total += a;
      spread += a * (x + 0.5 - 50.5) * (x + 0.5 - 50.5);
    }
  }
  EXPECT_NEAR(total, 81, 81 * 0.02);
  // A 9-wide square has a variance of (81 - 1) / 12; the blur adds sigma².
  EXPECT_NEAR(std::sqrt(spread / total - 80.0 / 12), 4.0, 0.1);
  EXPECT_EQ(bitmap.pixelColor(30, 50), bitmap.pixelColor(70, 50));
  EXPECT_EQ(bitmap.pixelColor(50, 50).red(), 0);  // the shadow's colour

  // Without blur: the square itself, moved by the y-up offset.
  bitmap.fill(Qt::transparent);
  drawTextShadow(bitmap, square, Qt::white, std::nullopt, TextShadow{Qt::black, {3, 5}, 0.0});
  EXPECT_EQ(bitmap.pixelColor(49, 41).alpha(), 255);  // top-down rows: up is fewer
  EXPECT_EQ(bitmap.pixelColor(48, 45).alpha(), 0);
}

TEST(TextDrawingTest, ManyThreadsDrawAlike) {
  std::vector<TextContent> contents;
  for (const char* word : {"alpha", "beta", "gamma", "delta"}) {
    TextContent content = plain(word, 30);
    content.hasShadow = true;
    content.strokeWidth = 2;
    contents.push_back(content);
  }
  std::vector<GeneratedImage> alone;
  for (const auto& content : contents) alone.push_back(drawn(content));
  std::vector<std::optional<GeneratedImage>> together(contents.size());
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < contents.size(); ++i) {
    threads.emplace_back([&, i] { together[i] = drawText(contents[i], 100); });
  }
  for (auto& t : threads) t.join();
  for (std::size_t i = 0; i < contents.size(); ++i) {
    ASSERT_TRUE(together[i].has_value());
    const PixelRect e = alone[i].image.extent();
    ASSERT_EQ(together[i]->image.extent(), e);
    for (int y = 0; y < e.height; ++y) {
      for (int x = 0; x < e.width; ++x) ASSERT_EQ(together[i]->image.pixelAt(x, y), alone[i].image.pixelAt(x, y));
    }
  }
}

TEST(TextDrawingTest, BadSizesDegrade) {
  TextContent content = plain("x");
  content.strokeWidth = INFINITY;
  EXPECT_FALSE(drawText(content, 1).has_value());
  content = plain("x", 1e9);  // capped to what a picture can hold
  EXPECT_FALSE(drawText(content, 1).has_value());
  content = plain("x");
  content.boxSize = core::OVSize{NAN, NAN};
  EXPECT_FALSE(drawText(content, 1).has_value());
}

TEST(TextDrawingTest, MatchesGoldens) {
  TextContent title = plain("Welcome", 48);
  title.fontName = "Helvetica-Bold";
  title.color = {0.1, 0.1, 0.12, 1};
  title.backgroundColor = {1, 0.9, 0.6, 1};
  title.backgroundPadding = 8;

  TextContent missing = plain("Fallback font", 36);
  missing.fontName = "Avenir-Heavy";
  missing.color = OVColor::black;
  missing.backgroundColor = OVColor::white;
  missing.backgroundPadding = 6;

  TextContent boxed = plain("The quick brown fox jumps over the lazy dog", 28);
  boxed.fontName = "Helvetica";
  boxed.alignment = TextContent::Alignment::center;
  boxed.boxSize = core::OVSize{240, 0};
  boxed.lineSpacing = 6;
  boxed.color = {0.05, 0.2, 0.45, 1};
  boxed.backgroundColor = {0.92, 0.95, 1, 1};
  boxed.backgroundPadding = 10;

  TextContent styled = plain("Outline", 56);
  styled.fontName = "Helvetica-Bold";
  styled.color = OVColor::white;
  styled.strokeColor = {0.1, 0.3, 0.9, 1};
  styled.strokeWidth = 3;
  styled.hasShadow = true;
  styled.shadowColor = OVColor::black.withAlpha(0.7);
  styled.shadowOffset = {5, -6};
  styled.shadowBlur = 4;
  styled.backgroundColor = {0.85, 0.85, 0.85, 1};
  styled.backgroundPadding = 10;

  const std::pair<const char*, TextContent> cases[] = {{"text_helvetica_bold", title},
                                                       {"text_missing_font", missing},
                                                       {"text_center_box_wrap", boxed},
                                                       {"text_stroke_shadow_background", styled}};
  for (const auto& [name, content] : cases) {
    const GeneratedImage generated = drawn(content);
    EXPECT_TRUE(matchesGolden(generated.image, generated.image.extent(), name));
  }
}

}  // namespace
}  // namespace orvane::render
