#include "app/workspace_commands.hpp"

#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <utility>

namespace orvane::app {

namespace {

QString text(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }
// Menu titles show "&" as itself, not as a mnemonic marker.
QString menuTitle(std::string_view s) { return text(s).replace(QLatin1Char('&'), QStringLiteral("&&")); }

class MenuBuilder {
 public:
  MenuBuilder(QMenuBar& bar, BuiltMenus& built) : bar_(bar), built_(built) {}

  QMenu* menu(std::string_view name) {
    auto [it, added] = menus_.try_emplace(std::string(name), nullptr);
    if (added) it->second = bar_.addMenu(menuTitle(name));
    return it->second;
  }
  QMenu* submenu(std::string_view menuName, std::string_view name) {
    const std::string key = std::string(menuName) + "/" + std::string(name);
    auto [it, added] = menus_.try_emplace(key, nullptr);
    if (added) it->second = menu(menuName)->addMenu(menuTitle(name));
    return it->second;
  }
  QAction* add(QMenu* into, const QString& title, std::function<void()> perform, QKeySequence key = {}) {
    QAction* action = into->addAction(QString(title).replace(QLatin1Char('&'), QStringLiteral("&&")));
    if (!key.isEmpty()) action->setShortcut(key);
    if (perform) {
      QObject::connect(action, &QAction::triggered, action, [perform = std::move(perform)] { perform(); });
    } else {
      action->setEnabled(false);
    }
    built_.byTitle[title] = action;
    return action;
  }

 private:
  QMenuBar& bar_;
  BuiltMenus& built_;
  std::map<std::string, QMenu*> menus_;
};

std::function<void()> shellPerform(ShellCommand command, const ShellActions& shell) {
  switch (command) {
    case ShellCommand::about:
      return shell.about;
    case ShellCommand::checkForUpdates:
      return shell.checkForUpdates;
    case ShellCommand::welcome:
      return shell.showWelcome;
    // No help window, full-screen presentation, screen recording or GPU
    // stage preview yet: those rows stay disabled.
    case ShellCommand::help:
    case ShellCommand::stopScreenRecording:
    case ShellCommand::gpuStagePreview:
    case ShellCommand::none:
      return {};
  }
  return {};
}

void fillOpenRecent(QMenu* menu, const ShellActions& shell) {
  menu->clear();
  const auto paths = shell.recentDocuments ? shell.recentDocuments() : std::vector<std::filesystem::path>{};
  for (const auto& path : paths) {
    QAction* action = menu->addAction(QString::fromStdString(path.filename().string()));
    action->setToolTip(QString::fromStdString(path.string()));
    QObject::connect(action, &QAction::triggered, action, [open = shell.openRecent, path] {
      if (open) open(path);
    });
  }
  if (paths.empty()) menu->addAction(QStringLiteral("No Recent Documents"))->setEnabled(false);
}

void addDocumentItems(MenuBuilder& builder, QMenu* file, const ShellActions& shell, BuiltMenus& built) {
  builder.add(file, QStringLiteral("New"), shell.newDocument, QKeySequence::New);
  builder.add(file, QStringLiteral("Open\u2026"), shell.openDocument, QKeySequence::Open);
  built.openRecent = file->addMenu(QStringLiteral("Open Recent"));
  QObject::connect(built.openRecent, &QMenu::aboutToShow, built.openRecent,
                   [menu = built.openRecent, shell] { fillOpenRecent(menu, shell); });
  fillOpenRecent(built.openRecent, shell);
  file->addSeparator();
  builder.add(file, QStringLiteral("Close"), shell.closeWindow, QKeySequence::Close);
  builder.add(file, QStringLiteral("Save"), shell.save, QKeySequence::Save);
  // Ctrl+Shift+S belongs to Snap in Timeline; a shared key would fire
  // neither, so Save As takes Alt as well.
  builder.add(file, QStringLiteral("Save As\u2026"), shell.saveAs,
              QKeySequence(Qt::CTRL | Qt::ALT | Qt::SHIFT | Qt::Key_S));
  builder.add(file, QStringLiteral("Revert to Saved"), shell.revert);
  file->addSeparator();
}

}  // namespace

BuiltMenus buildMenus(QMenuBar& menuBar, const WorkspaceActions& actions, const ShellActions& shell,
                      std::function<void()> undo, std::function<void()> redo) {
  BuiltMenus built;
  MenuBuilder builder(menuBar, built);
  builder.menu("Orvane");
  addDocumentItems(builder, builder.menu("File"), shell, built);
  QMenu* edit = builder.menu("Edit");
  built.undo = builder.add(edit, QStringLiteral("Undo"), std::move(undo), QKeySequence::Undo);
  built.redo = builder.add(edit, QStringLiteral("Redo"), std::move(redo), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
  edit->addSeparator();

  for (const CommandItem& row : workspaceCommandTable()) {
    QMenu* into = row.submenu.empty() ? builder.menu(row.menu) : builder.submenu(row.menu, row.submenu);
    std::function<void()> perform = row.action != nullptr ? actions.*(row.action) : shellPerform(row.shell, shell);
    QAction* action = builder.add(into, text(row.title), std::move(perform), keySequenceFor(row));
    // The Delete row also answers to Backspace, the key that laptops label
    // Delete.
    if (row.key == Qt::Key_Delete) action->setShortcuts({QKeySequence(Qt::Key_Delete), QKeySequence(Qt::Key_Backspace)});
  }
  QMenu* application = builder.menu("Orvane");
  application->addSeparator();
  builder.add(application, QStringLiteral("Quit Orvane"), shell.quit, QKeySequence::Quit);
  return built;
}

namespace {

bool isTextField(const QWidget* widget) {
  if (widget == nullptr) return false;
  if (qobject_cast<const QLineEdit*>(widget) || qobject_cast<const QAbstractSpinBox*>(widget)) return true;
  if (const auto* edit = qobject_cast<const QTextEdit*>(widget)) return !edit->isReadOnly();
  if (const auto* edit = qobject_cast<const QPlainTextEdit*>(widget)) return !edit->isReadOnly();
  return false;
}

// Accepting the shortcut override hands the key to the focused widget
// instead of the menu shortcut, as it does for a text field's own keys.
class TextFieldKeyGuard final : public QObject {
 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::ShortcutOverride) return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    const bool bare = (key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) == 0;
    if (bare && isTextField(qobject_cast<QWidget*>(watched))) {
      event->accept();
      return true;
    }
    return false;
  }
};

}  // namespace

void installTextFieldKeyGuard() {
  QCoreApplication* app = QCoreApplication::instance();
  const QString name = QStringLiteral("orvane-text-field-key-guard");
  if (app == nullptr || app->findChild<QObject*>(name, Qt::FindDirectChildrenOnly) != nullptr) return;
  auto* guard = new TextFieldKeyGuard;
  guard->setObjectName(name);
  guard->setParent(app);
  app->installEventFilter(guard);
}

}  // namespace orvane::app
