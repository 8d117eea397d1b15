#pragma once
// Moving files to the user's Trash the freedesktop.org way, so that a file
// manager lists them and can put them back: the home trash under
// $XDG_DATA_HOME/Trash (~/.local/share/Trash by default), each file in
// files/ with its original place and deletion time in info/<name>.trashinfo.
// Any thread; two processes trashing the same name at once each get their
// own, as the info file is claimed exclusively first.

#include <expected>
#include <filesystem>
#include <string>
#include <system_error>

namespace orvane::commands {

struct TrashError {
  std::filesystem::path file;
  std::error_code error;

  // One sentence with the system's reason, e.g. "Could not move the file to
  // the Trash: Permission denied."
  std::string message() const;
};

// Moves file (a file, a folder with its contents, or a link itself) into
// the home trash. Returns where it lies now. On failure the file stays
// where it was and the trash keeps nothing of it, with one exception: a
// file from another file system is copied, and when its original cannot
// be removed wholly afterwards, the complete copy stays in the trash.
std::expected<std::filesystem::path, TrashError> moveToTrash(const std::filesystem::path& file);

// The home trash folder; it need not exist yet.
std::filesystem::path homeTrashFolder();

}  // namespace orvane::commands
