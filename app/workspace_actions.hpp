#pragma once
// What the menu commands do in one document window: one optional closure
// per command. The window fills in the ones it has built; the command table
// shows a command whose closure is empty as disabled. Plain value; main
// thread.

#include <functional>

namespace orvane::app {

struct WorkspaceActions {
  using Action = std::function<void()>;

  Action togglePlayback, stepBackward, stepForward, goToStart, goToEnd, present;
  Action splitAtPlayhead, duplicateSelection, deleteSelection, selectAllLayers;
  Action cut, copy, paste, pasteTextPlain, pasteTextKeepingLayout;
  Action addTextLayer, addSolidLayer, addAdjustmentLayer, newComposition;
  Action showExport, packageProject, showCameraRecord, showScreenRecord, captureScreenSnapshot;
  Action toggleMediaBrowser, toggleBehaviors, toggleInspector, toggleAnimationMode;
  Action zoomTimelineIn, zoomTimelineOut, zoomStageIn, zoomStageOut, zoomStageToFit, zoomStageActualSize;
  Action toggleGrid, toggleSafeAreas, toggleCentreGuides, toggleSmartGuides, toggleTransformHandles;
  Action toggleMotionPaths, toggleMaskPaths, toggleSnapping;
  Action previousKeyframe, nextKeyframe, addMaskRectangle, addMaskEllipse, cropSelection, resetTransform;
  Action showAIAssistant, setWorkAreaStart, setWorkAreaEnd, clearWorkArea;
};

}  // namespace orvane::app
