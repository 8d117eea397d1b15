#pragma once
// The background exports: jobs run one at a time in order of arrival, each
// on a thread of its own with a fresh ExportSession, while the user goes on
// editing. Jobs hold frozen copies of the project and composition, so later
// edits reach neither a waiting nor a running job.
//
// The queue lives on the main thread and every member is called there; the
// export threads come back only through the MainThreadPost. The notifier
// must outlive the queue. Destroying the queue cancels the running export
// and waits for its thread.

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "core/composition.hpp"
#include "core/project.hpp"
#include "core/timestamp.hpp"
#include "export/export_completion_notifier.hpp"
#include "export/export_job.hpp"
#include "export/export_session.hpp"
#include "media/serial_worker.hpp"

namespace orvane::export_ {

using ExportClock = std::function<core::Timestamp()>;

class ExportQueue {
 public:
  ExportQueue(media::MainThreadPost postToMain, ExportCompletionNotifier& notifier,
              ExportClock clock = core::nowTimestamp);
  ~ExportQueue();
  ExportQueue(const ExportQueue&) = delete;
  ExportQueue& operator=(const ExportQueue&) = delete;

  const std::vector<ExportJob>& jobs() const { return jobs_; }
  const std::optional<ExportJob>& latestFinishedJob() const { return latestFinishedJob_; }
  bool isRunning() const { return isRunning_; }
  const ExportJob* job(const core::Uuid& id) const;

  // Appends a waiting job with copies of both values and starts it when the
  // queue is idle. Returns the job's id.
  core::Uuid enqueue(const core::Composition& composition, const core::OVProject& project,
                     const ExportSettings& settings, const std::filesystem::path& outputPath);
  void cancelActive();
  void removeFinishedJobs();
  // A running job is cancelled first; its end then finds no job to update.
  void removeJob(const core::Uuid& id);

  // Called after every change of the jobs or the running state (windows
  // refresh from it). Returns a token for removeObserver.
  int addObserver(std::function<void()> observer);
  void removeObserver(int token);

 private:
  struct Lifetime {};

  void startNextIfIdle();
  void run(const ExportJob& job, std::shared_ptr<ExportSession> session, std::weak_ptr<Lifetime> alive);
  void updateProgress(const core::Uuid& id, double fraction);
  void finish(const core::Uuid& id, ExportJobState state);
  ExportJob* findJob(const core::Uuid& id);
  void changed() const;

  media::MainThreadPost postToMain_;
  ExportCompletionNotifier& notifier_;
  ExportClock clock_;
  std::vector<ExportJob> jobs_;
  std::optional<ExportJob> latestFinishedJob_;
  std::shared_ptr<ExportSession> activeSession_;
  std::thread worker_;
  bool isRunning_ = false;
  std::vector<std::pair<int, std::function<void()>>> observers_;
  int lastObserverToken_ = 0;
  // Posted closures hold it weakly, so none runs once the queue has gone.
  std::shared_ptr<Lifetime> lifetime_ = std::make_shared<Lifetime>();
};

}  // namespace orvane::export_
