#pragma once
// Packaged projects name their media by paths relative to the project file
// ("Media/clip.mov"). These turn such paths into absolute ones against the
// folder the project file is in now, wherever the package was moved. The
// document wraps them (ProjectDocument::resolvePackagedMedia) without an undo
// step. Pure apart from the file system look and the access manager; any
// thread on its own project value.

#include <filesystem>
#include <optional>
#include <string>

#include "core/project.hpp"
#include "document/media_access.hpp"

namespace orvane::document {

// A path that names media relative to the project file. An empty path names
// nothing, so it is not one.
bool isPackagedMediaPath(const std::string& path);

// Some asset has a path relative to the project file.
bool hasPackagedMedia(const core::OVProject& project);

// The folder that relative media paths of the project at projectPath start
// from: its absolute parent folder.
std::filesystem::path packageFolderFor(const std::filesystem::path& projectPath);

// The project with every relative asset path made absolute against folder
// (lexically normalised) and a fresh bookmark from access; each such asset's
// path is noted as directly readable. Absolute paths stay as they are.
// None when the folder cannot be read, as then the files in it cannot be
// either: the paths stay relative and the assets show as missing.
std::optional<core::OVProject> resolvedPackagedMedia(const core::OVProject& project,
                                                     const std::filesystem::path& folder,
                                                     MediaAccessManager& access);

}  // namespace orvane::document
