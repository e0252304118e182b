// The products of one point's sum, for any machine. Included by the filter's kernel, within its unnamed namespace.
// NOLINTBEGIN(misc-definitions-in-headers)

/// The positions from `first` to `last` lie in cells of the grid.
struct LatticeRows : LatticeAxis {
    int first, last;

    void FindEnds() {
        first = 0;
        last = kLatticeWidth - 1;
        while (first <= last && cell[first] < 0) {
            ++first;
        }
        while (last > first && cell[last] < 0) {
            --last;
        }
    }
};

/// The corner values of one grid column at the lattice's rows: of the cell's near and of its far row.
struct ColumnValues {
    int column = -1;
    float nearRow[kPadded] = {}, farRow[kPadded] = {};
};

void FillColumn(const LatticeGrid& grid, const LatticeRows& rows, int column, ColumnValues& values) {
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

    void MoveTo(const LatticeGrid& grid, const LatticeRows& rows, int column) {
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
        uplift[j] = rows.cell[j] >= 0 ? value : uplift[j];
    }
}

/// One grid under the lattice of one point.
struct LatticeView {  // NOLINT(cppcoreguidelines-pro-type-member-init): Open() fills the axes
    LatticeAxis columns;
    LatticeRows rows;
    CellColumns cells;

    void Open(const LatticeGrid& grid, const LatticePoint& point, float step) {
        FillAxis(point.x, step, grid.orgX, grid.dx, grid.nx, columns);
        FillAxis(point.y, step, grid.orgY, grid.dx, grid.ny, rows);
        rows.FindEnds();
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

/// The products eta G of one point, in the order of the sum.
void FillProducts(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint& point,
                  float* __restrict products) {
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
        const int distance = DistanceFromCentre(i);
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
                products[j] = upliftColumn[j] * kernelColumn[j];
            }
        }
        products += length;
    }
}

/// The products of one point after the other.
class ProductsInTurn {
public:
    ProductsInTurn(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint* points, int /*count*/)
        : m_own(own), m_parent(parent), m_next(points) {}

    void Fill(float* products) { FillProducts(m_own, m_parent, *m_next++, products); }

private:
    const LatticeGrid &m_own, &m_parent;
    const LatticePoint* m_next;
};

/// sum = sum + (product s) s over the samples in their order, for kSideBySide points.
void Sum(const float (&products)[kSideBySide][kLatticeSamples + kChunk], const float* steps, float* sums) {
    for (int sample = 0; sample < kLatticeSamples; ++sample) {
        for (int p = 0; p < kSideBySide; ++p) {
            sums[p] += products[p][sample] * steps[p] * steps[p];
        }
    }
}
// NOLINTEND(misc-definitions-in-headers)
