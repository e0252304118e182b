#include "kajiura/UpliftTable.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace tidora {
namespace {

/// What is not 0 in a field, and the sum of its sizes.
struct Extent {
    UpliftTable::Box box;
    double sizes = 0.0;
};

Extent ExtentOf(const RegularGrid& grid, const float* uplift) noexcept {
    std::size_t first = grid.nx, last = 0, south = grid.ny, north = 0;
    double sizes = 0.0;
    for (std::size_t iy = 0; iy < grid.ny; ++iy) {
        const float* const row = uplift + iy * grid.nx;
        const float* const end = row + grid.nx;
        const float* const raised = std::find_if(row, end, [](float value) { return value != 0.0F; });
        if (raised == end) {
            continue;
        }
        first = std::min(first, static_cast<std::size_t>(raised - row));
        south = std::min(south, iy);
        north = iy + 1;
        for (auto ix = static_cast<std::size_t>(raised - row); ix < grid.nx; ++ix) {
            sizes += std::abs(static_cast<double>(row[ix]));
            last = row[ix] != 0.0F && ix >= last ? ix + 1 : last;
        }
    }
    if (!(sizes > 0.0)) {
        return {};
    }
    return {
        {static_cast<double>(first), static_cast<double>(last), static_cast<double>(south), static_cast<double>(north)},
        sizes};
}

/// A power of two such that whole multiples of it, of this sum of sizes, add up exactly in any order: the sum is below
/// 2^51 of it, and stays below 2^52 when every value is rounded.
double QuantumOf(double sizes) noexcept {
    int exponent = 0;
    static_cast<void>(std::frexp(sizes, &exponent));
    return std::ldexp(1.0, exponent - 51);
}

}  // namespace

UpliftTable::UpliftTable(const RegularGrid& grid, const float* uplift) : m_grid(grid) {
    const Extent extent = ExtentOf(grid, uplift);
    if (!(extent.sizes > 0.0)) {
        return;
    }
    m_raised = extent.box;
    Allocate();
    const double quantum = QuantumOf(extent.sizes);
    for (std::size_t iy = 0; iy < grid.ny; ++iy) {
        AddRow(iy, uplift + iy * grid.nx, quantum);
    }
}

void UpliftTable::Allocate() {
    // Rows a multiple of 4 kB apart share the sets of the first-level cache, and a lattice reads 32 rows: a multiple of
    // 8 doubles that is no multiple of 16 spreads them over all sets.
    m_stride = (m_grid.nx / 16 + 1) * 16 + 8;
    const std::size_t rows = m_grid.ny + 1;
    if (rows > m_sums.max_size() / m_stride) {
        throw std::bad_alloc();
    }
    m_sums.resize(rows * m_stride);
}

void UpliftTable::AddRow(std::size_t iy, const float* row, double quantum) noexcept {
    // Of a sum with this number the last bit is worth one quantum: adding and subtracting it rounds to the nearest one.
    const double shift = 0x1.8p52 * quantum;
    const double* const below = m_sums.data() + iy * m_stride;
    double* const sums = m_sums.data() + (iy + 1) * m_stride;
    double ofRow = 0.0;
    for (std::size_t ix = 0; ix < m_grid.nx; ++ix) {
        ofRow += (static_cast<double>(row[ix]) + shift) - shift;
        sums[ix + 1] = below[ix + 1] + ofRow;
    }
}

}  // namespace tidora
