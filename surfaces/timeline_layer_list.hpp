#pragma once
// Reordering layers by dragging in the timeline's layer list. The drag
// itself changes nothing in the project: a LayerReorderState follows the
// pointer row by row, the list draws the block lifted and a drop line where
// it will land, and the drop makes one ordinary undoable step
// ("Reorder Layers"). Plain values and free functions; main thread only
// where the document is touched.

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "core/composition.hpp"
#include "core/uuid.hpp"
#include "document/project_document.hpp"
#include "document/undo_stack.hpp"
#include "surfaces/editor_state.hpp"

namespace orvane::surfaces {

struct LayerReorderState {
  // The block that moves, in list order.
  std::vector<core::Uuid> layerIDs;
  // Where the block starts, and where it would land, counted in the list
  // without the block (so both run from 0 to the count less the block).
  long fromIndex = 0;
  long toIndex = 0;
  // The pointer's vertical travel in points, down positive.
  double translation = 0;

  long blockCount() const { return static_cast<long>(layerIDs.size()); }
  bool isDragging(const core::Uuid& id) const;

  friend bool operator==(const LayerReorderState&, const LayerReorderState&) = default;
};

// The drop line's place: a row height and, by reorder, where it sits.
struct TimelineDropSlot {
  LayerReorderState reorder;
  double rowHeight = 0;

  // Its distance from the top of the list, with every row rowHeight high
  // and the block still drawn where it was.
  double offsetIn(const core::Composition& composition) const;
};

// A drag that starts on layerID: the selection when it holds the layer,
// else the layer alone. None for a layer the composition lacks.
std::optional<LayerReorderState> beginLayerReorder(const core::Composition& composition, const EditorState& editor,
                                                   const core::Uuid& layerID);
// Follows the pointer: toIndex moves one place per rowHeight of travel,
// limited to the list.
void updateLayerReorder(LayerReorderState& state, double translation, double rowHeight,
                        const core::Composition& composition);
// The same over rows of their own heights: layerHeights[i] is everything
// the list draws for layers[i], its expanded property rows included. The
// block passes a row once it has travelled over half of it, so an expanded
// layer counts as one place however tall it is. Heights that do not match
// the layers leave the state alone.
void updateLayerReorder(LayerReorderState& state, double translation, std::span<const double> layerHeights,
                        const core::Composition& composition);
// The whole height of each layer in the list at the window's row height,
// with propertyRowCount property rows under each expanded layer.
std::vector<double> layerRowHeights(const core::Composition& composition, const EditorState& editor,
                                    std::size_t propertyRowCount);
// The drop: moves the block once, when it lands elsewhere. Returns whether
// the project changed.
bool endLayerReorder(document::ProjectDocument& document, const LayerReorderState& state,
                     document::UndoStack* undoManager);

}  // namespace orvane::surfaces
