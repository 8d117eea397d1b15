#pragma once
// The state of one document window that is not part of the project: the
// selection, the zoom of timeline and stage, which overlays and panels
// show, which modal edit runs (cropping, text editing), and the one-line
// status and error messages. Owned by the window and gone with it; main
// thread only. Nothing here is saved, and edit operations never read it:
// callers pass ids.
//
// Views observe it through onChange, which names the field that changed
// (only real changes are reported). The status message clears itself after
// its time: the window calls tick() from a timer (messageDeadline() says
// when one is due); time comes from the injected clock, so tests need no
// sleeping.
//
// The selection holds layers, or assets, or one file, never two kinds at
// once: each selecting call clears the other kinds.

#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Commands/property_address.hpp"
#include "core/composition.hpp"
#include "core/enum_text.hpp"
#include "core/geometry.hpp"
#include "core/uuid.hpp"
#include "surfaces/timeline_metrics.hpp"

namespace orvane::surfaces {

enum class LeftLibraryTab { media, project, browser, behaviors };
enum class InspectorTab { layer, effects, composition };
enum class CapturePresentation { camera, screen };

// The observable fields, in their declared order.
enum class EditorField {
  selectedLayerIDs,
  selectedAssetIDs,
  selectedFileURL,
  selectedKeyframes,
  primaryLayerID,
  pixelsPerSecond,
  timelineScrollOffset,
  isSnappingEnabled,
  timelineRowHeight,
  expandedPropertyRows,
  isGraphEditorVisible,
  hiddenGraphCurves,
  viewerZoom,
  isViewerZoomAutomatic,
  showsGuides,
  showsSafeAreas,
  showsGrid,
  showsTransparencyGrid,
  showsTransformHandles,
  showsMotionPaths,
  showsMasks,
  selectedMaskID,
  selectedMaskVertexIndex,
  croppingLayerID,
  editingTextLayerID,
  isAnimationModeEnabled,
  isMediaBrowserVisible,
  isInspectorVisible,
  leftLibraryTab,
  inspectorTab,
  capturePresentation,
  statusMessage,
  errorMessage,
};

// The keys held with a click in the timeline's layer list or on the stage.
struct SelectionModifiers {
  bool shift = false;
  bool command = false;  // Ctrl on this platform's keyboards
};

// Keeps an observer registered while it lives; destroying or cancelling it
// removes the observer. Safe to outlive the state it came from.
class Subscription {
 public:
  Subscription() = default;
  explicit Subscription(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
  Subscription(Subscription&& other) noexcept : cancel_(std::exchange(other.cancel_, {})) {}
  Subscription& operator=(Subscription&& other) noexcept;
  Subscription(const Subscription&) = delete;
  Subscription& operator=(const Subscription&) = delete;
  ~Subscription() { cancel(); }

  void cancel();

 private:
  std::function<void()> cancel_;
};

class EditorState {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Clock = std::function<TimePoint()>;
  using Observer = std::function<void(EditorField)>;

  static constexpr double defaultStatusSeconds = 4;
  static constexpr double minimumViewerZoom = 0.05;
  static constexpr double maximumViewerZoom = 8;

  // clock defaults to the steady clock.
  explicit EditorState(Clock clock = {});
  EditorState(const EditorState&) = delete;
  EditorState& operator=(const EditorState&) = delete;

  // Called after each change of a field, with the field. Observers may read
  // the state but should not change it from inside the call.
  [[nodiscard]] Subscription onChange(Observer observer);

  // --- Fields ---
  const std::set<core::Uuid>& selectedLayerIDs() const { return selectedLayerIDs_; }
  const std::set<core::Uuid>& selectedAssetIDs() const { return selectedAssetIDs_; }
  const std::optional<std::filesystem::path>& selectedFileURL() const { return selectedFileURL_; }
  const std::set<core::Uuid>& selectedKeyframes() const { return selectedKeyframes_; }
  const std::optional<core::Uuid>& primaryLayerID() const { return primaryLayerID_; }
  double pixelsPerSecond() const { return pixelsPerSecond_; }
  double timelineScrollOffset() const { return timelineScrollOffset_; }
  bool isSnappingEnabled() const { return isSnappingEnabled_; }
  double timelineRowHeight() const { return timelineRowHeight_; }
  const std::set<core::Uuid>& expandedPropertyRows() const { return expandedPropertyRows_; }
  bool isGraphEditorVisible() const { return isGraphEditorVisible_; }
  const std::set<std::string>& hiddenGraphCurves() const { return hiddenGraphCurves_; }
  double viewerZoom() const { return viewerZoom_; }
  bool isViewerZoomAutomatic() const { return isViewerZoomAutomatic_; }
  bool showsGuides() const { return showsGuides_; }
  bool showsSafeAreas() const { return showsSafeAreas_; }
  bool showsGrid() const { return showsGrid_; }
  bool showsTransparencyGrid() const { return showsTransparencyGrid_; }
  bool showsTransformHandles() const { return showsTransformHandles_; }
  bool showsMotionPaths() const { return showsMotionPaths_; }
  bool showsMasks() const { return showsMasks_; }
  const std::optional<core::Uuid>& selectedMaskID() const { return selectedMaskID_; }
  const std::optional<std::size_t>& selectedMaskVertexIndex() const { return selectedMaskVertexIndex_; }
  const std::optional<core::Uuid>& croppingLayerID() const { return croppingLayerID_; }
  const std::optional<core::Uuid>& editingTextLayerID() const { return editingTextLayerID_; }
  bool isAnimationModeEnabled() const { return isAnimationModeEnabled_; }
  bool isMediaBrowserVisible() const { return isMediaBrowserVisible_; }
  bool isInspectorVisible() const { return isInspectorVisible_; }
  LeftLibraryTab leftLibraryTab() const { return leftLibraryTab_; }
  InspectorTab inspectorTab() const { return inspectorTab_; }
  const std::optional<CapturePresentation>& capturePresentation() const { return capturePresentation_; }
  // None once its time is up, even before tick() has cleared it.
  std::optional<std::string> statusMessage() const;
  const std::optional<std::string>& errorMessage() const { return errorMessage_; }
  // When the running status message clears itself; none when no timer runs.
  std::optional<TimePoint> messageDeadline() const { return messageDeadline_; }

  bool isCropping() const { return croppingLayerID_.has_value(); }
  bool isEditingText() const { return editingTextLayerID_.has_value(); }
  bool hasSelection() const;

  // --- Plain setters (views bind their controls to these) ---
  // Limited to the timeline's zoom range; a non-finite value is ignored.
  void setPixelsPerSecond(double pixelsPerSecond);
  // Not below zero; a non-finite value is ignored.
  void setTimelineScrollOffset(double offset);
  void setSnappingEnabled(bool enabled);
  void setTimelineRowHeight(TimelineRowHeight height);
  void setGraphEditorVisible(bool visible);
  // Limited by clampViewerZoom; leaves the automatic fit.
  void setViewerZoom(double zoom);
  void setViewerZoomAutomatic(bool automatic);
  void setShowsGuides(bool shows);
  void setShowsSafeAreas(bool shows);
  void setShowsGrid(bool shows);
  void setShowsTransparencyGrid(bool shows);
  void setShowsTransformHandles(bool shows);
  void setShowsMotionPaths(bool shows);
  void setShowsMasks(bool shows);
  void setSelectedKeyframes(std::set<core::Uuid> keyframeIDs);
  void setSelectedMaskID(std::optional<core::Uuid> maskID);
  void setSelectedMaskVertexIndex(std::optional<std::size_t> index);
  void setAnimationModeEnabled(bool enabled);
  void setMediaBrowserVisible(bool visible);
  void setInspectorVisible(bool visible);
  void setLeftLibraryTab(LeftLibraryTab tab);
  void setInspectorTab(InspectorTab tab);
  void setCapturePresentation(std::optional<CapturePresentation> presentation);

  // --- Selection ---
  // Not extending: this layer alone, as primary. Extending: toggles it; an
  // added layer becomes primary, a removed primary passes to the first left.
  void selectLayer(const core::Uuid& layerID, bool extending = false);
  // Exactly these; the first is primary.
  void selectLayers(const std::vector<core::Uuid>& layerIDs);
  // Every layer between the anchor (the primary, else the first selected)
  // and id in the composition's order; the anchor stays primary. Without a
  // usable anchor, id alone.
  void selectRangeTo(const core::Uuid& id, const core::Composition& composition);
  // Shift selects a range, else Command extends, else id alone.
  void click(const core::Uuid& layerID, const core::Composition& composition, SelectionModifiers modifiers);
  // Also ends text editing and empties the keyframe selection.
  void clearLayerSelection();
  void selectAsset(const core::Uuid& assetID);
  void clearAssetSelection();
  void selectFile(const std::filesystem::path& fileURL);
  // Drops layers the composition no longer has; with no composition, the
  // whole layer selection. Run whenever the composition changes under it.
  void pruneSelectionAgainst(const core::Composition* composition);

  // --- Modal edits on the stage ---
  void beginCropping(const core::Uuid& layerID);
  void endCropping();
  void beginEditingText(const core::Uuid& layerID);
  void endEditingText();

  // --- Messages ---
  // Replaces the status; it clears after seconds, and an older message's
  // timer can no longer clear the newer one.
  void showStatus(const std::string& text, double clearingAfter = defaultStatusSeconds);
  // Stays until dismissError().
  void showError(const std::string& text);
  void dismissError();
  // Clears the status message now and stops its timer.
  void clearStatus();
  // Clears the status message when its time is up. Returns whether it did.
  bool tick();

  // --- Zoom ---
  void zoomTimelineBy(double factor);
  // Steps from fitScale while the zoom is automatic (the scale on screen),
  // else from viewerZoom; the zoom stops being automatic.
  void zoomViewerBy(double factor, std::optional<double> aroundFitScale = std::nullopt);
  static double clampViewerZoom(double z);
  // The zoom that shows the whole composition in viewSize, and automatic.
  void fitViewerTo(const core::OVSize& viewSize, const core::OVSize& compositionSize);

  // --- Timeline rows and graph curves ---
  void togglePropertyRowsFor(const core::Uuid& layerID);
  void expandPropertyRowsFor(const core::Uuid& layerID);
  void setGraphCurve(const std::string& key, bool visible);
  // Shows the curves of the property (its key and the keys of its
  // components, "<key>.<component>"), empties the keyframe selection and
  // selects the property's layer alone if it is not selected.
  void showGraphCurvesFor(const commands::PropertyAddress& address);

 private:
  struct Observers;

  // Assigns and reports the field when the value differs.
  template <class T>
  void assign(T& field, T value, EditorField which);
  void notify(EditorField which);
  void clearAssetAndFileSelection();

  Clock clock_;
  std::shared_ptr<Observers> observers_;

  std::set<core::Uuid> selectedLayerIDs_;
  std::set<core::Uuid> selectedAssetIDs_;
  std::optional<std::filesystem::path> selectedFileURL_;
  std::set<core::Uuid> selectedKeyframes_;
  std::optional<core::Uuid> primaryLayerID_;
  double pixelsPerSecond_ = 90;
  double timelineScrollOffset_ = 0;
  bool isSnappingEnabled_ = true;
  double timelineRowHeight_ = points(TimelineRowHeight::normal);
  std::set<core::Uuid> expandedPropertyRows_;
  bool isGraphEditorVisible_ = false;
  std::set<std::string> hiddenGraphCurves_;
  double viewerZoom_ = 1;
  bool isViewerZoomAutomatic_ = true;
  bool showsGuides_ = false;
  bool showsSafeAreas_ = false;
  bool showsGrid_ = false;
  bool showsTransparencyGrid_ = true;
  bool showsTransformHandles_ = true;
  bool showsMotionPaths_ = true;
  bool showsMasks_ = true;
  std::optional<core::Uuid> selectedMaskID_;
  std::optional<std::size_t> selectedMaskVertexIndex_;
  std::optional<core::Uuid> croppingLayerID_;
  std::optional<core::Uuid> editingTextLayerID_;
  bool isAnimationModeEnabled_ = false;
  bool isMediaBrowserVisible_ = true;
  bool isInspectorVisible_ = true;
  LeftLibraryTab leftLibraryTab_ = LeftLibraryTab::media;
  InspectorTab inspectorTab_ = InspectorTab::layer;
  std::optional<CapturePresentation> capturePresentation_;
  std::optional<std::string> statusMessage_;
  std::optional<std::string> errorMessage_;
  // Stands for the task that clears the status message.
  std::optional<TimePoint> messageDeadline_;
};

}  // namespace orvane::surfaces

namespace orvane::core {

template <>
struct EnumTable<surfaces::LeftLibraryTab> {
  using E = surfaces::LeftLibraryTab;
  static constexpr std::array<EnumEntry<E>, 4> entries{{
      {E::media, "media", "Media"},
      {E::project, "project", "Project"},
      {E::browser, "browser", "Browser"},
      {E::behaviors, "behaviors", "Behaviors"}}};
};

template <>
struct EnumTable<surfaces::InspectorTab> {
  using E = surfaces::InspectorTab;
  static constexpr std::array<EnumEntry<E>, 3> entries{{
      {E::layer, "layer", "Layer"}, {E::effects, "effects", "Effects"}, {E::composition, "composition", "Composition"}}};
};

template <>
struct EnumTable<surfaces::CapturePresentation> {
  using E = surfaces::CapturePresentation;
  static constexpr std::array<EnumEntry<E>, 2> entries{{{E::camera, "camera", "Camera"}, {E::screen, "screen", "Screen"}}};
};

}  // namespace orvane::core
