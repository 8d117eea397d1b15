#pragma once
// Frames per second as numerator/denominator, with the frame arithmetic of the
// timeline: frame index (floor with a tiny bias), frame-aligned times at the
// rate's own timescale, snapping and frame counts. Plain values.

#include <array>
#include <cstdint>
#include <string>

#include "core/hashing.hpp"
#include "core/ov_time.hpp"

namespace orvane::core {

struct FrameRate {
  std::int32_t numerator = 30;
  std::int32_t denominator = 1;

  constexpr FrameRate() = default;
  // A zero or negative part stops the program ("frame rate must be positive").
  FrameRate(std::int32_t numerator, std::int32_t denominator);
  // Unchecked, for values read from a file: a bad rate stops the program at
  // its first use instead.
  static constexpr FrameRate unchecked(std::int32_t numerator, std::int32_t denominator) {
    FrameRate r;
    r.numerator = numerator;
    r.denominator = denominator;
    return r;
  }
  // The first standard rate within 0.005 of fps, else fps × 1000 / 1000.
  static FrameRate fromFPS(double fps);

  static const FrameRate fps23_976, fps24, fps25, fps29_97, fps30, fps50, fps59_94, fps60;
  static const std::array<FrameRate, 8> standardRates;

  double fps() const;
  // One frame: denominator over numerator.
  OVTime frameDuration() const { return OVTime(denominator, numerator); }
  std::int32_t preferredTimescale() const { return numerator; }

  // floor(t.seconds × fps + 1e-6): the frame at or before t.
  std::int64_t frameIndexAt(const OVTime& t) const;
  // The canonical frame-aligned time: n × denominator over numerator.
  OVTime timeForFrame(std::int64_t n) const;
  // The start of the frame at or before t.
  OVTime snapped(const OVTime& t) const { return timeForFrame(frameIndexAt(t)); }
  // Frames in a duration, rounded to nearest (unlike frameIndexAt, which floors).
  std::int64_t frameCountFor(const OVTime& duration) const;
  // "30 fps", or "29.970 fps" when the denominator is not 1.
  std::string displayName() const;

  friend bool operator==(const FrameRate&, const FrameRate&) = default;
};

inline constexpr FrameRate FrameRate::fps23_976 = FrameRate::unchecked(24000, 1001);
inline constexpr FrameRate FrameRate::fps24 = FrameRate::unchecked(24, 1);
inline constexpr FrameRate FrameRate::fps25 = FrameRate::unchecked(25, 1);
inline constexpr FrameRate FrameRate::fps29_97 = FrameRate::unchecked(30000, 1001);
inline constexpr FrameRate FrameRate::fps30 = FrameRate::unchecked(30, 1);
inline constexpr FrameRate FrameRate::fps50 = FrameRate::unchecked(50, 1);
inline constexpr FrameRate FrameRate::fps59_94 = FrameRate::unchecked(60000, 1001);
inline constexpr FrameRate FrameRate::fps60 = FrameRate::unchecked(60, 1);
inline constexpr std::array<FrameRate, 8> FrameRate::standardRates = {
    fps23_976, fps24, fps25, fps29_97, fps30, fps50, fps59_94, fps60};

inline std::size_t hashValue(const FrameRate& r) { return hashAll(r.numerator, r.denominator); }

}  // namespace orvane::core
