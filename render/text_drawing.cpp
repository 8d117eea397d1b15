#include "render/text_drawing.hpp"

#include <QGlyphRun>
#include <QPainter>
#include <QPen>
#include <QRawFont>
#include <algorithm>
#include <cmath>

#include "render/qimage_bridge.hpp"
#include "render/text_shadow.hpp"

namespace orvane::render {

namespace {

using Alignment = core::TextContent::Alignment;

double alignmentShift(Alignment alignment, double room) {
  switch (alignment) {
    case Alignment::left:
      return 0;
    case Alignment::center:
      return room / 2;
    case Alignment::right:
      return room;
  }
  return 0;
}

// The sides of the text box: the box where one is set (its height a
// minimum), else the text's own bounds, whole pixels and at least 1.
core::OVSize layoutSize(const core::TextContent& content, const LaidOutText& laid) {
  const double textW = std::max(1.0, std::ceil(laid.width));
  const double textH = std::max(1.0, std::ceil(laid.height));
  if (!content.boxSize) return {textW, textH};
  const double height = content.boxSize->height > 0 ? std::max(textH, content.boxSize->height) : textH;
  return {std::max(1.0, content.boxSize->width), height};
}

}  // namespace

QPainterPath visibleGlyphOutlines(const LaidOutText& laid, int visibleEnd, Alignment alignment, double layoutWidth) {
  QPainterPath outlines;
  outlines.setFillRule(Qt::WindingFill);
  for (int i = 0; i < laid.layout->lineCount(); ++i) {
    const QTextLine line = laid.layout->lineAt(i);
    const int start = line.textStart();
    const int end = std::min(start + line.textLength(), visibleEnd);
    if (end <= start) continue;
    const QPointF shift(alignmentShift(alignment, layoutWidth - line.naturalTextWidth()), 0);
    // Runs cut at the reveal keep the positions of the whole line, so
    // kerning and ligatures across the cut don't move what shows.
    for (const QGlyphRun& run : line.glyphRuns(start, end - start)) {
      const QRawFont font = run.rawFont();
      const QList<quint32> glyphs = run.glyphIndexes();
      const QList<QPointF> positions = run.positions();
      for (qsizetype g = 0; g < glyphs.size() && g < positions.size(); ++g) {
        QPainterPath glyph = font.pathForGlyph(glyphs[g]);
        if (glyph.isEmpty()) continue;
        glyph.translate(positions[g] + shift);
        outlines.addPath(glyph);
      }
    }
  }
  return outlines;
}

std::optional<GeneratedImage> drawText(const core::TextContent& content, int revealedCharacters) {
  if (content.boxSize && !(std::isfinite(content.boxSize->width) && std::isfinite(content.boxSize->height))) {
    return std::nullopt;
  }
  const AttributedText text = TextLayoutBuilder::attributedStringFor(content, revealedCharacters);
  const double pad = TextLayoutBuilder::padding(content);
  const std::optional<double> widthLimit =
      content.boxSize ? std::optional<double>(std::max(1.0, content.boxSize->width)) : std::nullopt;
  const LaidOutText laid = TextLayoutBuilder::layOut(text, widthLimit);
  const core::OVSize layout = layoutSize(content, laid);
  const core::OVSize canvas{layout.width + 2 * pad, layout.height + 2 * pad};
  auto bitmap = makeBitmap(canvas);
  if (!bitmap) return std::nullopt;
  if (content.hasBackground()) bitmap->fill(toQColor(content.backgroundColor, Qt::black));

  // The box's top edge, pad below the canvas's top in y-up terms, in the
  // bitmap's top-down rows.
  const double top = bitmap->height() - pad - layout.height;
  const QPainterPath glyphs =
      visibleGlyphOutlines(laid, text.visibleEnd, text.alignment, layout.width).translated(pad, top);
  if (!glyphs.isEmpty()) {
    if (text.shadow) drawTextShadow(*bitmap, glyphs, text.color, text.stroke, *text.shadow);
    QPainter painter(&*bitmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(glyphs, text.color);
    if (text.stroke) {
      // Round joins keep the outline within its margin of twice the width.
      painter.strokePath(glyphs, QPen(text.stroke->color, text.stroke->width, Qt::SolidLine, Qt::FlatCap,
                                      Qt::RoundJoin));
    }
  }
  auto image = imageFromBitmap(*bitmap);
  if (!image) return std::nullopt;
  return GeneratedImage{std::move(*image), canvas};
}

}  // namespace orvane::render
