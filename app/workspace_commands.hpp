#pragma once
// The one command table of the application: every menu, its items in order,
// their titles and key equivalents, and which window action each calls.
// Each document window builds its menu bar from it with its own actions, so
// a command always acts on the window it was chosen in. Keys are written as
// the table names them: Command is Ctrl, Option is Alt. Commands without a
// modifier (single letters, arrows, Space, Delete) give way to a text field
// that has the keyboard focus. Main thread.

#include <QKeySequence>
#include <QString>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "app/workspace_actions.hpp"

class QAction;
class QMenu;
class QMenuBar;

namespace orvane::app {

enum CommandModifier : unsigned { kNoModifier = 0, kCommand = 1u, kOption = 2u, kShift = 4u };

// Commands that the application rather than a window carries out.
enum class ShellCommand { none, stopScreenRecording, gpuStagePreview, about, checkForUpdates, welcome, help };

struct CommandItem {
  std::string_view menu;     // "Orvane" is the application menu
  std::string_view submenu;  // empty when the item sits in the menu itself
  std::string_view title;
  int key = 0;  // a Qt::Key; 0 for none
  unsigned modifiers = kCommand;
  WorkspaceActions::Action WorkspaceActions::* action = nullptr;
  ShellCommand shell = ShellCommand::none;
};

// The table in menu order, menus in the order of the menu bar.
const std::vector<CommandItem>& workspaceCommandTable();
// The shortcut of an item; empty when it has no key.
QKeySequence keySequenceFor(const CommandItem& item);
// A key without Command or Option, which a text field keeps for itself.
bool isBareKey(const CommandItem& item);

// What the application does for the document commands and its own menu.
struct ShellActions {
  std::function<void()> newDocument, openDocument, closeWindow, save, saveAs, revert, quit;
  std::function<void()> showWelcome, about, checkForUpdates;
  std::function<std::vector<std::filesystem::path>()> recentDocuments;
  std::function<void(const std::filesystem::path&)> openRecent;
};

struct BuiltMenus {
  QAction* undo = nullptr;
  QAction* redo = nullptr;
  QMenu* openRecent = nullptr;
  // Every item by its title (submenu items too).
  std::map<QString, QAction*> byTitle;
};

// Fills menuBar for one window. undo and redo call the window's stack.
BuiltMenus buildMenus(QMenuBar& menuBar, const WorkspaceActions& actions, const ShellActions& shell,
                      std::function<void()> undo, std::function<void()> redo);

// Once per application: single-letter and arrow shortcuts are inert while a
// text field (line edit, text edit, spin box) has the keyboard focus.
void installTextFieldKeyGuard();

}  // namespace orvane::app
