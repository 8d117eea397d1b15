#pragma once
// The built-in behaviors, 65 in 11 categories, in the order the panel shows
// them. The list is code and fixed at build time; ids are never reused,
// since the assistant's tools refer to behaviors by id. Built once on first
// use and immutable after; any thread may read it.

#include <optional>
#include <string_view>
#include <vector>

#include "behaviors/behavior.hpp"
#include "core/layer_content.hpp"

namespace orvane::behaviors {

// One group of the panel: a category and its matching behaviors.
struct BehaviorGroup {
  BehaviorCategory category = BehaviorCategory::entrance;
  std::vector<const Behavior*> behaviors;
};

struct BehaviorCatalog {
  // Entrance, exit, emphasis, motion, opacity, scale, rotation, crop,
  // effects, audio, text: each category's rows in panel order.
  static const std::vector<Behavior>& all();
  // Null for an unknown id. The pointer stays valid for the program's life.
  static const Behavior* behavior(std::string_view id);
  // Behaviors that apply to kind (any kind when none) and whose name,
  // summary or category display name contains the trimmed query, ignoring
  // case; an empty query matches all. Catalog order.
  static std::vector<const Behavior*> behaviorsMatching(std::string_view query,
                                                        std::optional<core::LayerKind> kind = std::nullopt);
  // The same, by category in catalog order; categories without a match are
  // left out.
  static std::vector<BehaviorGroup> grouped(std::string_view query,
                                            std::optional<core::LayerKind> kind = std::nullopt);
};

}  // namespace orvane::behaviors
