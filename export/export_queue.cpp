#include "export/export_queue.hpp"

#include <algorithm>
#include <atomic>

namespace orvane::export_ {

ExportQueue::ExportQueue(media::MainThreadPost postToMain, ExportCompletionNotifier& notifier, ExportClock clock)
    : postToMain_(std::move(postToMain)), notifier_(notifier), clock_(std::move(clock)) {}

ExportQueue::~ExportQueue() {
  lifetime_.reset();
  if (activeSession_) activeSession_->cancel();
  if (worker_.joinable()) worker_.join();
}

const ExportJob* ExportQueue::job(const core::Uuid& id) const {
  auto it = std::ranges::find(jobs_, id, &ExportJob::id);
  return it == jobs_.end() ? nullptr : &*it;
}

ExportJob* ExportQueue::findJob(const core::Uuid& id) {
  auto it = std::ranges::find(jobs_, id, &ExportJob::id);
  return it == jobs_.end() ? nullptr : &*it;
}

core::Uuid ExportQueue::enqueue(const core::Composition& composition, const core::OVProject& project,
                                const ExportSettings& settings, const std::filesystem::path& outputPath) {
  ExportJob job;
  job.compositionName = composition.name;
  job.outputPath = outputPath;
  job.settings = settings;
  job.project = project;
  job.composition = composition;
  const core::Uuid id = job.id;
  jobs_.push_back(std::move(job));
  changed();
  startNextIfIdle();
  return id;
}

void ExportQueue::startNextIfIdle() {
  if (isRunning_) return;
  auto next = std::ranges::find(jobs_, ExportJobState::Kind::waiting,
                                [](const ExportJob& job) { return job.state.kind; });
  if (next == jobs_.end()) return;
  next->state = ExportJobState::rendering(0);
  next->startedAt = clock_();
  isRunning_ = true;
  activeSession_ = std::make_shared<ExportSession>();
  // The previous run's thread has posted its end, its last act.
  if (worker_.joinable()) worker_.join();
  worker_ = std::thread([this, job = *next, session = activeSession_, alive = std::weak_ptr(lifetime_)] {
    run(job, session, alive);
  });
  changed();
}

// On the export's own thread: touches only its arguments and the post back
// to the main thread (set once at construction).
void ExportQueue::run(const ExportJob& job, std::shared_ptr<ExportSession> session, std::weak_ptr<Lifetime> alive) {
  const core::Uuid id = job.id;
  auto onMain = [this, alive](std::function<void()> work) {
    postToMain_([alive, work = std::move(work)] {
      if (alive.lock()) work();
    });
  };
  // A session may report every frame; the list needs no finer steps than
  // these, and the main thread no more closures.
  constexpr double kReportedStep = 0.002;
  std::atomic<double> lastReported = -1;  // the session may call from its pump threads
  auto progress = [&](double fraction) {
    if (fraction - lastReported.load() < kReportedStep && fraction < 1) return;
    lastReported.store(fraction);
    onMain([this, id, fraction] { updateProgress(id, fraction); });
  };
  auto result = session->exportTo(job.composition, job.project, job.settings, job.outputPath, progress);
  ExportJobState end = ExportJobState::completed();
  if (!result) {
    end = result.error().kind == ExportError::Kind::cancelled ? ExportJobState::cancelled()
                                                              : ExportJobState::failed(result.error().message());
  }
  onMain([this, id, end = std::move(end)] { finish(id, end); });
}

void ExportQueue::updateProgress(const core::Uuid& id, double fraction) {
  ExportJob* job = findJob(id);
  if (!job || job->state.isFinished()) return;
  job->state = ExportJobState::rendering(fraction);
  changed();
}

void ExportQueue::finish(const core::Uuid& id, ExportJobState state) {
  if (ExportJob* job = findJob(id)) {
    job->state = std::move(state);
    job->finishedAt = clock_();
    latestFinishedJob_ = *job;
    notifier_.announce(*job);
  }
  activeSession_.reset();
  isRunning_ = false;
  changed();
  startNextIfIdle();
}

void ExportQueue::cancelActive() {
  if (activeSession_) activeSession_->cancel();
}

void ExportQueue::removeFinishedJobs() {
  std::erase_if(jobs_, [](const ExportJob& job) { return job.state.isFinished(); });
  changed();
}

void ExportQueue::removeJob(const core::Uuid& id) {
  ExportJob* job = findJob(id);
  if (!job) return;
  if (job->state.kind == ExportJobState::Kind::rendering) cancelActive();
  std::erase_if(jobs_, [&](const ExportJob& j) { return j.id == id; });
  changed();
}

int ExportQueue::addObserver(std::function<void()> observer) {
  observers_.emplace_back(++lastObserverToken_, std::move(observer));
  return lastObserverToken_;
}

void ExportQueue::removeObserver(int token) {
  std::erase_if(observers_, [&](const auto& entry) { return entry.first == token; });
}

void ExportQueue::changed() const {
  const auto copy = observers_;  // an observer may remove itself or edit the queue
  for (const auto& entry : copy) entry.second();
}

}  // namespace orvane::export_
