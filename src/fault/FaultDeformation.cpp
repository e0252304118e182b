#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "deform/ColumnKernels.h"
#include "deform/ElementDeformation.h"
#include "deform/GridPlane.h"
#include "fault/Fault.h"
#include "support/ErrorBlock.h"

namespace tidora {
namespace {

/// The plane of co-ordinates that nobody can relate to each other: no window, no deformation.
class NoPlane : public GridPlane {
public:
    bool TurnTo(const ElementPlace& /*place*/, PlanePoint& /*origin*/, GridWindow& window) override {
        window = {};
        return true;
    }
    ColumnPlaces Column(int /*ix*/, const GridWindow& /*window*/) override { return {}; }
};

std::unique_ptr<GridPlane> MakePlane(int faultKind, int regionKind, const DeformedGrid& grid) {
    if (faultKind == kPlaneCoordinates && regionKind == kPlaneCoordinates) {
        return MakeMetricPlane(grid);
    }
    if (faultKind == kGeographicCoordinates && regionKind == kGeographicCoordinates) {
        return MakeProjectedPlane(grid);
    }
    return std::make_unique<NoPlane>();
}

/// Largest value of a grid, at least 0, kept per tile so that a change costs only the tiles that it touches.
class RunningMaximum {
public:
    RunningMaximum(const std::vector<InstantVal2d>& snapshots, const DeformedGrid& grid)
        : m_values(snapshots.empty() || grid.Size() == 0 ? nullptr : snapshots.front().val), m_grid(grid) {
        if (m_values != nullptr) {
            m_tilesPerColumn = (static_cast<std::size_t>(grid.ny) - 1) / kTile + 1;
            m_tiles.resize(static_cast<std::size_t>(grid.nx) * m_tilesPerColumn);
            m_columns.resize(static_cast<std::size_t>(grid.nx));
            Refresh({0, grid.nx, 0, grid.ny});
        }
    }

    void Refresh(const GridWindow& window) {
        if (m_values == nullptr || window.IsEmpty()) {
            return;
        }
        const int firstTile = window.firstRow / kTile;
        const int lastTile = (window.endRow - 1) / kTile;
        for (int ix = window.firstColumn; ix < window.endColumn; ++ix) {
            float* const tiles = m_tiles.data() + static_cast<std::size_t>(ix) * m_tilesPerColumn;
            for (int tile = firstTile; tile <= lastTile; ++tile) {
                const int firstRow = tile * kTile;
                const auto count = static_cast<std::size_t>(std::min(kTile, m_grid.ny - firstRow));
                tiles[tile] = m_kernels.largest(m_values + m_grid.Index(ix, firstRow), count, 0.0F);
            }
            m_columns[static_cast<std::size_t>(ix)] = m_kernels.largest(tiles, m_tilesPerColumn, 0.0F);
        }
        m_largest = m_kernels.largest(m_columns.data(), m_columns.size(), 0.0F);
    }

    [[nodiscard]] float Largest() const noexcept { return m_largest; }

private:
    static constexpr int kTile = 128;  ///< rows

    const float* m_values;
    const DeformedGrid& m_grid;
    const ColumnKernels& m_kernels = ColumnKernelsOf(CurrentInstructionSet());
    std::size_t m_tilesPerColumn = 0;
    std::vector<float> m_tiles, m_columns;
    float m_largest = 0.0F;
};

/// The snapshots into which the elements are summed, and the intervals that they belong to.
struct DeformOutput {
    std::vector<InstantVal2d>& vertical;
    std::vector<InstantVal2d>& horizontal;
    const DynamicParam& intervals;
};

/// The intervals that have a share of the slip of an element.
std::vector<IntervalShare> SharesOf(const FAULT_PARAM& element, bool withHorizontal, DeformOutput& out) {
    std::vector<IntervalShare> shares;
    for (std::size_t k = 0; k < out.intervals.params.size() && k < out.vertical.size(); ++k) {
        const float share = SlipShare(out.intervals.params[k], element.lagtime, element.duration);
        if (share != 0.0F) {
            shares.push_back({share, out.vertical[k].val, withHorizontal ? out.horizontal[k].val : nullptr});
        }
    }
    return shares;
}

void PrintReach(const SourceReach& reach) {
    std::cout << " DC3D  distance[m] : " << reach.finite << '\n' << " DC3D0 distance[m] : " << reach.point << std::endl;
}

void PrintTranslation(const FAULT_PARAM& element, const PlanePoint& origin) {
    std::cout << " Fault base point Co-ordinates Translate "
              << "   lon:" << element.org_x << " lat:" << element.org_y << "     x:" << origin.x << "   y:" << origin.y
              << std::endl;
}

/// Largest values as the progress lines show them; an element without slip leaves them as they are.
struct Maxima {
    float element = 0.0F;
    float sum = 0.0F;
};

void PrintProgress(std::size_t number, std::size_t count, const Maxima& maxima) {
    std::cout << number << "/" << count << " Completed "
              << " Max Value Each ELEM. : " << maxima.element << " Max Value Sum.: " << maxima.sum << std::endl;
}

/// The deformation of one grid by one fault.
class GridDeformation {
public:
    GridDeformation(const Fault& fault, int regionKind, const DeformSettings& settings, const DeformedGrid& grid,
                    DeformOutput& out)
        : m_fault(fault),
          m_settings(settings),
          m_grid(grid),
          m_out(out),
          m_isGeographic(fault.coordType == kGeographicCoordinates && regionKind == kGeographicCoordinates),
          m_plane(MakePlane(fault.coordType, regionKind, grid)),
          m_sum(out.vertical, grid) {}

    /// Adds every element. False at the first one that cannot be deformed.
    bool Run() {
        for (std::size_t i = 0; i < m_fault.elements.size(); ++i) {
            // Exact on purpose: only a slip of exactly 0 counts as none.
            if (m_fault.elements[i].slip != 0.0 && !Add(m_fault.elements[i])) {
                return false;
            }
            PrintProgress(i + 1, m_fault.elements.size(), m_maxima);
        }
        return true;
    }

private:
    bool Add(const FAULT_PARAM& element) {
        if (m_settings.tolerance < 0.0) {
            return false;
        }
        ElementDeformation deformation(element, m_fault.elements.size(), m_settings, m_grid, m_buffers);
        if (deformation.Reach().isSwitched) {
            PrintReach(deformation.Reach());
        }
        PlanePoint origin;
        GridWindow window;
        if (!m_plane->TurnTo(deformation.Place(), origin, window)) {
            return false;
        }
        if (m_isGeographic) {
            PrintTranslation(element, origin);
        }
        const std::vector<IntervalShare> shares = SharesOf(element, m_settings.withHorizontal, m_out);
        m_maxima.element = deformation.AddTo(shares, *m_plane, origin, window);
        m_sum.Refresh(window);
        m_maxima.sum = m_sum.Largest();
        return true;
    }

    const Fault& m_fault;
    const DeformSettings& m_settings;
    const DeformedGrid& m_grid;
    DeformOutput& m_out;
    bool m_isGeographic;
    std::unique_ptr<GridPlane> m_plane;
    RunningMaximum m_sum;
    ElementBuffers m_buffers;
    Maxima m_maxima;
};

}  // namespace

int Fault::Deform2D(float mu, float lambda, float horzMinDepth, double tolerance, int horizontalEffect,
                    int regionCoordType, int nx, int ny, double org_x, double org_y, float dx, const float* topo,
                    std::vector<InstantVal2d>& vertOut, std::vector<InstantVal2d>& horzOut, const DynamicParam& dyn) {
    const DeformSettings settings = {(mu + lambda) / (2.0F * mu + lambda), horzMinDepth, tolerance,
                                     horizontalEffect == 1};
    const DeformedGrid grid = {nx, ny, org_x, org_y, dx, topo};
    DeformOutput out = {vertOut, horzOut, dyn};
    GridDeformation deformation(*this, regionCoordType, settings, grid, out);
    if (!deformation.Run()) {
        ReportError(std::cerr, "FAULT OBJECT METHOD",
                    {"Abnormal action at Calculate Deformation.", "Can not calculate deformation.",
                     "Particular attention should be given to \"XML File\"."});
        return 0;
    }
    return 1;
}

}  // namespace tidora
