#include "WaterFilter.h"

#include <cmath>
#include <cstddef>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kHalfSteps = 20;

/// Weight of a sample (i, j) of the disc, 0 outside. With rho = q / 16 the squared distance in depths and samples a
/// quarter of the depth apart, G dA = (1 / pi) sum (-1)^n (2n + 1) / ((2n + 1)^2 + rho)^(3/2) / 16.
double Weight(int i, int j) {
    const int q = i * i + j * j;
    if (q > kHalfSteps * kHalfSteps) {
        return 0.0;
    }
    double sum = 0.0;
    for (int n = 0; n <= 10; ++n) {
        const double odd = 2.0 * n + 1.0;
        sum += (n % 2 == 0 ? odd : -odd) / std::pow(odd * odd + q / 16.0, 1.5);
    }
    return sum / (16.0 * kPi);
}

/// Where a point lies in a grid: the south-west node of its cell, and the fractions of the cell.
struct CellPlace {
    bool isInside = false;
    int ix = 0, iy = 0;
    double t = 0.0, u = 0.0;
};

CellPlace PlaceIn(const SeriesGrid& grid, double x, double y) {
    const double across = (x - grid.orgX) / static_cast<double>(grid.dx);
    const double up = (y - grid.orgY) / static_cast<double>(grid.dx);
    const double ix = std::floor(across);
    const double iy = std::floor(up);
    const bool isInside = ix >= 0.0 && ix + 1.0 < grid.nx && iy >= 0.0 && iy + 1.0 < grid.ny;
    return isInside ? CellPlace{true, static_cast<int>(ix), static_cast<int>(iy), across - ix, up - iy} : CellPlace{};
}

double Interpolated(const SeriesGrid& grid, const CellPlace& p) {
    const auto at = [&](int ix, int iy) { return static_cast<double>(grid.values[grid.Index(ix, iy)]); };
    return (1.0 - p.t) * (1.0 - p.u) * at(p.ix, p.iy) + p.t * (1.0 - p.u) * at(p.ix + 1, p.iy) +
           (1.0 - p.t) * p.u * at(p.ix, p.iy + 1) + p.t * p.u * at(p.ix + 1, p.iy + 1);
}

void AddSample(const std::vector<SeriesGrid>& grids, const CellPlace& place, double weight, std::vector<double>& sums) {
    for (std::size_t k = 0; k < sums.size(); ++k) {
        sums[k] += weight * Interpolated(grids.at(k), place);
    }
}

}  // namespace

SeriesGrid FloorUplift(const SeriesGrid& vertical, const SeriesGrid& horizontal) {
    SeriesGrid floor = vertical;
    for (std::size_t at = 0; at < floor.values.size(); ++at) {
        // Single on purpose: so is the sum that the program filters.
        floor.values[at] += horizontal.values.at(at);
    }
    return floor;
}

std::vector<double> WaterSurfaceAt(const InputGrid& topography, const std::vector<SeriesGrid>& floors,
                                   const std::vector<SeriesGrid>& parents, int ix, int iy) {
    const double step = -0.25 * topography.At(ix, iy);
    std::vector<double> sums(floors.size(), 0.0);
    for (int i = -kHalfSteps; i <= kHalfSteps; ++i) {
        for (int j = -kHalfSteps; j <= kHalfSteps; ++j) {
            const double x = topography.X(ix) + i * step;
            const double y = topography.Y(iy) + j * step;
            if (const CellPlace own = PlaceIn(floors.at(0), x, y); own.isInside) {
                AddSample(floors, own, Weight(i, j), sums);
            } else if (!parents.empty()) {
                if (const CellPlace parent = PlaceIn(parents.at(0), x, y); parent.isInside) {
                    AddSample(parents, parent, Weight(i, j), sums);
                }
            }
        }
    }
    return sums;
}

double WaterFilterGain() {
    double sum = 0.0;
    for (int i = -kHalfSteps; i <= kHalfSteps; ++i) {
        for (int j = -kHalfSteps; j <= kHalfSteps; ++j) {
            sum += Weight(i, j);
        }
    }
    return sum;
}
