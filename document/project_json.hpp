#pragma once
// The JSON form of the project, below ProjectCodec. Decoding throws
// ProjectCodecError, which ProjectCodec turns into its result; nothing here
// lets an exception out of the library. Kept apart from <expected> so that
// the fuzzing build (clang) can compile it. Stateless; any thread.

#include <string>
#include <string_view>

#include "core/project.hpp"
#include "document/project_codec_error.hpp"

namespace orvane::document {

// Compact JSON with sorted keys; exactly this value, nothing stamped.
std::string encodeProjectJson(const core::OVProject& project);

// The two-pass read: the format version first, then the whole project.
// Throws ProjectCodecError.
core::OVProject decodeProjectJson(std::string_view data);

}  // namespace orvane::document
