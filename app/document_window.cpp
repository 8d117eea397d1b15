#include "app/document_window.hpp"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QSplitter>
#include <QStatusBar>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "Commands/composition_edits.hpp"
#include "Commands/layer_edits.hpp"
#include "app/interaction_watchdog.hpp"
#include "app/layer_list_view.hpp"
#include "app/stage_view.hpp"
#include "app/time_bar.hpp"
#include "app/unsaved_changes.hpp"
#include "app/workspace_time.hpp"

namespace orvane::app {

DocumentWindow::DocumentWindow(core::OVProject project, std::optional<std::filesystem::path> file,
                               WindowHost& host)
    : host_(host),
      document_(std::make_shared<document::ProjectDocument>(std::move(project), anyMouseButtonDown)),
      undo_(std::make_shared<document::UndoStack>()),
      file_(std::move(file)),
      savedProject_(document_->project()) {
  setAttribute(Qt::WA_DeleteOnClose);
  actions_ = makeActions();
  menus_ = buildMenus(*menuBar(), actions_, host_.shellActionsFor(*this), [this] { undo_->undo(); },
                      [this] { undo_->redo(); });
  setCentralWidget(makeWorkspace());
  statusBar();
  resize(1280, 800);
  revisionObserver_ = document_->addRevisionObserver([this] { revisionChanged(); });
  undo_->setOnChange([this] { undoChanged(); });
  editorSubscription_ = editorState_.onChange([this](surfaces::EditorField field) { editorChanged(field); });
  undoChanged();
  updateTitle();
  layerList_->reload(selection());
}

DocumentWindow::~DocumentWindow() {
  document_->removeRevisionObserver(revisionObserver_);
  undo_->setOnChange({});
}

QWidget* DocumentWindow::makeWorkspace() {
  auto* splitter = new QSplitter(Qt::Horizontal);

  auto* layerPanel = new QWidget;
  auto* layerColumn = new QVBoxLayout(layerPanel);
  layerColumn->setContentsMargins(4, 4, 4, 4);
  auto* addRow = new QHBoxLayout;
  const auto addButton = [&](const QString& title, std::function<void()> perform) {
    auto* button = new QToolButton;
    button->setText(title);
    button->setToolTip(QStringLiteral("New %1 Layer").arg(title));
    connect(button, &QToolButton::clicked, button, [perform = std::move(perform)] { perform(); });
    addRow->addWidget(button);
  };
  addButton(QStringLiteral("Text"), actions_.addTextLayer);
  addButton(QStringLiteral("Shape"), [this] {
    selectAdded(commands::addShapeLayer(*document_, core::ShapeContent::ShapeType::rectangle, playhead(), undo_.get()));
  });
  addButton(QStringLiteral("Solid"), actions_.addSolidLayer);
  addButton(QStringLiteral("Adjustment"), actions_.addAdjustmentLayer);
  addRow->addStretch(1);
  layerColumn->addLayout(addRow);
  layerList_ = new LayerListView(document_, undo_);
  layerList_->setOnSelectionChanged([this](std::vector<core::Uuid> ids) { editorState_.selectLayers(ids); });
  layerColumn->addWidget(layerList_, 1);

  auto* stagePanel = new QWidget;
  auto* stageColumn = new QVBoxLayout(stagePanel);
  stageColumn->setContentsMargins(0, 0, 0, 0);
  stageColumn->setSpacing(0);
  stage_ = new StageView(document_);
  timeBar_ = new TimeBar(document_);
  stageColumn->addWidget(stage_, 1);
  stageColumn->addWidget(timeBar_);

  splitter->addWidget(layerPanel);
  splitter->addWidget(stagePanel);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({320, 960});
  return splitter;
}

WorkspaceActions DocumentWindow::makeActions() {
  WorkspaceActions a;
  a.addTextLayer = [this] { selectAdded(commands::addTextLayer(*document_, playhead(), undo_.get())); };
  a.addSolidLayer = [this] {
    selectAdded(commands::addSolidLayer(*document_, core::OVColor{0.5, 0.5, 0.5, 1}, playhead(), undo_.get()));
  };
  a.addAdjustmentLayer = [this] { selectAdded(commands::addAdjustmentLayer(*document_, playhead(), undo_.get())); };
  a.deleteSelection = [this] { commands::deleteLayers(*document_, selection(), undo_.get()); };
  a.duplicateSelection = [this] { commands::duplicateLayers(*document_, selection(), undo_.get()); };
  a.splitAtPlayhead = [this] { splitSelection(); };
  a.selectAllLayers = [this] {
    std::vector<core::Uuid> all;
    if (const core::Composition* c = document_->activeComposition()) {
      for (const core::Layer& layer : c->layers) all.push_back(layer.id);
    }
    setSelection(all);
  };
  a.stepBackward = [this] { stepFrames(-1); };
  a.stepForward = [this] { stepFrames(1); };
  a.goToStart = [this] { movePlayheadTo(core::OVTime::zero); };
  a.goToEnd = [this] {
    if (const core::Composition* c = document_->activeComposition(); c && hasValidFrameRate(*c)) {
      movePlayheadTo(c->duration - c->frameRate.frameDuration());
    }
  };
  a.setWorkAreaStart = [this] { commands::setWorkAreaStart(*document_, playhead(), undo_.get()); };
  a.setWorkAreaEnd = [this] { commands::setWorkAreaEnd(*document_, playhead(), undo_.get()); };
  a.clearWorkArea = [this] { commands::setWorkArea(*document_, std::nullopt, undo_.get()); };
  return a;
}

core::OVTime DocumentWindow::playhead() const {
  const core::Composition* c = document_->activeComposition();
  if (c == nullptr) return core::OVTime::zero;
  return playheadFrameTime(*c).value_or(c->playheadTime);
}

void DocumentWindow::movePlayheadTo(const core::OVTime& t) {
  const core::Composition* c = document_->activeComposition();
  if (c == nullptr || !hasValidFrameRate(*c)) return;
  const core::OVTime last = std::max(core::OVTime::zero, c->duration - c->frameRate.frameDuration());
  commands::setPlayhead(*document_, c->frameRate.snapped(core::OVTime::clamp(t, core::OVTime::zero, last)));
}

void DocumentWindow::stepFrames(int frames) {
  const core::Composition* c = document_->activeComposition();
  if (c == nullptr || !hasValidFrameRate(*c)) return;
  movePlayheadTo(c->frameRate.timeForFrame(c->frameRate.frameIndexAt(c->playheadTime) + frames));
}

void DocumentWindow::selectAdded(const std::optional<core::Uuid>& id) {
  if (id) setSelection({*id});
}

void DocumentWindow::splitSelection() {
  const int count = commands::splitLayers(*document_, selection(), playhead(), undo_.get());
  if (count == 0) {
    showStatus(QStringLiteral("Move the playhead inside a selected layer to split it."));
  } else {
    showStatus(QStringLiteral("Split %1 layer%2.").arg(count).arg(count > 1 ? QStringLiteral("s") : QString()));
  }
}

std::vector<core::Uuid> DocumentWindow::selection() const {
  std::vector<core::Uuid> ids;
  const auto& selected = editorState_.selectedLayerIDs();
  if (const core::Composition* c = document_->activeComposition()) {
    for (const core::Layer& layer : c->layers) {
      if (selected.contains(layer.id)) ids.push_back(layer.id);
    }
  }
  return ids;
}

void DocumentWindow::setSelection(const std::vector<core::Uuid>& ids) { editorState_.selectLayers(ids); }

void DocumentWindow::showStatus(const QString& message) { editorState_.showStatus(message.toStdString()); }

void DocumentWindow::editorChanged(surfaces::EditorField field) {
  switch (field) {
    case surfaces::EditorField::selectedLayerIDs:
      // The list reports the user's own selection; only other changes
      // (a new layer, Select All, a deleted layer) need it rebuilt.
      if (!layerList_->isReportingSelection()) layerList_->reload(selection());
      break;
    case surfaces::EditorField::statusMessage:
      if (const auto message = editorState_.statusMessage()) {
        statusBar()->showMessage(QString::fromStdString(*message),
                                 static_cast<int>(surfaces::EditorState::defaultStatusSeconds * 1000));
      }
      break;
    case surfaces::EditorField::errorMessage:
      if (const auto& error = editorState_.errorMessage()) statusBar()->showMessage(QString::fromStdString(*error));
      break;
    default:
      break;
  }
}

void DocumentWindow::revisionChanged() {
  // Layers that went (deleted, undone) leave the selection.
  editorState_.pruneSelectionAgainst(document_->activeComposition());
  layerList_->reload(selection());
  timeBar_->reload();
  stage_->update();
  setWindowModified(hasUnsavedChanges());
  host_.documentChanged(*this);
}

void DocumentWindow::undoChanged() {
  menus_.undo->setText(QString::fromStdString(undo_->undoMenuTitle()));
  menus_.redo->setText(QString::fromStdString(undo_->redoMenuTitle()));
  menus_.undo->setEnabled(undo_->canUndo());
  menus_.redo->setEnabled(undo_->canRedo());
}

void DocumentWindow::setFilePath(std::filesystem::path path) {
  file_ = std::move(path);
  updateTitle();
}

QString DocumentWindow::displayName() const {
  if (file_) return QString::fromStdString(file_->filename().string());
  return QString::fromStdString(document_->project().name);
}

void DocumentWindow::updateTitle() {
  setWindowTitle(displayName() + QStringLiteral("[*]"));
  setWindowModified(hasUnsavedChanges());
}

bool DocumentWindow::hasUnsavedChanges() const {
  return app::hasUnsavedChanges(document_->project(), savedProject_);
}

void DocumentWindow::markSaved() {
  savedProject_ = document_->project();
  updateTitle();
}

void DocumentWindow::replaceProject(core::OVProject project) {
  savedProject_ = project;
  undo_->removeAll();
  document_->performWithoutUndo([&](core::OVProject& p) { p = std::move(project); });
  updateTitle();
}

void DocumentWindow::closeWithoutAsking() {
  closeConfirmed_ = true;
  close();
}

void DocumentWindow::closeEvent(QCloseEvent* event) {
  if (!closeConfirmed_ && !host_.windowShouldClose(*this)) {
    event->ignore();
    return;
  }
  closeConfirmed_ = true;
  event->accept();
  host_.windowClosed(*this);
}

void DocumentWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (started_) return;
  started_ = true;
  host_.workspaceStarted(*this);
}

}  // namespace orvane::app
