#pragma once
// Reading the project file a command was given. A file that cannot be read
// ends the command with the reader's sentence. Main thread only.

#include <filesystem>

#include "core/project.hpp"

namespace orvane::cli {

// The project in the file at path; throws CommandFailure with the sentence
// the user sees ("The project file could not be read. ...").
core::OVProject readProjectOrFail(const std::filesystem::path& path);

}  // namespace orvane::cli
