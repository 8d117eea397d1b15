// Start-up and the welcome window: what the program shows at launch, how a
// preset or a file becomes a document window, and what comes back when the
// last one closes.

#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <fstream>

#include "app/pending_new_project.hpp"
#include "app/welcome_window.hpp"
#include "document/project_codec.hpp"
#include "tests/app/app_test_support.hpp"

namespace orvane::app {
namespace {

using testing_support::AppTest;
using testing_support::eventually;

std::filesystem::path writeProject(const std::filesystem::path& path, const std::string& name, double width,
                                   double height) {
  const core::CompositionPreset preset("test", "Test", core::CompositionPreset::Group::custom, width, height,
                                       core::FrameRate::fps25, 4);
  core::OVProject project = core::OVProject::starter(preset);
  project.name = name;
  EXPECT_TRUE(document::ProjectCodec::write(project, path));
  return path;
}

class StartupTest : public AppTest {};

TEST_F(StartupTest, LaunchShowsTheWelcomeWindowAndNoDocument) {
  AppDelegate& app = launched();
  EXPECT_TRUE(app.documents().windows().empty());
  ASSERT_TRUE(app.welcome().isVisible());
  EXPECT_EQ(app.welcome().window()->windowTitle(), QStringLiteral("Welcome to Orvane"));
  // Every preset is offered, by name.
  for (const core::CompositionPreset& preset : core::CompositionPreset::all()) {
    EXPECT_NE(app.welcome().window()->presetButton(QString::fromStdString(preset.name)), nullptr) << preset.name;
  }
}

TEST_F(StartupTest, ChosenPresetAndModeMakeTheNewDocumentOnce) {
  AppDelegate& app = launched();
  WelcomeWindow* welcome = app.welcome().window();
  welcome->setEditingMode(core::EditingMode::sequence);
  QTest::mouseClick(welcome->presetButton(QStringLiteral("HD 720p")), Qt::LeftButton);

  const core::Composition* composition = onlyWindow().document().activeComposition();
  ASSERT_NE(composition, nullptr);
  EXPECT_EQ(composition->size, (core::OVSize{1280, 720}));
  EXPECT_EQ(composition->editingMode, core::EditingMode::sequence);
  EXPECT_FALSE(onlyWindow().hasUnsavedChanges());
  EXPECT_TRUE(eventually([&] { return !app.welcome().isVisible(); }));

  // The choice is used up: File > New makes the default composition.
  EXPECT_FALSE(PendingNewProject::consume());
  choose(onlyWindow(), QStringLiteral("New"));
  ASSERT_EQ(app.documents().windows().size(), 2u);
  const core::Composition* second = app.documents().windows()[1]->document().activeComposition();
  EXPECT_EQ(second->size, core::CompositionPreset::defaultPreset().size);
  EXPECT_EQ(second->editingMode, core::EditingMode::layers);
}

TEST_F(StartupTest, OpensAFileFromDiskOnceAndRemembersIt) {
  const auto path = writeProject(folder() / "demo.orvane", "Demo", 640, 360);
  AppDelegate& app = launched({path});

  DocumentWindow& window = onlyWindow();
  EXPECT_EQ(window.windowTitle(), QStringLiteral("demo.orvane[*]"));
  EXPECT_FALSE(window.isWindowModified());
  EXPECT_EQ(window.document().project().name, "Demo");
  EXPECT_EQ(window.document().activeComposition()->size, (core::OVSize{640, 360}));
  EXPECT_FALSE(app.welcome().isVisible()) << "a file opened at launch leaves no welcome window";

  // Opening it again raises the same window.
  EXPECT_EQ(app.documents().openDocumentReportingErrors(folder() / "." / "demo.orvane"), &window);
  EXPECT_EQ(app.documents().windows().size(), 1u);
  const auto recent = RecentDocuments().paths();
  ASSERT_FALSE(recent.empty());
  EXPECT_EQ(recent.front(), path);
}

TEST_F(StartupTest, CorruptFileShowsTheCodecSentenceAndOpensNoWindow) {
  const auto path = folder() / "broken.orvane";
  std::ofstream(path) << "{\"formatVersion\": 1, \"compositions\": [";
  AppDelegate& app = launched();
  EXPECT_EQ(app.documents().openDocumentReportingErrors(path), nullptr);

  ASSERT_EQ(dialogs.errors.size(), 1u);
  EXPECT_TRUE(dialogs.errors[0].message.contains(QStringLiteral("broken.orvane")));
  EXPECT_TRUE(dialogs.errors[0].detail.startsWith(QStringLiteral("The project file could not be read.")))
      << dialogs.errors[0].detail.toStdString();
  EXPECT_TRUE(app.documents().windows().empty());
  EXPECT_TRUE(app.welcome().isVisible());

  // A folder in place of a file has a sentence of its own.
  std::filesystem::create_directory(folder() / "folder.orvane");
  app.documents().openDocumentReportingErrors(folder() / "folder.orvane");
  ASSERT_EQ(dialogs.errors.size(), 2u);
  EXPECT_EQ(dialogs.errors[1].detail, QStringLiteral("The file is empty or is a folder."));
  EXPECT_TRUE(app.documents().windows().empty());
}

TEST_F(StartupTest, ClosingTheLastWindowBringsBackTheWelcomeWindow) {
  AppDelegate& app = launched();
  QTest::mouseClick(app.welcome().window()->presetButton(QStringLiteral("Square 1080")), Qt::LeftButton);
  choose(onlyWindow(), QStringLiteral("New"));
  EXPECT_TRUE(eventually([&] { return !app.welcome().isVisible(); }));

  app.documents().windows()[0]->close();
  QTest::qWait(2 * static_cast<int>(AppDelegate::kWelcomeDelay.count()));
  EXPECT_FALSE(app.welcome().isVisible()) << "one document is still open";

  choose(onlyWindow(), QStringLiteral("Close"));
  EXPECT_TRUE(app.documents().windows().empty());
  EXPECT_TRUE(eventually([&] { return app.welcome().isVisible(); }));
}

TEST_F(StartupTest, RecentDocumentOpensFromTheWelcomeWindow) {
  const auto path = writeProject(folder() / "recent.orvane", "Recent", 320, 240);
  RecentDocuments().noteOpened(path);
  RecentDocuments().noteOpened(folder() / "gone.orvane");  // not on disk: not listed
  AppDelegate& app = launched();
  QListWidget* list = app.welcome().window()->recentList();
  ASSERT_EQ(list->count(), 1);
  EXPECT_EQ(list->item(0)->text(), QStringLiteral("recent"));
  emit list->itemActivated(list->item(0));
  EXPECT_EQ(onlyWindow().document().project().name, "Recent");
}

}  // namespace
}  // namespace orvane::app
