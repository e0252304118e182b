#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

#include "deform/ColumnPasses.h"
#include "deform/EdgeDepths.h"
#include "deform/FloorSlopes.h"
#include "deform/FramePlan.h"
#include "deform/SourceRuns.h"

namespace tidora {

// What is summed at a node: indices of arrays.
inline constexpr std::size_t kUplift = 0, kEast = 1, kNorth = 2, kSlopeUplift = 3, kComponents = 4;

/// An element as every tile takes it.
struct TileElement {
    ElementSource source;
    SourceLimits limits;
    EdgeDepths depths;  ///< before any node

    struct Share {
        std::size_t layer;
        float share;
    };
    std::vector<Share> shares;  ///< of the layers that have one
};

/// Where sums go: one array for each component, `layers` fields one after the other; null for what is not wanted.
struct NodeFields {
    std::size_t layers = 1;
    std::array<float*, kComponents> of = {};
};

/// What all tiles of a piece of work have in common. Borrowed by all threads, never changed.
struct TileTask {
    const Nodes& nodes;
    const std::vector<TileElement>& elements;
    const FramePlan& plan;
    const FloorSlopes* slopes = nullptr;  ///< null when the slope term is not wanted
    NodeFields fields;
};

/// Sums the elements at the nodes of one tile after the other, in the order of the table: the co-ordinates of a tile
/// are made once, its sums stay in the cache. One for each thread; 100 kB and 2 kB a layer and
/// component.
class TileDeformation {
public:
    explicit TileDeformation(const TileTask& task);
    ~TileDeformation();
    TileDeformation(const TileDeformation&) = delete;
    TileDeformation& operator=(const TileDeformation&) = delete;

    /// Begins with a tile: its sums are 0.
    void Open(const NodeTile& tile);

    /// Adds an element to the sums.
    void Add(std::size_t element);

    /// Writes the sums to the fields.
    void Close() const;

    /// Takes note of what an element would evaluate last in the tile that is open, without evaluating it: for the
    /// depths that depend on it. True when there is something.
    bool PassBy(std::size_t element);

    /// Forgets what was evaluated before, for all elements.
    void Forget();

private:
    struct Buffers;

    /// Which source each node takes; all of them the finite one: true.
    bool SortNodes(const TileElement& element, const PlacedTile& placed);
    void AddRun(std::size_t element, const PlacedTile& placed, const SourceRun& run);
    void Displace(const TileElement& element, const PlacedTile& placed, const SourceRun& run);
    void AddShares(const TileElement& element, const SourceRun& run);
    [[nodiscard]] std::size_t SumsAt(std::size_t layer, std::size_t component) const noexcept;

    const TileTask& m_task;
    bool m_withHorizontal;
    const ColumnPasses& m_passes;
    std::unique_ptr<TilePlaces> m_places;
    std::vector<EdgeDepths> m_depths;                   ///< of each element
    std::array<std::size_t, kComponents> m_slots = {};  ///< of the components that are wanted, in order
    std::size_t m_slotCount = 0;
    std::vector<float> m_sums;  ///< layer by layer, slot by slot, node by node
    std::unique_ptr<Buffers> m_buffers;
    NodeTile m_tile;
};

}  // namespace tidora
