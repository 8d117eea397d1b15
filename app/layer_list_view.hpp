#pragma once
// The layer list of a document window: the active composition's layers in
// stacking order (top first), each with its name, kind and the visibility,
// lock and solo switches. Clicking a switch edits the document through the
// layer commands (one undo step each); selecting rows reports the chosen
// layer ids to the window, which keeps the selection. Owned by its window;
// main thread.

#include <QTableWidget>
#include <functional>
#include <memory>
#include <vector>

#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"

namespace orvane::app {

class LayerListView final : public QTableWidget {
 public:
  enum Column { nameColumn, kindColumn, visibleColumn, lockColumn, soloColumn, columnCount };

  LayerListView(std::shared_ptr<document::ProjectDocument> document, std::shared_ptr<document::UndoStack> undo,
                QWidget* parent = nullptr);

  // Called when the user changes the selected rows.
  void setOnSelectionChanged(std::function<void(std::vector<core::Uuid>)> callback) {
    onSelectionChanged_ = std::move(callback);
  }
  // Rebuilds the rows from the document and selects ids.
  void reload(const std::vector<core::Uuid>& selection);
  // The layer shown in row, if any.
  std::optional<core::Uuid> layerAt(int row) const;
  // While the user's selection is being reported (so the window need not
  // reload the rows it came from).
  bool isReportingSelection() const { return reporting_; }
  // Flips the visibility, lock or solo switch of row (one undo step); other
  // columns do nothing.
  void switchClicked(int row, int column);

 private:
  void reportSelection();

  std::shared_ptr<document::ProjectDocument> document_;
  std::shared_ptr<document::UndoStack> undo_;
  std::vector<core::Uuid> rows_;
  bool reloading_ = false;
  bool reporting_ = false;
  std::function<void(std::vector<core::Uuid>)> onSelectionChanged_;
};

}  // namespace orvane::app
