// The filter of a block of points. Included by one source per instruction set, which names the function it becomes with
// TIDORA_FILTER_POINTS: the loops are plain, so that the compiler makes vectors of the width that it is told.
// Everything is local to that source, and nothing from the standard library is used: no instruction of one set may
// reach another.
//
// Every operation, its precision and its order are those of one sample after the other:
//     sum = sum + ((eta G) s) s,  i from -20 to 20 and within it j from -20 to 20,
// only what does not depend on i, on j, or on more than i^2 + j^2, is done once. Vectors run along j, where the samples
// are independent; the sums, whose order is fixed, run side by side for several points.

#include "region/KajiuraLattice.h"

// Each source that includes this is to have definitions of its own.
// NOLINTBEGIN(misc-definitions-in-headers)
namespace tidora {
namespace {

constexpr float kSeries[kKernelTerms] = {1, -3, 5, -7, 9, -11, 13, -15, 17, -19, 21};  // (-1)^n (2n + 1)
constexpr double kPi = 3.141592653589793;

/// Arrays over the lattice positions of one axis are a little longer than the axis, so that loops of kChunk steps need
/// no remainder: what they write behind the end is never used.
constexpr int kChunk = 16;
constexpr int kPadded = (kLatticeWidth / kChunk + 1) * kChunk;

/// Bilinear weights and cells of the 41 lattice positions along one axis, in one grid. The positions from `first` to
/// `last` lie in a cell that has both its corners inside the grid.
struct LatticeAxis {
    int first, last;
    int isInside[kPadded];       ///< 1 from first to last
    int cell[kPadded];           ///< -1 outside
    float weight[kPadded];       ///< of the far corner
    double wideWeight[kPadded];  ///< the same
    double nearWeight[kPadded];  ///< 1 - weight, in double
};

/// True division on purpose: a reciprocal would move nodes across cell borders.
void FillAxis(float centre, float step, double org, float dx, int count, LatticeAxis& __restrict axis) {
    const double wideDx = static_cast<double>(dx);
    const double limit = static_cast<double>(count);
    for (int at = 0; at < kPadded; ++at) {
        const float p = static_cast<float>(at - kLatticeHalfWidth) * step + centre;
        const double cell = __builtin_floor((static_cast<double>(p) - org) / wideDx);
        // Not short-circuited: the loop makes vectors.
        const int isInside = static_cast<int>(cell >= 0.0) & static_cast<int>(cell + 1.0 < limit);
        const double index = isInside != 0 ? cell : -1.0;
        const float corner = static_cast<float>(org + static_cast<double>(static_cast<float>(index) * dx));
        axis.isInside[at] = isInside;
        axis.cell[at] = static_cast<int>(index);
        axis.weight[at] = (p - corner) / dx;
        axis.wideWeight[at] = static_cast<double>(axis.weight[at]);
        axis.nearWeight[at] = 1.0 - axis.wideWeight[at];
    }
    axis.first = 0;
    axis.last = kLatticeWidth - 1;
    while (axis.first <= axis.last && axis.cell[axis.first] < 0) {
        ++axis.first;
    }
    while (axis.last > axis.first && axis.cell[axis.last] < 0) {
        --axis.last;
    }
}

/// The corner values of one grid column at the lattice's rows: of the cell's near and of its far row.
struct ColumnValues {
    int column = -1;
    float nearRow[kPadded] = {}, farRow[kPadded] = {};
};

void FillColumn(const LatticeGrid& grid, const LatticeAxis& rows, int column, ColumnValues& values) {
    const float* const from = grid.values + static_cast<std::ptrdiff_t>(column) * grid.ny;
    for (int at = rows.first; at <= rows.last; ++at) {
        values.nearRow[at] = from[rows.cell[at]];
        values.farRow[at] = from[rows.cell[at] + 1];
    }
    values.column = column;
}

/// The two columns of the current cell. Consecutive lattice columns mostly share or follow one another's.
struct CellColumns {
    ColumnValues columns[2];
    int nearSlot = 0;

    void MoveTo(const LatticeGrid& grid, const LatticeAxis& rows, int column) {
        if (Near().column == column) {
            return;
        }
        if (Far().column == column) {
            nearSlot = 1 - nearSlot;
        } else {
            FillColumn(grid, rows, column, columns[nearSlot]);
        }
        FillColumn(grid, rows, column + 1, columns[1 - nearSlot]);
    }
    [[nodiscard]] const ColumnValues& Near() const { return columns[nearSlot]; }
    [[nodiscard]] const ColumnValues& Far() const { return columns[1 - nearSlot]; }
};

/// Bilinear uplift of one lattice column where the grid has cells; elsewhere `uplift` stays. Three products in double
/// and one in single precision on purpose: the roundings are fixed. Covers at least the positions `from` to `to`.
void InterpolateColumn(const LatticeAxis& columns, int i, const LatticeAxis& rows, const CellColumns& cells, int from,
                       int to, float* __restrict uplift) {
    constexpr int kStep = 8;
    const float t = columns.weight[i];
    const double wideT = columns.wideWeight[i];
    const double nearT = columns.nearWeight[i];
    const ColumnValues& near = cells.Near();
    const ColumnValues& far = cells.Far();
    const int begin = from - from % kStep;
    const int end = to - to % kStep + kStep;
    for (int j = begin; j < end; ++j) {
        const double products = nearT * rows.nearWeight[j] * static_cast<double>(near.nearRow[j]) +
                                wideT * rows.nearWeight[j] * static_cast<double>(far.nearRow[j]) +
                                nearT * rows.wideWeight[j] * static_cast<double>(near.farRow[j]);
        const float value = static_cast<float>(products + static_cast<double>(t * rows.weight[j] * far.farRow[j]));
        uplift[j] = rows.isInside[j] != 0 ? value : uplift[j];
    }
}

/// One grid under the lattice of one point.
struct LatticeView {  // NOLINT(cppcoreguidelines-pro-type-member-init): Open() fills the axes
    LatticeAxis columns, rows;
    CellColumns cells;

    void Open(const LatticeGrid& grid, const LatticePoint& point, float step) {
        FillAxis(point.x, step, grid.orgX, grid.dx, grid.nx, columns);
        FillAxis(point.y, step, grid.orgY, grid.dx, grid.ny, rows);
        cells.columns[0].column = -1;
        cells.columns[1].column = -1;
    }
    /// Uplift of lattice column i where this grid has cells, within |j| <= reach; elsewhere untouched.
    void AddColumn(const LatticeGrid& grid, int i, int reach, float* uplift) {
        if (columns.cell[i] < 0) {
            return;
        }
        const int from = rows.first > kLatticeHalfWidth - reach ? rows.first : kLatticeHalfWidth - reach;
        const int to = rows.last < kLatticeHalfWidth + reach ? rows.last : kLatticeHalfWidth + reach;
        if (from <= to && rows.cell[rows.first] >= 0) {
            cells.MoveTo(grid, rows, columns.cell[i]);
            InterpolateColumn(columns, i, rows, cells, from, to, uplift);
        }
    }
};

/// kernel[k] = sum over n of c[n] / (x sqrt(x)), x = (c[n] d)^2 + s^2 q[k], m^-3; q: squared radii in steps s.
void FillKernel(float depth, float step, float* kernel) {
    const int count = kLattice.radiusCount;
    for (int k = 0; k < count; ++k) {
        kernel[k] = 0.0F;
    }
    for (const float c : kSeries) {
        const float a = (c * depth) * (c * depth);
        for (int k = 0; k < count; ++k) {
            const float x = a + (step * step) * kLattice.squaredRadii[k];
            kernel[k] += c / (x * __builtin_sqrtf(x));
        }
    }
}

/// The kernel by |i| and j + 20, from its values by radius.
using KernelColumns = float[kLatticeHalfWidth + 1][kPadded + kChunk];

void SpreadKernel(const float* kernel, KernelColumns& columns) {
    for (int i = 0; i <= kLatticeHalfWidth; ++i) {
        float half[kPadded];  // for j = 0 and more; j and -j share a value
        for (int j = 0; j <= kLatticeHalfWidth; ++j) {
            half[j] = kernel[kLattice.radiusIndex[i][j]];
        }
        for (int j = 0; j <= kLatticeHalfWidth; ++j) {
            columns[i][kLatticeHalfWidth + j] = half[j];
        }
        for (int j = 0; j <= kLatticeHalfWidth; ++j) {
            columns[i][kLatticeHalfWidth - j] = half[j];
        }
    }
}

/// The terms ((eta G) s) s of one point, in the order of the sum.
void FillTerms(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint& point, float* __restrict terms) {
    const float step = 0.25F * point.depth;
    float kernel[kLatticeRadiusSquared + 1];
    FillKernel(point.depth, step, kernel);
    KernelColumns kernelColumns = {};
    SpreadKernel(kernel, kernelColumns);
    LatticeView ownView;
    ownView.Open(own, point, step);
    LatticeView parentView;
    if (parent.values != nullptr) {
        parentView.Open(parent, point, step);
    }
    for (int i = 0; i < kLatticeWidth; ++i) {
        const int distance = i < kLatticeHalfWidth ? kLatticeHalfWidth - i : i - kLatticeHalfWidth;
        const int reach = kLattice.reach[distance];
        float uplift[kPadded + kChunk] = {};
        if (parent.values != nullptr) {
            parentView.AddColumn(parent, i, reach, uplift);
        }
        ownView.AddColumn(own, i, reach, uplift);
        const float* const upliftColumn = uplift + (kLatticeHalfWidth - reach);
        const float* const kernelColumn = kernelColumns[distance] + (kLatticeHalfWidth - reach);
        const int length = 2 * reach + 1;
        for (int start = 0; start < length; start += kChunk) {
            for (int j = start; j < start + kChunk; ++j) {
                terms[j] = upliftColumn[j] * kernelColumn[j] * step * step;
            }
        }
        terms += length;
    }
}

}  // namespace

void TIDORA_FILTER_POINTS(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint* points, int count,
                          float* filtered) {
    static thread_local float terms[kLatticeBlock][kLatticeSamples + kChunk];
    for (int p = 0; p < count; ++p) {
        FillTerms(own, parent, points[p], terms[p]);
    }
    float sums[kLatticeBlock] = {};
    for (int sample = 0; sample < kLatticeSamples; ++sample) {
        for (int p = 0; p < kLatticeBlock; ++p) {
            sums[p] += terms[p][sample];
        }
    }
    for (int p = 0; p < count; ++p) {
        filtered[p] = static_cast<float>(static_cast<double>(sums[p] * points[p].depth) / kPi);
    }
}

}  // namespace tidora
// NOLINTEND(misc-definitions-in-headers)
