#include "core/build_info.hpp"

// The build passes both; a build that does not (a stray compile of this file
// alone) still gets a well-formed version.
#ifndef ORVANE_VERSION
#define ORVANE_VERSION "0.0"
#endif
#ifndef ORVANE_BUILD_NUMBER
#define ORVANE_BUILD_NUMBER "0"
#endif

namespace orvane::core {

std::string_view shortVersion() { return ORVANE_VERSION; }

std::string_view buildNumber() { return ORVANE_BUILD_NUMBER; }

std::string buildVersion() {
  std::string text{shortVersion()};
  text += " (";
  text += buildNumber();
  text += ')';
  return text;
}

}  // namespace orvane::core
