#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "fault/ElementDeformation.h"
#include "fault/Fault.h"
#include "fault/GridPlane.h"
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
    void FillColumn(int /*ix*/, const GridWindow& /*window*/, ColumnPlaces& places) override { places.Resize(0); }
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

/// Largest value of a grid, at least 0, kept per column so that a change costs only the columns that it touches.
class RunningMaximum {
public:
    RunningMaximum(const std::vector<InstantVal2d>& snapshots, const DeformedGrid& grid)
        : m_values(snapshots.empty() ? nullptr : snapshots.front().val), m_grid(grid) {
        m_columns.resize(m_values == nullptr ? 0 : static_cast<std::size_t>(std::max(grid.nx, 0)));
        Refresh({0, static_cast<int>(m_columns.size()), 0, std::max(grid.ny, 0)});
    }

    void Refresh(const GridWindow& window) {
        if (m_columns.empty() || window.IsEmpty()) {
            return;
        }
        for (int ix = window.firstColumn; ix < window.endColumn; ++ix) {
            float largest = 0.0F;
            const float* const column = m_values + m_grid.Index(ix, 0);
            for (int iy = 0; iy < m_grid.ny; ++iy) {
                largest = column[iy] > largest ? column[iy] : largest;
            }
            m_columns[static_cast<std::size_t>(ix)] = largest;
        }
        m_largest = *std::max_element(m_columns.begin(), m_columns.end());
    }

    [[nodiscard]] float Largest() const noexcept { return m_largest; }

private:
    const float* m_values;
    const DeformedGrid& m_grid;
    std::vector<float> m_columns;
    float m_largest = 0.0F;
};

/// Adds share * field to a snapshot, within the window of the field.
void AddShare(float share, const std::vector<float>& field, const ElementFields& fields, const DeformedGrid& grid,
              InstantVal2d& snapshot) {
    const GridWindow& window = fields.window;
    for (int ix = window.firstColumn; ix < window.endColumn; ++ix) {
        const float* const from = field.data() + fields.ColumnStart(ix);
        float* const to = snapshot.val + grid.Index(ix, window.firstRow);
        for (std::size_t i = 0; i < window.Rows(); ++i) {
            to[i] += share * from[i];
        }
    }
}

/// The snapshots into which the elements are summed, and the intervals that they belong to.
struct DeformOutput {
    std::vector<InstantVal2d>& vertical;
    std::vector<InstantVal2d>& horizontal;
    const DynamicParam& intervals;
};

/// Adds both fields of an element to every interval that has a share of its slip.
void AddShares(const FAULT_PARAM& element, const DeformedGrid& grid, const ElementFields& fields, DeformOutput& out) {
    if (fields.window.IsEmpty()) {
        return;
    }
    for (std::size_t k = 0; k < out.intervals.params.size() && k < out.vertical.size(); ++k) {
        const float share = SlipShare(out.intervals.params[k], element.lagtime, element.duration);
        if (share != 0.0F) {
            AddShare(share, fields.vertical, fields, grid, out.vertical[k]);
            if (!fields.horizontal.empty()) {
                AddShare(share, fields.horizontal, fields, grid, out.horizontal[k]);
            }
        }
    }
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
        ElementDeformation deformation(element, m_fault.elements.size(), m_settings, m_grid);
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
        m_maxima.element = deformation.Evaluate(*m_plane, origin, window, m_fields);
        AddShares(element, m_grid, m_fields, m_out);
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
    ElementFields m_fields;
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
