#include "surfaces/editor_state.hpp"

#include <algorithm>
#include <cmath>

#include "surfaces/viewer_geometry.hpp"

namespace orvane::surfaces {

using core::Composition;
using core::Uuid;

// Shared with every Subscription by weak pointer, so a subscription that
// outlives its window cancels nothing and crashes nothing.
struct EditorState::Observers {
  std::vector<std::pair<int, Observer>> list;
  int nextToken = 1;
};

Subscription& Subscription::operator=(Subscription&& other) noexcept {
  if (this != &other) {
    cancel();
    cancel_ = std::exchange(other.cancel_, {});
  }
  return *this;
}

void Subscription::cancel() {
  if (auto cancel = std::exchange(cancel_, {})) cancel();
}

EditorState::EditorState(Clock clock)
    : clock_(clock ? std::move(clock) : Clock([] { return std::chrono::steady_clock::now(); })),
      observers_(std::make_shared<Observers>()) {}

Subscription EditorState::onChange(Observer observer) {
  const int token = observers_->nextToken++;
  observers_->list.emplace_back(token, std::move(observer));
  return Subscription([weak = std::weak_ptr<Observers>(observers_), token] {
    if (auto observers = weak.lock()) {
      std::erase_if(observers->list, [&](const auto& entry) { return entry.first == token; });
    }
  });
}

void EditorState::notify(EditorField which) {
  // A copy: an observer may cancel its own subscription while being called.
  const auto list = observers_->list;
  for (const auto& [token, observer] : list) observer(which);
}

template <class T>
void EditorState::assign(T& field, T value, EditorField which) {
  if (field == value) return;
  field = std::move(value);
  notify(which);
}

// --- Fields ---

std::optional<std::string> EditorState::statusMessage() const {
  if (messageDeadline_ && clock_() >= *messageDeadline_) return std::nullopt;
  return statusMessage_;
}

bool EditorState::hasSelection() const {
  return !selectedLayerIDs_.empty() || !selectedAssetIDs_.empty() || selectedFileURL_.has_value();
}

void EditorState::setPixelsPerSecond(double pixelsPerSecond) {
  if (!std::isfinite(pixelsPerSecond)) return;
  assign(pixelsPerSecond_, TimelineMetrics::clampZoom(pixelsPerSecond), EditorField::pixelsPerSecond);
}

void EditorState::setTimelineScrollOffset(double offset) {
  if (!std::isfinite(offset)) return;
  assign(timelineScrollOffset_, std::max(offset, 0.0), EditorField::timelineScrollOffset);
}

void EditorState::setSnappingEnabled(bool enabled) {
  assign(isSnappingEnabled_, enabled, EditorField::isSnappingEnabled);
}
void EditorState::setTimelineRowHeight(TimelineRowHeight height) {
  assign(timelineRowHeight_, points(height), EditorField::timelineRowHeight);
}
void EditorState::setGraphEditorVisible(bool visible) {
  assign(isGraphEditorVisible_, visible, EditorField::isGraphEditorVisible);
}
void EditorState::setViewerZoom(double zoom) {
  if (!std::isfinite(zoom)) return;
  assign(isViewerZoomAutomatic_, false, EditorField::isViewerZoomAutomatic);
  assign(viewerZoom_, clampViewerZoom(zoom), EditorField::viewerZoom);
}
void EditorState::setViewerZoomAutomatic(bool automatic) {
  assign(isViewerZoomAutomatic_, automatic, EditorField::isViewerZoomAutomatic);
}
void EditorState::setShowsGuides(bool shows) { assign(showsGuides_, shows, EditorField::showsGuides); }
void EditorState::setShowsSafeAreas(bool shows) { assign(showsSafeAreas_, shows, EditorField::showsSafeAreas); }
void EditorState::setShowsGrid(bool shows) { assign(showsGrid_, shows, EditorField::showsGrid); }
void EditorState::setShowsTransparencyGrid(bool shows) {
  assign(showsTransparencyGrid_, shows, EditorField::showsTransparencyGrid);
}
void EditorState::setShowsTransformHandles(bool shows) {
  assign(showsTransformHandles_, shows, EditorField::showsTransformHandles);
}
void EditorState::setShowsMotionPaths(bool shows) {
  assign(showsMotionPaths_, shows, EditorField::showsMotionPaths);
}
void EditorState::setShowsMasks(bool shows) { assign(showsMasks_, shows, EditorField::showsMasks); }
void EditorState::setSelectedKeyframes(std::set<Uuid> keyframeIDs) {
  assign(selectedKeyframes_, std::move(keyframeIDs), EditorField::selectedKeyframes);
}
void EditorState::setSelectedMaskID(std::optional<Uuid> maskID) {
  assign(selectedMaskID_, maskID, EditorField::selectedMaskID);
}
void EditorState::setSelectedMaskVertexIndex(std::optional<std::size_t> index) {
  assign(selectedMaskVertexIndex_, index, EditorField::selectedMaskVertexIndex);
}
void EditorState::setAnimationModeEnabled(bool enabled) {
  assign(isAnimationModeEnabled_, enabled, EditorField::isAnimationModeEnabled);
}
void EditorState::setMediaBrowserVisible(bool visible) {
  assign(isMediaBrowserVisible_, visible, EditorField::isMediaBrowserVisible);
}
void EditorState::setInspectorVisible(bool visible) {
  assign(isInspectorVisible_, visible, EditorField::isInspectorVisible);
}
void EditorState::setLeftLibraryTab(LeftLibraryTab tab) { assign(leftLibraryTab_, tab, EditorField::leftLibraryTab); }
void EditorState::setInspectorTab(InspectorTab tab) { assign(inspectorTab_, tab, EditorField::inspectorTab); }
void EditorState::setCapturePresentation(std::optional<CapturePresentation> presentation) {
  assign(capturePresentation_, presentation, EditorField::capturePresentation);
}

// --- Selection ---

void EditorState::clearAssetAndFileSelection() {
  assign(selectedAssetIDs_, {}, EditorField::selectedAssetIDs);
  assign(selectedFileURL_, {}, EditorField::selectedFileURL);
}

void EditorState::selectLayer(const Uuid& layerID, bool extending) {
  clearAssetAndFileSelection();
  if (!extending) {
    assign(selectedLayerIDs_, std::set<Uuid>{layerID}, EditorField::selectedLayerIDs);
    assign(primaryLayerID_, std::optional<Uuid>(layerID), EditorField::primaryLayerID);
    return;
  }
  std::set<Uuid> ids = selectedLayerIDs_;
  if (ids.erase(layerID) > 0) {
    std::optional<Uuid> primary = primaryLayerID_;
    if (primary == layerID) primary = ids.empty() ? std::nullopt : std::optional<Uuid>(*ids.begin());
    assign(selectedLayerIDs_, std::move(ids), EditorField::selectedLayerIDs);
    assign(primaryLayerID_, primary, EditorField::primaryLayerID);
  } else {
    ids.insert(layerID);
    assign(selectedLayerIDs_, std::move(ids), EditorField::selectedLayerIDs);
    assign(primaryLayerID_, std::optional<Uuid>(layerID), EditorField::primaryLayerID);
  }
}

void EditorState::selectLayers(const std::vector<Uuid>& layerIDs) {
  clearAssetAndFileSelection();
  assign(selectedLayerIDs_, std::set<Uuid>(layerIDs.begin(), layerIDs.end()), EditorField::selectedLayerIDs);
  const std::optional<Uuid> primary = layerIDs.empty() ? std::nullopt : std::optional<Uuid>(layerIDs.front());
  assign(primaryLayerID_, primary, EditorField::primaryLayerID);
}

void EditorState::selectRangeTo(const Uuid& id, const Composition& composition) {
  std::optional<Uuid> anchor = primaryLayerID_;
  if (!anchor && !selectedLayerIDs_.empty()) anchor = *selectedLayerIDs_.begin();
  const auto anchorIndex = anchor ? composition.indexOf(*anchor) : std::nullopt;
  const auto index = composition.indexOf(id);
  if (!anchorIndex || !index) {
    selectLayer(id);
    return;
  }
  clearAssetAndFileSelection();
  std::set<Uuid> run;
  for (std::size_t i = std::min(*anchorIndex, *index); i <= std::max(*anchorIndex, *index); ++i) {
    run.insert(composition.layers[i].id);
  }
  assign(selectedLayerIDs_, std::move(run), EditorField::selectedLayerIDs);
  assign(primaryLayerID_, anchor, EditorField::primaryLayerID);
}

void EditorState::click(const Uuid& layerID, const Composition& composition, SelectionModifiers modifiers) {
  if (modifiers.shift) {
    selectRangeTo(layerID, composition);
  } else {
    selectLayer(layerID, modifiers.command);
  }
}

void EditorState::clearLayerSelection() {
  assign(editingTextLayerID_, {}, EditorField::editingTextLayerID);
  assign(selectedLayerIDs_, {}, EditorField::selectedLayerIDs);
  assign(primaryLayerID_, {}, EditorField::primaryLayerID);
  assign(selectedKeyframes_, {}, EditorField::selectedKeyframes);
}

void EditorState::selectAsset(const Uuid& assetID) {
  clearLayerSelection();
  assign(selectedFileURL_, {}, EditorField::selectedFileURL);
  assign(selectedAssetIDs_, std::set<Uuid>{assetID}, EditorField::selectedAssetIDs);
  assign(croppingLayerID_, {}, EditorField::croppingLayerID);
}

void EditorState::clearAssetSelection() { assign(selectedAssetIDs_, {}, EditorField::selectedAssetIDs); }

void EditorState::selectFile(const std::filesystem::path& fileURL) {
  clearLayerSelection();
  assign(selectedAssetIDs_, {}, EditorField::selectedAssetIDs);
  assign(selectedFileURL_, std::optional<std::filesystem::path>(fileURL), EditorField::selectedFileURL);
}

void EditorState::pruneSelectionAgainst(const Composition* composition) {
  if (composition == nullptr) {
    clearLayerSelection();
    return;
  }
  std::set<Uuid> kept;
  for (const Uuid& id : selectedLayerIDs_) {
    if (composition->indexOf(id)) kept.insert(id);
  }
  assign(selectedLayerIDs_, std::move(kept), EditorField::selectedLayerIDs);
  if (!primaryLayerID_ || !selectedLayerIDs_.contains(*primaryLayerID_)) {
    const std::optional<Uuid> primary =
        selectedLayerIDs_.empty() ? std::nullopt : std::optional<Uuid>(*selectedLayerIDs_.begin());
    assign(primaryLayerID_, primary, EditorField::primaryLayerID);
  }
}

// --- Modal edits ---

void EditorState::beginCropping(const Uuid& layerID) {
  // Cropping and typing on the stage exclude each other, whichever starts second.
  assign(editingTextLayerID_, {}, EditorField::editingTextLayerID);
  assign(croppingLayerID_, std::optional<Uuid>(layerID), EditorField::croppingLayerID);
  assign(selectedMaskID_, {}, EditorField::selectedMaskID);
  assign(selectedMaskVertexIndex_, {}, EditorField::selectedMaskVertexIndex);
  selectLayer(layerID);
  showStatus("Crop mode — drag the edges, Esc or double-click to finish.");
}

void EditorState::endCropping() {
  if (!croppingLayerID_) return;
  assign(croppingLayerID_, {}, EditorField::croppingLayerID);
  showStatus("Crop applied.");
}

void EditorState::beginEditingText(const Uuid& layerID) {
  assign(croppingLayerID_, {}, EditorField::croppingLayerID);
  assign(selectedMaskVertexIndex_, {}, EditorField::selectedMaskVertexIndex);
  selectLayer(layerID);
  assign(editingTextLayerID_, std::optional<Uuid>(layerID), EditorField::editingTextLayerID);
  showStatus("Type on the stage — Esc or click away to finish.");
}

void EditorState::endEditingText() { assign(editingTextLayerID_, {}, EditorField::editingTextLayerID); }

// --- Messages ---

void EditorState::showStatus(const std::string& text, double clearingAfter) {
  // NaN and negative times clear at the next tick; the cap keeps the
  // duration arithmetic from overflowing (it is some thirty years).
  const double seconds = std::isnan(clearingAfter) ? 0.0 : std::clamp(clearingAfter, 0.0, 1e9);
  const auto delay = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
      std::chrono::duration<double>(seconds));
  messageDeadline_ = clock_() + delay;
  // Reported even when the text repeats: the message is shown anew.
  statusMessage_ = text;
  notify(EditorField::statusMessage);
}

void EditorState::showError(const std::string& text) {
  errorMessage_ = text;
  notify(EditorField::errorMessage);
}

void EditorState::dismissError() { assign(errorMessage_, {}, EditorField::errorMessage); }

void EditorState::clearStatus() {
  messageDeadline_.reset();
  assign(statusMessage_, {}, EditorField::statusMessage);
}

bool EditorState::tick() {
  if (!messageDeadline_ || clock_() < *messageDeadline_) return false;
  messageDeadline_.reset();
  const bool had = statusMessage_.has_value();
  assign(statusMessage_, {}, EditorField::statusMessage);
  return had;
}

// --- Zoom ---

void EditorState::zoomTimelineBy(double factor) {
  if (!std::isfinite(factor) || factor <= 0) return;
  assign(pixelsPerSecond_, TimelineMetrics::clampZoom(pixelsPerSecond_ * factor), EditorField::pixelsPerSecond);
}

double EditorState::clampViewerZoom(double z) {
  if (std::isnan(z)) return minimumViewerZoom;
  return std::clamp(z, minimumViewerZoom, maximumViewerZoom);
}

void EditorState::zoomViewerBy(double factor, std::optional<double> aroundFitScale) {
  if (!std::isfinite(factor) || factor <= 0) return;
  const bool fromFit = isViewerZoomAutomatic_ && aroundFitScale && std::isfinite(*aroundFitScale) &&
                       *aroundFitScale > 0;
  const double start = fromFit ? *aroundFitScale : viewerZoom_;
  assign(isViewerZoomAutomatic_, false, EditorField::isViewerZoomAutomatic);
  assign(viewerZoom_, clampViewerZoom(start * factor), EditorField::viewerZoom);
}

void EditorState::fitViewerTo(const core::OVSize& viewSize, const core::OVSize& compositionSize) {
  assign(viewerZoom_, clampViewerZoom(ViewerGeometry::fitScale(viewSize, compositionSize)), EditorField::viewerZoom);
  assign(isViewerZoomAutomatic_, true, EditorField::isViewerZoomAutomatic);
}

// --- Timeline rows and graph curves ---

void EditorState::togglePropertyRowsFor(const Uuid& layerID) {
  std::set<Uuid> rows = expandedPropertyRows_;
  if (rows.erase(layerID) == 0) rows.insert(layerID);
  assign(expandedPropertyRows_, std::move(rows), EditorField::expandedPropertyRows);
}

void EditorState::expandPropertyRowsFor(const Uuid& layerID) {
  if (expandedPropertyRows_.contains(layerID)) return;
  expandedPropertyRows_.insert(layerID);
  notify(EditorField::expandedPropertyRows);
}

void EditorState::setGraphCurve(const std::string& key, bool visible) {
  std::set<std::string> hidden = hiddenGraphCurves_;
  if (visible) {
    hidden.erase(key);
  } else {
    hidden.insert(key);
  }
  assign(hiddenGraphCurves_, std::move(hidden), EditorField::hiddenGraphCurves);
}

void EditorState::showGraphCurvesFor(const commands::PropertyAddress& address) {
  const std::string key = address.key();
  std::set<std::string> hidden = hiddenGraphCurves_;
  std::erase_if(hidden, [&](const std::string& k) { return k == key || k.starts_with(key + "."); });
  assign(hiddenGraphCurves_, std::move(hidden), EditorField::hiddenGraphCurves);
  assign(selectedKeyframes_, {}, EditorField::selectedKeyframes);
  if (!selectedLayerIDs_.contains(address.layerID)) selectLayer(address.layerID);
}

}  // namespace orvane::surfaces
