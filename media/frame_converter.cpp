#include "media/frame_converter.hpp"

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace orvane::media {

namespace {

// The deprecated "J" formats are the plain ones at full range; swscale
// warns about them, so they are named by their plain format.
AVPixelFormat plainFormat(AVPixelFormat format, bool& fullRange) {
  switch (format) {
    case AV_PIX_FMT_YUVJ420P: fullRange = true; return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P: fullRange = true; return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P: fullRange = true; return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ440P: fullRange = true; return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ411P: fullRange = true; return AV_PIX_FMT_YUV411P;
    default: return format;
  }
}

int matrixFor(const AVFrame& frame) {
  switch (frame.colorspace) {
    case AVCOL_SPC_BT709: return SWS_CS_ITU709;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M: return SWS_CS_ITU601;
    case AVCOL_SPC_SMPTE240M: return SWS_CS_SMPTE240M;
    case AVCOL_SPC_FCC: return SWS_CS_FCC;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL: return SWS_CS_BT2020;
    default: return frame.width >= 1280 || frame.height >= 720 ? SWS_CS_ITU709 : SWS_CS_ITU601;
  }
}

}  // namespace

ColourCoding colourCodingOf(const AVFrame& frame) {
  bool fullRange = frame.color_range == AVCOL_RANGE_JPEG;
  plainFormat(static_cast<AVPixelFormat>(frame.format), fullRange);
  switch (matrixFor(frame)) {
    case SWS_CS_ITU709: return {0.2126, 0.0722, fullRange};
    case SWS_CS_SMPTE240M: return {0.212, 0.087, fullRange};
    case SWS_CS_FCC: return {0.30, 0.11, fullRange};
    case SWS_CS_BT2020: return {0.2627, 0.0593, fullRange};
    default: return {0.299, 0.114, fullRange};
  }
}

FrameConverter::~FrameConverter() { sws_freeContext(context_); }

bool FrameConverter::toBgra(const AVFrame& frame, int width, int height, std::span<std::uint8_t> out,
                            int bytesPerRow) {
  if (width <= 0 || height <= 0 || frame.width <= 0 || frame.height <= 0) return false;
  if (out.size() < static_cast<std::size_t>(bytesPerRow) * height) return false;
  bool fullRange = frame.color_range == AVCOL_RANGE_JPEG;
  const AVPixelFormat format = plainFormat(static_cast<AVPixelFormat>(frame.format), fullRange);
  const int matrix = matrixFor(frame);
  if (!context_ || frame.width != srcWidth_ || frame.height != srcHeight_ || format != srcFormat_ ||
      width != dstWidth_ || height != dstHeight_) {
    context_ = sws_getCachedContext(context_, frame.width, frame.height, format, width, height, AV_PIX_FMT_BGRA,
                                    SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!context_) return false;
    srcWidth_ = frame.width, srcHeight_ = frame.height, srcFormat_ = format;
    dstWidth_ = width, dstHeight_ = height;
    colorspace_ = fullRange_ = -1;
  }
  if (matrix != colorspace_ || int(fullRange) != fullRange_) {
    // RGB output is always full range; only the source side changes.
    const bool isYuv = !(av_pix_fmt_desc_get(format)->flags & AV_PIX_FMT_FLAG_RGB);
    sws_setColorspaceDetails(context_, sws_getCoefficients(matrix), isYuv ? fullRange : 1,
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
    colorspace_ = matrix, fullRange_ = fullRange;
  }
  std::uint8_t* dst[4] = {out.data(), nullptr, nullptr, nullptr};
  const int dstStride[4] = {bytesPerRow, 0, 0, 0};
  return sws_scale(context_, frame.data, frame.linesize, 0, frame.height, dst, dstStride) == height;
}

}  // namespace orvane::media
