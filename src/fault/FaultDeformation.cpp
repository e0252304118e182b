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

/// The snapshots into which the elements are summed, and the intervals that they belong to.
struct DeformOutput {
    std::vector<InstantVal2d>& vertical;
    std::vector<InstantVal2d>& horizontal;
    const DynamicParam& intervals;
};

/// The intervals that have a share of the slip of an element. Where the share is 0 nothing is added, also where the
/// displacement is not a number.
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

void PrintProgress(std::size_t number, std::size_t count, const DeformationMaxima& maxima) {
    std::cout << number << "/" << count << " Completed "
              << " Max Value Each ELEM. : " << maxima.element << " Max Value Sum.: " << maxima.sum << std::endl;
}

/// The reference point of an element in the plane of its frame, m; of a geographic one the zone and the place are
/// announced. Nothing where it has no place.
std::optional<PlanePoint> OriginOf(const FAULT_PARAM& element, DeformationFrame frame) {
    PlanePoint origin = {element.org_x, element.org_y};
    if (frame == DeformationFrame::Utm) {
        const int one = 1;
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

}  // namespace

int Fault::Deform2D(float mu, float lambda, float horzMinDepth, double tolerance, int horizontalEffect,
                    int regionCoordType, int nx, int ny, double org_x, double org_y, float dx, const float* topo,
                    std::vector<InstantVal2d>& vertOut, std::vector<InstantVal2d>& horzOut, const DynamicParam& dyn) {
    const SeaFloor floor = {{nx, ny, org_x, org_y, dx}, topo};
    DeformOutput out = {vertOut, horzOut, dyn};
    const auto addElements = [&]() -> bool {
        const float alpha = (mu + lambda) / (2.0F * mu + lambda);
        const bool withHorizontal = horizontalEffect == 1;
        const DeformationFrame frame = FrameOf(coordType, regionCoordType);
        GridDeformation deformation(floor, {withHorizontal, horzMinDepth}, frame,
                                    vertOut.empty() ? nullptr : vertOut.front().val);
        DeformationMaxima maxima;  // an element without slip leaves them as they are
        for (std::size_t i = 0; i < elements.size(); ++i) {
            const FAULT_PARAM& element = elements[i];
            if (element.slip != 0.0) {  // exact on purpose: only a slip of exactly 0 counts as none
                if (tolerance < 0.0) {
                    return false;
                }
                const ElementSource source = MakeElementSource(element, alpha);
                const SourceReach reach = MakeSourceReach(element, source, tolerance, elements.size());
                if (reach.isSwitched) {
                    PrintReach(reach);
                }
                const std::optional<PlanePoint> origin = OriginOf(element, frame);
                if (!origin) {
                    return false;
                }
                maxima = deformation.Add(element, source, reach, elements.size() == 1, *origin,
                                         SharesOf(element, withHorizontal, out));
            }
            PrintProgress(i + 1, elements.size(), maxima);
        }
        return true;
    };
    if (!addElements()) {
        ReportError(std::cerr, "FAULT OBJECT METHOD",
                    {"Abnormal action at Calculate Deformation.", "Can not calculate deformation.",
                     "Particular attention should be given to \"XML File\"."});
        return 0;
    }
    return 1;
}

}  // namespace tidora
