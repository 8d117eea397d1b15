#pragma once
// Tells the user that an export has ended. The queue calls announce() on the
// main thread for every job that finishes; the desktop application's
// implementation plays a sound, asks for attention and posts a system
// notification for completed and failed jobs, and does nothing for cancelled
// ones (noticeFor gives the texts and says which).

#include <optional>
#include <string>

#include "export/export_job.hpp"

namespace orvane::export_ {

class ExportCompletionNotifier {
 public:
  virtual ~ExportCompletionNotifier() = default;
  virtual void announce(const ExportJob& job) = 0;
};

// What a notification about the job says: "Export complete" with the
// composition's name, or "Export failed" with the name, " — " and the
// failure. None for jobs that are cancelled or not finished.
struct ExportNotice {
  std::string title;
  std::string body;
  bool critical = false;  // failures ask for attention the critical way
  friend bool operator==(const ExportNotice&, const ExportNotice&) = default;
};
std::optional<ExportNotice> noticeFor(const ExportJob& job);

}  // namespace orvane::export_
