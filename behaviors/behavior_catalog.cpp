#include "behaviors/behavior_catalog.hpp"

#include <algorithm>
#include <map>
#include <string>

#include "behaviors/behavior_builders.hpp"
#include "core/text_util.hpp"

namespace orvane::behaviors {

namespace {

std::vector<Behavior> buildCatalog() {
  using namespace builders;
  std::vector<Behavior> all;
  for (auto part : {entranceBehaviors, exitBehaviors, emphasisBehaviors, motionBehaviors, opacityBehaviors,
                    scaleBehaviors, rotationBehaviors, cropBehaviors, effectsBehaviors, audioBehaviors,
                    textBehaviors}) {
    std::vector<Behavior> rows = part();
    all.insert(all.end(), std::make_move_iterator(rows.begin()), std::make_move_iterator(rows.end()));
  }
  return all;
}

const std::map<std::string, const Behavior*, std::less<>>& index() {
  static const auto byID = [] {
    std::map<std::string, const Behavior*, std::less<>> map;
    for (const Behavior& b : BehaviorCatalog::all()) map.emplace(b.id, &b);
    return map;
  }();
  return byID;
}

// ASCII letters fold; other bytes of UTF-8 text compare as they stand, which
// keeps the arrows, dashes and degree signs of the names matchable.
char folded(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool containsIgnoringCase(std::string_view text, std::string_view query) {
  const auto hit = std::search(text.begin(), text.end(), query.begin(), query.end(),
                               [](char a, char b) { return folded(a) == folded(b); });
  return hit != text.end() || query.empty();
}

bool matches(const Behavior& b, std::string_view query, std::optional<core::LayerKind> kind) {
  if (kind && !b.applies(*kind)) return false;
  return query.empty() || containsIgnoringCase(b.name, query) || containsIgnoringCase(b.summary, query) ||
         containsIgnoringCase(displayName(b.category), query);
}

}  // namespace

const std::vector<Behavior>& BehaviorCatalog::all() {
  static const std::vector<Behavior> catalog = buildCatalog();
  return catalog;
}

const Behavior* BehaviorCatalog::behavior(std::string_view id) {
  const auto& map = index();
  const auto it = map.find(id);
  return it == map.end() ? nullptr : it->second;
}

std::vector<const Behavior*> BehaviorCatalog::behaviorsMatching(std::string_view query,
                                                                std::optional<core::LayerKind> kind) {
  const std::string trimmed = core::trimmed(query);
  std::vector<const Behavior*> out;
  for (const Behavior& b : all())
    if (matches(b, trimmed, kind)) out.push_back(&b);
  return out;
}

std::vector<BehaviorGroup> BehaviorCatalog::grouped(std::string_view query, std::optional<core::LayerKind> kind) {
  const std::vector<const Behavior*> found = behaviorsMatching(query, kind);
  std::vector<BehaviorGroup> groups;
  for (BehaviorCategory category : allBehaviorCategories()) {
    BehaviorGroup group{category, {}};
    for (const Behavior* b : found)
      if (b->category == category) group.behaviors.push_back(b);
    if (!group.behaviors.empty()) groups.push_back(std::move(group));
  }
  return groups;
}

}  // namespace orvane::behaviors
