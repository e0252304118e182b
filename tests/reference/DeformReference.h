#pragma once

#include <vector>

#include "fault/DynamicParam.h"
#include "fault/Fault.h"
#include "grid/InstantVal2d.h"

namespace tidora::reference {

/// Arguments of a deformation, as Fault::Deform2D takes them.
struct DeformArguments {
    float mu = 1.0F, lambda = 1.0F;  ///< Lame constants
    float horzMinDepth = 50.0F;      ///< m
    double tolerance = 0.0;          ///< m, not negative
    int horizontalEffect = 0;
    int regionCoordType = 0;
    int nx = 0, ny = 0;
    double orgX = 0.0, orgY = 0.0;  ///< metres or degrees
    float dx = 0.0F;
    const float* topo = nullptr;  ///< nx * ny values, m, index ix * ny + iy
};

/// How a point was evaluated for one element.
enum class Evaluation : unsigned char { None, FiniteSource, PointSource };

/// The deformation of a grid point by point and element by element: every point is projected for every element, and
/// every interval gets a pass over the whole grid. Adds into `vertOut` and `horzOut`, prints what Fault::Deform2D
/// prints, and returns how each point was evaluated: index [element][ix * ny + iy], empty for an element without slip.
std::vector<std::vector<Evaluation>> DeformReference(const Fault& fault, const DeformArguments& a,
                                                     const DynamicParam& dyn, std::vector<InstantVal2d>& vertOut,
                                                     std::vector<InstantVal2d>& horzOut);

}  // namespace tidora::reference
