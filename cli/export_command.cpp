// `orvane export PROJECT -o OUT [--preset ID] [--composition NAME]
// [--work-area | --range A:B] [--codec CODEC] [--json-progress]`: encodes a
// composition to a movie or audio file with an export preset ("match" when
// none is named): the whole composition unless --work-area or --range says
// otherwise. The export runs on a thread of its own while the main
// thread reports progress (a bar on a terminal, "Exporting: N%" lines
// otherwise, JSON lines on stdout when asked) and watches for Ctrl-C, which
// cancels the export and removes the partial file (exit 130).

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <expected>
#include <filesystem>
#include <iostream>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>

#include "cli/commands.hpp"
#include "cli/project_input.hpp"
#include "document/media_access.hpp"
#include "document/packaged_media.hpp"
#include "export/export_preset.hpp"
#include "export/export_session.hpp"
#include "render/gui_runtime.hpp"

namespace orvane::cli {

namespace {

using export_::ExportSettings;
using Clock = std::chrono::steady_clock;

constexpr int kExitInterrupted = 130;

struct ExportOptions {
  std::string project;
  std::string output;
  std::string preset = "match";
  std::string composition;
  bool workArea = false;
  std::string range;
  std::string codec;
  bool jsonProgress = false;
};

// --- Arguments -------------------------------------------------------------

const export_::ExportPreset& presetOrFail(const std::string& id) {
  for (const export_::ExportPreset& preset : export_::ExportPreset::all()) {
    if (preset.id == id) return preset;
  }
  std::string ids;
  for (const export_::ExportPreset& preset : export_::ExportPreset::all()) {
    ids += (ids.empty() ? "" : ", ") + preset.id;
  }
  throw CommandFailure("There is no export preset \"" + id + "\"; the presets are " + ids + ".", kExitUsage);
}

std::optional<export_::ExportCodec> codecOrFail(const std::string& raw) {
  if (raw.empty()) return std::nullopt;
  if (auto codec = export_::exportCodecFromRaw(raw)) return codec;
  throw CommandFailure("The codec must be one of h264, proRes4444, hevcWithAlpha or vp9Alpha.", kExitUsage);
}

std::optional<double> secondsIn(const std::string& text) {
  if (text.empty() || text.find_first_not_of("0123456789.") != std::string::npos) return std::nullopt;
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size() || !std::isfinite(value) || value > 1e9) return std::nullopt;
  return value;
}

// "A:B" in seconds, both from 0 on, A before B.
std::optional<core::OVTimeRange> rangeOrFail(const std::string& text) {
  if (text.empty()) return std::nullopt;
  const auto colon = text.find(':');
  const auto start = colon == std::string::npos ? std::nullopt : secondsIn(text.substr(0, colon));
  const auto end = colon == std::string::npos ? std::nullopt : secondsIn(text.substr(colon + 1));
  if (!start || !end || !(*start < *end)) {
    throw CommandFailure("The range must be two times in seconds from 0 on, the first before the second, as A:B.",
                         kExitUsage);
  }
  return core::OVTimeRange::fromStartEnd(core::OVTime::fromSeconds(*start), core::OVTime::fromSeconds(*end));
}

// --- Project -----------------------------------------------------------------

ExportSettings settingsFor(const ExportOptions& options, const export_::ExportPreset& preset,
                           const core::Composition& composition) {
  ExportSettings settings = preset.settingsFor(composition);
  settings.range = options.workArea ? composition.renderRange() : composition.fullRange();
  if (auto range = rangeOrFail(options.range)) settings.range = *range;
  if (auto codec = codecOrFail(options.codec)) settings.codec = *codec;
  if (settings.includeVideo()) {
    if (auto reason = export_::unavailableReason(settings.codec)) throw CommandFailure(*reason);
  }
  return settings;
}

std::filesystem::path outputPathFor(const std::string& output, const ExportSettings& settings) {
  std::filesystem::path path = output;
  if (!path.has_extension()) path += "." + std::string(settings.fileExtension());
  return path;
}

// --- Progress ----------------------------------------------------------------

enum class ProgressStyle { bar, lines, json };

class ProgressReport {
 public:
  ProgressReport(ProgressStyle style, const ExportSettings& settings)
      : style_(style),
        frames_(settings.includeVideo() ? settings.frameRate.frameCountFor(settings.range.duration) : 0) {}

  void update(double fraction) {
    if (fraction == last_) return;
    last_ = fraction;
    const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
    const std::int64_t frame = static_cast<std::int64_t>(fraction * static_cast<double>(frames_));
    const double fps = elapsed > 0 ? static_cast<double>(frame) / elapsed : 0;
    const double remaining = fraction > 0.01 ? elapsed / fraction - elapsed : -1;
    switch (style_) {
      case ProgressStyle::bar: drawBar(fraction, frame, fps, remaining); break;
      case ProgressStyle::lines: printLine(fraction); break;
      case ProgressStyle::json: printJSON(fraction, frame, fps, remaining); break;
    }
  }

  void end(bool done, const std::filesystem::path& output) {
    if (style_ == ProgressStyle::bar && last_ >= 0) std::cerr << '\n' << std::flush;
    if (style_ == ProgressStyle::json && done) {
      std::cout << nlohmann::json{{"done", true}, {"output", output.string()}}.dump() << '\n' << std::flush;
    }
  }

 private:
  void drawBar(double fraction, std::int64_t frame, double fps, double remaining) {
    constexpr int kWidth = 24;
    const int filled = static_cast<int>(fraction * kWidth);
    char bar[kWidth + 1];
    for (int i = 0; i < kWidth; ++i) bar[i] = i < filled ? '#' : '-';
    bar[kWidth] = '\0';
    char left[32] = "--:--";
    if (remaining >= 0) {
      const long seconds = std::lround(remaining);
      std::snprintf(left, sizeof left, "%ld:%02ld", seconds / 60, seconds % 60);
    }
    char line[160];
    std::snprintf(line, sizeof line, "\rExporting [%s] %3d%%  frame %lld/%lld  %.1f fps  %s left ", bar,
                  static_cast<int>(fraction * 100), static_cast<long long>(frame), static_cast<long long>(frames_),
                  fps, left);
    std::cerr << line << std::flush;
  }

  void printLine(double fraction) {
    constexpr int kStep = 5;
    const int percent = static_cast<int>(fraction * 100);
    if (percent < printedPercent_ + kStep && !(percent == 100 && printedPercent_ < 100)) return;
    printedPercent_ = percent;
    std::cerr << "Exporting: " << percent << "%\n" << std::flush;
  }

  void printJSON(double fraction, std::int64_t frame, double fps, double remaining) {
    char remainingText[32] = "null";
    if (remaining >= 0) std::snprintf(remainingText, sizeof remainingText, "%.1f", remaining);
    char line[200];
    std::snprintf(line, sizeof line,
                  "{\"progress\":%.4f,\"frame\":%lld,\"frames\":%lld,\"fps\":%.2f,\"remaining\":%s}\n", fraction,
                  static_cast<long long>(frame), static_cast<long long>(frames_), fps, remainingText);
    std::cout << line << std::flush;
  }

  ProgressStyle style_;
  std::int64_t frames_;
  Clock::time_point start_ = Clock::now();
  double last_ = -1;
  int printedPercent_ = 0;  // nothing until the first step is done
};

// --- Running -----------------------------------------------------------------

volatile std::sig_atomic_t interrupted = 0;

extern "C" void onInterrupt(int) { interrupted = 1; }

// Ctrl-C cancels the export instead of ending the program, while this lives.
class InterruptGuard {
 public:
  InterruptGuard() {
    interrupted = 0;
    previous_ = std::signal(SIGINT, onInterrupt);
  }
  ~InterruptGuard() { std::signal(SIGINT, previous_); }
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

 private:
  void (*previous_)(int) = SIG_DFL;
};

struct RunState {
  std::mutex lock;
  std::condition_variable ended;
  bool done = false;
  std::atomic<double> fraction{0};
};

std::expected<void, export_::ExportError> runExport(const core::Composition& composition,
                                                    const core::OVProject& project, const ExportSettings& settings,
                                                    const std::filesystem::path& output, ProgressReport& report) {
  constexpr auto kPollInterval = std::chrono::milliseconds(100);
  InterruptGuard guard;
  export_::ExportSession session;
  RunState state;
  std::expected<void, export_::ExportError> result;
  std::thread worker([&] {
    result = session.exportTo(composition, project, settings, output,
                              [&](double fraction) { state.fraction.store(fraction); });
    std::lock_guard locked(state.lock);
    state.done = true;
    state.ended.notify_all();
  });
  std::unique_lock locked(state.lock);
  while (!state.done) {
    state.ended.wait_for(locked, kPollInterval);
    if (interrupted) session.cancel();
    if (!session.isCancelled()) report.update(state.fraction.load());
  }
  locked.unlock();
  worker.join();
  if (result) report.update(state.fraction.load());  // the last step may land after the last look
  return result;
}

void exportComposition(const ExportOptions& options) {
  const export_::ExportPreset& preset = presetOrFail(options.preset);
  codecOrFail(options.codec);
  rangeOrFail(options.range);
  const core::OVProject project = withResolvedMedia(readProjectOrFail(options.project), options.project);
  const core::Composition& composition = chosenComposition(project, options.composition, "export");
  if (composition.frameRate.numerator <= 0 || composition.frameRate.denominator <= 0) {
    throw CommandFailure("The composition \"" + composition.name + "\" has an invalid frame rate.");
  }
  const ExportSettings settings = settingsFor(options, preset, composition);
  const std::filesystem::path output = outputPathFor(options.output, settings);
  if (!render::ensureGuiRuntime()) throw CommandFailure("Text cannot be laid out in this process.");
  const ProgressStyle style = options.jsonProgress ? ProgressStyle::json
                              : isatty(STDERR_FILENO) ? ProgressStyle::bar
                                                      : ProgressStyle::lines;
  ProgressReport report(style, settings);
  const auto result = runExport(composition, project, settings, output, report);
  report.end(result.has_value(), output);
  if (result) return;
  if (result.error().kind != export_::ExportError::Kind::cancelled) throw CommandFailure(result.error().message());
  std::error_code ignored;
  std::filesystem::remove(output, ignored);  // the session removes it too; nothing partial may stay
  throw CommandFailure(result.error().message(), kExitInterrupted);
}

}  // namespace

void addExportCommand(CLI::App& app) {
  auto options = std::make_shared<ExportOptions>();
  CLI::App* command = app.add_subcommand("export", "Export a composition to a movie or audio file");
  command->add_option("PROJECT", options->project, "The project file to read")->required();
  command->add_option("-o,--output", options->output,
                      "The file to write (the format's extension is added when it has none)")
      ->required();
  command->add_option("-p,--preset", options->preset, "The export preset, by id (default: match)");
  command->add_option("-c,--composition", options->composition,
                      "The composition to export, by name (default: the active one)");
  auto* workArea = command->add_flag("--work-area", options->workArea, "Export the composition's work area");
  command->add_option("--range", options->range, "Export from A to B seconds, as A:B")->excludes(workArea);
  command->add_option("--codec", options->codec, "h264, proRes4444, hevcWithAlpha or vp9Alpha (default: the preset's)");
  command->add_flag("--json-progress", options->jsonProgress, "Report progress as JSON lines on standard output");
  command->callback([options] { exportComposition(*options); });
}

}  // namespace orvane::cli
