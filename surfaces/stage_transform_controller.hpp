#pragma once
// What the stage's transform overlay does with the pointer: moving, scaling
// and rotating a layer by its handles, and clicks on the canvas that select.
// The overlay widget draws the handles and the guides and forwards each
// pointer tick here.
//
// A drag never touches the document while it runs: each tick computes the
// new value and stores it in the StageInteraction, from which the stage
// draws. The document's interaction opens on the first tick and closes at
// the commit, which writes the collected values with the keyframing rule of
// animation mode as one undo step ("Move Layer", "Scale Layer", "Rotate
// Layer"). A cancelled drag leaves nothing behind.
//
// Owned by the window's stage, with the document, editor state and
// interaction it points to outliving it; main thread only.

#include <chrono>
#include <functional>
#include <optional>
#include <string_view>

#include "Commands/property_address.hpp"
#include "core/composition.hpp"
#include "core/layer_bounds.hpp"
#include "core/ov_time.hpp"
#include "core/property_value.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"
#include "surfaces/canvas_click.hpp"
#include "surfaces/editor_state.hpp"
#include "surfaces/smart_guides.hpp"
#include "surfaces/stage_interaction.hpp"
#include "surfaces/viewer_geometry.hpp"

namespace orvane::surfaces {

class StageTransformController {
 public:
  enum class DragKind { none, move, scale, rotate };
  enum class Corner { bottomLeft, bottomRight, topRight, topLeft };

  // Side of a square handle, in view points.
  static constexpr double handleSize = 10;

  // What the window connects; every member may be left empty.
  struct Services {
    // The playhead; the active composition's stored playhead when empty.
    std::function<core::OVTime()> currentTime;
    // Text sizes for hit tests and guides (the renderer's measure).
    core::TextMeasure measure;
    // The playback controller's showStageScene(for:at:): shows the live
    // composition before the commit, so the picture does not jump back.
    std::function<void(const core::Composition&, const core::OVTime&)> showStageScene;
    // The guides to draw now; an empty result clears them.
    std::function<void(const SmartGuides::Result&)> publishGuides;
    // Time for telling one click from the next; the steady clock when empty.
    std::function<CanvasClick::TimePoint()> clock;
  };

  // One tick of a drag: where the pointer went down and where it is now, in
  // view points.
  struct DragTick {
    core::OVPoint startLocation;
    core::OVPoint location;
  };

  StageTransformController(document::ProjectDocument& document, document::UndoStack* undo, EditorState& editor,
                           StageInteraction& interaction, Services services = {});
  StageTransformController(const StageTransformController&) = delete;
  StageTransformController& operator=(const StageTransformController&) = delete;

  // The stage's mapping; set on every layout and zoom.
  void setGeometry(const ViewerGeometry& geometry) { geometry_ = geometry; }
  const ViewerGeometry& geometry() const { return geometry_; }
  // The user's "viewer.smartGuides" preference; on by default.
  void setSmartGuidesEnabled(bool enabled) { smartGuidesEnabled_ = enabled; }

  // --- Gestures, one call per pointer tick ---
  // The layer follows the pointer; with bypassGuides (Ctrl held, read on
  // every tick) it does not snap.
  void moveGesture(const core::Uuid& layerID, const DragTick& tick, bool bypassGuides);
  // Uniform scale by the pointer's distance from anchor (view points).
  void scaleGesture(const core::Uuid& layerID, Corner corner, const core::OVPoint& anchor, const DragTick& tick);
  // Rotation by the pointer's angle around anchor (view points).
  void rotateGesture(const core::Uuid& layerID, const core::OVPoint& anchor, const DragTick& tick);
  // The pointer went up: commits under the running gesture's name.
  void endGesture();

  // Writes the collected values into the document as one step named name
  // and closes the interaction. Nothing when no drag runs.
  void commitDrag(std::string_view name);
  // The pointer was lost or the watchdog gave up: the values and guides are
  // dropped and the document goes back to the start of the drag.
  void finishCancelledDrag();

  // A click on the stage: selects the topmost layer under location (view
  // points) as the timeline's click does, or on bare canvas clears the
  // layer selection and ends cropping and text editing.
  void handleCanvasClick(const core::OVPoint& location, SelectionModifiers modifiers);

  // --- The steps, for the overlay and tests ---
  // Stores the boxes of the other visible layers for the whole drag.
  void captureGuideBoxes(const core::Uuid& dragging);
  // position moved by translation (composition units) snapped by the smart
  // guides from the drag's start box; publishes the guides.
  core::OVPoint applyingSmartGuides(const core::OVPoint& position, const core::OVPoint& translation);
  // Stores value for address in the interaction at the drag's time.
  void write(const core::PropertyValue& value, const commands::PropertyAddress& address);

  // --- Drag state ---
  DragKind activeDrag() const { return activeDrag_; }
  bool isDragging() const { return activeDrag_ != DragKind::none; }
  const std::optional<core::Uuid>& draggedLayerID() const { return draggedLayerID_; }
  std::optional<Corner> activeCorner() const { return activeCorner_; }
  const core::OVPoint& dragStartValue() const { return dragStartValue_; }
  double dragStartAngle() const { return dragStartAngle_; }
  const std::optional<SmartGuides::Box>& dragStartBox() const { return dragStartBox_; }
  const std::vector<SmartGuides::Box>& guideBoxes() const { return guideBoxes_; }
  const SmartGuides::Result& guides() const { return guides_; }
  const CanvasClick& lastClick() const { return lastClick_; }

  // The undo names of the three gestures.
  static std::string_view actionName(DragKind kind);

 private:
  // Opens the drag on its first tick; false when the tick can't start or
  // continue one (unknown layer, another gesture running).
  bool beginDrag(DragKind kind, const core::Uuid& layerID);
  void resetDrag();
  void publishGuides(SmartGuides::Result result);
  core::OVTime now() const;
  const core::Layer* layer(const core::Uuid& id) const;

  document::ProjectDocument& document_;
  document::UndoStack* undo_;
  EditorState& editor_;
  StageInteraction& interaction_;
  Services services_;
  ViewerGeometry geometry_;
  bool smartGuidesEnabled_ = true;

  DragKind activeDrag_ = DragKind::none;
  std::optional<core::Uuid> draggedLayerID_;
  std::optional<Corner> activeCorner_;
  core::OVTime dragTime_;
  core::OVPoint dragStartValue_;
  double dragStartAngle_ = 0;
  std::optional<SmartGuides::Box> dragStartBox_;
  std::vector<SmartGuides::Box> guideBoxes_;
  SmartGuides::Result guides_;
  CanvasClick lastClick_;
};

}  // namespace orvane::surfaces
