#include "document/recovery_presenter.hpp"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <ctime>
#include <system_error>

#include "core/log.hpp"

namespace orvane::document {
namespace fs = std::filesystem;

namespace {

// Longest base name in bytes: leaves room for " (Recovered 99999).orvane"
// within the usual 255-byte limit of a file name.
constexpr std::size_t kMaxBaseBytes = 200;

bool isBlank(std::string_view text) {
  return std::ranges::all_of(text, [](unsigned char c) { return std::isspace(c) != 0; });
}

// Cut to at most max bytes without splitting a UTF-8 sequence.
std::string truncatedUtf8(std::string text, std::size_t max) {
  if (text.size() <= max) return text;
  std::size_t end = max;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  text.resize(end);
  return text;
}

// The name as a file name: no folder separators (nor NULs, which the system
// would cut the name at).
std::string recoveryBaseName(const std::string& projectName) {
  std::string base = projectName;
  std::ranges::replace(base, '/', '-');
  std::ranges::replace(base, '\0', '-');
  base = truncatedUtf8(std::move(base), kMaxBaseBytes);
  return isBlank(base) ? std::string("Untitled") : base;
}

bool pathIsTaken(const fs::path& path) {
  std::error_code ec;
  // Anything there, even a dangling link or an unreadable entry, is taken.
  return fs::symlink_status(path, ec).type() != fs::file_type::not_found;
}

fs::path freeRecoveryPath(const fs::path& folder, const std::string& base) {
  fs::path candidate = folder / (base + " (Recovered).orvane");
  for (int n = 2; pathIsTaken(candidate); ++n) {
    candidate = folder / (base + " (Recovered " + std::to_string(n) + ").orvane");
  }
  return candidate;
}

}  // namespace

std::string RecoveryPresenter::messageText(const std::vector<RecoveryRecord>& records) {
  if (records.size() == 1) return "Recover unsaved work?";
  return "Recover " + std::to_string(records.size()) + " projects with unsaved work?";
}

std::string RecoveryPresenter::shortDateTime(core::Timestamp t) {
  // Day/month/year and a 24-hour clock in the local time zone; the
  // program's texts are English, and this reads plainly everywhere.
  const std::time_t seconds =
      std::chrono::system_clock::to_time_t(std::chrono::time_point_cast<std::chrono::seconds>(t));
  std::tm local{};
  if (localtime_r(&seconds, &local) == nullptr) return {};
  char text[64];
  const std::size_t length = std::strftime(text, sizeof text, "%d/%m/%Y, %H:%M", &local);
  return std::string(text, length);
}

std::string RecoveryPresenter::summary(const std::vector<RecoveryRecord>& records) {
  std::string text;
  for (const RecoveryRecord& record : records) {
    if (!text.empty()) text += '\n';
    text += record.projectName + " - autosaved " + shortDateTime(record.savedAt);
  }
  return text;
}

std::vector<std::string> RecoveryPresenter::apply(RecoveryChoice choice,
                                                  const std::vector<RecoveryRecord>& records,
                                                  AutosaveService& service,
                                                  const OpenDocument& open) {
  std::vector<std::string> alerts;
  switch (choice) {
    case RecoveryChoice::recover:
      for (const RecoveryRecord& record : records) {
        if (auto alert = recover(record, service, open)) alerts.push_back(std::move(*alert));
      }
      break;
    case RecoveryChoice::discard:
      for (const RecoveryRecord& record : records) service.discardSnapshot(record.projectID);
      break;
    case RecoveryChoice::decideLater:
      // The records stay; they come back after the next unclean end only.
      break;
  }
  return alerts;
}

std::optional<std::string> RecoveryPresenter::recover(const RecoveryRecord& record,
                                                      AutosaveService& service,
                                                      const OpenDocument& open) {
  const auto copy = copyForRecovery(record, service.supportDirectory());
  if (!copy) return "Could not recover \"" + record.projectName + "\"";
  const std::expected<void, std::string> opened =
      open ? open(*copy) : std::unexpected(std::string("no document opener is installed"));
  if (opened) {
    service.discardSnapshot(record.projectID);
  } else {
    core::logError("autosave", "Orvane recovery failed to open: " + opened.error());
  }
  return std::nullopt;
}

std::expected<fs::path, FileError> RecoveryPresenter::copyForRecovery(
    const RecoveryRecord& record, const fs::path& supportDirectory) {
  const fs::path folder = supportDirectory / "Recovered";
  std::error_code ec;
  fs::create_directories(folder, ec);
  if (ec) {
    return std::unexpected(FileError{"The folder \"" + folder.string() +
                                     "\" could not be made: " + ec.message() + "."});
  }
  const fs::path target = freeRecoveryPath(folder, recoveryBaseName(record.projectName));
  if (auto copied = copyFileAtomically(record.snapshotPath, target); !copied) {
    return std::unexpected(copied.error());
  }
  return target;
}

}  // namespace orvane::document
