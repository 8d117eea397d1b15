#pragma once
// The built-in export presets: each fills in an ExportSettings for a
// composition (its size when the preset has none, its rate, range, sample
// rate and motion blur). Plain values; the list is fixed and may be read from
// any thread.

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/composition.hpp"
#include "core/geometry.hpp"
#include "export/export_settings.hpp"

namespace orvane::export_ {

struct ExportPreset {
  std::string id;
  std::string name;
  std::string detail;
  std::optional<core::OVSize> size;  // none: the composition's size
  double videoBitrateMbps = 16;
  double audioBitrateKbps = 192;
  ExportMediaChannels channels = ExportMediaChannels::videoAndAudio;
  ExportCodec codec = ExportCodec::h264;

  // The ten built-in presets in menu order, "match" first.
  static std::span<const ExportPreset> all();
  static const ExportPreset& matchComposition() { return all()[0]; }
  // A built-in preset by its id ("youtube.1080", ...); none when unknown.
  static std::optional<ExportPreset> withID(std::string_view id);
  // By the composition's aspect ratio: vertical, square, else 4K above 2560
  // pixels wide and 1080p otherwise.
  static const ExportPreset& recommended(const core::Composition& composition);

  ExportSettings settingsFor(const core::Composition& composition) const;

  friend bool operator==(const ExportPreset&, const ExportPreset&) = default;
};

}  // namespace orvane::export_
