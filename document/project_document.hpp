#pragma once
// The one mutable owner of an open project. Every edit goes through
// perform (one undo step), performWithoutUndo (derived changes) or the
// interaction calls (a drag: many live changes, one undo step). Undo keeps
// whole project values: a snapshot is an O(1) copy of the shared tree.
// Main thread only; other threads take a copy of project() first.

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/project.hpp"
#include "document/project_codec_error.hpp"
#include "document/undo_stack.hpp"

namespace orvane::document {

class ProjectDocument {
 public:
  using Change = std::function<void(core::OVProject&)>;
  using CompositionChange = std::function<void(core::Composition&)>;
  using LayerChange = std::function<void(core::Layer&)>;
  // Whether any mouse button is held now; the desktop asks the toolkit.
  using MouseButtonsDown = std::function<bool()>;

  explicit ProjectDocument(core::OVProject project = core::OVProject::starter(),
                           MouseButtonsDown mouseButtonsDown = {});

  // Opens a project file: a folder or unreadable file gives the sentence
  // "The file is empty or is a folder.", a bad file the codec's error, and a
  // frame rate of zero (which the codec lets through) a corrupt-data error.
  static std::expected<core::OVProject, ProjectCodecError> read(const std::filesystem::path& path);

  const core::OVProject& project() const { return project_; }
  // What a save writes: the live value, mid-drag included.
  core::OVProject snapshot() const { return project_; }
  // The bytes of a save (stamped by the codec; this value does not change).
  std::string fileContents() const;

  // Goes up by one at each change of the content; views refresh on it.
  std::int64_t revision() const { return revision_; }
  bool isInteracting() const { return interactionDepth_ > 0; }
  int interactionDepth() const { return interactionDepth_; }

  const core::Composition* activeComposition() const { return project_.activeComposition(); }
  std::optional<core::Uuid> activeCompositionID() const;

  // --- Edits ---
  // One undoable step named actionName. A change that leaves the project
  // equal leaves no trace: no revision, no undo entry, no new timestamp.
  void perform(std::string_view actionName, UndoStack* undo, const Change& change);
  // The same without undo and without touching modifiedAt.
  void performWithoutUndo(const Change& change);
  // Registers restoring snapshot; running it registers the opposite step.
  void registerUndo(core::OVProject snapshot, std::string actionName, UndoStack* undo);
  void updateActiveComposition(std::string_view actionName, UndoStack* undo,
                               const CompositionChange& change);
  void updateLayer(const core::Uuid& layerID, std::string_view actionName, UndoStack* undo,
                   const LayerChange& change);

  // --- Interactions (drags, scrubs) ---
  void beginInteraction();
  // A live change: published at once (revision moves), undone as part of
  // the interaction. Without a running interaction, a change without undo.
  void updateInteraction(const Change& change);
  // At the outermost end: one undo step back to the start, if anything
  // changed since.
  void endInteraction(std::string_view actionName, UndoStack* undo);
  // At the outermost cancel: back to the start.
  void cancelInteraction();
  // Ends a mouse-driven interaction whose end event got lost, keeping its
  // work as one step called "Edit". Nothing while a button is still down.
  void recoverOrphanedInteraction(UndoStack* undo);

  // t snapped to the active composition's frames; t when there is none.
  core::OVTime frameSnapped(const core::OVTime& t) const;

  // --- Packaged projects ---
  // Some asset has a path relative to the project file.
  bool hasPackagedMedia() const;
  // Turns relative asset paths into absolute ones against the folder of
  // projectPath, without an undo step.
  void resolvePackagedMedia(const std::filesystem::path& projectPath);

  // --- Observation ---
  // Called after every revision change. Returns a token for removal.
  int addRevisionObserver(std::function<void()> observer);
  void removeRevisionObserver(int token);

 private:
  void publish();
  void stamp() { project_.modifiedAt = core::nowTimestamp(); }

  core::OVProject project_;
  std::optional<core::OVProject> interactionSnapshot_;
  int interactionDepth_ = 0;
  bool interactionBeganWithMouse_ = false;
  std::int64_t revision_ = 0;
  MouseButtonsDown mouseButtonsDown_;
  std::vector<std::pair<int, std::function<void()>>> observers_;
  int nextObserverToken_ = 1;
};

}  // namespace orvane::document
