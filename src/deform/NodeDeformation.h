#pragma once

#include <cstddef>
#include <vector>

#include "deform/FaultElement.h"
#include "deform/FramePlan.h"
#include "deform/Nodes.h"
#include "deform/TileDeformation.h"
#include "support/WorkTeam.h"

namespace tidora {

/// From where the depth of an upper edge counts.
enum class DepthRule {
    Datum,    ///< from sea level: its base offset, everywhere
    Floor,    ///< from the sea floor of each node: max(0, topography + base offset); so does that of a centroid
    Program,  ///< as in a run: the depth column of a single element; several as Floor, but the depth of a centroid is
              ///< that of the node evaluated before, column by column from the south
};

/// What is to be done with elements and nodes. The medium is that of a run, lambda = mu.
struct NodeTask {
    NodeFrame frame = NodeFrame::Plane;
    DepthRule depth = DepthRule::Datum;
    double tolerance = 0.0;             ///< m, as in a run; up to 1e-5 m the finite source is used everywhere
    std::size_t toleranceElements = 0;  ///< among how many it is shared out; 0: as many as there are
    float minDepth = 0.0F;              ///< m: the slope term acts where the floor is deeper
    float spacing = 0.0F;               ///< of the grid, for the slope term
    int threads = 0;                    ///< as of ThreadCount()
    ProgressCallback progress;          ///< may be empty
};

/// Displacements by all elements at all nodes: the engine beside the run, for any nodes on all cores. Each node sums
/// the elements in their order in single precision; its bits depend neither on the threads nor on the other nodes,
/// except with DepthRule::Program on the node before it.
///
/// Without a tolerance the finite source is used everywhere, at any distance; with DepthRule::Program or NodeFrame::Utm
/// within 30 degrees of arc, as in a run.
///
/// shares: fields.layers times elements.size() parts of the slip, layer by layer; null: one layer with all of it.
/// Requires topography where the depth rule or the slope term take it, and a grid for the slope term; elements and
/// nodes are finite numbers. False when the work was cancelled. Throws NoPlaceError, std::bad_alloc.
[[nodiscard]] bool DeformNodes(const std::vector<FAULT_PARAM>& elements, const float* shares, const Nodes& nodes,
                               const NodeTask& task, const NodeFields& fields);

}  // namespace tidora
