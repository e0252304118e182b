#include "SampledUplift.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <sstream>

#include "ReciprocalUplift.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kEarthRadius = 6371000.0;  // m

/// cellArea: area of a cell around a node of row iy.
template <typename CellArea>
GridFigures Figures(const SummedGrid& grid, CellArea cellArea) {
    GridFigures f;
    f.largest = f.smallest = grid.At(0, 0);
    for (int iy = 0; iy < grid.ny; ++iy) {
        for (int ix = 0; ix < grid.nx; ++ix) {
            const double value = grid.At(ix, iy);
            if (value > f.largest) {
                f.largest = value;
                f.largestX = ix;
                f.largestY = iy;
            }
            if (value < f.smallest) {
                f.smallest = value;
                f.smallestX = ix;
                f.smallestY = iy;
            }
            f.raisedVolume += std::max(0.0, value) * cellArea(iy);
        }
    }
    return f;
}

}  // namespace

std::vector<SampleNode> SampleNodes(const InputGrid& grid, int stride) {
    std::vector<SampleNode> nodes;
    for (int ix = stride / 2; ix < grid.nx; ix += stride) {
        for (int iy = stride / 2; iy < grid.ny; iy += stride) {
            nodes.push_back(NodeOf(grid, ix, iy));
        }
    }
    return nodes;
}

SampleNode NodeOf(const InputGrid& grid, int ix, int iy) {
    return {ix, iy, grid.X(ix), grid.Y(iy), grid.At(ix, iy)};
}

void AddUplift(const std::vector<Subfault>& subfaults, const std::vector<SampleNode>& nodes,
               std::vector<double>& uplift) {
    for (const Subfault& s : subfaults) {
        SlipRectangle rectangle = {s.x, s.y, 0.0, s.strike, s.dip, s.rake, s.length, s.width, s.slip};
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            rectangle.depth = std::max(0.0, nodes[i].topo + s.baseOffset);
            uplift.at(i) += UpliftByReciprocity(rectangle, nodes[i].x, nodes[i].y);
        }
    }
}

UpliftComparison CompareUplift(const SummedGrid& run, const std::vector<SampleNode>& nodes,
                               const std::vector<double>& uplift) {
    UpliftComparison comparison;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const double value = run.At(nodes[i].ix, nodes[i].iy);
        comparison.largestDifference = std::max(comparison.largestDifference, std::abs(value - uplift.at(i)));
        comparison.raisedByRun += std::max(0.0, value);
        comparison.raisedByWork += std::max(0.0, uplift.at(i));
    }
    return comparison;
}

GridFigures FiguresOf(const SummedGrid& grid) {
    return Figures(grid, [&grid](int) { return grid.dx * grid.dx; });
}

GridFigures FiguresOnSphere(const SummedGrid& grid) {
    const double rad = kPi / 180.0;
    const double side = grid.dx * rad * kEarthRadius;
    return Figures(grid, [&](int iy) { return side * side * std::cos((grid.orgY + iy * grid.dx) * rad); });
}

std::string FigureRow(const std::string& series, const SummedGrid& grid, const GridFigures& f, int decimals) {
    std::ostringstream row;
    const auto place = [&](double value, int ix, int iy) {
        row << std::fixed << std::setprecision(2) << value << " m at " << std::setprecision(decimals)
            << grid.orgX + ix * grid.dx << ", " << grid.orgY + iy * grid.dx << " | ";
    };
    row << "| `" << series << "` | ";
    place(f.largest, f.largestX, f.largestY);
    place(f.smallest, f.smallestX, f.smallestY);
    row << std::setprecision(f.raisedVolume < 1e9 ? 4 : 1) << f.raisedVolume / 1e9 << " km3 |";
    return row.str();
}
