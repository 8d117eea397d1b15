#pragma once
// One open project in a window: its ProjectDocument and undo stack, the
// file it belongs to, its EditorState (the layer selection and status
// messages), the menus built from the command
// table with this window's actions, and the first workspace (layer list,
// stage, playhead bar). The window title is the file name with the mark of
// unsaved changes. Everything the window changes goes through the Commands
// operations, so each change is one undo step. What concerns more than one
// window (opening, saving, closing questions, autosave) the window leaves to
// its WindowHost. Deletes itself when closed; main thread.

#include <QMainWindow>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "app/workspace_actions.hpp"
#include "app/workspace_commands.hpp"
#include "core/project.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"
#include "surfaces/editor_state.hpp"

namespace orvane::app {

class DocumentWindow;
class LayerListView;
class StageView;
class TimeBar;

// What a document window asks of the application.
class WindowHost {
 public:
  virtual ~WindowHost() = default;
  // Asked before the window closes (the unsaved-changes question); false
  // keeps it open.
  virtual bool windowShouldClose(DocumentWindow& window) = 0;
  // The window has closed; it is deleted after this returns.
  virtual void windowClosed(DocumentWindow& window) = 0;
  // The document commands and the application menu for this window.
  virtual ShellActions shellActionsFor(DocumentWindow& window) = 0;
  // After every revision of the window's document.
  virtual void documentChanged(DocumentWindow& window) = 0;
  // The window is shown for the first time.
  virtual void workspaceStarted(DocumentWindow& window) = 0;
};

class DocumentWindow final : public QMainWindow {
 public:
  DocumentWindow(core::OVProject project, std::optional<std::filesystem::path> file, WindowHost& host);
  ~DocumentWindow() override;

  document::ProjectDocument& document() { return *document_; }
  const std::shared_ptr<document::ProjectDocument>& sharedDocument() const { return document_; }
  const std::shared_ptr<document::UndoStack>& undoStack() const { return undo_; }

  const std::optional<std::filesystem::path>& filePath() const { return file_; }
  void setFilePath(std::filesystem::path path);
  // The file's name, or the project's name for a document never saved.
  QString displayName() const;

  bool hasUnsavedChanges() const;
  // The document's present value is what its file holds now.
  void markSaved();
  // Replaces the whole project (Revert), forgetting undo.
  void replaceProject(core::OVProject project);
  // Closes without the unsaved-changes question (after it was answered).
  void closeWithoutAsking();

  // The selected layers in stacking order.
  std::vector<core::Uuid> selection() const;
  void setSelection(const std::vector<core::Uuid>& ids);
  surfaces::EditorState& editorState() { return editorState_; }

  const WorkspaceActions& workspaceActions() const { return actions_; }
  const BuiltMenus& menus() const { return menus_; }
  StageView* stage() const { return stage_; }
  LayerListView* layerList() const { return layerList_; }
  TimeBar* timeBar() const { return timeBar_; }

  void showStatus(const QString& message);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  WorkspaceActions makeActions();
  QWidget* makeWorkspace();
  void revisionChanged();
  void editorChanged(surfaces::EditorField field);
  void undoChanged();
  void updateTitle();
  core::OVTime playhead() const;
  void movePlayheadTo(const core::OVTime& t);
  void stepFrames(int frames);
  void selectAdded(const std::optional<core::Uuid>& id);
  void splitSelection();

  WindowHost& host_;
  std::shared_ptr<document::ProjectDocument> document_;
  std::shared_ptr<document::UndoStack> undo_;
  std::optional<std::filesystem::path> file_;
  core::OVProject savedProject_;
  surfaces::EditorState editorState_;
  surfaces::Subscription editorSubscription_;
  WorkspaceActions actions_;
  BuiltMenus menus_;
  StageView* stage_ = nullptr;
  LayerListView* layerList_ = nullptr;
  TimeBar* timeBar_ = nullptr;
  int revisionObserver_ = 0;
  bool started_ = false;
  bool closeConfirmed_ = false;
};

}  // namespace orvane::app
