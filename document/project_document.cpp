#include "document/project_document.hpp"

#include <algorithm>

#include "core/log.hpp"
#include "document/project_codec.hpp"

namespace orvane::document {

using core::OVProject;

ProjectDocument::ProjectDocument(OVProject project, MouseButtonsDown mouseButtonsDown)
    : project_(std::move(project)), mouseButtonsDown_(std::move(mouseButtonsDown)) {}

namespace {

bool isUsable(const core::FrameRate& r) { return r.numerator > 0 && r.denominator > 0; }

// The codec keeps a file's frame rates as they are; a window would stop the
// program at the first use of a zero rate, so the document refuses them.
std::optional<ProjectCodecError> unusableRate(const OVProject& p) {
  for (const core::Composition& c : p.compositions) {
    if (!isUsable(c.frameRate)) {
      return ProjectCodecError::corruptData("The composition \"" + c.name + "\" has a frame rate that is not positive.");
    }
  }
  for (const core::MediaAsset& a : p.assets) {
    if (a.frameRate && !isUsable(*a.frameRate)) {
      return ProjectCodecError::corruptData("The media \"" + a.name + "\" has a frame rate that is not positive.");
    }
  }
  return std::nullopt;
}

}  // namespace

std::expected<OVProject, ProjectCodecError> ProjectDocument::read(const std::filesystem::path& path) {
  auto project = ProjectCodec::read(path);
  if (!project) return project;
  if (auto problem = unusableRate(*project)) return std::unexpected(*problem);
  return project;
}

std::string ProjectDocument::fileContents() const { return ProjectCodec::encode(project_); }

std::optional<core::Uuid> ProjectDocument::activeCompositionID() const {
  const core::Composition* c = activeComposition();
  return c ? std::optional(c->id) : std::nullopt;
}

void ProjectDocument::perform(std::string_view actionName, UndoStack* undo, const Change& change) {
  OVProject before = project_;
  change(project_);
  if (project_ == before) return;
  stamp();
  registerUndo(std::move(before), std::string(actionName), undo);
  publish();
}

void ProjectDocument::performWithoutUndo(const Change& change) {
  const OVProject before = project_;
  change(project_);
  if (project_ == before) return;
  publish();
}

void ProjectDocument::registerUndo(OVProject snapshot, std::string actionName, UndoStack* undo) {
  if (undo == nullptr) return;
  // Running the step swaps the snapshot in and registers the way back, so
  // an undo makes its redo and a redo the next undo.
  undo->registerUndo([this, snapshot = std::move(snapshot), actionName, undo]() mutable {
    OVProject current = std::move(project_);
    project_ = std::move(snapshot);
    registerUndo(std::move(current), actionName, undo);
    publish();
  });
  undo->setActionName(std::move(actionName));
}

void ProjectDocument::updateActiveComposition(std::string_view actionName, UndoStack* undo,
                                              const CompositionChange& change) {
  perform(actionName, undo, [&](OVProject& p) { p.updateActiveComposition(change); });
}

void ProjectDocument::updateLayer(const core::Uuid& layerID, std::string_view actionName, UndoStack* undo,
                                  const LayerChange& change) {
  updateActiveComposition(actionName, undo, [&](core::Composition& c) { c.update(layerID, change); });
}

void ProjectDocument::beginInteraction() {
  if (interactionDepth_ == 0) {
    interactionSnapshot_ = project_;
    interactionBeganWithMouse_ = mouseButtonsDown_ && mouseButtonsDown_();
  }
  ++interactionDepth_;
  core::logDebug("document", "beginInteraction depth=" + std::to_string(interactionDepth_));
}

void ProjectDocument::updateInteraction(const Change& change) { performWithoutUndo(change); }

void ProjectDocument::endInteraction(std::string_view actionName, UndoStack* undo) {
  interactionDepth_ = std::max(0, interactionDepth_ - 1);
  core::logDebug("document",
                 "endInteraction " + std::string(actionName) + " depth=" + std::to_string(interactionDepth_));
  if (interactionDepth_ > 0) return;
  std::optional<OVProject> snapshot = std::exchange(interactionSnapshot_, std::nullopt);
  if (!snapshot || project_ == *snapshot) return;
  // The ticks have published the content already: no new revision here.
  stamp();
  registerUndo(std::move(*snapshot), std::string(actionName), undo);
}

void ProjectDocument::cancelInteraction() {
  interactionDepth_ = std::max(0, interactionDepth_ - 1);
  if (interactionDepth_ > 0) return;
  std::optional<OVProject> snapshot = std::exchange(interactionSnapshot_, std::nullopt);
  if (!snapshot) return;
  project_ = std::move(*snapshot);
  publish();
}

void ProjectDocument::recoverOrphanedInteraction(UndoStack* undo) {
  if (!isInteracting() || !interactionBeganWithMouse_) return;
  if (mouseButtonsDown_ && mouseButtonsDown_()) return;
  core::logDebug("document", "recovering orphaned interaction depth=" + std::to_string(interactionDepth_));
  interactionDepth_ = 1;
  endInteraction("Edit", undo);
}

core::OVTime ProjectDocument::frameSnapped(const core::OVTime& t) const {
  const core::Composition* c = activeComposition();
  return c ? c->frameRate.snapped(t) : t;
}

int ProjectDocument::addRevisionObserver(std::function<void()> observer) {
  const int token = nextObserverToken_++;
  observers_.emplace_back(token, std::move(observer));
  return token;
}

void ProjectDocument::removeRevisionObserver(int token) {
  std::erase_if(observers_, [token](const auto& entry) { return entry.first == token; });
}

void ProjectDocument::publish() {
  ++revision_;
  // A copy, so that an observer may add or remove observers.
  const auto observers = observers_;
  for (const auto& [token, observer] : observers) observer();
}

}  // namespace orvane::document
