#include "app/layer_list_view.hpp"

#include <QHeaderView>
#include <QSignalBlocker>
#include <algorithm>

#include "Commands/layer_edits.hpp"
#include "core/enum_text.hpp"
#include "core/layer_content.hpp"

namespace orvane::app {

namespace {

QTableWidgetItem* switchItem(bool on, const QString& onText, const QString& toolTip) {
  auto* item = new QTableWidgetItem(on ? onText : QString());
  item->setTextAlignment(Qt::AlignCenter);
  item->setToolTip(toolTip);
  item->setData(Qt::UserRole, on);
  item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
  return item;
}

}  // namespace

LayerListView::LayerListView(std::shared_ptr<document::ProjectDocument> document,
                             std::shared_ptr<document::UndoStack> undo, QWidget* parent)
    : QTableWidget(parent), document_(std::move(document)), undo_(std::move(undo)) {
  setColumnCount(columnCount);
  setHorizontalHeaderLabels({QStringLiteral("Name"), QStringLiteral("Kind"), QStringLiteral("Visible"),
                             QStringLiteral("Lock"), QStringLiteral("Solo")});
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  verticalHeader()->hide();
  horizontalHeader()->setSectionResizeMode(nameColumn, QHeaderView::Stretch);
  for (int c = kindColumn; c < columnCount; ++c) horizontalHeader()->setSectionResizeMode(c, QHeaderView::ResizeToContents);
  connect(this, &QTableWidget::cellClicked, this, [this](int row, int column) { switchClicked(row, column); });
  connect(this, &QTableWidget::itemSelectionChanged, this, [this] { reportSelection(); });
}

std::optional<core::Uuid> LayerListView::layerAt(int row) const {
  if (row < 0 || row >= static_cast<int>(rows_.size())) return std::nullopt;
  return rows_[static_cast<std::size_t>(row)];
}

void LayerListView::reload(const std::vector<core::Uuid>& selection) {
  reloading_ = true;
  const QSignalBlocker blocker(this);
  rows_.clear();
  const core::Composition* composition = document_->activeComposition();
  const int count = composition ? static_cast<int>(composition->layers.size()) : 0;
  setRowCount(count);
  clearSelection();
  for (int row = 0; row < count; ++row) {
    const core::Layer& layer = composition->layers[static_cast<std::size_t>(row)];
    rows_.push_back(layer.id);
    auto* name = new QTableWidgetItem(QString::fromStdString(layer.displayNameIn(document_->project())));
    name->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    setItem(row, nameColumn, name);
    const auto kind = core::displayName(layer.kind());
    auto* kindItem = new QTableWidgetItem(QString::fromUtf8(kind.data(), static_cast<qsizetype>(kind.size())));
    kindItem->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    setItem(row, kindColumn, kindItem);
    setItem(row, visibleColumn, switchItem(layer.isEnabled, QStringLiteral("\u25C9"), QStringLiteral("Visible")));
    setItem(row, lockColumn, switchItem(layer.isLocked, QStringLiteral("\U0001F512"), QStringLiteral("Locked")));
    setItem(row, soloColumn, switchItem(layer.isSolo, QStringLiteral("S"), QStringLiteral("Solo")));
    if (std::find(selection.begin(), selection.end(), layer.id) != selection.end()) {
      selectionModel()->select(model()->index(row, 0),
                               QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
  }
  reloading_ = false;
}

void LayerListView::switchClicked(int row, int column) {
  const auto id = layerAt(row);
  if (!id) return;
  switch (column) {
    case visibleColumn:
      commands::toggleVisibility(*document_, {*id}, undo_.get());
      break;
    case lockColumn:
      commands::toggleLock(*document_, {*id}, undo_.get());
      break;
    case soloColumn:
      commands::toggleSolo(*document_, {*id}, undo_.get());
      break;
    default:
      break;
  }
}

void LayerListView::reportSelection() {
  if (reloading_ || !onSelectionChanged_) return;
  std::vector<core::Uuid> ids;
  for (const QModelIndex& index : selectionModel()->selectedRows()) {
    if (const auto id = layerAt(index.row())) ids.push_back(*id);
  }
  reporting_ = true;
  onSelectionChanged_(std::move(ids));
  reporting_ = false;
}

}  // namespace orvane::app
