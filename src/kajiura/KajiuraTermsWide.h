// The products of one point's sum, for AVX2 and AVX-512. Included by the filter's kernel, within its unnamed namespace.
// NOLINTBEGIN(misc-definitions-in-headers)

/// Eight positions of a lattice column are one part: so many are interpolated at a time. The last position belongs to
/// the disc in the middle column alone; like the other two tips that stand alone in their column it is taken by itself.
constexpr int kLanes = 8;
constexpr int kParts = (kLatticeWidth - 1) / kLanes;

/// So many loads of kFloats values bring what a column needs of a grid column.
constexpr int kFetches = (kParts * kLanes + kFloats - 1) / kFloats;
constexpr int kFetched = kFetches * kFloats;

/// The kernel by |i| and lattice position j + 20, from its values by radius.
class KernelColumns {
public:
    void Spread(const float* kernel, int distance) {
        float* const centre = m_values + kFront + std::ptrdiff_t{distance} * kStride + kLatticeHalfWidth;
#pragma GCC unroll 3
        for (int j = 0; j <= kLatticeHalfWidth; j += kFloats) {
            if (j > 0 && j > kLattice.reach[distance]) {
                break;
            }
            const Floats values = GatheredFloats(kernel, LoadIntegers(kPaddedRadii.index[distance] + j));
            StoreFloats(centre + j, values);
            StoreFloats(centre - j - (kFloats - 1), Reversed(values));
        }
    }
    /// From position 0 on, for |i| = distance.
    [[nodiscard]] const float* Of(int distance) const {
        return m_values + kFront + std::ptrdiff_t{distance} * kStride;
    }

private:
    // What is stored before and behind a column's positions is not used: it may reach into the next column's room.
    static constexpr int kFront = 16, kStride = 64;
    alignas(64) float m_values[kFront + (kLatticeHalfWidth + 1) * kStride] = {};
};

/// All bits behind the last part.
struct NoPosition {
    int lanes[kFetched] = {};
};
constexpr NoPosition MakeNoPosition() {
    NoPosition behind;
    for (int at = kParts * kLanes; at < kFetched; ++at) {
        behind.lanes[at] = -1;
    }
    return behind;
}
constexpr NoPosition kNoPosition = MakeNoPosition();

/// Where the values at the lattice's rows lie in a grid column. The cells of kFloats consecutive positions lie close to
/// each other: two loads and a permutation bring their values, unless the lattice is about twice as wide as the grid.
struct RowPlaces {
    alignas(64) int near[kFetched];  ///< cell, from `first` of its kFloats positions; 0 without a cell
    alignas(64) int far[kFetched];   ///< its far corner
    int first[kFetches];             ///< the least cell of kFloats positions
    int lastPlain;  ///< the last grid column that has 2 kFloats values from each `first`, with all corners among them
    bool hasCells;  ///< any row has

    void Fill(const LatticeAxis& rows, int nx, int ny) {
        int furthest = 0;
        int widest = 0;
        hasCells = false;
#pragma GCC unroll 5
        for (int fetch = 0; fetch < kFetches; ++fetch) {
            const int begin = fetch * kFloats;
            const Integers cells = Or(LoadIntegers(rows.cell + begin), LoadIntegers(kNoPosition.lanes + begin));
            const int least = LeastOf(cells);
            hasCells = hasCells || least >= 0;
            first[fetch] = least >= 0 ? least : 0;
            const Integers offsets = NotNegative(Minus(cells, first[fetch]));
            StoreIntegers(near + begin, offsets);
            StoreIntegers(far + begin, Minus(offsets, -1));
            const int most = GreatestOf(offsets);
            widest = most > widest ? most : widest;
            furthest = first[fetch] > furthest ? first[fetch] : furthest;
        }
        // Values behind a column's end are not picked, but they are read: not behind the end of the grid.
        constexpr int kLoaded = 2 * kFloats;
        const std::ptrdiff_t spare = static_cast<std::ptrdiff_t>(nx) * ny - furthest - kLoaded;
        lastPlain = widest + 1 < kLoaded && spare >= 0 ? static_cast<int>(spare / ny) : -1;
    }
};

/// The corner values of one grid column at the lattice's rows: of the cell's near and of its far row.
struct alignas(512) ColumnValues {  // the size is a power of two: the address of either takes one instruction
    alignas(64) float nearRow[kFetched];
    alignas(64) float farRow[kFetched];

    void Fill(const float* from, const RowPlaces& places, bool isPlain) {
#pragma GCC unroll 5
        for (int fetch = 0; fetch < kFetches; ++fetch) {
            const int begin = fetch * kFloats;
            const float* const first = from + places.first[fetch];
            const Integers near = LoadIntegers(places.near + begin);
            const Integers far = LoadIntegers(places.far + begin);
            if (isPlain) {
                const Floats low = LoadFloats(first);
                const Floats high = LoadFloats(first + kFloats);
                StoreFloats(nearRow + begin, Picked(low, near, high));
                StoreFloats(farRow + begin, Picked(low, far, high));
            } else {
                StoreFloats(nearRow + begin, GatheredFloats(first, near));
                StoreFloats(farRow + begin, GatheredFloats(first, far));
            }
        }
    }
};

/// The grid columns on both sides of the current cell. Their values lie apart, so that the rest stays in registers.
class CellColumns {
public:
    explicit CellColumns(ColumnValues (&values)[2]) : m_values(values) {}

    /// Consecutive lattice columns mostly share grid columns, or follow one another's.
    [[gnu::always_inline]] inline void MoveTo(int cell, const LatticeGrid& grid, const RowPlaces& places) {
        if (cell == m_column) {
            return;
        }
        const float* const from = grid.values + static_cast<std::ptrdiff_t>(cell) * grid.ny;
        if (cell == m_column + 1) {
            m_near ^= 1U;
        } else {
            m_values[m_near].Fill(from, places, cell <= places.lastPlain);
        }
        m_values[m_near ^ 1U].Fill(from + grid.ny, places, cell < places.lastPlain);
        m_column = cell;
    }
    [[nodiscard]] const ColumnValues& Near() const { return m_values[m_near]; }
    [[nodiscard]] const ColumnValues& Far() const { return m_values[m_near ^ 1U]; }

private:
    ColumnValues* m_values;
    std::size_t m_near = 0;
    int m_column = -2;  ///< the near one; none yet
};

/// One grid under the lattice of one point.
struct LatticeView {  // NOLINT(cppcoreguidelines-pro-type-member-init): Open() fills it
    LatticeAxis columns, rows;
    RowPlaces places;

    void Open(const LatticeGrid& grid, const LatticePoint& point, float step) {
        FillAxis(point.x, step, grid.orgX, grid.dx, grid.nx, columns);
        FillAxis(point.y, step, grid.orgY, grid.dx, grid.ny, rows);
        places.Fill(rows, grid.nx, grid.ny);
    }

    /// True when every position has a cell.
    [[nodiscard]] bool IsInside() const {
        constexpr int kLast = kLatticeWidth - 1;
        return HasCell(0, 0) && HasCell(kLast, kLast);
    }
    [[nodiscard]] bool HasCell(int i, int j) const { return columns.cell[i] >= 0 && rows.cell[j] >= 0; }

    /// Bilinear uplift at one position with a cell.
    [[nodiscard]] float Uplift(const LatticeGrid& grid, int i, int j) const {
        const float* const near = grid.values + static_cast<std::ptrdiff_t>(columns.cell[i]) * grid.ny + rows.cell[j];
        const float* const far = near + grid.ny;
        const double products = columns.nearWeight[i] * rows.nearWeight[j] * static_cast<double>(near[0]) +
                                columns.wideWeight[i] * rows.nearWeight[j] * static_cast<double>(far[0]) +
                                columns.nearWeight[i] * rows.wideWeight[j] * static_cast<double>(near[1]);
        return static_cast<float>(products + static_cast<double>(columns.weight[i] * rows.weight[j] * far[1]));
    }
};

/// Interpolation in one lattice column of one grid.
class ColumnUplift {
public:
    ColumnUplift(const LatticeView& from, const CellColumns& cells, int i)
        : m_nearT(AllOf(from.columns.nearWeight[i])),
          m_wideT(AllOf(from.columns.wideWeight[i])),
          m_view(from),
          m_near(cells.Near()),
          m_far(cells.Far()) {
        const Floats t = AllOf(from.columns.weight[i]);
#pragma GCC unroll 5
        for (int at = 0; at < kFetched; at += kFloats) {
            StoreFloats(m_farFar + at,
                        Times(Times(t, LoadFloats(m_view.rows.weight + at)), LoadFloats(m_far.farRow + at)));
        }
    }

    /// Bilinear uplift. Three products in double and one in single precision on purpose: the roundings are fixed.
    [[nodiscard, gnu::always_inline]] inline __m256 Of(int part) const {
        const std::ptrdiff_t at = std::ptrdiff_t{part} * kLanes;
        const Doubles nearU = LoadDoubles(m_view.rows.nearWeight + at);
        const Doubles wideU = LoadDoubles(m_view.rows.wideWeight + at);
        const Doubles nearNear = Times(Times(m_nearT, nearU), LoadWidened(m_near.nearRow + at));
        const Doubles farNear = Times(Times(m_wideT, nearU), LoadWidened(m_far.nearRow + at));
        const Doubles nearFar = Times(Times(m_nearT, wideU), LoadWidened(m_near.farRow + at));
        return Rounded(Plus(Plus(Plus(nearNear, farNear), nearFar), LoadWidened(m_farFar + at)));
    }
    /// The same where the grid has cells, `elsewhere` where not.
    [[nodiscard]] __m256 Of(int part, __m256 elsewhere) const {
        const int* const cells = m_view.rows.cell + std::ptrdiff_t{part} * kLanes;
        // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): a pointer to a whole vector, aligned or not
        const __m256i lanes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(cells));
        return _mm256_blendv_ps(Of(part), elsewhere, _mm256_castsi256_ps(lanes));  // by the sign
    }

private:
    Doubles m_nearT, m_wideT;
    alignas(64) float m_farFar[kFetched];
    const LatticeView& m_view;
    const ColumnValues &m_near, &m_far;
};

/// Calls uplift(part) for the parts from kFirst to before kEnd, and stores the products with the kernel from position
/// `begin` on, which lies in the first part. What lies behind the disc is overwritten by the next column.
/// kernelColumn, products: of position 0.
template <int kFirst, int kEnd, typename Uplift>
[[gnu::always_inline]] inline void StoreParts(const float* kernelColumn, int begin, float* products,
                                              const Uplift& uplift) {
#pragma GCC unroll 5
    for (int part = kFirst; part < kEnd; ++part) {
        const std::ptrdiff_t at = std::ptrdiff_t{part} * kLanes;
        const __m256 product = _mm256_mul_ps(uplift(part), _mm256_loadu_ps(kernelColumn + at));
        if (part == kFirst) {
            StoreBehind(begin - kFirst * kLanes, products + at, product);
        } else {
            _mm256_storeu_ps(products + at, product);
        }
    }
}

/// The same for the parts of column i that the disc touches, but for its last position in the middle column.
/// products: of the point.
template <typename Uplift>
[[gnu::always_inline]] inline void StoreColumn(const float* kernelColumn, int i, float* products,
                                               const Uplift& uplift) {
    const int begin = kLattice.columns[i].begin;
    float* const column = products + kLattice.columns[i].start;
    if (begin < kLanes) {
        StoreParts<0, kParts>(kernelColumn, begin, column, uplift);
    } else if (begin == kLanes) {
        StoreParts<1, kParts>(kernelColumn, begin, column, uplift);
    } else {
        StoreParts<1, kParts - 1>(kernelColumn, begin, column, uplift);
    }
}

/// What a point needs before its samples are taken.
struct PreparedPoint {  // NOLINT(cppcoreguidelines-pro-type-member-init): Open() fills it
    LatticeView own, parent;
    KernelByRadius kernel;
    bool isOwnEnough;  ///< samples outside the own grid have no uplift, or there are none

    void Open(const LatticeGrid& ownGrid, const LatticeGrid& parentGrid, const LatticePoint& point) {
        const float step = 0.25F * point.depth;
        kernel.Start(point.depth, step);
        own.Open(ownGrid, point, step);
        isOwnEnough = own.IsInside();
        if (parentGrid.values != nullptr) {
            parent.Open(parentGrid, point, step);
        } else if (own.places.hasCells && ownGrid.isFinite && point.depth < kDeepest) {
            isOwnEnough = true;
        }
    }

private:
    static constexpr float kDeepest = 1.0e18F;  ///< up to here, m, every value of the kernel is finite
};

/// The products eta G of one point, in the order of the sum. Makes the kernel of the next one meanwhile.
class PointProducts {
public:
    PointProducts(const LatticeGrid& own, const LatticeGrid& parent, const PreparedPoint& point,
                  KernelByRadius& nextKernel, KernelColumns& kernelColumns, float* products)
        : m_own(own),
          m_parent(parent),
          m_point(point),
          m_kernel(point.kernel.Values()),
          m_nextKernel(nextKernel),
          m_kernelColumns(kernelColumns),
          m_products(products) {}

    [[gnu::always_inline]] inline void Fill() {
        if (m_point.isOwnEnough) {
            FillFromOwn();
        } else {
            FillFromBoth();
        }
        FillTip(0, kLatticeHalfWidth);
        FillTip(kLatticeHalfWidth, kLast);
        FillTip(kLast, kLatticeHalfWidth);
        m_nextKernel.Finish();
    }

private:
    static constexpr int kLast = kLatticeWidth - 1;

    /// Rows without a cell weigh 0, and columns without one are left out: zeros of either sign leave the sum as it is.
    /// Columns with cells are neighbours, since positions only ascend.
    [[gnu::always_inline]] inline void FillFromOwn() {
        const int* const columnCells = m_point.own.columns.cell;
        int i = 1;
        m_kernelColumns.Spread(m_kernel, DistanceFromCentre(i));
        while (i < kLast && columnCells[i] < 0) {
            ++i;
            m_kernelColumns.Spread(m_kernel, DistanceFromCentre(i));
        }
        int end = kLast;
        while (end > i && columnCells[end - 1] < 0) {
            --end;
        }
        FillZeros(1, i);
        ColumnValues values[2];
        CellColumns cells(values);
        for (; i < kLatticeHalfWidth && i < end; ++i) {
            m_kernelColumns.Spread(m_kernel, kLatticeHalfWidth - i - 1);  // a column ahead
            FillColumnFromOwn(i, cells);
        }
        for (; i < end; ++i) {
            FillColumnFromOwn(i, cells);
        }
        FillZeros(end, kLast);  // NOLINT(readability-suspicious-call-argument): `end` is where zeros begin
    }
    [[gnu::always_inline]] inline void FillColumnFromOwn(int i, CellColumns& cells) {
        const LatticeView& view = m_point.own;
        m_nextKernel.Advance();
        cells.MoveTo(view.columns.cell[i], m_own, view.places);
        const ColumnUplift uplift(view, cells, i);
        const auto partOf = [&](int part) __attribute__((always_inline)) {
            return uplift.Of(part);
        };
        StoreColumn(m_kernelColumns.Of(DistanceFromCentre(i)), i, m_products, partOf);
    }
    /// Columns from `first` to before `end`.
    void FillZeros(int first, int end) {
        const Lattice::Column& from = kLattice.columns[first];
        const Lattice::Column& to = kLattice.columns[end];
        for (int at = from.start + from.begin; at < to.start + to.begin; ++at) {
            m_products[at] = 0.0F;
        }
    }

    /// Where the grid has cells, the parent where it has, 0 elsewhere.
    [[gnu::noinline]] void FillFromBoth() {
        const bool hasParent = m_parent.values != nullptr;
        ColumnValues ownValues[2], parentValues[2];
        CellColumns ownCells(ownValues), parentCells(parentValues);
        for (int distance = 0; distance < kLatticeHalfWidth; ++distance) {
            m_kernelColumns.Spread(m_kernel, distance);
        }
        for (int i = 1; i < kLast; ++i) {
            m_nextKernel.Advance();
            const int distance = DistanceFromCentre(i);
            const auto store = [&](const auto& uplift) {
                StoreColumn(m_kernelColumns.Of(distance), i, m_products, uplift);
            };
            const __m256 none = _mm256_setzero_ps();
            const bool hasOwn = m_point.own.columns.cell[i] >= 0 && m_point.own.places.hasCells;
            if (hasOwn) {
                ownCells.MoveTo(m_point.own.columns.cell[i], m_own, m_point.own.places);
            }
            const bool hasBelow = hasParent && m_point.parent.columns.cell[i] >= 0 && m_point.parent.places.hasCells;
            if (hasBelow) {
                parentCells.MoveTo(m_point.parent.columns.cell[i], m_parent, m_point.parent.places);
            }
            if (hasOwn && hasBelow) {
                const ColumnUplift uplift(m_point.own, ownCells, i), below(m_point.parent, parentCells, i);
                store([&](int part) { return uplift.Of(part, below.Of(part, none)); });
            } else if (hasOwn) {
                const ColumnUplift uplift(m_point.own, ownCells, i);
                store([&](int part) { return uplift.Of(part, none); });
            } else if (hasBelow) {
                const ColumnUplift below(m_point.parent, parentCells, i);
                store([&](int part) { return below.Of(part, none); });
            } else {
                store([&](int /*part*/) { return none; });
            }
        }
    }

    /// One product at a tip of the disc.
    void FillTip(int i, int j) {
        float uplift = 0.0F;
        if (m_point.own.HasCell(i, j)) {
            uplift = m_point.own.Uplift(m_own, i, j);
        } else if (m_parent.values != nullptr && m_point.parent.HasCell(i, j)) {
            uplift = m_point.parent.Uplift(m_parent, i, j);
        }
        m_products[kLattice.columns[i].start + j] = uplift * m_kernel[kLattice.radiusIndex[kLatticeHalfWidth][0]];
    }

    const LatticeGrid& m_own;
    const LatticeGrid& m_parent;
    const PreparedPoint& m_point;
    const float* m_kernel;
    KernelByRadius& m_nextKernel;
    KernelColumns& m_kernelColumns;
    float* m_products;
};

/// The products of one point after the other. While those of one are filled, the next one is prepared.
class ProductsInTurn {
public:
    ProductsInTurn(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint* points, int count)
        : m_own(own), m_parent(parent), m_points(points), m_count(count) {
        m_prepared[0].Open(own, parent, points[0]);
        m_prepared[0].kernel.Finish();
    }

    void Fill(float* products) {
        PreparedPoint& current = m_prepared[m_at % 2];
        ++m_at;
        PreparedPoint& next = m_prepared[m_at % 2];
        if (m_at < m_count) {
            next.Open(m_own, m_parent, m_points[m_at]);
        }
        PointProducts(m_own, m_parent, current, next.kernel, m_kernelColumns, products).Fill();
    }

private:
    const LatticeGrid &m_own, &m_parent;
    const LatticePoint* m_points;
    int m_count, m_at = 0;
    PreparedPoint m_prepared[2];
    KernelColumns m_kernelColumns;
};

/// sum = sum + (product s) s over the samples in their order, for kSideBySide points.
void Sum(const float (&products)[kSideBySide][kLatticeSamples + kChunk], const float* steps, float* sums) {
    constexpr int kGroups = kSideBySide / kFloats;
    constexpr std::ptrdiff_t kStride = kLatticeSamples + kChunk;
    Floats sum[kGroups], step[kGroups];
    for (int group = 0; group < kGroups; ++group) {
        sum[group] = AllOf(0.0F);
        step[group] = LoadFloats(steps + std::ptrdiff_t{group} * kFloats);
    }
    for (int sample = 0; sample < kLatticeSamples; sample += 4) {
        const int count = kLatticeSamples - sample < 4 ? kLatticeSamples - sample : 4;
#pragma GCC unroll 2
        for (int group = 0; group < kGroups; ++group) {
            // Four samples of each point become four points of each sample.
            const float* const from = products[std::ptrdiff_t{group} * kFloats] + sample;
            const Floats a = LoadQuarters(from, 4 * kStride);
            const Floats b = LoadQuarters(from + kStride, 4 * kStride);
            const Floats c = LoadQuarters(from + 2 * kStride, 4 * kStride);
            const Floats d = LoadQuarters(from + 3 * kStride, 4 * kStride);
            const Floats ab = FirstPairs(a, b), cd = FirstPairs(c, d), ab2 = LastPairs(a, b), cd2 = LastPairs(c, d);
            const Floats samples[4] = {FirstHalves(ab, cd), LastHalves(ab, cd), FirstHalves(ab2, cd2),
                                       LastHalves(ab2, cd2)};
#pragma GCC unroll 4
            for (int of = 0; of < 4; ++of) {
                if (of < count) {
                    sum[group] = Plus(sum[group], Times(Times(samples[of], step[group]), step[group]));
                }
            }
        }
    }
    for (int group = 0; group < kGroups; ++group) {
        StoreFloats(sums + std::ptrdiff_t{group} * kFloats, sum[group]);
    }
}
// NOLINTEND(misc-definitions-in-headers)
