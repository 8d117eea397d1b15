#pragma once
// A stack of named undo closures, as a window's Edit menu drives it. An
// action registered while an undo runs becomes the redo entry, one
// registered during a redo the next undo entry; any other registration
// starts a new step and forgets what could be redone. The change callback
// fires after every push, undo, redo and clear, so menus can retitle
// themselves. Owned by one window; main thread only. The closures may hold
// pointers to the document they restore, so a stack must not outlive it.

#include <functional>
#include <string>
#include <vector>

namespace orvane::document {

class UndoStack {
 public:
  using Action = std::function<void()>;

  // Registers the closure that reverses what just happened.
  void registerUndo(Action action);
  // Names the entry registered last (the undo entry, or the redo entry
  // while an undo runs).
  void setActionName(std::string name);

  bool canUndo() const { return !undo_.empty(); }
  bool canRedo() const { return !redo_.empty(); }
  // The name of the step that undo() or redo() would run; empty when none.
  std::string undoActionName() const;
  std::string redoActionName() const;
  // "Undo Move", or "Undo" alone when there is nothing or no name.
  std::string undoMenuTitle() const;
  std::string redoMenuTitle() const;

  void undo();
  void redo();
  void removeAll();

  bool isUndoing() const { return mode_ == Mode::undoing; }
  bool isRedoing() const { return mode_ == Mode::redoing; }
  std::size_t undoCount() const { return undo_.size(); }
  std::size_t redoCount() const { return redo_.size(); }

  void setOnChange(std::function<void()> callback) { onChange_ = std::move(callback); }

 private:
  struct Entry {
    Action action;
    std::string name;
  };
  enum class Mode { idle, undoing, redoing };

  void run(std::vector<Entry>& from, Mode mode);
  void changed() const;

  std::vector<Entry> undo_;
  std::vector<Entry> redo_;
  Mode mode_ = Mode::idle;
  std::vector<Entry>* lastTarget_ = nullptr;
  std::function<void()> onChange_;
};

}  // namespace orvane::document
