#pragma once
// Non-drop-frame timecode "HH:MM:SS:FF" at a frame rate's nominal (rounded)
// frame count per second, 29.97 and 59.94 included. Plain value.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/frame_rate.hpp"

namespace orvane::core {

struct Timecode {
  FrameRate frameRate;

  // fps rounded half away from zero: 30 for 29.97, 24 for 23.976.
  std::int64_t nominalFPS() const;
  // "01:02:03:04"; negative times show as zero; hours never wrap.
  std::string stringFor(const OVTime& t) const;
  // As stringFor, with one leading "00:" removed.
  std::string shortStringFor(const OVTime& t) const;
  // Parses 2 to 4 ":"-separated integers, right-aligned to H:M:S:F; no value
  // on failure or when the frames field reaches the nominal rate.
  std::optional<OVTime> timeFrom(std::string_view text) const;

  friend bool operator==(const Timecode&, const Timecode&) = default;
};

}  // namespace orvane::core
