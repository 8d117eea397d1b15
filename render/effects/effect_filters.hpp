#pragma once
// The image filters behind the catalog effects, each a plain function over
// pictures: the effects (effect_kernels.cpp) read their parameters, apply the
// neutral tests and the render scale, and call these. A filter returns a new
// picture or an ImageError; it never changes its input. Infinite pictures are
// refused with ImageError::unbounded by the filters that look at neighbours;
// the pointwise ones keep the extent and accept them. Any thread may call
// these; rows are split over the pool.

#include <expected>
#include <functional>

#include "core/geometry.hpp"
#include "render/image.hpp"
#include "render/worker_pool.hpp"

namespace orvane::render {

// A blur-like filter: input picture (finite, or clamped to its extent) and
// the finite region the caller keeps, to the filtered picture.
using AreaFilter = std::function<std::expected<Image, ImageError>(const Image& input, const PixelRect& region)>;

// extent grown by amount (rounded up) on every side; an amount that is not
// above 0 (NaN included) leaves it as it is. A huge amount gives a rectangle
// too large for a picture, never an overflow.
PixelRect grownBy(const PixelRect& extent, double amount);

// The shared shape of the blurs. spread false: the filter runs over the
// picture with its edges repeated outward, and the result is cropped to the
// picture's extent (hard edges, no fading). spread true: the filter runs over
// the picture as it is, and the result is cropped to the extent grown by
// reach, where it fades out. When the filter fails: the picture unchanged.
Image applyBlur(const Image& image, bool spread, double reach, const AreaFilter& filter);

// CIColorControls on straight colour, in this order: saturation as a mix
// with the Rec. 709 luma (0 grey, 1 as is, above 1 more colourful),
// brightness added, contrast around mid grey: (c − 0.5) × contrast + 0.5.
// Alpha is kept. All three neutral (within 0.0001): image itself.
std::expected<Image, ImageError> colorControls(Image image, double brightness, double contrast, double saturation,
                                               WorkerPool& pool = WorkerPool::shared());

// Colour × 2^ev, alpha kept.
std::expected<Image, ImageError> exposureAdjust(Image image, double ev, WorkerPool& pool = WorkerPool::shared());

// Hue rotated by radians in the YIQ plane with Y (luma) kept: the chroma
// vector (I, Q) turns so that a positive angle moves red towards yellow and
// green, the direction of the hue wheel (red 0°, green 120°, blue 240°).
std::expected<Image, ImageError> hueAdjust(Image image, double radians, WorkerPool& pool = WorkerPool::shared());

// CITemperatureAndTint: the white point (temperature in kelvin, tint) of
// neutral becomes that of targetNeutral, by a Bradford (von Kries) cone
// scaling in linear light. The picture is drawn as if lit by the target's
// white: a target warmer (lower kelvin) than the neutral turns it orange,
// a cooler one blue; a target tint above the neutral's turns it magenta,
// below green. See white_point.hpp.
std::expected<Image, ImageError> temperatureAndTint(Image image, core::OVPoint neutral, core::OVPoint targetNeutral,
                                                    WorkerPool& pool = WorkerPool::shared());

// Each straight colour channel, clamped to 0 ... 1, quantised to `levels`
// evenly spaced values from 0 to 1 inclusive: round(c × (n − 1)) / (n − 1)
// with n = levels rounded, at least 2 and at most 256. Alpha kept.
std::expected<Image, ImageError> colorPosterize(Image image, double levels, WorkerPool& pool = WorkerPool::shared());

// Straight colour c becomes 1 − c; alpha kept.
std::expected<Image, ImageError> colorInvert(Image image, WorkerPool& pool = WorkerPool::shared());

// Linear mix of the premultiplied pixels, from `from` at time 0 to `to` at
// time 1 (time clamped to 0 ... 1); the extent is the union of both.
std::expected<Image, ImageError> dissolveTransition(const Image& from, const Image& to, double time,
                                                    WorkerPool& pool = WorkerPool::shared());

// CIAdditionCompositing of top, its four components × topWeight (the
// opacity colour matrix), with bottom: the sum clamped to 0 ... 1, over rect
// only. One pass, no picture in between.
std::expected<Image, ImageError> additionCompositing(const Image& top, double topWeight, const Image& bottom,
                                                     const PixelRect& rect, WorkerPool& pool = WorkerPool::shared());

// The keying programs, run per pixel on the straight colour s:
//   chroma: alpha = smoothstep(threshold, threshold + softness, distance(s.rgb, keyColor)),
//           1 − alpha when invertMatte > 0.5;
//   luma:   luma = dot(s.rgb, (0.2126, 0.7152, 0.0722)),
//           alpha = smoothstep(threshold − softness, threshold + softness, luma) when keyDarker > 0.5,
//           else 1 − that;
// and the result vec4(s.rgb, s.a × alpha) is stored premultiplied. So the
// colour stays and only the matte changes. (Run on premultiplied samples,
// the program would leave colour where alpha is gone, and keyed-out pixels
// would add to whatever lies below; for opaque footage both readings give
// the same matte.) Arithmetic in 32-bit floats, smoothstep as in GLSL.
std::expected<Image, ImageError> chromaKey(Image image, core::OVColor keyColor, double threshold, double softness,
                                           bool invertMatte, WorkerPool& pool = WorkerPool::shared());
std::expected<Image, ImageError> lumaKey(Image image, double threshold, double softness, bool keyDarker,
                                         WorkerPool& pool = WorkerPool::shared());

// CIMotionBlur: the average of the picture along a line of `length` pixels
// centred on each pixel, at `radians` from the x axis (a box along the line,
// sampled one pixel apart along its longer axis with linear interpolation
// across the other). Computed over region (finite); the picture is
// transparent outside its extent, or repeats its edges when clamped.
// Lengths past 2048 pixels count as 2048.
std::expected<Image, ImageError> motionBlur(const Image& image, double length, double radians,
                                            const PixelRect& region, WorkerPool& pool = WorkerPool::shared());

// CISharpenLuminance: luma sharpened by unsharp masking, Y' = Y + sharpness ×
// (Y − Gaussian(Y)) with sigma kSharpenSigma over the edge-repeated picture,
// the difference (times alpha, so transparent pixels stay so) added to
// red, green and blue alike (chroma kept). Over the picture's extent.
inline constexpr double kSharpenSigma = 1.69;
std::expected<Image, ImageError> sharpenLuminance(const Image& image, double sharpness,
                                                  WorkerPool& pool = WorkerPool::shared());

// CIMorphologyRectangleMaximum / Minimum: each component the largest (or
// smallest) over a width × height rectangle centred on the pixel, each side
// rounded to an odd number of pixels (2 × floor(side / 2) + 1), on the
// edge-repeated picture, over its extent. Van Herk / Gil-Werman: three
// comparisons a pixel per axis whatever the size.
std::expected<Image, ImageError> morphologyRectangle(const Image& image, double width, double height, bool maximum,
                                                     WorkerPool& pool = WorkerPool::shared());

// CIPixellate: square cells of `scale` pixels, the grid anchored so that
// cell edges fall on center ± k × scale; a pixel belongs to the cell its
// centre lies in, and every cell takes the average of its pixels inside the
// extent. Over the picture's extent.
std::expected<Image, ImageError> pixellate(const Image& image, double scale, core::OVPoint center,
                                           WorkerPool& pool = WorkerPool::shared());

// CIEdges: per colour channel the Sobel gradient magnitude of the
// premultiplied, edge-repeated picture (a unit step gives 1) × intensity,
// clamped to 0 ... 1; alpha is the larger of the source alpha and the three
// edges, so edges show even where the picture is transparent. Over the
// extent.
std::expected<Image, ImageError> edges(const Image& image, double intensity, WorkerPool& pool = WorkerPool::shared());

// CIComicEffect: flattened colours with inked edges. The picture is
// smoothed (Gaussian, sigma kComicSmoothing, edges repeated); the value
// (largest straight channel) of the smoothed colour is rounded to quarters,
// hue and saturation kept; where the Sobel magnitude of the smoothed luma
// rises from 0.12 to 0.3 the colour darkens to black. Alpha kept. Over the
// extent.
inline constexpr double kComicSmoothing = 1.5;
std::expected<Image, ImageError> comicEffect(const Image& image, WorkerPool& pool = WorkerPool::shared());

}  // namespace orvane::render
