#pragma once
// The soft shadow of drawn text: the glyphs' coverage, offset, blurred and
// tinted, composited into the bitmap beneath the text. Any thread; a call
// splits its rows over the worker pool.

#include <QImage>
#include <QPainterPath>
#include <optional>

#include "render/text_layout_builder.hpp"
#include "render/worker_pool.hpp"

namespace orvane::render {

// Blurs an 8-bit alpha bitmap (Format_Alpha8) with three box passes each
// way, a close match to a Gaussian of standard deviation sigma; outside the
// bitmap counts as transparent. A sigma of 0 or less, or not a number,
// leaves it as it is.
void blurAlphaBitmap(QImage& alpha, double sigma, WorkerPool& pool = WorkerPool::shared());

// Composites the shadow of glyphs (a path in the bitmap's top-down pixel
// coordinates, filled with fillColor's alpha and stroked by stroke) over
// bitmap (Format_RGBA8888_Premultiplied), source-over.
void drawTextShadow(QImage& bitmap, const QPainterPath& glyphs, const QColor& fillColor,
                    const std::optional<TextStroke>& stroke, const TextShadow& shadow,
                    WorkerPool& pool = WorkerPool::shared());

}  // namespace orvane::render
