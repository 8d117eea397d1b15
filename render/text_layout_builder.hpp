#pragma once
// Text layout shared by the text drawing and the editing surfaces: fonts,
// the margin that holds stroke, shadow and backing, the type-on count and
// the measured size. Needs the GUI runtime (gui_runtime.hpp). Stateless
// apart from a small table of resolved font names; any thread.
//
// Units: a font size is the em size in layer pixels (points at 72 dpi, one
// point a pixel), whatever the screen's resolution; letter spacing, line
// spacing, stroke width, shadow offset and blur are in layer pixels too.

#include <QColor>
#include <QFont>
#include <QString>
#include <QTextLayout>
#include <memory>
#include <optional>
#include <string_view>

#include "core/geometry.hpp"
#include "core/layer_content.hpp"

namespace orvane::render {

// The outline drawn over the glyphs, centred on their edges, together with
// their fill.
struct TextStroke {
  QColor color;
  double width = 0;
};

// A shadow of the visible glyphs: offset in y-up layer pixels, blurred with
// a Gaussian of standard deviation blur / 2.
struct TextShadow {
  QColor color;
  core::OVPoint offset;
  double blur = 0;
};

// A text's string with the attributes it is drawn with: what the layout and
// the drawing share. The string has the same UTF-16 positions as the
// content's, with line breaks in the form the layout engine wants.
struct AttributedText {
  QString string;
  QFont font;  // letter spacing included
  core::TextContent::Alignment alignment = core::TextContent::Alignment::left;
  double lineSpacing = 0;  // extra space between lines, never negative
  QColor color;
  std::optional<TextStroke> stroke;
  std::optional<TextShadow> shadow;
  // From this UTF-16 position on, characters keep their place in the layout
  // but are not drawn (no colour, no stroke, no shadow).
  int visibleEnd = 0;
};

// Text broken into lines: each line's top-left corner is placed at x = 0,
// from y = 0 downward (top-down coordinates), lineSpacing apart.
struct LaidOutText {
  std::unique_ptr<QTextLayout> layout;
  // The bounding rectangle of the line fragments, with font leading: the
  // widest line by the sum of line heights and the spacing between them.
  // Zero for an empty string.
  double width = 0;
  double height = 0;
};

struct TextLayoutBuilder {
  // The font that fontName names at fontSize. The name may be a family
  // ("Helvetica") or a PostScript-style "Family-Style" ("Helvetica-Bold",
  // "Avenir-HeavyOblique"); families known to fontconfig by another name
  // (Helvetica as Nimbus Sans) count as present. When no such family
  // exists: the system font in bold. A size that is not above 0 (or not a
  // number) is 12, as the platform's text system treats it.
  static QFont fontFor(const core::TextContent& content);

  // How many user-perceived characters of string show at a reveal of value
  // percent: all from 100, none at 0 or below, else value/100 × count
  // rounded up.
  static int revealedCount(double value, std::string_view string);

  // The margin around the text box that holds the backing, stroke and
  // shadow, rounded up.
  static double padding(const core::TextContent& content);

  // All of the text, drawn.
  static AttributedText attributedStringFor(const core::TextContent& content);
  // The text with only its first revealedCharacters UTF-16 units drawn (the
  // count is of user-perceived characters, so text beyond the basic plane
  // reveals behind its percentage; kept so on purpose). The layout is that
  // of the whole text either way.
  static AttributedText attributedStringFor(const core::TextContent& content, int revealedCharacters);

  // The text broken into lines at widthLimit (by words, and inside a word
  // longer than a line), or only at its line breaks without a limit.
  static LaidOutText layOut(const AttributedText& text, std::optional<double> widthLimit);

  // The size of the laid-out text, margin included; lines wrap at maxWidth
  // when given. Fits core::TextMeasure.
  static core::OVSize measure(const core::TextContent& content, std::optional<double> maxWidth);
};

}  // namespace orvane::render
