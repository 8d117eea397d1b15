#pragma once
// One export run: assembles the composition, reads it frame by frame through
// the frame compositor and block by block through the audio mix, and pumps
// both into FFmpeg's encoders and muxer, each pump pulling only as fast as
// its encoder takes. A failed or cancelled run leaves no file at the output
// path (any older file there is gone once the run has started writing).
//
// exportTo blocks the calling thread (the queue gives each run a thread of
// its own); cancel() may be called from any thread. One run per session.

#include <atomic>
#include <expected>
#include <filesystem>
#include <functional>
#include <string>

#include "core/composition.hpp"
#include "core/project.hpp"
#include "export/export_settings.hpp"
#include "media/composition_assembler.hpp"
#include "media/media_asset_cache.hpp"

namespace orvane::export_ {

struct ExportError {
  enum class Kind { readerFailed, writerFailed, nothingToRender, cancelled };
  Kind kind = Kind::nothingToRender;
  std::string text;  // the detail of readerFailed and writerFailed

  static ExportError readerFailed(std::string text) { return {Kind::readerFailed, std::move(text)}; }
  static ExportError writerFailed(std::string text) { return {Kind::writerFailed, std::move(text)}; }
  static ExportError nothingToRender() { return {Kind::nothingToRender, {}}; }
  static ExportError cancelled() { return {Kind::cancelled, {}}; }

  // "Reading the composition failed. " + text, "Writing the output file
  // failed. " + text, "The composition has nothing to export.", "The export
  // was cancelled."
  std::string message() const;
  friend bool operator==(const ExportError&, const ExportError&) = default;
};

// Takes the fraction done, 0 to 1; called on the export's threads.
using ExportProgress = std::function<void(double)>;

class ExportSession {
 public:
  // The assembler's tap maker defaults to the audio effects' taps.
  ExportSession();
  ExportSession(media::CompositionAssembler assembler, media::MediaAssetCache& cache = media::MediaAssetCache::shared());
  ExportSession(const ExportSession&) = delete;
  ExportSession& operator=(const ExportSession&) = delete;

  std::expected<void, ExportError> exportTo(const core::Composition& composition, const core::OVProject& project,
                                            const ExportSettings& settings, const std::filesystem::path& output,
                                            const ExportProgress& progress = {});
  void cancel() { cancelled_.store(true); }
  bool isCancelled() const { return cancelled_.load(); }

 private:
  media::CompositionAssembler assembler_;
  media::MediaAssetCache& cache_;
  std::atomic<bool> cancelled_{false};
};

}  // namespace orvane::export_
