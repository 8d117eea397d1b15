#include "app/welcome_window.hpp"

#include <QButtonGroup>
#include <QCloseEvent>
#include <QDir>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>
#include <cstdlib>
#include <string>

#include "core/enum_text.hpp"
#include "core/log.hpp"

namespace orvane::app {

namespace {

QString text(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }

QLabel* heading(const QString& title, int pointSizeDelta) {
  auto* label = new QLabel(title);
  QFont font = label->font();
  font.setBold(true);
  font.setPointSize(font.pointSize() + pointSizeDelta);
  label->setFont(font);
  return label;
}

constexpr int kPresetColumns = 3;

}  // namespace

WelcomeWindow::WelcomeWindow(Callbacks callbacks, QWidget* parent)
    : QWidget(parent, Qt::Window), callbacks_(std::move(callbacks)) {
  setWindowTitle(QStringLiteral("Welcome to Orvane"));
  setObjectName(QStringLiteral("WelcomeWindow"));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(heading(QStringLiteral("Welcome to Orvane"), 8));
  auto* columns = new QHBoxLayout;
  columns->addWidget(makeRecentColumn(), 1);
  columns->addWidget(makePresetColumn(), 3);
  layout->addLayout(columns, 1);
  resize(1000, 640);
}

QWidget* WelcomeWindow::makeRecentColumn() {
  auto* column = new QWidget;
  auto* layout = new QVBoxLayout(column);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(heading(QStringLiteral("Recent Documents"), 2));
  recent_ = new QListWidget;
  connect(recent_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
    const int row = recent_->row(item);
    if (row >= 0 && row < static_cast<int>(recentPaths_.size()) && callbacks_.openRecent) {
      callbacks_.openRecent(recentPaths_[static_cast<std::size_t>(row)]);
    }
  });
  layout->addWidget(recent_, 1);
  auto* open = new QPushButton(QStringLiteral("Open\u2026"));
  connect(open, &QPushButton::clicked, this, [this] {
    if (callbacks_.openOther) callbacks_.openOther();
  });
  layout->addWidget(open);
  return column;
}

QWidget* WelcomeWindow::makePresetColumn() {
  auto* column = new QWidget;
  auto* layout = new QVBoxLayout(column);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->addWidget(heading(QStringLiteral("Editing Mode"), 2));
  modes_ = new QButtonGroup(this);
  auto* modeRow = new QHBoxLayout;
  for (const core::EditingMode mode : core::allCases<core::EditingMode>()) {
    auto* button = new QRadioButton(text(core::displayName(mode)));
    button->setToolTip(text(core::detailText(mode)));
    modes_->addButton(button, static_cast<int>(mode));
    modeRow->addWidget(button);
  }
  modeRow->addStretch(1);
  modes_->button(static_cast<int>(core::EditingMode::layers))->setChecked(true);
  layout->addLayout(modeRow);
  auto* detail = new QLabel(text(core::detailText(core::EditingMode::layers)));
  detail->setWordWrap(true);
  connect(modes_, &QButtonGroup::idToggled, detail, [detail](int id, bool on) {
    if (on) detail->setText(text(core::detailText(static_cast<core::EditingMode>(id))));
  });
  layout->addWidget(detail);

  auto* presets = new QWidget;
  auto* presetLayout = new QVBoxLayout(presets);
  for (const auto group : core::allCases<core::CompositionPreset::Group>()) {
    auto* grid = new QGridLayout;
    int index = 0;
    for (const core::CompositionPreset& preset : core::CompositionPreset::all()) {
      if (preset.group != group) continue;
      auto* button = new QPushButton(QString::fromStdString(preset.name) + QLatin1Char('\n') +
                                     QString::fromStdString(preset.detail));
      button->setObjectName(QString::fromStdString(preset.name));
      button->setMinimumHeight(48);
      connect(button, &QPushButton::clicked, this, [this, preset] {
        if (callbacks_.presetChosen) callbacks_.presetChosen(preset, editingMode());
      });
      grid->addWidget(button, index / kPresetColumns, index % kPresetColumns);
      ++index;
    }
    if (index == 0) {  // a group without presets: the layout was never given a parent
      delete grid;
      continue;
    }
    presetLayout->addWidget(heading(text(core::displayName(group)), 1));
    presetLayout->addLayout(grid);
  }
  presetLayout->addStretch(1);
  auto* scroll = new QScrollArea;
  scroll->setWidget(presets);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  layout->addWidget(heading(QStringLiteral("New Project"), 2));
  layout->addWidget(scroll, 1);
  return column;
}

void WelcomeWindow::setRecentDocuments(const std::vector<std::filesystem::path>& paths) {
  recentPaths_ = paths;
  recent_->clear();
  for (const auto& path : paths) {
    auto* item = new QListWidgetItem(QString::fromStdString(path.stem().string()));
    item->setToolTip(QString::fromStdString(path.string()));
    recent_->addItem(item);
  }
}

core::EditingMode WelcomeWindow::editingMode() const { return static_cast<core::EditingMode>(modes_->checkedId()); }

void WelcomeWindow::setEditingMode(core::EditingMode mode) { modes_->button(static_cast<int>(mode))->setChecked(true); }

QPushButton* WelcomeWindow::presetButton(const QString& name) const { return findChild<QPushButton*>(name); }

void WelcomeWindow::closeQuietly() {
  closingQuietly_ = true;
  close();
  closingQuietly_ = false;
}

void WelcomeWindow::closeEvent(QCloseEvent* event) {
  event->accept();
  if (!closingQuietly_ && callbacks_.closedByUser) callbacks_.closedByUser();
}

WelcomePresenter::WelcomePresenter(WelcomeWindow::Callbacks callbacks,
                                   std::function<std::vector<std::filesystem::path>()> recentDocuments)
    : callbacks_(std::move(callbacks)), recentDocuments_(std::move(recentDocuments)) {}

WelcomePresenter::~WelcomePresenter() { delete window_; }

void WelcomePresenter::show() {
  if (window_ == nullptr) window_ = new WelcomeWindow(callbacks_);
  if (recentDocuments_) window_->setRecentDocuments(recentDocuments_());
  if (!window_->isVisible()) {
    if (const QScreen* screen = QGuiApplication::primaryScreen()) {
      window_->move(screen->availableGeometry().center() - window_->rect().center());
    }
    window_->show();
  }
  window_->raise();
  window_->activateWindow();
  writeSnapshotIfAsked();
}

void WelcomePresenter::close() {
  if (window_ != nullptr && window_->isVisible()) window_->closeQuietly();
}

bool WelcomePresenter::isVisible() const { return window_ != nullptr && window_->isVisible(); }

// OV_WELCOME_SNAPSHOT=1 writes the window's content as welcome.png in the
// working folder, for looking at the layout without a screen.
void WelcomePresenter::writeSnapshotIfAsked() {
  const char* flag = std::getenv("OV_WELCOME_SNAPSHOT");
  if (snapshotWritten_ || flag == nullptr || std::string(flag) != "1") return;
  snapshotWritten_ = true;
  const QPixmap picture = window_->grab();
  if (picture.isNull()) {
    core::logLine(core::LogLevel::info, "welcome", "welcome snapshot: no content view / rep");
    return;
  }
  const QString path = QDir::current().absoluteFilePath(QStringLiteral("welcome.png"));
  if (!picture.save(path, "PNG")) {
    core::logLine(core::LogLevel::info, "welcome", "welcome snapshot: could not write " + path.toStdString());
    return;
  }
  core::logLine(core::LogLevel::info, "welcome",
                "welcome snapshot: wrote " + path.toStdString() + " " + std::to_string(picture.width()) + "x" +
                    std::to_string(picture.height()));
}

}  // namespace orvane::app
