#include "surfaces/timeline_layer_list.hpp"

#include <algorithm>
#include <cmath>

#include "Commands/layer_edits.hpp"

namespace orvane::surfaces {

using core::Composition;
using core::Uuid;

bool LayerReorderState::isDragging(const Uuid& id) const {
  return std::find(layerIDs.begin(), layerIDs.end(), id) != layerIDs.end();
}

double TimelineDropSlot::offsetIn(const Composition& composition) const {
  // The row that will follow the block, counted without the block.
  long others = 0;
  for (std::size_t i = 0; i < composition.layers.size(); ++i) {
    if (reorder.isDragging(composition.layers[i].id)) continue;
    if (others == reorder.toIndex) return static_cast<double>(i) * rowHeight;
    ++others;
  }
  return static_cast<double>(composition.layers.size()) * rowHeight;
}

std::optional<LayerReorderState> beginLayerReorder(const Composition& composition, const EditorState& editor,
                                                   const Uuid& layerID) {
  if (!composition.indexOf(layerID)) return std::nullopt;
  const auto& selected = editor.selectedLayerIDs();
  LayerReorderState state;
  std::optional<std::size_t> first;
  for (std::size_t i = 0; i < composition.layers.size(); ++i) {
    const Uuid& id = composition.layers[i].id;
    const bool inBlock = selected.contains(layerID) ? selected.contains(id) : id == layerID;
    if (!inBlock) continue;
    state.layerIDs.push_back(id);
    if (!first) first = i;
  }
  // No block member precedes the first one, so its index in the whole list
  // is also its place in the list without the block.
  state.fromIndex = state.toIndex = static_cast<long>(*first);
  return state;
}

void updateLayerReorder(LayerReorderState& state, double translation, double rowHeight,
                        const Composition& composition) {
  if (!std::isfinite(translation)) return;
  state.translation = translation;
  const double rows = rowHeight > 0 ? std::round(translation / rowHeight) : 0;
  const long last = std::max(0L, static_cast<long>(composition.layers.size()) - state.blockCount());
  const double wanted = static_cast<double>(state.fromIndex) + std::clamp(rows, -1e9, 1e9);
  state.toIndex = static_cast<long>(std::clamp(wanted, 0.0, static_cast<double>(last)));
}

void updateLayerReorder(LayerReorderState& state, double translation, std::span<const double> layerHeights,
                        const Composition& composition) {
  if (!std::isfinite(translation) || layerHeights.size() != composition.layers.size()) return;
  state.translation = translation;
  // The rows the block travels over: the list without the block.
  std::vector<double> others;
  for (std::size_t i = 0; i < composition.layers.size(); ++i) {
    if (!state.isDragging(composition.layers[i].id)) others.push_back(std::max(layerHeights[i], 0.0));
  }
  const long last = static_cast<long>(others.size());
  long index = std::clamp(state.fromIndex, 0L, last);
  double left = std::abs(translation);
  if (translation > 0) {
    while (index < last && left >= others[index] * 0.5) left -= others[index++];
  } else {
    while (index > 0 && left >= others[index - 1] * 0.5) left -= others[--index];
  }
  state.toIndex = index;
}

std::vector<double> layerRowHeights(const Composition& composition, const EditorState& editor,
                                    std::size_t propertyRowCount) {
  const double expanded = static_cast<double>(propertyRowCount) * TimelineLayout::propertyRowHeight;
  std::vector<double> heights;
  heights.reserve(composition.layers.size());
  for (const core::Layer& layer : composition.layers) {
    heights.push_back(editor.timelineRowHeight() + (editor.expandedPropertyRows().contains(layer.id) ? expanded : 0));
  }
  return heights;
}

bool endLayerReorder(document::ProjectDocument& document, const LayerReorderState& state,
                     document::UndoStack* undoManager) {
  if (state.toIndex == state.fromIndex || state.layerIDs.empty()) return false;
  const auto revision = document.revision();
  commands::moveLayers(document, state.layerIDs, static_cast<std::size_t>(state.toIndex), undoManager);
  return document.revision() != revision;
}

}  // namespace orvane::surfaces
