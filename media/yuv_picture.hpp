#pragma once
// The common case of decoded video, 8-bit 4:2:0 planar pictures, straight
// into the renderer's float picture in one pass over the worker threads:
// no 8-bit RGB picture in between. The colour matrix and range are those
// FrameConverter would use. Internal to media/; any thread.

extern "C" {
#include <libavutil/frame.h>
}

#include <optional>

#include "render/image.hpp"

namespace orvane::media {

// Whether yuvPicture takes frames of this format.
bool isPlanar420(const AVFrame& frame);

// The frame at its own size, y-up and opaque, the extent at the origin;
// none for other formats or when the picture can't be allocated.
std::optional<render::Image> yuvPicture(const AVFrame& frame,
                                        render::WorkerPool& pool = render::WorkerPool::shared());

}  // namespace orvane::media
