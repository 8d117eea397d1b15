// What a layer shows: content kinds and sizes, label colours, blend filters.

#include "core/layer_content.hpp"

#include <gtest/gtest.h>

#include <vector>

#include "core/layer_style.hpp"

namespace orvane::core {
namespace {

std::vector<LayerContent> oneOfEachKind(const Uuid& id) {
  return {LayerContent::video(id),          LayerContent::audio(id),
          LayerContent::image(id),          LayerContent::text({}),
          LayerContent::shape({}),          LayerContent::solid({OVColor::red_, {64, 32}}),
          LayerContent::adjustment({1280, 720}), LayerContent::precomposition(id)};
}

TEST(LayerContentTest, KindFollowsTheCaseInOrder) {
  const auto contents = oneOfEachKind(Uuid::make());
  const auto kinds = allCases<LayerKind>();
  ASSERT_EQ(contents.size(), kinds.size());
  for (std::size_t i = 0; i < kinds.size(); ++i) EXPECT_EQ(contents[i].kind(), kinds[i]);
  EXPECT_EQ(LayerContent{}.kind(), LayerKind::adjustment);
  EXPECT_EQ(LayerContent{}.adjustmentSize(), OVSize::zero);
}

TEST(LayerContentTest, AssetAndCompositionIdsBelongToTheirCases) {
  const Uuid id = Uuid::make();
  for (const LayerContent& content : oneOfEachKind(id)) {
    const LayerKind kind = content.kind();
    const bool footage = kind == LayerKind::video || kind == LayerKind::audio || kind == LayerKind::image;
    EXPECT_EQ(content.assetID(), footage ? std::optional(id) : std::nullopt) << rawValue(kind);
    const bool nested = kind == LayerKind::precomposition;
    EXPECT_EQ(content.compositionID(), nested ? std::optional(id) : std::nullopt) << rawValue(kind);
  }
}

TEST(LayerContentTest, PayloadsAreReachableOnlyFromTheirCase) {
  const LayerContent solid = LayerContent::solid({OVColor::white, {5, 6}});
  ASSERT_NE(solid.solidContent(), nullptr);
  EXPECT_EQ(solid.solidContent()->size, (OVSize{5, 6}));
  EXPECT_EQ(solid.textContent(), nullptr);
  EXPECT_EQ(solid.shapeContent(), nullptr);
  EXPECT_FALSE(solid.adjustmentSize());
  EXPECT_EQ(LayerContent::adjustment({3, 4}).adjustmentSize(), (OVSize{3, 4}));
}

TEST(LayerContentTest, IntrinsicSizeOnlyForGeneratedContent) {
  EXPECT_EQ(LayerContent::shape({}).intrinsicSize(), (OVSize{400, 400}));
  EXPECT_EQ(LayerContent::solid({OVColor::red_, {64, 32}}).intrinsicSize(), (OVSize{64, 32}));
  EXPECT_EQ(LayerContent::adjustment({1280, 720}).intrinsicSize(), (OVSize{1280, 720}));
  EXPECT_FALSE(LayerContent::text({}).intrinsicSize());
  TextContent boxed;
  boxed.boxSize = OVSize{300, 120};
  EXPECT_EQ(LayerContent::text(boxed).intrinsicSize(), (OVSize{300, 120}));
  const Uuid id = Uuid::make();
  for (const LayerContent& c : {LayerContent::video(id), LayerContent::audio(id),
                                LayerContent::image(id), LayerContent::precomposition(id)}) {
    EXPECT_FALSE(c.intrinsicSize()) << rawValue(c.kind());
  }
}

TEST(LayerContentTest, VisualAndAudioCapabilitiesFollowTheKind) {
  for (const LayerContent& c : oneOfEachKind(Uuid::make())) {
    const LayerKind k = c.kind();
    EXPECT_EQ(c.isVisual(), k != LayerKind::audio) << rawValue(k);
    EXPECT_EQ(c.canProduceAudio(),
              k == LayerKind::video || k == LayerKind::audio || k == LayerKind::precomposition)
        << rawValue(k);
  }
}

TEST(LayerContentTest, EqualContentsHashAlikeAndCasesStayApart) {
  const Uuid id = Uuid::make();
  EXPECT_EQ(hashValue(LayerContent::video(id)), hashValue(LayerContent::video(id)));
  EXPECT_NE(LayerContent::video(id), LayerContent::image(id));
  EXPECT_NE(hashValue(LayerContent::video(id)), hashValue(LayerContent::image(id)));

  TextContent a, b;
  EXPECT_EQ(hashValue(LayerContent::text(a)), hashValue(LayerContent::text(b)));
  b.alignment = TextContent::Alignment::right;
  EXPECT_NE(hashValue(a), hashValue(b));
  b = a;
  b.boxSize = OVSize{10, 10};
  EXPECT_NE(hashValue(a), hashValue(b));

  ShapeContent s, t;
  EXPECT_EQ(hashValue(s), hashValue(t));
  t.type = ShapeContent::ShapeType::star;
  EXPECT_NE(hashValue(s), hashValue(t));
  t = s;
  t.sideCount = 6;
  EXPECT_NE(hashValue(s), hashValue(t));
}

TEST(LayerContentTest, TextDecorationsShowOnlyWhenVisible) {
  TextContent text;
  EXPECT_FALSE(text.hasBackground());
  EXPECT_FALSE(text.hasStroke());
  text.strokeWidth = 2;
  EXPECT_TRUE(text.hasStroke());
  text.strokeColor = OVColor::black.withAlpha(0);
  EXPECT_FALSE(text.hasStroke());
  text.backgroundColor = OVColor::white.withAlpha(0.1);
  EXPECT_TRUE(text.hasBackground());
}

// ------------------------------------------------------------------- style

TEST(LayerStyleTest, LabelSwatches) {
  EXPECT_EQ(color(LayerLabelColor::none), (OVColor{0.42, 0.45, 0.5, 1}));
  EXPECT_EQ(color(LayerLabelColor::blue), (OVColor{0.25, 0.55, 0.96, 1}));
  EXPECT_EQ(color(LayerLabelColor::teal), (OVColor{0.18, 0.7, 0.72, 1}));
  EXPECT_EQ(color(LayerLabelColor::green), (OVColor{0.3, 0.72, 0.4, 1}));
  EXPECT_EQ(color(LayerLabelColor::yellow), (OVColor{0.93, 0.78, 0.25, 1}));
  EXPECT_EQ(color(LayerLabelColor::orange), (OVColor{0.95, 0.58, 0.24, 1}));
  EXPECT_EQ(color(LayerLabelColor::red), (OVColor{0.92, 0.34, 0.34, 1}));
  EXPECT_EQ(color(LayerLabelColor::purple), (OVColor{0.62, 0.42, 0.93, 1}));
}

TEST(LayerStyleTest, SuggestedLabelPerKind) {
  using L = LayerLabelColor;
  const std::vector<LayerLabelColor> expected = {L::blue,   L::green,  L::purple, L::yellow,
                                                 L::teal,   L::orange, L::red,    L::blue};
  const auto kinds = allCases<LayerKind>();
  for (std::size_t i = 0; i < kinds.size(); ++i)
    EXPECT_EQ(suggestedLabelColorFor(kinds[i]), expected[i]) << rawValue(kinds[i]);
}

TEST(LayerStyleTest, BlendModesNameTheirFilter) {
  EXPECT_EQ(blendFilterName(OVBlendMode::normal), "");
  EXPECT_EQ(blendFilterName(OVBlendMode::multiply), "CIMultiplyBlendMode");
  EXPECT_EQ(blendFilterName(OVBlendMode::screen), "CIScreenBlendMode");
  EXPECT_EQ(blendFilterName(OVBlendMode::overlay), "CIOverlayBlendMode");
  EXPECT_EQ(blendFilterName(OVBlendMode::softLight), "CISoftLightBlendMode");
  EXPECT_EQ(blendFilterName(OVBlendMode::hardLight), "CIHardLightBlendMode");
  EXPECT_EQ(blendFilterName(OVBlendMode::darken), "CIDarkenBlendMode");
  EXPECT_EQ(blendFilterName(OVBlendMode::lighten), "CILightenBlendMode");
  EXPECT_EQ(blendFilterName(OVBlendMode::difference), "CIDifferenceBlendMode");
  EXPECT_EQ(blendFilterName(OVBlendMode::add), "CIAdditionCompositing");
}

}  // namespace
}  // namespace orvane::core
