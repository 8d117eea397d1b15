#include "document/atomic_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <vector>

namespace orvane::document {
namespace fs = std::filesystem;
namespace {

// Projects are far below this; a larger file is not one of ours.
constexpr std::uintmax_t kMaxReadBytes = std::uintmax_t{2} << 30;

std::string quoted(const fs::path& path) { return "\"" + path.filename().string() + "\""; }

FileError errnoError(std::string_view verb, const fs::path& path, int error) {
  return FileError{std::string(verb) + " " + quoted(path) + ": " + std::strerror(error) + "."};
}

// A file descriptor that closes itself.
class Fd {
 public:
  explicit Fd(int fd) : fd_(fd) {}
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  ~Fd() { close(); }
  int get() const { return fd_; }
  bool ok() const { return fd_ >= 0; }
  int close() {
    int result = 0;
    if (fd_ >= 0) result = ::close(fd_);
    fd_ = -1;
    return result;
  }

 private:
  int fd_;
};

bool writeAll(int fd, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t n = ::write(fd, data, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data += n;
    size -= static_cast<std::size_t>(n);
  }
  return true;
}

// Writes through a symbolic link rather than replacing the link.
fs::path resolvedTarget(const fs::path& path) {
  std::error_code ec;
  if (fs::is_symlink(path, ec)) {
    const fs::path target = fs::weakly_canonical(path, ec);
    if (!ec) return target;
  }
  return path;
}

// A save killed mid-write leaves its temporary file behind. Those older
// than a few minutes cannot belong to a save in progress and are removed
// after the next successful one.
void removeStaleTemporaries(const fs::path& target) {
  constexpr auto kStaleAfter = std::chrono::minutes(10);
  const std::string prefix = "." + target.filename().string() + ".tmp-";
  std::error_code ec;
  const auto now = fs::file_time_type::clock::now();
  for (const auto& entry : fs::directory_iterator(target.parent_path().empty() ? "." : target.parent_path(), ec)) {
    if (!entry.path().filename().string().starts_with(prefix)) continue;
    std::error_code entryError;
    const auto written = entry.last_write_time(entryError);
    if (!entryError && now - written > kStaleAfter) fs::remove(entry.path(), entryError);
  }
}

void syncFolder(const fs::path& folder) {
  Fd dir(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (dir.ok()) ::fsync(dir.get());
}

// Runs fill on a fresh temporary file beside target, then syncs it and
// renames it over target. The temporary file never outlives a failure.
template <class Fill>
std::expected<void, FileError> replaceAtomically(const fs::path& requested, Fill&& fill) {
  const fs::path target = resolvedTarget(requested);
  const fs::path folder = target.parent_path();
  std::string pattern = (folder / ("." + target.filename().string() + ".tmp-XXXXXX")).string();
  Fd fd(::mkostemp(pattern.data(), O_CLOEXEC));
  if (!fd.ok()) return std::unexpected(errnoError("Could not save", requested, errno));
  const fs::path temp = pattern;
  auto fail = [&](int error) {
    fd.close();
    ::unlink(temp.c_str());
    return std::unexpected(errnoError("Could not save", requested, error));
  };

  struct stat existing {};
  const mode_t mode = ::stat(target.c_str(), &existing) == 0 ? (existing.st_mode & 07777) : 0644;
  if (::fchmod(fd.get(), mode) != 0) return fail(errno);
  if (int error = fill(fd.get()); error != 0) return fail(error);
  if (::fsync(fd.get()) != 0) return fail(errno);
  if (fd.close() != 0) return fail(errno);
  if (::rename(temp.c_str(), target.c_str()) != 0) return fail(errno);
  syncFolder(folder);
  removeStaleTemporaries(target);
  return {};
}

}  // namespace

std::expected<void, FileError> writeFileAtomically(const fs::path& path, std::string_view bytes) {
  return replaceAtomically(path, [&](int fd) { return writeAll(fd, bytes.data(), bytes.size()) ? 0 : errno; });
}

std::expected<std::string, FileError> readRegularFile(const fs::path& path,
                                                      std::string_view emptyOrFolderSentence) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) {
    if (errno == ENOENT) return std::unexpected(FileError{"The file " + quoted(path) + " does not exist."});
    return std::unexpected(errnoError("Could not read", path, errno));
  }
  if (!S_ISREG(info.st_mode) || info.st_size == 0) {
    return std::unexpected(FileError{std::string(emptyOrFolderSentence)});
  }
  if (static_cast<std::uintmax_t>(info.st_size) > kMaxReadBytes) {
    return std::unexpected(FileError{"The file " + quoted(path) + " is too large to be a project."});
  }
  Fd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!fd.ok()) return std::unexpected(errnoError("Could not read", path, errno));
  std::string contents;
  char buffer[1 << 16];
  for (;;) {
    const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
    if (n < 0) {
      if (errno == EINTR) continue;
      return std::unexpected(errnoError("Could not read", path, errno));
    }
    if (n == 0) break;
    contents.append(buffer, static_cast<std::size_t>(n));
    if (contents.size() > kMaxReadBytes) {
      return std::unexpected(FileError{"The file " + quoted(path) + " is too large to be a project."});
    }
  }
  if (contents.empty()) return std::unexpected(FileError{std::string(emptyOrFolderSentence)});
  return contents;
}

std::expected<void, FileError> copyFileAtomically(const fs::path& from, const fs::path& to) {
  Fd source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
  if (!source.ok()) return std::unexpected(errnoError("Could not read", from, errno));
  struct stat info {};
  if (::fstat(source.get(), &info) != 0) return std::unexpected(errnoError("Could not read", from, errno));
  if (!S_ISREG(info.st_mode)) return std::unexpected(FileError{"Could not copy " + quoted(from) + ": it is not a file."});
  std::vector<char> buffer(1 << 20);
  int readError = 0;
  auto result = replaceAtomically(to, [&](int fd) -> int {
    for (;;) {
      const ssize_t n = ::read(source.get(), buffer.data(), buffer.size());
      if (n < 0) {
        if (errno == EINTR) continue;
        readError = errno;
        return errno;
      }
      if (n == 0) return 0;
      if (!writeAll(fd, buffer.data(), static_cast<std::size_t>(n))) return errno;
    }
  });
  if (!result && readError != 0) return std::unexpected(errnoError("Could not read", from, readError));
  return result;
}

}  // namespace orvane::document
