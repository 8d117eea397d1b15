#pragma once
// One entry of the export queue: what to export (frozen copies of the
// project and composition, the settings, the output path) and how far it
// has got. A plain value, owned by the ExportQueue on the main thread; the
// export thread works on its own copy of the frozen values.

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "core/composition.hpp"
#include "core/project.hpp"
#include "core/timestamp.hpp"
#include "core/uuid.hpp"
#include "export/export_settings.hpp"

namespace orvane::export_ {

// waiting -> rendering -> completed | failed | cancelled, never back.
struct ExportJobState {
  enum class Kind { rendering, failed, waiting, completed, cancelled };
  Kind kind = Kind::waiting;
  double fraction = 0;  // rendering only
  std::string failure;  // failed only: the error's sentence

  static ExportJobState rendering(double fraction) { return {Kind::rendering, fraction, {}}; }
  static ExportJobState failed(std::string message) { return {Kind::failed, 0, std::move(message)}; }
  static ExportJobState waiting() { return {Kind::waiting, 0, {}}; }
  static ExportJobState completed() { return {Kind::completed, 0, {}}; }
  static ExportJobState cancelled() { return {Kind::cancelled, 0, {}}; }

  // "Rendering", "Failed", "Waiting", "Completed", "Cancelled".
  std::string_view displayName() const;
  bool isFinished() const { return kind == Kind::completed || kind == Kind::failed || kind == Kind::cancelled; }
  // The fraction while rendering, 1 once completed, else 0.
  double progress() const;

  friend bool operator==(const ExportJobState&, const ExportJobState&) = default;
};

struct ExportJob {
  core::Uuid id = core::Uuid::make();
  std::string compositionName;
  std::filesystem::path outputPath;
  ExportSettings settings;
  ExportJobState state;
  std::optional<core::Timestamp> startedAt;
  std::optional<core::Timestamp> finishedAt;
  core::OVProject project;
  core::Composition composition;

  // The frame being encoded: the range's seconds × progress × fps, truncated.
  std::int64_t currentFrame() const;
  // Seconds left, from the pace so far: absent unless rendering past 1% with
  // a start time.
  std::optional<double> estimatedTimeRemaining(core::Timestamp now) const;
};

}  // namespace orvane::export_
