#pragma once

#include <vector>

#include "ExampleInputs.h"
#include "SeriesFiles.h"

/// A node of a grid at which a deformation is checked.
struct SampleNode {
    int ix = 0, iy = 0;
    double x = 0.0, y = 0.0;  ///< in the plane of the subfaults, m
    double topo = 0.0;        ///< m
};

/// Every stride-th column and row of a grid, from the middle of the first stride on.
[[nodiscard]] std::vector<SampleNode> SampleNodes(const InputGrid& grid, int stride);

/// Node (ix, iy) of a grid in its own co-ordinates.
[[nodiscard]] SampleNode NodeOf(const InputGrid& grid, int ix, int iy);

/// Adds the uplift of every subfault at every node, by reciprocity. As a fault of several elements has it, the upper
/// edge lies below a node by its topography plus the base offset, and not above the floor.
void AddUplift(const std::vector<Subfault>& subfaults, const std::vector<SampleNode>& nodes,
               std::vector<double>& uplift);

/// How far a sum of snapshots is from the uplift by reciprocity at some nodes.
struct UpliftComparison {
    double largestDifference = 0.0;  ///< m
    double raisedByRun = 0.0;        ///< sum of the positive values of the run, m
    double raisedByWork = 0.0;       ///< sum of the positive values by reciprocity, m
};
[[nodiscard]] UpliftComparison CompareUplift(const SummedGrid& run, const std::vector<SampleNode>& nodes,
                                             const std::vector<double>& uplift);

/// Largest and smallest value of a grid, their nodes, and the volume of its raised part.
struct GridFigures {
    int largestX = 0, largestY = 0;
    int smallestX = 0, smallestY = 0;
    double largest = 0.0, smallest = 0.0;  ///< m
    double raisedVolume = 0.0;             ///< m^3
};

/// Figures of a grid in metres.
[[nodiscard]] GridFigures FiguresOf(const SummedGrid& grid);
/// Figures of a grid in degrees; the volume on a sphere of 6371 km.
[[nodiscard]] GridFigures FiguresOnSphere(const SummedGrid& grid);

/// The row of a README's table that shows these figures: "| `VRT_japan` | 14.72 m at 143.750, 37.833 | ... | 87.7 km3
/// |". decimals: of the co-ordinates.
[[nodiscard]] std::string FigureRow(const std::string& series, const SummedGrid& grid, const GridFigures& figures,
                                    int decimals);
