#include "render/text_layout_builder.hpp"

#include <QTextBoundaryFinder>
#include <algorithm>
#include <cmath>
#include <string>

#include "render/font_resolver.hpp"
#include "render/image.hpp"
#include "render/qimage_bridge.hpp"

namespace orvane::render {

namespace {

using core::TextContent;

// Lines without a width limit are laid out this wide: far past any picture
// the engine can make, well inside the layout engine's fixed-point range.
constexpr double kUnlimitedWidth = 4.0e6;

double finiteOr(double value, double fallback) { return std::isfinite(value) ? value : fallback; }

// The layout engine breaks lines only at U+2028 (or by wrapping); the
// content's breaks become that, keeping every UTF-16 position.
QString layoutString(const std::string& utf8) {
  QString text = QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text.at(i);
    if (c == u'\r' && i + 1 < text.size() && text.at(i + 1) == u'\n') {
      text[i] = QChar(0x200B);  // the pair breaks once, at its '\n'
    } else if (c == u'\n' || c == u'\r' || c == QChar::ParagraphSeparator || c == QChar(0x0085)) {
      text[i] = QChar::LineSeparator;
    }
  }
  return text;
}

// The em size the font is made at: a size that isn't above 0 is 12, as the
// platform's text system takes it; past what a picture can hold, capped.
double fontPixelSize(const TextContent& content) {
  if (!(content.fontSize > 0) || !std::isfinite(content.fontSize)) return 12.0;
  return std::min(content.fontSize, static_cast<double>(kMaxImageSide));
}

}  // namespace

QFont TextLayoutBuilder::fontFor(const TextContent& content) {
  return fontNamed(content.fontName, fontPixelSize(content));
}

int TextLayoutBuilder::revealedCount(double value, std::string_view string) {
  const QString text = QString::fromUtf8(string.data(), static_cast<qsizetype>(string.size()));
  int count = 0;
  QTextBoundaryFinder graphemes(QTextBoundaryFinder::Grapheme, text);
  while (graphemes.toNextBoundary() != -1) ++count;
  if (count == 0) return 0;
  if (value >= 100) return count;
  if (!(value > 0)) return 0;
  return static_cast<int>(std::clamp(std::ceil(value / 100 * count), 0.0, static_cast<double>(count)));
}

double TextLayoutBuilder::padding(const TextContent& content) {
  double p = 0;
  if (content.hasBackground()) p = std::max(p, content.backgroundPadding);
  if (content.hasStroke()) p = std::max(p, content.strokeWidth * 2);
  if (content.hasShadow) {
    p = std::max(p, content.shadowBlur * 2 + std::max(std::fabs(content.shadowOffset.x), std::fabs(content.shadowOffset.y)));
  }
  return std::ceil(p);
}

AttributedText TextLayoutBuilder::attributedStringFor(const TextContent& content) {
  AttributedText text;
  text.string = layoutString(content.string);
  text.font = fontFor(content);
  const double letterSpacing = finiteOr(content.letterSpacing, 0);
  if (letterSpacing != 0) text.font.setLetterSpacing(QFont::AbsoluteSpacing, letterSpacing);
  text.alignment = content.alignment;
  text.lineSpacing = std::max(0.0, finiteOr(content.lineSpacing, 0));
  text.color = toQColor(content.color, Qt::white);
  if (content.hasStroke()) {
    // The stroke is a share of the font size (strokeWidth / max(1, fontSize)),
    // which comes back to strokeWidth for any size from 1 up.
    const double width = content.strokeWidth / std::max(1.0, content.fontSize) * fontPixelSize(content);
    text.stroke = TextStroke{toQColor(content.strokeColor, Qt::black), width};
  }
  if (content.hasShadow) {
    text.shadow = TextShadow{toQColor(content.shadowColor, Qt::black), content.shadowOffset, content.shadowBlur};
  }
  text.visibleEnd = static_cast<int>(text.string.size());
  return text;
}

AttributedText TextLayoutBuilder::attributedStringFor(const TextContent& content, int revealedCharacters) {
  AttributedText text = attributedStringFor(content);
  if (revealedCharacters < text.visibleEnd) text.visibleEnd = std::max(0, revealedCharacters);
  return text;
}

LaidOutText TextLayoutBuilder::layOut(const AttributedText& text, std::optional<double> widthLimit) {
  LaidOutText laid;
  laid.layout = std::make_unique<QTextLayout>(text.string, text.font);
  const bool wraps = widthLimit.has_value() && std::isfinite(*widthLimit);
  QTextOption option;
  option.setWrapMode(wraps ? QTextOption::WrapAtWordBoundaryOrAnywhere : QTextOption::ManualWrap);
  // Alignment is applied by the drawing within its own width; the engine
  // puts every line at its left edge, whatever the writing direction.
  option.setAlignment(Qt::AlignLeft | Qt::AlignAbsolute);
  laid.layout->setTextOption(option);
  laid.layout->setCacheEnabled(true);
  const double lineWidth = wraps ? std::clamp(*widthLimit, 0.0, kUnlimitedWidth) : kUnlimitedWidth;
  double y = 0;
  int lineCount = 0;
  laid.layout->beginLayout();
  for (QTextLine line = laid.layout->createLine(); line.isValid(); line = laid.layout->createLine()) {
    line.setLineWidth(lineWidth);
    if (lineCount > 0) y += text.lineSpacing;
    line.setPosition(QPointF(0, y));
    // A line fragment holds ascent, descent and the font's leading below.
    y += line.ascent() + line.descent() + std::max(0.0, line.leading());
    laid.width = std::max(laid.width, line.naturalTextWidth());
    ++lineCount;
  }
  laid.layout->endLayout();
  laid.height = text.string.isEmpty() ? 0 : y;
  if (text.string.isEmpty()) laid.width = 0;
  return laid;
}

core::OVSize TextLayoutBuilder::measure(const TextContent& content, std::optional<double> maxWidth) {
  const LaidOutText laid = layOut(attributedStringFor(content), maxWidth);
  const double pad = padding(content);
  return {std::ceil(laid.width) + 2 * pad, std::ceil(laid.height) + 2 * pad};
}

}  // namespace orvane::render
