#include "document/undo_stack.hpp"

namespace orvane::document {

void UndoStack::registerUndo(Action action) {
  switch (mode_) {
    case Mode::undoing: lastTarget_ = &redo_; break;
    case Mode::redoing: lastTarget_ = &undo_; break;
    case Mode::idle:
      redo_.clear();
      lastTarget_ = &undo_;
      break;
  }
  lastTarget_->push_back({std::move(action), {}});
  if (mode_ == Mode::idle) changed();
}

void UndoStack::setActionName(std::string name) {
  if (lastTarget_ == nullptr || lastTarget_->empty()) return;
  lastTarget_->back().name = std::move(name);
  if (mode_ == Mode::idle) changed();
}

std::string UndoStack::undoActionName() const { return undo_.empty() ? std::string() : undo_.back().name; }
std::string UndoStack::redoActionName() const { return redo_.empty() ? std::string() : redo_.back().name; }

std::string UndoStack::undoMenuTitle() const {
  const std::string name = undoActionName();
  return name.empty() ? "Undo" : "Undo " + name;
}

std::string UndoStack::redoMenuTitle() const {
  const std::string name = redoActionName();
  return name.empty() ? "Redo" : "Redo " + name;
}

void UndoStack::undo() { run(undo_, Mode::undoing); }
void UndoStack::redo() { run(redo_, Mode::redoing); }

void UndoStack::run(std::vector<Entry>& from, Mode mode) {
  // An undo pressed while another runs (a closure calling back in) is ignored.
  if (from.empty() || mode_ != Mode::idle) return;
  Entry entry = std::move(from.back());
  from.pop_back();
  mode_ = mode;
  entry.action();
  mode_ = Mode::idle;
  lastTarget_ = nullptr;
  changed();
}

void UndoStack::removeAll() {
  undo_.clear();
  redo_.clear();
  lastTarget_ = nullptr;
  changed();
}

void UndoStack::changed() const {
  if (onChange_) onChange_();
}

}  // namespace orvane::document
