#pragma once

#include <cstddef>
#include <vector>

namespace tidora {

/// A grid of equal spacing in double precision: node (ix, iy) lies at west + ix * spacing, south + iy * spacing, metres
/// or degrees. Fields of it are row-major: index iy * nx + ix.
struct RegularGrid {
    std::size_t nx = 0;  ///< columns, eastward
    std::size_t ny = 0;  ///< rows, northward
    double west = 0.0;
    double south = 0.0;
    double spacing = 0.0;  ///< > 0
};

/// The summed-area table of an uplift: its integral over any rectangle takes four entries, however large that is. The
/// uplift is constant on the pixels around the nodes, so that the table, interpolated bilinearly, is exact everywhere.
///
/// Table co-ordinates count pixels from the south-west corner of the south-western pixel: the node (ix, iy) lies at
/// ix + 0.5, iy + 0.5.
///
/// Precision: the uplift is rounded to a multiple of a power of two, chosen so that every entry and every difference of
/// entries is exact in double. For a sum of the sizes of N values that are about as large as the largest one this is
/// N * 2^-51 of it at most: 4e-9 for 3000 x 3000 of them.
class UpliftTable {
public:
    /// The uplift is read here alone; nx * ny finite numbers, m. Throws std::bad_alloc. Takes 8 bytes a node, or none
    /// where all are 0.
    UpliftTable(const RegularGrid& grid, const float* uplift);

    /// Pixels from the first one with uplift to the last one, as edges in table co-ordinates; all 0: none.
    struct Box {
        double west = 0.0, east = 0.0, south = 0.0, north = 0.0;
    };

    [[nodiscard]] const RegularGrid& Grid() const noexcept { return m_grid; }
    [[nodiscard]] const Box& Raised() const noexcept { return m_raised; }
    [[nodiscard]] bool IsFlat() const noexcept { return m_sums.empty(); }

    /// The sum over the columns before ix and the rows before iy stands at Sums() + iy * Stride() + ix, 0 <= ix <= nx,
    /// 0 <= iy <= ny. Requires: not IsFlat().
    [[nodiscard]] const double* Sums() const noexcept { return m_sums.data(); }
    [[nodiscard]] std::size_t Stride() const noexcept { return m_stride; }

private:
    void Allocate();
    void AddRow(std::size_t iy, const float* row, double quantum) noexcept;

    RegularGrid m_grid;
    Box m_raised;
    std::size_t m_stride = 0;
    std::vector<double> m_sums;
};

}  // namespace tidora
