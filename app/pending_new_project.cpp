#include "app/pending_new_project.hpp"

#include <utility>

#include "core/project.hpp"

namespace orvane::app {

namespace {

std::mutex& choiceLock() {
  static std::mutex lock;
  return lock;
}

std::optional<PendingNewProject::Choice>& pendingChoice() {
  static std::optional<PendingNewProject::Choice> choice;
  return choice;
}

}  // namespace

void PendingNewProject::set(Choice choice) {
  std::scoped_lock guard(choiceLock());
  pendingChoice() = std::move(choice);
}

std::optional<PendingNewProject::Choice> PendingNewProject::consume() {
  std::scoped_lock guard(choiceLock());
  return std::exchange(pendingChoice(), std::nullopt);
}

core::OVProject PendingNewProject::starterProject() {
  if (auto choice = consume()) return core::OVProject::starter(choice->preset, choice->editingMode);
  return core::OVProject::starter();
}

}  // namespace orvane::app
