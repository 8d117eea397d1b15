#pragma once
// A named, coloured point in time on a composition or a layer. Plain value.

#include <string>

#include "core/geometry.hpp"
#include "core/ov_time.hpp"
#include "core/uuid.hpp"

namespace orvane::core {

struct Marker {
  Uuid id = Uuid::make();
  OVTime time;
  std::string name;
  OVColor color{1.0, 0.8, 0.2, 1};  // amber: reads on the dark timeline

  friend bool operator==(const Marker&, const Marker&) = default;
};
inline std::size_t hashValue(const Marker& m) { return hashAll(m.id, m.time, m.name, m.color); }

}  // namespace orvane::core
