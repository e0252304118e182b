#include "main/RunChecks.h"

#include <iostream>
#include <string>
#include <vector>

#include "support/ErrorBlock.h"

namespace tidora {
namespace {

using Details = std::vector<std::string>;

// The faults come before the regions and the regions in ascending number: of several problems the first is reported.
// An empty list of details is no problem.

/// A kind that nobody knows would deform nothing, without a word. Kinds that differ between fault and region are
/// allowed and do just that. Test: "two-equal-unknown-kinds-of-coordinates-are-refused".
bool IsKnownKind(int coordType) noexcept {
    return coordType == kPlaneCoordinates || coordType == kGeographicCoordinates;
}

std::string Named(const PARAM_REGION& region) {
    return std::to_string(region.no) + " (" + region.name + ")";
}

Details UnknownKind(const std::string& owner, int coordType) {
    return {"The co-ordinate type should be 0 (plane) or 1 (geographic).", owner,
            "Co-ordinate Type > " + std::to_string(coordType)};
}

Details CoordinateKindProblem(const ConfReader& conf) {
    for (const PARAM_FAULT& fault : conf.faults) {
        if (!IsKnownKind(fault.coordType)) {
            return UnknownKind("Fault File > " + fault.faultFile, fault.coordType);
        }
    }
    for (const auto& [number, region] : conf.regions) {
        if (!IsKnownKind(region.coordType)) {
            return UnknownKind("Region > " + Named(region), region.coordType);
        }
    }
    return {};
}

/// The filter reads the parent's finished deformation: the parent must be there, and come first. Without the filter
/// nobody looks at it. A region may be its own parent: its deformation is finished when it is filtered.
/// Tests: "without-the-filter-a-parent-need-not-exist", "a-region-may-be-its-own-parent".
Details ParentProblem(const ConfReader& conf) {
    if (conf.kajiuraFilter != 1) {
        return {};
    }
    for (const auto& [number, region] : conf.regions) {
        if (region.parentNo <= 0 || region.parentNo == number) {
            continue;
        }
        const auto parent = conf.regions.find(region.parentNo);
        if (parent == conf.regions.end()) {
            return {"The parent of a region does not exist.", "Region > " + Named(region),
                    "Parent Region > " + std::to_string(region.parentNo)};
        }
        if (region.parentNo > number) {
            return {"The parent of a region should have a lower number.", "Region > " + Named(region),
                    "Parent Region > " + Named(parent->second)};
        }
    }
    return {};
}

}  // namespace

bool CheckRunnable(const ConfReader& conf) {
    Details details = CoordinateKindProblem(conf);
    if (details.empty()) {
        details = ParentProblem(conf);
    }
    if (!details.empty()) {
        ReportError(std::cerr, "PARAMETER FILE IS INCONSISTENCY", details);
    }
    return details.empty();
}

}  // namespace tidora
