#include <cmath>
#include <cstddef>
#include <iostream>
#include <optional>
#include <vector>

#include "deform/GridDeformation.h"
#include "fault/Fault.h"
#include "projection/mapproject.h"
#include "support/ErrorBlock.h"

namespace tidora {
namespace {

/// Kinds that differ, or that nobody knows, have no frame in common: nothing is deformed, on purpose without a message.
/// Test: "co-ordinate kinds that differ, or that nobody knows, deform nothing and still print the progress".
DeformationFrame FrameOf(int faultKind, int regionKind) noexcept {
    if (faultKind != regionKind) {
        return DeformationFrame::None;
    }
    switch (faultKind) {
        case kPlaneCoordinates:
            return DeformationFrame::Plane;
        case kGeographicCoordinates:
            return DeformationFrame::Utm;
        default:
            return DeformationFrame::None;
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

/// The sum is that of the first snapshot alone, whatever interval the element belongs to.
void PrintProgress(std::size_t number, std::size_t count, const DeformationMaxima& maxima) {
    std::cout << number << "/" << count << " Completed "
              << " Max Value Each ELEM. : " << maxima.element << " Max Value Sum.: " << maxima.sum << std::endl;
}

/// The reference point of an element in the plane of its frame, m; of a geographic one the zone and the place are
/// announced, the zone by the conversion itself. Nothing where it has no place, as beyond a pole or in a zone 61: such
/// a point would spread over the whole grid as not a number.
std::optional<PlanePoint> OriginOf(const FAULT_PARAM& element, DeformationFrame frame) {
    PlanePoint origin = {element.org_x, element.org_y};
    if (frame == DeformationFrame::Utm) {
        const int one = 1;  // the routine takes the number of points by address
        mapproject_initialize_using_longi_(element.org_x);
        ll2xy_(&one, &element.org_x, &element.org_y, &origin.x, &origin.y);
        mapproject_finalize_();
        if (!std::isfinite(origin.x) || !std::isfinite(origin.y)) {
            return std::nullopt;
        }
        PrintTranslation(element, origin);
    }
    return origin;
}

/// The snapshots into which the elements are summed, and the intervals that they belong to.
struct DeformOutput {
    std::vector<InstantVal2d>& vertical;
    std::vector<InstantVal2d>& horizontal;
    const DynamicParam& intervals;
};

/// What one call is about, in the terms of the rooms below.
struct DeformTask {
    float alpha = 0.0F;      ///< medium constant, (lambda + mu) / (lambda + 2 mu)
    double tolerance = 0.0;  ///< m; where a source may be exchanged for a cheaper one
    SlopeTerm slope;
    DeformationFrame frame = DeformationFrame::None;
};

/// The elements of a fault on their way into the snapshots of one grid, in file order: a sum in single precision
/// depends on it. Prints its progress. Borrows everything that it is given.
class ElementSum {
public:
    ElementSum(const std::vector<FAULT_PARAM>& elements, const SeaFloor& floor, const DeformTask& task,
               const DeformOutput& out)
        : m_elements(elements),
          m_task(task),
          m_out(out),
          m_deformation(floor, task.slope, task.frame, out.vertical.empty() ? nullptr : out.vertical.front().val) {}

    /// Adds all elements. False at the first one that cannot be computed; those before it stay in the sum.
    [[nodiscard]] bool AddAll() {
        for (std::size_t i = 0; i < m_elements.size(); ++i) {
            // Exact on purpose: only a slip of exactly 0 counts as none. Such an element has a line of progress, too,
            // with the maxima of the one before it, and is not asked for the rest. Tests: "an element without slip adds
            // nothing and prints the maxima of the one before it", "a negative tolerance is not seen where no element
            // slips".
            if (m_elements[i].slip != 0.0 && !Add(m_elements[i])) {
                return false;
            }
            PrintProgress(i + 1, m_elements.size(), m_maxima);
        }
        return true;
    }

private:
    /// The lines about the element come before its deformation, which takes the time. False where the tolerance or the
    /// place of the element is none; nothing of it is in the sum then.
    [[nodiscard]] bool Add(const FAULT_PARAM& element) {
        if (m_task.tolerance < 0.0) {
            return false;
        }
        const ElementSource source = MakeElementSource(element, m_task.alpha);
        const SourceReach reach = MakeSourceReach(element, source, m_task.tolerance, m_elements.size());
        if (reach.isSwitched) {
            PrintReach(reach);
        }
        const std::optional<PlanePoint> origin = OriginOf(element, m_task.frame);
        if (!origin) {
            return false;
        }
        m_maxima = m_deformation.Add(element, source, reach, m_elements.size() == 1, *origin, SharesOf(element));
        return true;
    }

    /// The intervals that have a share of the slip of an element. Where the share is 0 nothing is added, also where the
    /// displacement is not a number.
    [[nodiscard]] std::vector<IntervalShare> SharesOf(const FAULT_PARAM& element) const {
        std::vector<IntervalShare> shares;
        // As far as there are both: an interval without a snapshot has nowhere to put its share.
        for (std::size_t k = 0; k < m_out.intervals.params.size() && k < m_out.vertical.size(); ++k) {
            const float share = SlipShare(m_out.intervals.params[k], element.lagtime, element.duration);
            if (share != 0.0F) {
                shares.push_back({share, m_out.vertical[k].val, m_task.slope.isOn ? m_out.horizontal[k].val : nullptr});
            }
        }
        return shares;
    }

    const std::vector<FAULT_PARAM>& m_elements;
    DeformTask m_task;
    DeformOutput m_out;
    GridDeformation m_deformation;
    DeformationMaxima m_maxima;  ///< of the last element with slip
};

}  // namespace

// Not const, as published.
// NOLINTNEXTLINE(readability-make-member-function-const)
int Fault::Deform2D(float mu, float lambda, float horzMinDepth, double tolerance, int horizontalEffect,
                    int regionCoordType, int nx, int ny, double org_x, double org_y, float dx, const float* topo,
                    std::vector<InstantVal2d>& vertOut, std::vector<InstantVal2d>& horzOut, const DynamicParam& dyn) {
    const float alpha = (mu + lambda) / (2.0F * mu + lambda);  // single precision, as the routines take it
    const SeaFloor floor = {{nx, ny, org_x, org_y, dx}, topo};
    const DeformTask task = {
        alpha, tolerance, {horizontalEffect == 1, horzMinDepth}, FrameOf(coordType, regionCoordType)};
    if (ElementSum(elements, floor, task, {vertOut, horzOut, dyn}).AddAll()) {
        return 1;
    }
    // One text for whatever failed, fixed; there is no XML file.
    // Test: "a negative tolerance fails and names the XML File".
    ReportError(std::cerr, "FAULT OBJECT METHOD",
                {"Abnormal action at Calculate Deformation.", "Can not calculate deformation.",
                 "Particular attention should be given to \"XML File\"."});
    return 0;
}

}  // namespace tidora
