#include "export/pixel_conversion.hpp"

#include <algorithm>
#include <thread>
#include <utility>

extern "C" {
#include <libavutil/macros.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include "render/rgba8.hpp"
#include "render/worker_pool.hpp"

namespace orvane::export_ {

namespace {

void freeFrame(AVFrame* frame) { av_frame_free(&frame); }

// The converter owns rgba_; the buffer reference only lends it to swscale.
void keepStorage(void*, std::uint8_t*) {}

// Rows start on this many bytes so that swscale keeps to its aligned path;
// the same again follows the last row for its vector reads past the end.
constexpr int kRowAlignment = 64;

inline std::uint16_t toWord(float component) {
  const float c = component > 0 ? (component < 1.0f ? component : 1.0f) : 0.0f;
  return static_cast<std::uint16_t>(c * 65535.0f + 0.5f);
}

template <bool straight>
void writeWideRow(const render::Rgba* in, int count, std::uint16_t* out) {
  for (int x = 0; x < count; ++x) {
    render::Rgba p = in[x];
    if (straight && p.a != 1.0f) {
      const float inverse = p.a > 0 ? 1.0f / p.a : 0.0f;
      p.r *= inverse;
      p.g *= inverse;
      p.b *= inverse;
    }
    out[4 * x] = toWord(p.r);
    out[4 * x + 1] = toWord(p.g);
    out[4 * x + 2] = toWord(p.b);
    out[4 * x + 3] = toWord(p.a);
  }
}

}  // namespace

std::expected<PictureConverter, std::string> PictureConverter::make(int sourceWidth, int sourceHeight, int width,
                                                                    int height, AVPixelFormat format) {
  const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
  if (descriptor == nullptr || sourceWidth < 1 || sourceHeight < 1 || width < 1 || height < 1) {
    return std::unexpected("The picture format is not supported.");
  }
  PictureConverter converter;
  converter.sourceWidth_ = sourceWidth;
  converter.sourceHeight_ = sourceHeight;
  converter.wide_ = descriptor->comp[0].depth > 8;
  converter.keepsAlpha_ = (descriptor->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
  const AVPixelFormat sourceFormat = converter.wide_ ? AV_PIX_FMT_RGBA64LE : AV_PIX_FMT_BGRA;
  const int bytesPerPixel = converter.wide_ ? 8 : 4;
  converter.stride_ = FFALIGN(sourceWidth * bytesPerPixel, kRowAlignment);
  converter.rgba_.resize(static_cast<std::size_t>(converter.stride_) * sourceHeight + kRowAlignment);

  SwsContext* scaler = sws_alloc_context();
  if (scaler == nullptr) return std::unexpected("The picture format is not supported.");
  converter.scaler_ = scaler;
  av_opt_set_int(scaler, "srcw", sourceWidth, 0);
  av_opt_set_int(scaler, "srch", sourceHeight, 0);
  av_opt_set_int(scaler, "src_format", sourceFormat, 0);
  av_opt_set_int(scaler, "dstw", width, 0);
  av_opt_set_int(scaler, "dsth", height, 0);
  av_opt_set_int(scaler, "dst_format", format, 0);
  av_opt_set_int(scaler, "sws_flags", SWS_BICUBIC, 0);
  // The compositor leaves the cores idle while the frame is converted.
  av_opt_set_int(scaler, "threads", std::max(1u, std::thread::hardware_concurrency()), 0);
  if (sws_init_context(scaler, nullptr, nullptr) < 0) return std::unexpected("The picture format is not supported.");
  // Pictures are sRGB in full range; video players expect BT.709 in limited range.
  const int* matrix = sws_getCoefficients(SWS_CS_ITU709);
  sws_setColorspaceDetails(scaler, matrix, 1, matrix, 0, 0, 1 << 16, 1 << 16);

  converter.source_ = {av_frame_alloc(), freeFrame};
  if (!converter.source_) return std::unexpected("The picture format is not supported.");
  AVFrame& source = *converter.source_;
  source.format = sourceFormat;
  source.width = sourceWidth;
  source.height = sourceHeight;
  source.data[0] = converter.rgba_.data();
  source.linesize[0] = converter.stride_;
  // swscale takes a reference to its source frame: one that has a buffer is
  // shared, while one without is copied into a new buffer on every frame.
  source.buf[0] = av_buffer_create(converter.rgba_.data(), converter.rgba_.size(), keepStorage, nullptr, 0);
  if (source.buf[0] == nullptr) return std::unexpected("The picture format is not supported.");
  return converter;
}

PictureConverter::PictureConverter(PictureConverter&& other) noexcept
    : scaler_(std::exchange(other.scaler_, nullptr)),
      sourceWidth_(other.sourceWidth_),
      sourceHeight_(other.sourceHeight_),
      stride_(other.stride_),
      wide_(other.wide_),
      keepsAlpha_(other.keepsAlpha_),
      rgba_(std::move(other.rgba_)),
      source_(std::move(other.source_)) {
  // The source frame points into rgba_, whose storage moved along with it.
}

PictureConverter& PictureConverter::operator=(PictureConverter&& other) noexcept {
  if (this != &other) {
    sws_freeContext(scaler_);
    scaler_ = std::exchange(other.scaler_, nullptr);
    sourceWidth_ = other.sourceWidth_;
    sourceHeight_ = other.sourceHeight_;
    stride_ = other.stride_;
    wide_ = other.wide_;
    keepsAlpha_ = other.keepsAlpha_;
    rgba_ = std::move(other.rgba_);
    source_ = std::move(other.source_);
  }
  return *this;
}

PictureConverter::~PictureConverter() { sws_freeContext(scaler_); }

void PictureConverter::writeWide(const render::Image& picture) {
  const int width = sourceWidth_, height = sourceHeight_;
  auto* words = reinterpret_cast<std::uint16_t*>(rgba_.data());
  render::WorkerPool::shared().forEachBand(0, height, width, [&](int first, int last) {
    // One row of floats per thread, kept between frames.
    thread_local std::vector<render::Rgba> row;
    if (row.size() < static_cast<std::size_t>(width)) row.resize(static_cast<std::size_t>(width));
    for (int i = first; i < last; ++i) {
      render::readRow(picture, height - 1 - i, 0, width, row.data());
      std::uint16_t* out = words + static_cast<std::size_t>(i) * (stride_ / 2);
      if (keepsAlpha_) {
        writeWideRow<true>(row.data(), width, out);
      } else {
        writeWideRow<false>(row.data(), width, out);
      }
    }
  });
}

bool PictureConverter::convert(const render::Image& picture, AVFrame& frame) {
  if (wide_) {
    writeWide(picture);
  } else {
    const render::Rgba8Format format{keepsAlpha_ ? render::AlphaForm::straight : render::AlphaForm::premultiplied,
                                     render::ChannelOrder::bgra};
    const render::PixelRect region{0, 0, sourceWidth_, sourceHeight_};
    if (!render::writeRgba8(picture, region, rgba_, static_cast<std::size_t>(stride_), format)) return false;
  }
  return sws_scale_frame(scaler_, &frame, source_.get()) >= 0;
}

}  // namespace orvane::export_
