#pragma once
// Decoded video pictures to 8-bit BGRA with swscale, in the colours the
// stream means: its matrix (BT.709 when the file says so or for HD and
// larger, BT.601 for SD when it says nothing) and its range (limited or
// full). The scaling context is kept between frames of one stream. Owned by
// one decoder; one thread at a time. Internal to media/.

extern "C" {
#include <libavutil/frame.h>
}

#include <cstdint>
#include <span>

struct SwsContext;

namespace orvane::media {

// How a frame's colours are coded: the matrix's red and blue weights and
// whether the codes use the full 0 ... 255 range.
struct ColourCoding {
  double kr = 0.299;
  double kb = 0.114;
  bool fullRange = false;
};

// The frame's own matrix and range; an unnamed matrix is BT.709 for HD and
// larger, BT.601 below.
ColourCoding colourCodingOf(const AVFrame& frame);

class FrameConverter {
 public:
  FrameConverter() = default;
  ~FrameConverter();
  FrameConverter(const FrameConverter&) = delete;
  FrameConverter& operator=(const FrameConverter&) = delete;

  // Writes frame scaled to width × height into out (rows bytesPerRow apart,
  // from the top). False when swscale refuses the format or sizes.
  bool toBgra(const AVFrame& frame, int width, int height, std::span<std::uint8_t> out, int bytesPerRow);

 private:
  SwsContext* context_ = nullptr;
  // What the context was set up for.
  int srcWidth_ = 0, srcHeight_ = 0, srcFormat_ = -1, dstWidth_ = 0, dstHeight_ = 0;
  int colorspace_ = -1, fullRange_ = -1;
};

}  // namespace orvane::media
