#pragma once
// Which build of Orvane this is: the version and build number that the build
// system stamps into the core library, for `orvane --version`, the about box
// and bug reports. Pure functions; any thread.

#include <string>
#include <string_view>

namespace orvane::core {

// The short version of the project, e.g. "0.1.0".
std::string_view shortVersion();

// The number of this build, e.g. "1".
std::string_view buildNumber();

// Short version and build number together, e.g. "0.1.0 (1)".
std::string buildVersion();

}  // namespace orvane::core
