#include "deform/TileDeformation.h"

#include <algorithm>
#include <cstdint>

#include "okada/batch/SurfaceBatch.h"

namespace tidora {

/// One value a node of the tile.
struct TileDeformation::Buffers {
    float topography[kTileNodes] = {}, slopeX[kTileNodes] = {}, slopeY[kTileNodes] = {};
    float x[kTileNodes], y[kTileNodes];                                               ///< in the frame of the element
    float centroidX[kTileNodes], centroidY[kTileNodes], squaredDistance[kTileNodes];  ///< from its centroid
    SourceKind kinds[kTileNodes];
    float depth[kTileNodes];
    float ux[kTileNodes], uy[kTileNodes];  ///< in the frame of the element
    float u[kComponents][kTileNodes];
};

TileDeformation::TileDeformation(const TileTask& task)
    : m_task(task),
      m_withHorizontal(task.fields.of[kEast] != nullptr || task.fields.of[kNorth] != nullptr ||
                       task.fields.of[kSlopeUplift] != nullptr),
      m_passes(DispatchedKernels<ColumnPassesOf>()),
      m_places(task.plan.MakePlaces()),
      m_buffers(std::make_unique<Buffers>()) {
    for (std::size_t c = 0; c < kComponents; ++c) {
        m_slots[c] = m_slotCount;
        m_slotCount += task.fields.of[c] != nullptr ? 1 : 0;
    }
    m_sums.resize(task.fields.layers * m_slotCount * kTileNodes);
    Forget();
}

TileDeformation::~TileDeformation() = default;

void TileDeformation::Forget() {
    m_depths.clear();
    m_depths.reserve(m_task.elements.size());
    for (const TileElement& element : m_task.elements) {
        m_depths.push_back(element.depths);
    }
}

void TileDeformation::Open(const NodeTile& tile) {
    m_tile = tile;
    m_places->Load(tile);
    std::fill(m_sums.begin(), m_sums.end(), 0.0F);
    if (m_task.nodes.topography != nullptr) {
        tile.ForEach([this](std::size_t n, std::size_t column, std::size_t row) {
            m_buffers->topography[n] = m_task.nodes.topography[m_task.nodes.Index(column, row)];
        });
    }
    if (m_task.slopes != nullptr) {
        m_task.slopes->Fill(tile, m_buffers->slopeX, m_buffers->slopeY);
    }
}

void TileDeformation::Add(std::size_t element) {
    const TileElement& e = m_task.elements[element];
    const PlacedTile placed = m_places->TurnTo(element);
    if (placed.isOutOfReach) {
        return;
    }
    if (SortNodes(e, placed)) {
        AddRun(element, placed, {SourceKind::Finite, 0, m_tile.Count()});
        return;
    }
    ForEachRun(m_buffers->kinds, m_tile.Count(), [&](const SourceRun& run) { AddRun(element, placed, run); });
}

bool TileDeformation::SortNodes(const TileElement& element, const PlacedTile& placed) {
    Buffers& b = *m_buffers;
    const ElementSource& source = element.source;
    const ElementFrame frame = {
        placed.origin.x,         placed.origin.y, source.sinTheta, source.cosTheta, source.CentroidAlongStrike(),
        source.CentroidToRight()};
    const std::size_t count = m_tile.Count();
    const std::size_t within = m_passes.place(frame, placed.x, placed.y, count, FiniteLimitOf(element.limits),
                                              {b.x, b.y, b.centroidX, b.centroidY, b.squaredDistance});
    if (within == count && placed.isNear == nullptr) {
        return true;
    }
    m_passes.sort(element.limits, b.squaredDistance, placed.isNear, count, b.kinds);
    return false;
}

void TileDeformation::AddRun(std::size_t element, const PlacedTile& placed, const SourceRun& run) {
    Buffers& b = *m_buffers;
    const TileElement& e = m_task.elements[element];
    m_depths[element].Fill(run.kind, b.topography + run.begin, run.end - run.begin, b.depth);
    Displace(e, placed, run);
    AddShares(e, run);
}

/// Displacements of a run, those that are wanted, from the start of the buffers on.
void TileDeformation::Displace(const TileElement& element, const PlacedTile& placed, const SourceRun& run) {
    Buffers& b = *m_buffers;
    const std::size_t count = run.end - run.begin;
    const SurfaceDisplacements u = {m_withHorizontal ? b.ux : nullptr, m_withHorizontal ? b.uy : nullptr, b.u[kUplift]};
    if (run.kind == SourceKind::Finite) {
        FiniteSurfaceBatch(element.source.finite, {count, b.x + run.begin, b.y + run.begin, b.depth}, u);
    } else {
        PointSurfaceBatch(element.source.point, {count, b.centroidX + run.begin, b.centroidY + run.begin, b.depth}, u);
    }
    if (!m_withHorizontal) {
        return;
    }
    m_passes.turn(element.source.sinTheta, element.source.cosTheta, b.ux, b.uy, count, b.u[kEast], b.u[kNorth]);
    if (placed.turnCosine != nullptr) {
        m_passes.turnEach(placed.turnCosine + run.begin, placed.turnSine + run.begin, count, b.u[kEast], b.u[kNorth]);
    }
    if (m_task.slopes != nullptr) {
        m_passes.upliftByFloor(b.u[kEast], b.u[kNorth], b.slopeX + run.begin, b.slopeY + run.begin, count,
                               b.u[kSlopeUplift]);
    }
}

void TileDeformation::AddShares(const TileElement& element, const SourceRun& run) {
    for (const TileElement::Share& share : element.shares) {
        for (std::size_t c = 0; c < kComponents; ++c) {
            if (m_task.fields.of[c] != nullptr) {
                m_passes.add(share.share, m_buffers->u[c], run.end - run.begin,
                             m_sums.data() + SumsAt(share.layer, c) + run.begin);
            }
        }
    }
}

void TileDeformation::Close() const {
    const Nodes& nodes = m_task.nodes;
    for (std::size_t layer = 0; layer < m_task.fields.layers; ++layer) {
        for (std::size_t c = 0; c < kComponents; ++c) {
            float* const field = m_task.fields.of[c];
            if (field == nullptr) {
                continue;
            }
            const float* const sums = m_sums.data() + SumsAt(layer, c);
            m_tile.ForEach([&](std::size_t n, std::size_t column, std::size_t row) {
                field[layer * nodes.Size() + nodes.Index(column, row)] = sums[n];
            });
        }
    }
}

bool TileDeformation::PassBy(std::size_t element) {
    const PlacedTile placed = m_places->TurnTo(element);
    if (placed.isOutOfReach) {
        return false;
    }
    if (SortNodes(m_task.elements[element], placed)) {
        std::fill_n(m_buffers->kinds, m_tile.Count(), SourceKind::Finite);
    }
    for (std::size_t n = m_tile.Count(); n-- > 0;) {
        if (m_buffers->kinds[n] != SourceKind::None) {
            m_depths[element].PassBy(m_buffers->topography[n]);
            return true;
        }
    }
    return false;
}

std::size_t TileDeformation::SumsAt(std::size_t layer, std::size_t component) const noexcept {
    return (layer * m_slotCount + m_slots[component]) * kTileNodes;
}

}  // namespace tidora
