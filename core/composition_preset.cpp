#include "core/composition_preset.hpp"

#include <algorithm>
#include <utility>

#include "core/numeric.hpp"

namespace orvane::core {
namespace {

std::vector<CompositionPreset> makeAll() {
  using G = CompositionPreset::Group;
  const FrameRate fps30 = FrameRate::fps30;
  return {
      {"youtube.1080", "YouTube 1080p", G::youTube, 1920, 1080, fps30, 30},
      {"youtube.1440", "YouTube 1440p", G::youTube, 2560, 1440, fps30, 30},
      {"youtube.4k", "YouTube 4K", G::youTube, 3840, 2160, fps30, 30},
      {"youtube.shorts", "YouTube Shorts", G::youTube, 1080, 1920, fps30, 30},
      {"tiktok", "TikTok", G::socialMedia, 1080, 1920, fps30, 30},
      {"instagram.reels", "Instagram Reels", G::socialMedia, 1080, 1920, fps30, 30},
      {"instagram.stories", "Instagram Stories", G::socialMedia, 1080, 1920, fps30, 15},
      {"instagram.square", "Instagram Feed (Square)", G::socialMedia, 1080, 1080, fps30, 30},
      {"instagram.portrait", "Instagram Feed (Portrait)", G::socialMedia, 1080, 1350, fps30, 30},
      {"facebook.landscape", "Facebook / LinkedIn", G::socialMedia, 1200, 630, fps30, 30},
      {"x.landscape", "X / Twitter", G::socialMedia, 1600, 900, fps30, 30},
      {"sd.480", "SD 480p", G::general, 854, 480, fps30, 10},
      {"hd.720", "HD 720p", G::general, 1280, 720, fps30, 10},
      {"hd.1080", "Full HD 1080p", G::general, 1920, 1080, fps30, 10},
      {"uhd.4k", "4K UHD", G::general, 3840, 2160, fps30, 10},
      {"cinema.1080p24", "Cinema 1080p 24", G::general, 1920, 1080, FrameRate::fps24, 10},
      {"square.1080", "Square 1080", G::general, 1080, 1080, fps30, 10},
      {"vertical.1080", "Vertical 1080", G::general, 1080, 1920, fps30, 10},
  };
}

}  // namespace

CompositionPreset::CompositionPreset(std::string id, std::string name, Group group, double width, double height,
                                     FrameRate rate, double seconds, std::string detail)
    : id(std::move(id)),
      name(std::move(name)),
      group(group),
      size{width, height},
      frameRate(rate),
      duration(OVTime::fromSeconds(seconds)),
      detail(std::move(detail)) {
  if (this->detail.empty()) {
    this->detail = numberText(width) + " × " + numberText(height) + " · " + rate.displayName();
  }
}

const std::vector<CompositionPreset>& CompositionPreset::all() {
  static const std::vector<CompositionPreset> presets = makeAll();
  return presets;
}

const CompositionPreset& CompositionPreset::defaultPreset() {
  static const CompositionPreset& hd1080 =
      *std::find_if(all().begin(), all().end(), [](const CompositionPreset& p) { return p.id == "hd.1080"; });
  return hd1080;
}

std::optional<CompositionPreset> CompositionPreset::matching(double width, double height) {
  const double w = roundHalfAway(width);
  const double h = roundHalfAway(height);
  for (const CompositionPreset& p : all())
    if (p.size.width == w && p.size.height == h) return p;
  return std::nullopt;
}

Composition CompositionPreset::makeComposition(std::string compositionName, EditingMode mode) const {
  Composition c;
  c.name = std::move(compositionName);
  c.size = size;
  c.frameRate = frameRate;
  c.duration = duration;
  c.workArea = OVTimeRange(OVTime::zero, duration);
  c.editingMode = mode;
  return c;
}

}  // namespace orvane::core
