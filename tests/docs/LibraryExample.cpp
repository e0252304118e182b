#include <iostream>
#include <vector>

#include "fault/Fault.h"

int main() {
    tidora::Fault fault;  // one element: its reference point, depths, strike, dip, rake, length, width, slip, timing
    fault.elements.push_back({0.0, 0.0, 0.0, 5000.0, 0.0, 30.0, 90.0, 40000.0, 20000.0, 3.0, 0.0, 0.0});
    tidora::DynamicParam intervals;
    fault.SetDynamicParam(intervals.params);

    const int n = 3;
    const std::vector<float> topography(n * n, -3000.0F);
    std::vector<tidora::InstantVal2d> vertical(1);
    std::vector<tidora::InstantVal2d> horizontal(1);
    vertical[0].Reset(n * n);
    horizontal[0].Reset(n * n);
    const int isDone = fault.Deform2D(1.0F, 1.0F, 50.0F, 0.0, 0, tidora::kPlaneCoordinates, n, n, -20000.0, 0.0,
                                      20000.0F, topography.data(), vertical, horizontal, intervals);
    for (int ix = 0; ix < n; ++ix) {
        std::cout << vertical[0].val[ix * n + 1] << " m at x = " << -20000 + 20000 * ix << " m\n";
    }
    return isDone == 1 ? 0 : 1;
}
