#pragma once
// Packaging: a copy of the project and all its readable media gathered into
// one plain folder that can be moved to another machine. Inside it the
// project file names its media by paths relative to itself ("Media/clip.mov");
// opening it resolves them again (packaged_media.hpp). The caller's project
// is never changed.
//
// Packaging runs off the main thread on a copy of the project; the progress
// callback is called on that thread. Stateless apart from the shared
// MediaAccessManager; any thread.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "core/media_asset.hpp"
#include "core/project.hpp"
#include "core/timestamp.hpp"
#include "document/atomic_file.hpp"

namespace orvane::document {

struct ProjectPackager {
  static constexpr std::string_view mediaFolderName = "Media";
  static constexpr std::string_view readmeFileName = "README.txt";

  struct Report {
    std::filesystem::path packageURL;
    std::filesystem::path projectURL;
    // The records as the package holds them (path "Media/<file>", no
    // bookmark), each with the size of its copied file.
    std::vector<core::MediaAsset> copied;
    // The records left as they were, old paths included.
    std::vector<core::MediaAsset> missing;
    std::int64_t totalBytes = 0;

    friend bool operator==(const Report&, const Report&) = default;
  };

  // The fraction of assets dealt with so far, after each one, copied or not.
  using Progress = std::function<void(double fraction)>;

  // Makes "<name> Package" (unique in destination, which is created with its
  // parents when needed) holding "<name>.orvane", "Media" and "README.txt".
  // A name is used as a file name: "/" becomes "-", and an empty one reads
  // "Untitled". A failed folder creation, copy or write ends packaging with
  // its sentence and leaves what was made so far; an unreadable media file
  // is no failure but is listed in missing.
  static std::expected<Report, FileError> package(const core::OVProject& project,
                                                  std::string_view name,
                                                  const std::filesystem::path& destination,
                                                  const Progress& progress = {});

  // folder/base when nothing there has that name, else the first free of
  // "base 2", "base 3", ...
  static std::filesystem::path uniquePath(const std::filesystem::path& folder, std::string_view base);

  // The text of README.txt. date is shown in the local time zone.
  static std::string readmeText(const core::OVProject& project, std::string_view name,
                                const std::vector<core::MediaAsset>& copied,
                                const std::vector<core::MediaAsset>& missing,
                                std::int64_t totalBytes, core::Timestamp date);
};

// A byte count as file sizes are shown to people, in decimal units as the
// desktop's file managers show them: "0 bytes", "1 byte", "999 bytes",
// "12 KB" (whole kilobytes), "1.2 MB" (one decimal), "3.46 GB" (two
// decimals, also for TB). Trailing zeros of the fraction are dropped
// ("1 MB"), and a value that rounds up to 1000 of a unit shows in the next.
// A negative count shows as "0 bytes".
std::string fileByteCountText(std::int64_t bytes);

// The date in the long style, local time zone: "21 November 2026".
std::string longDateText(core::Timestamp date);

// "clip.mov", then "clip 2.mov", "clip 3.mov", ...: the first of these not
// in taken; a name without an extension gets no dot ("notes 2").
std::string uniqueFileName(const std::string& wanted, const std::unordered_set<std::string>& taken);

}  // namespace orvane::document
