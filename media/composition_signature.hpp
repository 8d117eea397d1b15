#pragma once
// What a composition's media structure is, as one text: equal texts mean
// the assembled media would be the same, so playback rebuilds only when the
// text changes and swaps the render plan otherwise. It holds the duration,
// size and rate, and per layer its kind, switches, audio values and, for
// footage, stills and nested compositions, its timing and file; transforms,
// effects, masks and generated content stay out, as they are drawn from the
// plan. Plain value; any thread.

#include <string>

#include "core/composition.hpp"
#include "core/project.hpp"

namespace orvane::media {

struct CompositionSignature {
  std::string value;

  CompositionSignature() = default;
  CompositionSignature(const core::Composition& composition, const core::OVProject& project);

  friend bool operator==(const CompositionSignature&, const CompositionSignature&) = default;
};

// The structure of a nested composition: its size, duration and per layer
// the kind, switches and timing (no audio values), nested ones within, to
// the nesting limit; "missing" for an unknown composition.
std::string nestedStructureFingerprint(const core::Uuid& compositionID, const core::OVProject& project, int depth);

}  // namespace orvane::media
