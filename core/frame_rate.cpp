#include "core/frame_rate.hpp"

#include <cmath>
#include <cstdio>

#include "core/fatal.hpp"
#include "core/numeric.hpp"

namespace orvane::core {

namespace {

void requirePositive(std::int32_t numerator, std::int32_t denominator) {
  if (numerator <= 0 || denominator <= 0) fatalError(kFrameRateMustBePositive);
}

}  // namespace

FrameRate::FrameRate(std::int32_t numerator, std::int32_t denominator)
    : numerator(numerator), denominator(denominator) {
  requirePositive(numerator, denominator);
}

FrameRate FrameRate::fromFPS(double fps) {
  for (const FrameRate& rate : standardRates)
    if (std::fabs(rate.fps() - fps) < 0.005) return rate;
  return FrameRate(checkedInt32(roundHalfAway(fps * 1000.0)), 1000);
}

double FrameRate::fps() const {
  requirePositive(numerator, denominator);
  return static_cast<double>(numerator) / static_cast<double>(denominator);
}

std::int64_t FrameRate::frameIndexAt(const OVTime& t) const {
  return checkedInt64(std::floor(t.seconds() * fps() + 0.000001));
}

OVTime FrameRate::timeForFrame(std::int64_t n) const {
  requirePositive(numerator, denominator);
  return OVTime(checkedMul(n, denominator), numerator);
}

std::int64_t FrameRate::frameCountFor(const OVTime& duration) const {
  return roundedInt64(duration.seconds() * fps());
}

std::string FrameRate::displayName() const {
  char buffer[64];
  if (denominator == 1) {
    std::snprintf(buffer, sizeof buffer, "%d fps", numerator);
  } else {
    std::snprintf(buffer, sizeof buffer, "%.3f fps", fps());
  }
  return buffer;
}

}  // namespace orvane::core
