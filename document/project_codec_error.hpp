#pragma once
// The ways reading a project can fail, each with the sentence the user sees.
// Plain value; any thread.

#include <cstdint>
#include <string>
#include <string_view>

namespace orvane::document {

// Why a project could not be read. message() is the sentence the user sees.
struct ProjectCodecError {
  enum class Kind {
    unsupportedFormatVersion,  // written by a newer version of the program
    corruptData,               // not a project file, or a damaged one
    unreadableFile,            // a folder, or a file that cannot be opened
  };
  Kind kind = Kind::corruptData;
  std::int64_t version = 0;  // unsupportedFormatVersion: the file's version
  std::string detail;        // corruptData: what was wrong; unreadableFile: the sentence

  static ProjectCodecError unsupportedFormatVersion(std::int64_t version);
  static ProjectCodecError corruptData(std::string detail);
  static ProjectCodecError unreadableFile(std::string sentence);

  std::string message() const;
  friend bool operator==(const ProjectCodecError&, const ProjectCodecError&) = default;
};

// The sentence for a folder, or a file with no readable contents.
inline constexpr std::string_view kEmptyOrFolderSentence = "The file is empty or is a folder.";

}  // namespace orvane::document
