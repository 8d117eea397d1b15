#pragma once
// The soft shadow of drawn text: the glyphs' coverage in the shadow colour,
// offset, blurred with the engine's Gaussian and composited into the bitmap
// beneath the text. Any thread; the blur splits its rows over the pool.

#include <QImage>
#include <QPainterPath>
#include <optional>

#include "render/text_layout_builder.hpp"
#include "render/worker_pool.hpp"

namespace orvane::render {

// Composites the shadow of glyphs (a path in the bitmap's top-down pixel
// coordinates, filled with fillColor's alpha and stroked by stroke) over
// bitmap (Format_RGBA8888_Premultiplied), source-over. The blur is a
// Gaussian of standard deviation shadow.blur / 2. When the shadow can't be
// made (no memory), the bitmap is left as it was.
void drawTextShadow(QImage& bitmap, const QPainterPath& glyphs, const QColor& fillColor,
                    const std::optional<TextStroke>& stroke, const TextShadow& shadow,
                    WorkerPool& pool = WorkerPool::shared());

}  // namespace orvane::render
