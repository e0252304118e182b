// The products of one point's sum, for AVX2 and AVX-512. Included by the filter's kernel, within its unnamed namespace.
//
// Eight positions of a lattice column are one part. Their cells lie close to each other: two loads of a grid column and
// a permutation bring the eight values, unless the lattice is wider than the grid by a factor of two.
// NOLINTBEGIN(misc-definitions-in-headers)

constexpr int kLanes = 8;
constexpr int kParts = kPadded / kLanes;

/// First position of a part.
constexpr std::ptrdiff_t Begin(int part) {
    return std::ptrdiff_t{part} * kLanes;
}

// The loads of integers take pointers to whole vectors, aligned or not.
// NOLINTBEGIN(cppcoreguidelines-pro-type-reinterpret-cast)
__m256i LoadIntegers(const int* from) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from));
}
__m256i LoadIntegers(const std::int16_t* from) {
    return _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(from)));
}
// NOLINTEND(cppcoreguidelines-pro-type-reinterpret-cast)

/// The kernel by |i| and j + 20, from its values by radius.
using KernelColumns = float[kLatticeHalfWidth + 1][kPadded];

void SpreadKernel(const float* kernel, KernelColumns& columns) {
    for (int i = 0; i <= kLatticeHalfWidth; ++i) {
        for (int at = 0; at < kPadded; at += kLanes) {
            const __m256i index = LoadIntegers(kColumnRadii.index[i] + at);
            _mm256_storeu_ps(columns[i] + at, _mm256_i32gather_ps(kernel, index, sizeof(float)));
        }
    }
}

/// Where the values of eight lattice positions lie in a grid column.
struct PartPlace {
    int first;          ///< the least cell
    bool isEmpty;       ///< none of them has a cell
    bool isNarrow;      ///< all cells and their far corners lie within 16 values from there
    __m256i isInside;   ///< all bits of the positions with a cell
    __m256i cell;       ///< from `first`
    __m256i low, high;  ///< all bits of those of the 16 values that the column has
};

/// All bits of the first `count` lanes.
__m256i FirstLanes(int count) {
    return _mm256_cmpgt_epi32(_mm256_set1_epi32(count), _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
}

PartPlace PlaceOf(const LatticeAxis& rows, int part, int ny) {
    PartPlace place = {};
    int last = -1;
    place.first = ny;
    for (int lane = 0; lane < kLanes; ++lane) {
        const int cell = rows.cell[part * kLanes + lane];
        place.first = cell >= 0 && cell < place.first ? cell : place.first;
        last = cell > last ? cell : last;
    }
    place.isEmpty = last < 0;
    place.isNarrow = last + 1 - place.first < 2 * kLanes;
    const __m256i cells = LoadIntegers(rows.cell + Begin(part));
    place.isInside = _mm256_cmpgt_epi32(cells, _mm256_set1_epi32(-1));
    place.cell = _mm256_and_si256(place.isInside, _mm256_sub_epi32(cells, _mm256_set1_epi32(place.first)));
    place.low = FirstLanes(ny - place.first);
    place.high = FirstLanes(ny - place.first - kLanes);
    return place;
}

/// The corner values of one grid column at the lattice's rows: of the cell's near and of its far row.
struct ColumnValues {
    int column;
    Doubles nearRow[kParts], farRow[kParts];
    __m256 farRowSingle[kParts];
};

/// One grid under the lattice of one point.
struct LatticeView {         // NOLINT(cppcoreguidelines-pro-type-member-init): Open() fills it
    ColumnValues values[2];  ///< of the columns of the current cell
    PartPlace places[kParts];
    LatticeAxis columns, rows;
    int nearSlot;
    bool isPlain;  ///< every part has its 16 values whole

    void Open(const LatticeGrid& grid, const LatticePoint& point, float step) {
        FillAxis(point.x, step, grid.orgX, grid.dx, grid.nx, columns);
        FillAxis(point.y, step, grid.orgY, grid.dx, grid.ny, rows);
        isPlain = true;
        for (int part = 0; part < kParts; ++part) {
            places[part] = PlaceOf(rows, part, grid.ny);
            isPlain = isPlain && places[part].isNarrow && places[part].first + 2 * kLanes <= grid.ny;
        }
        values[0].column = -1;
        values[1].column = -1;
        nearSlot = 0;
    }

    void FillPart(const float* from, int part, ColumnValues& to) const {
        const PartPlace& place = places[part];
        if (place.isEmpty) {
            return;
        }
        const float* const first = from + place.first;
        if (place.isNarrow) {
            StorePicked(_mm256_maskload_ps(first, place.low), _mm256_maskload_ps(first + kLanes, place.high), part, to);
        } else {
            const __m256i next = _mm256_add_epi32(place.cell, _mm256_set1_epi32(1));
            Store(_mm256_i32gather_ps(first, place.cell, sizeof(float)),
                  _mm256_i32gather_ps(first, next, sizeof(float)), part, to);
        }
    }
    void FillPlainPart(const float* from, int part, ColumnValues& to) const {
        const PartPlace& place = places[part];
        const __m256 low = _mm256_loadu_ps(from + place.first);
        const __m256 high = _mm256_loadu_ps(from + place.first + kLanes);
        StorePicked(low, high, part, to);
    }
    void StorePicked(__m256 low, __m256 high, int part, ColumnValues& to) const {
        const __m256i next = _mm256_add_epi32(places[part].cell, _mm256_set1_epi32(1));
        Store(Picked(low, places[part].cell, high), Picked(low, next, high), part, to);
    }
    static void Store(__m256 near, __m256 far, int part, ColumnValues& to) {
        to.nearRow[part] = Widened(near);
        to.farRow[part] = Widened(far);
        to.farRowSingle[part] = far;
    }

    /// All parts but the last one, which the disc reaches in its middle column alone.
    void FillColumn(const LatticeGrid& grid, int column, ColumnValues& to) const {
        const float* const from = grid.values + static_cast<std::ptrdiff_t>(column) * grid.ny;
        to.column = column;
        if (!isPlain) {
            for (int part = 0; part < kParts - 1; ++part) {
                FillPart(from, part, to);
            }
            return;
        }
#pragma GCC unroll 5
        for (int part = 0; part < kParts - 1; ++part) {
            FillPlainPart(from, part, to);
        }
    }

    /// Consecutive lattice columns mostly share grid columns, or follow one another's.
    void MoveTo(const LatticeGrid& grid, int i) {
        const int column = columns.cell[i];
        if (values[nearSlot].column != column) {
            if (values[1 - nearSlot].column == column) {
                nearSlot = 1 - nearSlot;
            } else {
                FillColumn(grid, column, values[nearSlot]);
            }
            FillColumn(grid, column + 1, values[1 - nearSlot]);
        }
        if (i == kLatticeHalfWidth) {
            const float* const from = grid.values + static_cast<std::ptrdiff_t>(column) * grid.ny;
            FillPart(from, kParts - 1, values[nearSlot]);
            FillPart(from + grid.ny, kParts - 1, values[1 - nearSlot]);
        }
    }
};

/// What interpolation in one lattice column of one grid needs.
struct ColumnWeights {
    Doubles nearT, wideT;
    __m256 t;
    const LatticeView& view;
    const ColumnValues &near, &far;

    ColumnWeights(const LatticeView& from, int i)
        : nearT(AllOf(from.columns.nearWeight[i])),
          wideT(AllOf(from.columns.wideWeight[i])),
          t(_mm256_set1_ps(from.columns.weight[i])),
          view(from),
          near(from.values[from.nearSlot]),
          far(from.values[1 - from.nearSlot]) {}

    /// Bilinear uplift. Three products in double and one in single precision on purpose: the roundings are fixed.
    [[nodiscard]] __m256 Uplift(int part) const {
        const Doubles nearU = LoadDoubles(view.rows.nearWeight + Begin(part));
        const Doubles wideU = LoadDoubles(view.rows.wideWeight + Begin(part));
        const Doubles nearNear = Times(Times(nearT, nearU), near.nearRow[part]);
        const Doubles farNear = Times(Times(wideT, nearU), far.nearRow[part]);
        const Doubles nearFar = Times(Times(nearT, wideU), near.farRow[part]);
        const __m256 tu = _mm256_mul_ps(t, _mm256_loadu_ps(view.rows.weight + Begin(part)));
        const Doubles farFar = Widened(_mm256_mul_ps(tu, far.farRowSingle[part]));
        return Rounded(Plus(Plus(Plus(nearNear, farNear), nearFar), farFar));
    }
    /// The same where the grid has cells, `elsewhere` where not.
    [[nodiscard]] __m256 Uplift(int part, __m256 elsewhere) const {
        return _mm256_blendv_ps(elsewhere, Uplift(part), _mm256_castsi256_ps(view.places[part].isInside));
    }
};

/// Calls uplift(part) for the parts of lattice column i that the disc touches, and stores the products with the kernel
/// at the disc's positions.
template <typename Uplift>
void StoreColumn(const float* kernelColumn, int reach, float* products, Uplift uplift) {
    const int begin = kLatticeHalfWidth - reach;
    const int first = begin / kLanes;
    const int last = (kLatticeHalfWidth + reach) / kLanes;
    float* const column = products - begin;  // of position 0
#pragma GCC unroll 6
    for (int part = 0; part < kParts; ++part) {
        if (part < first || part > last) {
            continue;
        }
        const __m256 product = _mm256_mul_ps(uplift(part), _mm256_loadu_ps(kernelColumn + Begin(part)));
        // What lies behind the disc is overwritten by the next column.
        if (part == first) {
            const __m256i before = FirstLanes(begin - part * kLanes);
            _mm256_maskstore_ps(column + Begin(part), _mm256_xor_si256(before, _mm256_set1_epi32(-1)), product);
        } else {
            _mm256_storeu_ps(column + Begin(part), product);
        }
    }
}

/// The products eta G of one point, in the order of the sum.
void FillProducts(const LatticeGrid& own, const LatticeGrid& parent, const LatticePoint& point,
                  float* __restrict products) {
    const float step = 0.25F * point.depth;
    float kernel[kLatticeRadiusSquared + 1];
    FillKernel(point.depth, step, kernel);
    KernelColumns kernelColumns;
    SpreadKernel(kernel, kernelColumns);
    LatticeView ownView;  // NOLINT(cppcoreguidelines-pro-type-member-init): opened at once
    ownView.Open(own, point, step);
    LatticeView parentView;  // NOLINT(cppcoreguidelines-pro-type-member-init): opened where it is used
    const bool hasParent = parent.values != nullptr;
    if (hasParent) {
        parentView.Open(parent, point, step);
    }
    const bool isInsideOwn = ownView.rows.cell[0] >= 0 && ownView.rows.cell[kLatticeWidth - 1] >= 0;
    for (int i = 0; i < kLatticeWidth; ++i) {
        const int distance = DistanceFromCentre(i);
        const int reach = kLattice.reach[distance];
        const bool hasOwn = ownView.columns.cell[i] >= 0;
        const bool hasBelow = hasParent && parentView.columns.cell[i] >= 0;
        if (hasOwn) {
            ownView.MoveTo(own, i);
        }
        const ColumnWeights ownWeights(ownView, i);
        if (hasOwn && isInsideOwn) {
            StoreColumn(kernelColumns[distance], reach, products, [&](int part) { return ownWeights.Uplift(part); });
        } else {
            if (hasBelow) {
                parentView.MoveTo(parent, i);
            }
            const ColumnWeights parentWeights(hasBelow ? parentView : ownView, i);
            StoreColumn(kernelColumns[distance], reach, products, [&](int part) {
                const __m256 none = _mm256_setzero_ps();
                const __m256 below = hasBelow ? parentWeights.Uplift(part, none) : none;
                return hasOwn ? ownWeights.Uplift(part, below) : below;
            });
        }
        products += 2 * reach + 1;
    }
}

/// Rows of an 8 by 8 square become its columns.
void Transpose(__m256 (&square)[8]) {
    __m256 pairs[8], quads[8];
    for (int row = 0; row < 8; row += 2) {
        pairs[row] = _mm256_unpacklo_ps(square[row], square[row + 1]);
        pairs[row + 1] = _mm256_unpackhi_ps(square[row], square[row + 1]);
    }
    for (int half = 0; half < 8; half += 4) {
        quads[half] = _mm256_shuffle_ps(pairs[half], pairs[half + 2], 0x44);
        quads[half + 1] = _mm256_shuffle_ps(pairs[half], pairs[half + 2], 0xEE);
        quads[half + 2] = _mm256_shuffle_ps(pairs[half + 1], pairs[half + 3], 0x44);
        quads[half + 3] = _mm256_shuffle_ps(pairs[half + 1], pairs[half + 3], 0xEE);
    }
    for (int row = 0; row < 4; ++row) {
        square[row] = _mm256_permute2f128_ps(quads[row], quads[row + 4], 0x20);
        square[row + 4] = _mm256_permute2f128_ps(quads[row], quads[row + 4], 0x31);
    }
}

/// sum = sum + (product s) s over the samples in their order, for eight points side by side.
void Sum(const float (&products)[kLatticeBlock][kLatticeSamples + kChunk], const float* steps, float* sums) {
    static_assert(kLatticeBlock == kLanes, "a point is a lane");
    const __m256 step = _mm256_loadu_ps(steps);
    __m256 sum = _mm256_setzero_ps();
    for (int sample = 0; sample < kLatticeSamples; sample += kLanes) {
        __m256 square[kLanes];
#pragma GCC unroll 8
        for (int point = 0; point < kLanes; ++point) {
            square[point] = _mm256_loadu_ps(products[point] + sample);
        }
        Transpose(square);
        const int count = kLatticeSamples - sample < kLanes ? kLatticeSamples - sample : kLanes;
#pragma GCC unroll 8
        for (int of = 0; of < kLanes; ++of) {
            if (of < count) {
                sum = _mm256_add_ps(sum, _mm256_mul_ps(_mm256_mul_ps(square[of], step), step));
            }
        }
    }
    _mm256_storeu_ps(sums, sum);
}
// NOLINTEND(misc-definitions-in-headers)
