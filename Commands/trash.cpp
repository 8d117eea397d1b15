#include "Commands/trash.hpp"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <optional>

namespace orvane::commands {
namespace {

namespace fs = std::filesystem;

std::error_code lastError() { return {errno, std::generic_category()}; }

fs::path homeFolder() {
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
  if (const passwd* entry = ::getpwuid(::getuid()); entry != nullptr && entry->pw_dir != nullptr) return entry->pw_dir;
  return "/";
}

// Makes folder with owner-only access unless it is there already.
std::error_code makePrivateFolder(const fs::path& folder) {
  if (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) return {};
  return lastError();
}

std::error_code prepareTrash(const fs::path& trash) {
  std::error_code error;
  fs::create_directories(trash.parent_path(), error);
  if (error) return error;
  for (const fs::path& folder : {trash, trash / "files", trash / "info"})
    if (auto e = makePrivateFolder(folder)) return e;
  return {};
}

// Every byte but the unreserved characters and the separator as %XX.
std::string percentEncoded(const std::string& path) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (const char ch : path) {
    const auto c = static_cast<unsigned char>(ch);
    const bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
                       c == '_' || c == '.' || c == '~' || c == '/';
    if (plain) {
      out += ch;
    } else {
      out += '%';
      out += kHex[c >> 4];
      out += kHex[c & 0xF];
    }
  }
  return out;
}

std::string localDeletionDate() {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  ::localtime_r(&now, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &local);
  return text;
}

// "name", then "stem 2.ext", "stem 3.ext", ...
std::string candidateName(const fs::path& name, int number) {
  if (number < 2) return name.string();
  return name.stem().string() + " " + std::to_string(number) + name.extension().string();
}

bool writeAll(int fd, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<std::size_t>(n);
  }
  return true;
}

struct Reservation {
  fs::path infoFile;
  fs::path target;
};

// Claims a free name with an exclusively created info file describing the
// original, so no other process can take it meanwhile.
std::expected<Reservation, std::error_code> reserveName(const fs::path& trash, const fs::path& original) {
  const std::string info = "[Trash Info]\nPath=" + percentEncoded(original.string()) +
                           "\nDeletionDate=" + localDeletionDate() + "\n";
  for (int number = 1;; ++number) {
    const std::string name = candidateName(original.filename(), number);
    const fs::path infoFile = trash / "info" / (name + ".trashinfo");
    const int fd = ::open(infoFile.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
      if (errno == EEXIST) continue;
      return std::unexpected(lastError());
    }
    const bool written = writeAll(fd, info);
    const std::error_code writeError = written ? std::error_code{} : lastError();
    if (::close(fd) != 0 || !written) {
      ::unlink(infoFile.c_str());
      return std::unexpected(writeError ? writeError : lastError());
    }
    // A file left in files/ without its info file still owns the name.
    std::error_code error;
    const fs::path target = trash / "files" / name;
    if (!fs::exists(fs::symlink_status(target, error))) return Reservation{infoFile, target};
    ::unlink(infoFile.c_str());
  }
}

// Across file systems: copy everything, then remove the original.
std::error_code copyThenRemove(const fs::path& from, const fs::path& to, bool& copied) {
  std::error_code error;
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
  if (error) {
    std::error_code ignored;
    fs::remove_all(to, ignored);
    return error;
  }
  copied = true;
  fs::remove_all(from, error);
  return error;
}

}  // namespace

std::string TrashError::message() const {
  return "Could not move the file to the Trash: " + error.message() + ".";
}

fs::path homeTrashFolder() {
  const char* dataHome = std::getenv("XDG_DATA_HOME");
  // A relative value is invalid and is ignored, as the base directory rules say.
  if (dataHome != nullptr && *dataHome == '/') return fs::path(dataHome) / "Trash";
  return homeFolder() / ".local" / "share" / "Trash";
}

std::expected<fs::path, TrashError> moveToTrash(const fs::path& file) {
  std::error_code error;
  fs::path original = fs::absolute(file, error).lexically_normal();
  if (!error && !original.has_filename()) original = original.parent_path();
  const auto fail = [&](std::error_code e) { return std::unexpected(TrashError{file, e}); };
  if (error) return fail(error);
  if (!fs::exists(fs::symlink_status(original, error)))
    return fail(std::make_error_code(std::errc::no_such_file_or_directory));

  const fs::path trash = homeTrashFolder();
  if (auto e = prepareTrash(trash)) return fail(e);
  const auto reserved = reserveName(trash, original);
  if (!reserved) return fail(reserved.error());

  if (::rename(original.c_str(), reserved->target.c_str()) == 0) return reserved->target;
  std::error_code moveError = lastError();
  bool copied = false;
  if (moveError == std::errc::cross_device_link) {
    moveError = copyThenRemove(original, reserved->target, copied);
    if (!moveError) return reserved->target;
  }
  // A complete copy stays listed, so that nothing of the file is lost.
  if (!copied) ::unlink(reserved->infoFile.c_str());
  return fail(moveError);
}

}  // namespace orvane::commands
