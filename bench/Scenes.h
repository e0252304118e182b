#pragma once

#include <cstddef>
#include <vector>

#include "fault/DynamicParam.h"
#include "fault/Fault.h"
#include "grid/InstantVal2d.h"
#include "reference/DeformReference.h"

namespace bench {

/// A grid, a fault over it and the snapshots of one interval.
struct DeformScene {
    tidora::reference::DeformArguments arguments;
    std::vector<float> topo;
    tidora::Fault fault;
    tidora::DynamicParam intervals;
    std::vector<tidora::InstantVal2d> vertical, horizontal;

    void Reset();
    void RunFast();
    void RunLiteral();
};

/// Plane grid, n by n points 2 km apart, with `elements` elements of 50 km by 25 km over its middle, slope term on.
[[nodiscard]] DeformScene PlaneScene(int n, std::size_t elements);

/// Geographic grid of nx by ny points 2 arc minutes apart off Japan, elements along a trench.
[[nodiscard]] DeformScene GeographicScene(int nx, int ny, std::size_t elements);

/// Plane grid, n by n points 1 km apart, with 200 elements of 2 km by 2 km in the middle 100 km, tolerance 0.5 m.
[[nodiscard]] DeformScene SmallElementsScene(int n);

/// Grid of n by n points with 100 elements of 10 km by 10 km in its middle: of 1 km spacing on the plane, or of 40
/// seconds of arc off Japan.
[[nodiscard]] DeformScene FarPointsScene(int n, bool isGeographic, bool withSlopes, double tolerance);

/// The plane scene with onset times that make `intervals` intervals.
[[nodiscard]] DeformScene IntervalScene(int n, std::size_t elements, std::size_t intervals);

/// Largest difference of two scenes' snapshots over their largest value.
[[nodiscard]] double LargestDifference(const DeformScene& a, const DeformScene& b);

}  // namespace bench
