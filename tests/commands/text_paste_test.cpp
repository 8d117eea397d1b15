#include "Commands/text_paste.hpp"

#include <gtest/gtest.h>

#include "tests/commands/commands_test_support.hpp"

namespace orvane::commands {
namespace {

using namespace testing_support;

MemoryPasteboard boardWith(std::string_view type, std::string data) {
  MemoryPasteboard board;
  board.setData(type, std::move(data));
  return board;
}

TEST(TextPasteTest, PlainMakesOneLineAndKeepingLayoutKeepsTheLines) {
  struct Case {
    std::string text;
    std::optional<std::string> plain, layout;
  };
  const Case cases[] = {
      {"First line\r\nSecond\tline\r\n", "First line Second line", "First line\nSecond\tline"},
      {"a\rb\u2028c\u2029d", "a b c d", "a\nb\nc\n\nd"},
      {"  \u00A0 lone\u3000word \n", "lone word", "lone\u3000word"},
      {" \r\n\u2029 ", std::nullopt, std::nullopt},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const MemoryPasteboard board = boardWith(Pasteboard::plainTextType, c.text);
    EXPECT_EQ(TextPasteboard::plain(board), c.plain);
    EXPECT_EQ(TextPasteboard::keepingLayout(board), c.layout);
  }
}

TEST(TextPasteTest, HtmlReadsAsTextWithItsWeight) {
  struct Case {
    std::string html, text;
    bool bold;
  };
  const Case cases[] = {
      {"<b>Hello</b>", "Hello", true},
      {"<strong>Hi</strong> <b>there</b>", "Hi there", true},
      {"<b>Hi</b> there", "Hi there", false},
      {R"(<span style="color:red; font-weight: 700">x</span>)", "x", true},
      {R"(<span style='font-weight:bold'><i>nested</i></span>)", "nested", true},
      {R"(<span style="font-weight:400">x</span>)", "x", false},
      {R"(<b style="font-weight:normal;" id="docs-guid"><span>x</span></b>)", "x", false},
      {"<h2>Title</h2>", "Title\n", true},
      {"<html><head><title>t</title><style>b{}</style></head><body><!--StartFragment--><p>One</p>"
       "<p>Two&nbsp;&lt;3&#33; &amp;&#x263A;</p></body></html>",
       "One\nTwo\u00A0<3! &\u263A\n", false},
      {"  Hello \n  <i>big</i>   world<br>again <pre>a  b\n</pre>", "Hello big world\nagain\na  b\n", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.html);
    const auto paste = TextPasteboard::read(boardWith(Pasteboard::richTextType, c.html));
    ASSERT_TRUE(paste.has_value());
    EXPECT_EQ(paste->string, c.text);
    EXPECT_EQ(paste->isEntirelyBold, c.bold);
  }
}

TEST(TextPasteTest, RichTextWinsOverPlainTextWhenItHoldsText) {
  MemoryPasteboard board = boardWith(Pasteboard::plainTextType, "plain");
  EXPECT_EQ(TextPasteboard::read(board), (TextPasteboard::Paste{"plain", false}));
  board.setData(Pasteboard::richTextType, "<b>rich</b>");
  EXPECT_EQ(TextPasteboard::read(board), (TextPasteboard::Paste{"rich", true}));
  board.setData(Pasteboard::richTextType, "<img src=x>");
  EXPECT_EQ(TextPasteboard::read(board), (TextPasteboard::Paste{"plain", false}));
  EXPECT_FALSE(TextPasteboard::has(MemoryPasteboard()));
}

TEST(TextPasteTest, BoldFaceOfAFontName) {
  const std::pair<std::string, std::optional<std::string>> cases[] = {
      {"Helvetica", "Helvetica-Bold"},         {"Helvetica-Bold", "Helvetica-Bold"},
      {"Arial", "Arial-Bold"},                 {"Avenir-Medium", "Avenir-Bold"},
      {"Avenir-Heavy", "Avenir-Heavy"},        {"Helvetica-Oblique", "Helvetica-BoldOblique"},
      {"Times-BoldItalic", "Times-BoldItalic"}, {"", std::nullopt},
  };
  for (const auto& [font, bold] : cases) EXPECT_EQ(TextPasteboard::boldFace(font), bold) << font;
}

TEST(TextPasteTest, PasteTextReplacesTheStringAndMayTurnTheFontBold) {
  TextContent text;
  text.string = "Old";
  text.fontName = "Helvetica";
  const Layer title = clip("Title", 0, 5, LayerContent::text(text)), solid = clip("Solid", 0, 5);
  ProjectDocument doc(projectWith({title, solid}));
  UndoStack undo;
  const auto content = [&] { return *doc.activeComposition()->layer(title.id)->content.textContent(); };
  const MemoryPasteboard board = boardWith(Pasteboard::richTextType, "<p><b>Big</b></p><p><b>News</b></p>");

  expectUndoableEdit(doc, undo, "Edit Text", [&] { pasteText(doc, title.id, false, board, &undo); });
  EXPECT_EQ(content().string, "Big News");
  EXPECT_EQ(content().fontName, "Helvetica");
  expectUndoableEdit(doc, undo, "Edit Text", [&] { pasteText(doc, title.id, true, board, &undo); });
  EXPECT_EQ(content().string, "Big\nNews");
  EXPECT_EQ(content().fontName, "Helvetica-Bold");
  expectNoEdit(doc, undo, [&] { pasteText(doc, solid.id, true, board, &undo); });
  expectNoEdit(doc, undo, [&] { pasteText(doc, title.id, true, MemoryPasteboard(), &undo); });
}

}  // namespace
}  // namespace orvane::commands
