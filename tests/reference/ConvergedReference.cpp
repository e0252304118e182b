#include "reference/ConvergedReference.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "kajiura/ConvergedLattice.h"

namespace tidora::reference {
namespace {

struct Interval {
    double low, high;
};

Interval Overlap(Interval a, Interval b) {
    return {std::max(a.low, b.low), std::min(a.high, b.high)};
}

double Length(Interval a) {
    return std::max(0.0, a.high - a.low);
}

Interval Moved(Interval a, double by) {
    return {a.low + by, a.high + by};
}

/// Of a pixel's axis: half a spacing on both sides of its node.
Interval Pixel(double origin, double spacing, std::size_t index) {
    const double node = origin + static_cast<double>(index) * spacing;
    return {node - spacing / 2.0, node + spacing / 2.0};
}

/// What counts of a grid's columns: all, but no more than a turn.
Interval Columns(const RegularGrid& grid, bool isGeographic) {
    const Interval all = {Pixel(grid.west, grid.spacing, 0).low, Pixel(grid.west, grid.spacing, grid.nx - 1).high};
    const double excess = isGeographic ? std::max(0.0, Length(all) - 360.0) : 0.0;
    return {all.low + excess / 2.0, all.high - excess / 2.0};
}

Interval Rows(const RegularGrid& grid) {
    return {Pixel(grid.south, grid.spacing, 0).low, Pixel(grid.south, grid.spacing, grid.ny - 1).high};
}

struct Cell {
    Interval x, y;
};

/// Longitudes may be counted so many turns apart.
constexpr int kTurns = 6;

/// Area of the cell that lies in the columns and rows, on the plane or modulo 360.
double AreaWithin(const Cell& cell, Interval columns, Interval rows, bool isGeographic) {
    double length = 0.0;
    for (int turn = isGeographic ? -kTurns : 0; turn <= (isGeographic ? kTurns : 0); ++turn) {
        length += Length(Overlap(Moved(cell.x, 360.0 * turn), columns));
    }
    return length * Length(Overlap(cell.y, rows));
}

/// Integral of a field over a cell.
double Integral(const UpliftField& field, const Cell& cell, bool isGeographic) {
    const RegularGrid& grid = field.grid;
    const Interval all = Columns(grid, isGeographic);
    double sum = 0.0;
    for (std::size_t iy = 0; iy < grid.ny; ++iy) {
        for (std::size_t ix = 0; ix < grid.nx; ++ix) {
            const Interval columns = Overlap(Pixel(grid.west, grid.spacing, ix), all);
            const double area = AreaWithin(cell, columns, Pixel(grid.south, grid.spacing, iy), isGeographic);
            sum += area * static_cast<double>(field.values[iy * grid.nx + ix]);
        }
    }
    return sum;
}

/// Integral over the cell: of the own field, and of the parent where the own field is not.
double IntegralOfBoth(const UpliftField& own, const UpliftField* parent, const Cell& cell, bool isGeographic) {
    double sum = Integral(own, cell, isGeographic);
    if (parent == nullptr) {
        return sum;
    }
    sum += Integral(*parent, cell, isGeographic);
    const Interval rows = Rows(own.grid);
    const Interval columns = Columns(own.grid, isGeographic);
    for (int turn = isGeographic ? -kTurns : 0; turn <= (isGeographic ? kTurns : 0); ++turn) {
        const Cell inOwn = {Overlap(Moved(cell.x, 360.0 * turn), columns), Overlap(cell.y, rows)};
        if (Length(inOwn.x) > 0.0 && Length(inOwn.y) > 0.0) {
            sum -= Integral(*parent, inOwn, isGeographic);
        }
    }
    return sum;
}

/// The interval of a signed number: 0 in the middle.
Interval CellAxis(double centre, double depth, int number) {
    const int i = std::abs(number);
    const double low = i == 0 ? -kEdgeDistance[0] : kEdgeDistance[i - 1];
    const double high = kEdgeDistance[i];
    return number < 0 ? Interval{centre - high * depth, centre - low * depth}
                      : Interval{centre + low * depth, centre + high * depth};
}

/// Weighted mean around (x, y); the depth in units of either axis.
double Mean(const UpliftField& own, const UpliftField* parent, bool isGeographic, double x, double y, double depthX,
            double depthY) {
    double sum = 0.0;
    double weights = 0.0;
    for (int j = 1 - kEdgeDistances; j < kEdgeDistances; ++j) {
        for (int i = 1 - kEdgeDistances; i < kEdgeDistances; ++i) {
            const Cell cell = {CellAxis(x, depthX, i), CellAxis(y, depthY, j)};
            const double area = Length(cell.x) * Length(cell.y);
            const double weight = kCellDensity[std::abs(j)][std::abs(i)] * area;
            weights += weight;
            sum += weight / area * IntegralOfBoth(own, parent, cell, isGeographic);
        }
    }
    return sum / weights;
}

/// Metres in a degree by the distance between two points of the ellipsoid of Earth-centred co-ordinates.
struct Place {
    double x, y, z;
};
Place OnEllipsoid(double longitude, double latitude) {
    constexpr double kRadian = 3.141592653589793 / 180.0;
    constexpr double kA = 6378137.0;
    constexpr double kF = 1.0 / 298.257222101;
    const double phi = latitude * kRadian;
    const double lambda = longitude * kRadian;
    const double n = kA / std::sqrt(1.0 - kF * (2.0 - kF) * std::sin(phi) * std::sin(phi));
    return {n * std::cos(phi) * std::cos(lambda), n * std::cos(phi) * std::sin(lambda),
            n * (1.0 - kF) * (1.0 - kF) * std::sin(phi)};
}
double MetresPerDegree(double east, double north, double latitude) {
    constexpr double kHalf = 1e-3;  // degrees: short enough for a chord, long enough for its digits
    const Place a = OnEllipsoid(-kHalf * east, latitude - kHalf * north);
    const Place b = OnEllipsoid(kHalf * east, latitude + kHalf * north);
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z) / (2.0 * kHalf);
}

}  // namespace

std::vector<double> ConvergedReference(const UpliftField& own, const UpliftField* parent, bool isGeographic,
                                       const std::vector<float>& topography) {
    std::vector<double> surface(own.values.begin(), own.values.end());
    for (std::size_t iy = 0; iy < own.grid.ny; ++iy) {
        const double y = own.grid.south + static_cast<double>(iy) * own.grid.spacing;
        const double east = isGeographic ? MetresPerDegree(1.0, 0.0, y) : 1.0;
        const double north = isGeographic ? MetresPerDegree(0.0, 1.0, y) : 1.0;
        for (std::size_t ix = 0; ix < own.grid.nx; ++ix) {
            const std::size_t at = iy * own.grid.nx + ix;
            const double depth = -static_cast<double>(topography[at]);
            if (!(depth > 10.0)) {
                continue;
            }
            const double x = own.grid.west + static_cast<double>(ix) * own.grid.spacing;
            const double widest = isGeographic ? 180.0 / kLatticeReach : HUGE_VAL;
            surface[at] = Mean(own, parent, isGeographic, x, y, std::min(depth / east, widest), depth / north);
        }
    }
    return surface;
}

}  // namespace tidora::reference
