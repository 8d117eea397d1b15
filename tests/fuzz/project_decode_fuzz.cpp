// libFuzzer target for the project decoder: any bytes either decode or fail
// with the codec's error. Whatever decodes must survive being written and
// read again unchanged, so a file the program accepts can always be saved.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "document/project_json.hpp"

using orvane::document::ProjectCodecError;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  orvane::core::OVProject project;
  try {
    project = orvane::document::decodeProjectJson(text);
  } catch (const ProjectCodecError&) {
    return 0;
  }
  const std::string written = orvane::document::encodeProjectJson(project);
  try {
    if (orvane::document::decodeProjectJson(written) != project) __builtin_trap();
  } catch (const ProjectCodecError&) {
    __builtin_trap();
  }
  return 0;
}
