// The rows of the command table, kept apart from the menu building.

#include "app/workspace_commands.hpp"

namespace orvane::app {

namespace {

using A = WorkspaceActions;
constexpr unsigned kCmd = kCommand;
constexpr unsigned kCmdShift = kCommand | kShift;
constexpr unsigned kCmdOpt = kCommand | kOption;

CommandItem item(std::string_view menu, std::string_view title, int key, unsigned modifiers,
                 WorkspaceActions::Action WorkspaceActions::* action) {
  return CommandItem{menu, {}, title, key, modifiers, action, ShellCommand::none};
}
CommandItem sub(std::string_view menu, std::string_view submenu, std::string_view title, int key,
                unsigned modifiers, WorkspaceActions::Action WorkspaceActions::* action) {
  return CommandItem{menu, submenu, title, key, modifiers, action, ShellCommand::none};
}
CommandItem shell(std::string_view menu, std::string_view submenu, std::string_view title, int key,
                  unsigned modifiers, ShellCommand command) {
  return CommandItem{menu, submenu, title, key, modifiers, nullptr, command};
}

std::vector<CommandItem> makeTable() {
  return {
      shell("Orvane", {}, "About Orvane", 0, kNoModifier, ShellCommand::about),
      shell("Orvane", {}, "Check for Updates\u2026", 0, kNoModifier, ShellCommand::checkForUpdates),
      item("Orvane", "AI Assistant\u2026", Qt::Key_Slash, kCmdShift, &A::showAIAssistant),
      shell("Orvane", {}, "Welcome to Orvane", 0, kNoModifier, ShellCommand::welcome),

      item("File", "New Composition...", Qt::Key_N, kCmdShift, &A::newComposition),
      sub("File", "Record", "Camera\u2026", 0, kNoModifier, &A::showCameraRecord),
      sub("File", "Record", "Screen\u2026", 0, kNoModifier, &A::showScreenRecord),
      sub("File", "Record", "Screen Snapshot", 0, kNoModifier, &A::captureScreenSnapshot),
      item("File", "Export...", Qt::Key_E, kCmd, &A::showExport),
      item("File", "Package Project\u2026", 0, kNoModifier, &A::packageProject),

      item("Edit", "Cut", Qt::Key_X, kCmd, &A::cut),
      item("Edit", "Copy", Qt::Key_C, kCmd, &A::copy),
      item("Edit", "Paste", Qt::Key_V, kCmd, &A::paste),
      item("Edit", "Paste as Plain Text", Qt::Key_V, kCmdShift, &A::pasteTextPlain),
      item("Edit", "Paste Keeping Line Breaks", Qt::Key_V, kCmdOpt, &A::pasteTextKeepingLayout),
      item("Edit", "Duplicate", Qt::Key_D, kCmd, &A::duplicateSelection),
      item("Edit", "Delete", Qt::Key_Delete, kNoModifier, &A::deleteSelection),
      item("Edit", "Select All Layers", Qt::Key_A, kCmd, &A::selectAllLayers),

      item("Layer", "New Text Layer", Qt::Key_T, kCmdOpt, &A::addTextLayer),
      item("Layer", "New Solid Layer", Qt::Key_Y, kCmdOpt, &A::addSolidLayer),
      item("Layer", "New Adjustment Layer", Qt::Key_Y, kCmdOpt | kShift, &A::addAdjustmentLayer),
      item("Layer", "Split at Playhead", Qt::Key_D, kCmdShift, &A::splitAtPlayhead),
      item("Layer", "Crop on Stage", Qt::Key_C, kCmdShift, &A::cropSelection),
      item("Layer", "Reset Transform", Qt::Key_R, kCmdShift, &A::resetTransform),
      sub("Layer", "Add Mask", "Rectangle", Qt::Key_R, kCmdOpt, &A::addMaskRectangle),
      sub("Layer", "Add Mask", "Ellipse", Qt::Key_E, kCmdOpt, &A::addMaskEllipse),
      item("Layer", "Previous Keyframe", Qt::Key_J, kCmd, &A::previousKeyframe),
      item("Layer", "Next Keyframe", Qt::Key_K, kCmd, &A::nextKeyframe),

      item("Playback", "Play / Pause", Qt::Key_Space, kNoModifier, &A::togglePlayback),
      item("Playback", "Present Full Screen", Qt::Key_Return, kCmdShift, &A::present),
      shell("Playback", {}, "Stop Screen Recording", 0, kNoModifier, ShellCommand::stopScreenRecording),
      item("Playback", "Previous Frame", Qt::Key_Left, kNoModifier, &A::stepBackward),
      item("Playback", "Next Frame", Qt::Key_Right, kNoModifier, &A::stepForward),
      item("Playback", "Go to Start", Qt::Key_Home, kNoModifier, &A::goToStart),
      item("Playback", "Go to End", Qt::Key_End, kNoModifier, &A::goToEnd),
      item("Playback", "Set Work Area Start", Qt::Key_B, kNoModifier, &A::setWorkAreaStart),
      item("Playback", "Set Work Area End", Qt::Key_N, kNoModifier, &A::setWorkAreaEnd),
      item("Playback", "Clear Work Area", Qt::Key_B, kCmdOpt, &A::clearWorkArea),

      item("View", "Toggle Media Browser", Qt::Key_1, kCmdOpt, &A::toggleMediaBrowser),
      item("View", "Toggle Inspector", Qt::Key_2, kCmdOpt, &A::toggleInspector),
      item("View", "Toggle Behaviors", Qt::Key_3, kCmdOpt, &A::toggleBehaviors),
      item("View", "Toggle Animation Mode", Qt::Key_K, kCmdShift, &A::toggleAnimationMode),
      item("View", "Zoom In", Qt::Key_Equal, kCmdShift, &A::zoomStageIn),
      item("View", "Zoom Out", Qt::Key_Minus, kCmdShift, &A::zoomStageOut),
      item("View", "Zoom to Fit", Qt::Key_0, kCmd, &A::zoomStageToFit),
      item("View", "Actual Size", Qt::Key_1, kCmd, &A::zoomStageActualSize),
      item("View", "Zoom Timeline In", Qt::Key_Equal, kCmd, &A::zoomTimelineIn),
      item("View", "Zoom Timeline Out", Qt::Key_Minus, kCmd, &A::zoomTimelineOut),
      sub("View", "Guides & Overlays", "Show Grid", Qt::Key_Apostrophe, kCmd, &A::toggleGrid),
      sub("View", "Guides & Overlays", "Show Safe Areas", Qt::Key_Apostrophe, kCmdShift, &A::toggleSafeAreas),
      sub("View", "Guides & Overlays", "Show Centre Guides", Qt::Key_Semicolon, kCmd, &A::toggleCentreGuides),
      sub("View", "Guides & Overlays", "Show Transform Handles", Qt::Key_H, kCmdShift, &A::toggleTransformHandles),
      sub("View", "Guides & Overlays", "Show Motion Paths", Qt::Key_P, kCmdShift, &A::toggleMotionPaths),
      sub("View", "Guides & Overlays", "Show Mask Paths", Qt::Key_M, kCmdShift, &A::toggleMaskPaths),
      sub("View", "Guides & Overlays", "Smart Guides", 0, kNoModifier, &A::toggleSmartGuides),
      shell("View", "Guides & Overlays", "GPU Stage Preview", 0, kNoModifier, ShellCommand::gpuStagePreview),
      item("View", "Snap in Timeline", Qt::Key_S, kCmdShift, &A::toggleSnapping),

      shell("Help", {}, "Orvane Help", Qt::Key_Question, kCmd, ShellCommand::help),
  };
}

}  // namespace

const std::vector<CommandItem>& workspaceCommandTable() {
  static const std::vector<CommandItem> table = makeTable();
  return table;
}

QKeySequence keySequenceFor(const CommandItem& item) {
  if (item.key == 0) return {};
  Qt::KeyboardModifiers modifiers;
  if (item.modifiers & kCommand) modifiers |= Qt::ControlModifier;
  if (item.modifiers & kOption) modifiers |= Qt::AltModifier;
  if (item.modifiers & kShift) modifiers |= Qt::ShiftModifier;
  return QKeySequence(QKeyCombination(modifiers, static_cast<Qt::Key>(item.key)));
}

bool isBareKey(const CommandItem& item) {
  return item.key != 0 && (item.modifiers & (kCommand | kOption)) == 0;
}

}  // namespace orvane::app
