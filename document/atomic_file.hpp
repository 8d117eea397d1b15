#pragma once
// Files written as a whole or not at all: the bytes go to a temporary file in
// the same folder, are flushed and synced, then renamed over the target, and
// the folder is synced. A crash at any moment leaves the old file or the new
// one. Errors come back as one sentence naming the file. Any thread.

#include <expected>
#include <filesystem>
#include <string>
#include <string_view>

namespace orvane::document {

struct FileError {
  std::string message;
  friend bool operator==(const FileError&, const FileError&) = default;
};

std::expected<void, FileError> writeFileAtomically(const std::filesystem::path& path,
                                                   std::string_view bytes);

// The contents of a regular file. A folder, a missing file or a read error
// gives a sentence; a folder gives emptyOrFolderSentence.
std::expected<std::string, FileError> readRegularFile(const std::filesystem::path& path,
                                                      std::string_view emptyOrFolderSentence);

// A copy that appears whole under its name or not at all (copied to a
// temporary file first, synced, then renamed).
std::expected<void, FileError> copyFileAtomically(const std::filesystem::path& from,
                                                  const std::filesystem::path& to);

}  // namespace orvane::document
