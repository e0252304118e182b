#pragma once

#include <cstddef>
#include <vector>

#include "fault/DeformedGrid.h"
#include "fault/ElementSource.h"
#include "fault/Fault.h"
#include "fault/GridPlane.h"

namespace tidora {

/// What holds for every element of one deformation.
struct DeformSettings {
    float alpha = 0.0F;         ///< (lambda + mu) / (lambda + 2 mu)
    float horzMinDepth = 0.0F;  ///< m
    double tolerance = 0.0;     ///< m
    bool withHorizontal = false;
};

/// The two fields of one element over its window, column by column, m. Outside the window they are 0.
struct ElementFields {
    GridWindow window;
    std::vector<float> vertical;
    std::vector<float> horizontal;  ///< empty when it is not computed

    /// First row of column `ix` of the window.
    [[nodiscard]] std::size_t ColumnStart(int ix) const noexcept {
        return static_cast<std::size_t>(ix - window.firstColumn) * window.Rows();
    }
};

/// One element over the points of a grid within its reach. Points are gathered from the columns of its window,
/// evaluated many at a time and put back, so that the work follows the reach of the element and not the size of the
/// grid.
class ElementDeformation {
public:
    ElementDeformation(const FAULT_PARAM& element, std::size_t elementCount, const DeformSettings& settings,
                       const DeformedGrid& grid);

    [[nodiscard]] const SourceReach& Reach() const noexcept { return m_reach; }
    [[nodiscard]] ElementPlace Place() const noexcept;

    /// Fills `fields` over `window`, which holds every point within reach, and returns the largest vertical
    /// displacement, at least 0. `plane` has been turned to this element and `origin` is its reference point there.
    float Evaluate(GridPlane& plane, const PlanePoint& origin, const GridWindow& window, ElementFields& fields);

private:
    /// Points that wait for one kind of source, or a column of them.
    struct Points {
        std::vector<float> x, y, depth;  ///< as the source takes them
        std::vector<int> row;            ///< of the grid
        std::vector<int> column;

        void Resize(std::size_t count);
    };

    void PlaceColumn(const ColumnPlaces& places, const PlanePoint& origin);
    void SortColumn(int ix, const GridWindow& window, const ColumnPlaces& places);
    void EvaluateColumn(int ix, ElementFields& fields);
    void Queue(int ix, ElementFields& fields);
    void Flush(Points& points, std::size_t& count, bool isFinite, ElementFields& fields);
    void Displace(bool isFinite, const SurfacePoints& points, float* uz);
    [[nodiscard]] float UpliftFromHorizontal(int ix, int iy, float ux, float uy) const noexcept;

    const FAULT_PARAM& m_element;
    const DeformSettings& m_settings;
    const DeformedGrid& m_grid;
    ElementSource m_slip;
    SourceReach m_reach;
    bool m_depthFromGrid;  ///< of several elements, each takes its depth from the topography
    double m_depth;        ///< depth of the upper edge at the point queued last, m
    float m_largest = 0.0F;
    // One column: co-ordinates in the frame of the element, and what each point needs.
    std::vector<float> m_x, m_y, m_centroidX, m_centroidY, m_distance;
    std::vector<float> m_edgeDepth, m_centroidDepth;
    enum class Source : unsigned char { None, Finite, Point };
    std::vector<Source> m_source;
    std::size_t m_finiteInColumn = 0;
    // Points of several columns that wait.
    Points m_finite, m_point;
    std::size_t m_finiteCount = 0, m_pointCount = 0;
    std::vector<float> m_ux, m_uy, m_uz;
};

}  // namespace tidora
