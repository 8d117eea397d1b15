#include "export/export_job.hpp"

#include <chrono>
#include <cmath>

#include "export/export_completion_notifier.hpp"

namespace orvane::export_ {

std::string_view ExportJobState::displayName() const {
  switch (kind) {
    case Kind::rendering: return "Rendering";
    case Kind::failed: return "Failed";
    case Kind::waiting: return "Waiting";
    case Kind::completed: return "Completed";
    case Kind::cancelled: return "Cancelled";
  }
  return "Waiting";
}

double ExportJobState::progress() const {
  if (kind == Kind::rendering) return fraction;
  return kind == Kind::completed ? 1 : 0;
}

std::int64_t ExportJob::currentFrame() const {
  const double frames = settings.range.duration.seconds() * state.progress() * settings.frameRate.fps();
  return std::isfinite(frames) ? static_cast<std::int64_t>(frames) : 0;
}

std::optional<double> ExportJob::estimatedTimeRemaining(core::Timestamp now) const {
  constexpr double kLeastProgress = 0.01;
  if (state.kind != ExportJobState::Kind::rendering || !startedAt) return std::nullopt;
  const double progress = state.fraction;
  if (!(progress > kLeastProgress)) return std::nullopt;
  const double elapsed = std::chrono::duration<double>(now - *startedAt).count();
  return elapsed / progress - elapsed;
}

std::optional<ExportNotice> noticeFor(const ExportJob& job) {
  switch (job.state.kind) {
    case ExportJobState::Kind::completed:
      return ExportNotice{"Export complete", job.compositionName, false};
    case ExportJobState::Kind::failed:
      return ExportNotice{"Export failed", job.compositionName + " — " + job.state.failure, true};
    default:
      return std::nullopt;
  }
}

}  // namespace orvane::export_
