#pragma once
// What the recovery question at launch shows and does, without the dialog
// itself: after an unclean end the desktop shows a modal warning with
// messageText, summary and the three buttons, and hands the user's choice to
// apply. A snapshot is never opened in place: recovering copies it into the
// "Recovered" folder first, and the snapshot goes only once the copy opened.
// Main thread (it drives the AutosaveService).

#include <array>
#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/timestamp.hpp"
#include "document/atomic_file.hpp"
#include "document/autosave_service.hpp"

namespace orvane::document {

// The dialog's buttons, in this order.
enum class RecoveryChoice { recover, discard, decideLater };
inline constexpr std::array<std::string_view, 3> kRecoveryButtonTitles{"Recover", "Discard",
                                                                       "Decide Later"};

struct RecoveryPresenter {
  // Opens a file as a document window; an error is a sentence for the log.
  using OpenDocument =
      std::function<std::expected<void, std::string>(const std::filesystem::path&)>;

  // "Recover unsaved work?" for one record, else "Recover N projects with
  // unsaved work?".
  static std::string messageText(const std::vector<RecoveryRecord>& records);
  // One line a record, "<name> - autosaved <short date and time>", joined
  // with line breaks.
  static std::string summary(const std::vector<RecoveryRecord>& records);
  // A short date and time in the local time zone, e.g. "21/11/2026, 14:05".
  static std::string shortDateTime(core::Timestamp t);

  // Carries out the user's choice. Returns the alerts still to show, one per
  // record that could not be recovered.
  static std::vector<std::string> apply(RecoveryChoice choice,
                                        const std::vector<RecoveryRecord>& records,
                                        AutosaveService& service, const OpenDocument& open);
  // Copies the snapshot, opens the copy and, once it opened, discards the
  // snapshot. A failed copy returns the alert "Could not recover \"<name>\""
  // and keeps the snapshot; a copy that fails to open is logged and keeps it
  // too.
  static std::optional<std::string> recover(const RecoveryRecord& record, AutosaveService& service,
                                            const OpenDocument& open);
  // The snapshot copied into supportDirectory/Recovered as
  // "<name> (Recovered).orvane", or "(Recovered 2)", 3, ... when taken.
  static std::expected<std::filesystem::path, FileError> copyForRecovery(
      const RecoveryRecord& record, const std::filesystem::path& supportDirectory);
};

}  // namespace orvane::document
