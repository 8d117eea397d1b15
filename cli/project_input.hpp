#pragma once
// Reading the project file a command was given. A file that cannot be read
// ends the command with the reader's sentence. Main thread only.

#include <filesystem>
#include <string>
#include <string_view>

#include "core/project.hpp"

namespace orvane::cli {

// The project in the file at path; throws CommandFailure with the sentence
// the user sees ("The project file could not be read. ...").
core::OVProject readProjectOrFail(const std::filesystem::path& path);

// The project with the media of a packaged project found from the project
// file's own folder (relative paths count from there); unchanged otherwise.
core::OVProject withResolvedMedia(core::OVProject project, const std::filesystem::path& path);

// The composition of that name, or the active one when name is empty.
// Throws CommandFailure: "The project has no composition named "NAME"." or,
// without compositions, "The project has no composition to " + purpose + ".".
const core::Composition& chosenComposition(const core::OVProject& project, const std::string& name,
                                           std::string_view purpose);

}  // namespace orvane::cli
