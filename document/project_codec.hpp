#pragma once
// The project file: an OVProject as one compact JSON object with short,
// sorted keys, and back. The same bytes serve the document, the autosave
// snapshots and the clipboard. Stateless; any thread.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <string>
#include <string_view>

#include "core/project.hpp"
#include "document/atomic_file.hpp"
#include "document/project_codec_error.hpp"

namespace orvane::document {

inline constexpr std::string_view kProjectContentType = "com.brightfold.orvane.project";
inline constexpr std::string_view kProjectFileExtension = ".orvane";

struct ProjectCodec {
  // The file's bytes. Stamps appVersion with this build and modifiedAt with
  // now on a private copy; the caller's value is unchanged.
  static std::string encode(const core::OVProject& project);
  // The same without stamping: the bytes of exactly this value.
  static std::string encodeUnstamped(const core::OVProject& project);

  static std::expected<core::OVProject, ProjectCodecError> decode(std::string_view data);

  // encode, then replace the file atomically: the old file or the new one
  // survives a crash at any moment, never a torn one.
  static std::expected<void, FileError> write(const core::OVProject& project,
                                              const std::filesystem::path& path);
  // A regular file's bytes, then decode. A folder or an unreadable file gives
  // unreadableFile.
  static std::expected<core::OVProject, ProjectCodecError> read(const std::filesystem::path& path);

  // Dates as the file writes them ("2026-01-02T03:04:05.678Z") and reads
  // them (with or without the fraction); shared with the autosave manifests.
  static std::string encodeDate(core::Timestamp t);
  static std::optional<core::Timestamp> decodeDate(std::string_view text);
};

}  // namespace orvane::document
