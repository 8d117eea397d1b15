#include "render/text_shadow.hpp"

#include <QPainter>
#include <QPen>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace orvane::render {

namespace {

// Radii of three box blurs whose succession has the variance of a Gaussian
// of sigma (boxes of two neighbouring odd widths).
std::array<int, 3> boxRadii(double sigma) {
  constexpr int kPasses = 3;
  const double ideal = std::sqrt(12 * sigma * sigma / kPasses + 1);
  int lower = static_cast<int>(std::floor(ideal));
  if (lower % 2 == 0) --lower;
  const double wl = lower;
  const double lowerCount = std::round((12 * sigma * sigma - kPasses * wl * wl - 4 * kPasses * wl - 3 * kPasses) /
                                       (-4 * wl - 4));
  std::array<int, 3> radii{};
  for (int i = 0; i < kPasses; ++i) radii[i] = ((i < lowerCount ? lower : lower + 2) - 1) / 2;
  return radii;
}

// A value of 0 ... 255 (or a little past, from float sums) as a byte,
// rounded to nearest.
inline uchar byteOf(float v) { return static_cast<uchar>(std::clamp(v, 0.0f, 255.0f) + 0.5f); }

struct Plane {
  std::vector<float> values;
  int width = 0;
  int height = 0;
  float* row(int y) { return values.data() + static_cast<std::ptrdiff_t>(y) * width; }
};

// A running box sum along each row of source into target; zero outside.
void boxRows(Plane& source, Plane& target, int radius, WorkerPool& pool) {
  const float scale = 1.0f / static_cast<float>(2 * radius + 1);
  const int width = source.width;
  pool.forEachBand(0, source.height, width, [&](int first, int last) {
    for (int y = first; y < last; ++y) {
      const float* in = source.row(y);
      float* out = target.row(y);
      float sum = 0;
      for (int x = 0; x <= std::min(radius, width - 1); ++x) sum += in[x];
      for (int x = 0; x < width; ++x) {
        out[x] = sum * scale;
        if (x + radius + 1 < width) sum += in[x + radius + 1];
        if (x - radius >= 0) sum -= in[x - radius];
      }
    }
  });
}

// The same down each column, a band of columns at a time with one running
// sum per column, so that rows are read in order.
void boxColumns(Plane& source, Plane& target, int radius, WorkerPool& pool) {
  const float scale = 1.0f / static_cast<float>(2 * radius + 1);
  const int height = source.height;
  pool.forEachBand(0, source.width, height, [&](int first, int last) {
    std::vector<float> sums(static_cast<std::size_t>(last - first), 0.0f);
    const auto addRow = [&](int y, float sign) {
      const float* in = source.row(y) + first;
      for (int i = 0; i < last - first; ++i) sums[i] += sign * in[i];
    };
    for (int y = 0; y <= std::min(radius, height - 1); ++y) addRow(y, 1.0f);
    for (int y = 0; y < height; ++y) {
      float* out = target.row(y) + first;
      for (int i = 0; i < last - first; ++i) out[i] = sums[i] * scale;
      if (y + radius + 1 < height) addRow(y + radius + 1, 1.0f);
      if (y - radius >= 0) addRow(y - radius, -1.0f);
    }
  });
}

}  // namespace

void blurAlphaBitmap(QImage& alpha, double sigma, WorkerPool& pool) {
  if (!(sigma > 0) || alpha.isNull() || alpha.format() != QImage::Format_Alpha8) return;
  Plane a{std::vector<float>(static_cast<std::size_t>(alpha.width()) * alpha.height()), alpha.width(), alpha.height()};
  Plane b{std::vector<float>(a.values.size()), a.width, a.height};
  for (int y = 0; y < a.height; ++y) std::copy_n(alpha.constScanLine(y), a.width, a.row(y));
  const std::array<int, 3> radii = boxRadii(sigma);
  boxRows(a, b, radii[0], pool);
  boxRows(b, a, radii[1], pool);
  boxRows(a, b, radii[2], pool);
  boxColumns(b, a, radii[0], pool);
  boxColumns(a, b, radii[1], pool);
  boxColumns(b, a, radii[2], pool);
  for (int y = 0; y < a.height; ++y) {
    uchar* out = alpha.scanLine(y);
    const float* in = a.row(y);
    for (int x = 0; x < a.width; ++x) out[x] = byteOf(in[x]);
  }
}

void drawTextShadow(QImage& bitmap, const QPainterPath& glyphs, const QColor& fillColor,
                    const std::optional<TextStroke>& stroke, const TextShadow& shadow, WorkerPool& pool) {
  QImage coverage(bitmap.size(), QImage::Format_Alpha8);
  if (coverage.isNull()) return;
  coverage.fill(0);
  {
    QPainter painter(&coverage);
    painter.setRenderHint(QPainter::Antialiasing);
    // The offset is y-up; the bitmap runs top-down.
    const double dx = std::isfinite(shadow.offset.x) ? shadow.offset.x : 0;
    const double dy = std::isfinite(shadow.offset.y) ? shadow.offset.y : 0;
    painter.translate(dx, -dy);
    painter.fillPath(glyphs, QColor(0, 0, 0, fillColor.alpha()));
    if (stroke) {
      painter.strokePath(glyphs, QPen(QColor(0, 0, 0, stroke->color.alpha()), stroke->width, Qt::SolidLine,
                                      Qt::FlatCap, Qt::RoundJoin));
    }
  }
  blurAlphaBitmap(coverage, shadow.blur / 2, pool);
  const float alpha = static_cast<float>(shadow.color.alphaF());
  const std::array<float, 4> tint{static_cast<float>(shadow.color.redF()) * alpha,
                                  static_cast<float>(shadow.color.greenF()) * alpha,
                                  static_cast<float>(shadow.color.blueF()) * alpha, alpha};
  // Rows are found from one base pointer: scanLine() may detach, which
  // isn't for worker threads.
  uchar* const pixels = bitmap.bits();
  const uchar* const masks = coverage.constBits();
  const qsizetype pixelStride = bitmap.bytesPerLine(), maskStride = coverage.bytesPerLine();
  pool.forEachBand(0, bitmap.height(), bitmap.width(), [&](int first, int last) {
    for (int y = first; y < last; ++y) {
      const uchar* mask = masks + y * maskStride;
      uchar* pixel = pixels + y * pixelStride;
      for (int x = 0; x < bitmap.width(); ++x, pixel += 4) {
        if (mask[x] == 0) continue;
        const float m = static_cast<float>(mask[x]) / 255.0f;
        const float keep = 1.0f - tint[3] * m;
        for (int c = 0; c < 4; ++c) {
          pixel[c] = byteOf(tint[c] * m * 255.0f + pixel[c] * keep);
        }
      }
    }
  });
}

}  // namespace orvane::render
