#pragma once
// Turns composed pictures into encoder frames: the float, premultiplied,
// y-up picture is written into an 8- or 16-bit RGBA buffer (straight alpha
// for pixel formats that carry alpha, which expect it; over black otherwise)
// and swscale converts that to the encoder's format and size in BT.709,
// limited range. Buffers and the scaler are made once and reused for every
// frame. Owned and used by one thread (the video pump).

#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

#include "render/image.hpp"

struct SwsContext;

namespace orvane::export_ {

class PictureConverter {
 public:
  // Pictures of sourceWidth × sourceHeight into frames of width × height in
  // format. Fails (with a sentence) when swscale takes neither.
  static std::expected<PictureConverter, std::string> make(int sourceWidth, int sourceHeight, int width, int height,
                                                           AVPixelFormat format);
  PictureConverter(PictureConverter&&) noexcept;
  PictureConverter& operator=(PictureConverter&&) noexcept;
  ~PictureConverter();

  // Writes picture (read over (0, 0, source size); transparent where it has
  // no pixels) into frame, whose buffers must be allocated and writable.
  bool convert(const render::Image& picture, AVFrame& frame);

  bool keepsAlpha() const { return keepsAlpha_; }

 private:
  PictureConverter() = default;
  void writeWide(const render::Image& picture);

  SwsContext* scaler_ = nullptr;
  int sourceWidth_ = 0;
  int sourceHeight_ = 0;
  int stride_ = 0;           // bytes from one row of rgba_ to the next
  bool wide_ = false;        // 16 bits a component, for formats deeper than 8 bits
  bool keepsAlpha_ = false;  // straight alpha kept, else composed over black
  std::vector<std::uint8_t> rgba_;  // the intermediate picture, rows from the top, lent to source_
  std::unique_ptr<AVFrame, void (*)(AVFrame*)> source_{nullptr, nullptr};
};

}  // namespace orvane::export_
