#include "document/project_packager.hpp"

#include <system_error>
#include <utility>

#include "document/media_access.hpp"
#include "document/project_codec.hpp"

namespace orvane::document {
namespace {

namespace fs = std::filesystem;

FileError folderError(const fs::path& folder, const std::error_code& error) {
  return FileError{"Could not create \"" + folder.filename().string() + "\": " + error.message() +
                   "."};
}

// The given name as one file name component.
std::string fileSafeName(std::string_view name) {
  std::string safe(name);
  for (char& c : safe)
    if (c == '/' || c == '\0') c = '-';
  if (safe.empty() || safe == "." || safe == "..") return "Untitled";
  return safe;
}

bool nameTaken(const fs::path& path) {
  std::error_code error;
  // A dangling link still holds its name.
  return fs::exists(fs::symlink_status(path, error));
}

// Creates a fresh, uniquely named folder; a name taken between the look and
// the creation is passed over.
std::expected<fs::path, FileError> makePackageFolder(const fs::path& destination,
                                                     const std::string& base) {
  std::error_code error;
  fs::create_directories(destination, error);
  if (error) return std::unexpected(folderError(destination, error));
  for (;;) {
    const fs::path folder = ProjectPackager::uniquePath(destination, base);
    if (fs::create_directory(folder, error)) return folder;
    if (error) return std::unexpected(folderError(folder, error));
  }
}

struct PackageState {
  core::OVProject project;  // the package's copy
  ProjectPackager::Report report;
  std::unordered_set<std::string> takenNames;
};

// Copies one readable asset into Media and points the package's record at it.
std::expected<void, FileError> copyAsset(const core::MediaAsset& asset, const fs::path& source,
                                         const fs::path& mediaFolder, PackageState& state) {
  const std::string fileName = uniqueFileName(fs::path(asset.fileName()).filename().string(),
                                              state.takenNames);
  const fs::path target = mediaFolder / fileName;
  if (auto copied = copyFileAtomically(source, target); !copied)
    return std::unexpected(copied.error());
  state.takenNames.insert(fileName);
  std::error_code error;
  const auto size = fs::file_size(target, error);
  const std::int64_t bytes = error ? 0 : static_cast<std::int64_t>(size);
  state.report.totalBytes += bytes;

  const std::string relativePath = std::string(ProjectPackager::mediaFolderName) + "/" + fileName;
  state.project.updateAsset(asset.id, [&](core::MediaAsset& a) {
    a.path = relativePath;
    a.bookmark.reset();  // it names the old file
  });
  core::MediaAsset packaged = asset;
  packaged.path = relativePath;
  packaged.bookmark.reset();
  packaged.fileSizeBytes = bytes;
  state.report.copied.push_back(std::move(packaged));
  return {};
}

}  // namespace

std::string uniqueFileName(const std::string& wanted, const std::unordered_set<std::string>& taken) {
  if (!taken.contains(wanted)) return wanted;
  const fs::path path(wanted);
  const std::string stem = path.stem().string();
  const std::string extension = path.extension().string();  // with its dot, or empty
  for (std::size_t n = 2;; ++n) {
    std::string candidate = stem + " " + std::to_string(n) + extension;
    if (!taken.contains(candidate)) return candidate;
  }
}

fs::path ProjectPackager::uniquePath(const fs::path& folder, std::string_view base) {
  fs::path candidate = folder / std::string(base);
  for (std::size_t n = 2; nameTaken(candidate); ++n)
    candidate = folder / (std::string(base) + " " + std::to_string(n));
  return candidate;
}

std::expected<ProjectPackager::Report, FileError> ProjectPackager::package(
    const core::OVProject& project, std::string_view name, const fs::path& destination,
    const Progress& progress) {
  const std::string safeName = fileSafeName(name);
  auto folder = makePackageFolder(destination, safeName + " Package");
  if (!folder) return std::unexpected(folder.error());
  const fs::path mediaFolder = *folder / std::string(mediaFolderName);
  std::error_code error;
  fs::create_directory(mediaFolder, error);
  if (error) return std::unexpected(folderError(mediaFolder, error));

  PackageState state{project, {}, {}};
  state.report.packageURL = *folder;
  state.report.projectURL = *folder / (safeName + std::string(kProjectFileExtension));
  auto& access = MediaAccessManager::shared();
  const std::size_t count = project.assets.size();
  for (std::size_t i = 0; i < count; ++i) {
    const core::MediaAsset& asset = project.assets[i];
    const auto source = access.restoreAccessFor(asset);
    if (source && isReadableFile(*source)) {
      if (auto copied = copyAsset(asset, *source, mediaFolder, state); !copied)
        return std::unexpected(copied.error());
    } else {
      state.report.missing.push_back(asset);
    }
    if (progress) progress(static_cast<double>(i + 1) / static_cast<double>(count));
  }

  if (auto written = ProjectCodec::write(state.project, state.report.projectURL); !written)
    return std::unexpected(written.error());
  const std::string readme = readmeText(project, safeName, state.report.copied,
                                        state.report.missing, state.report.totalBytes,
                                        core::nowTimestamp());
  if (auto written = writeFileAtomically(*folder / std::string(readmeFileName), readme); !written)
    return std::unexpected(written.error());
  return std::move(state.report);
}

}  // namespace orvane::document
