#pragma once

#include <cstddef>
#include <vector>

#include "grid/GridShape.h"
#include "projection/ZonePlane.h"

namespace tidora {

/// The plane co-ordinates of a grid in degrees in one UTM zone, made where they are asked for and kept: a fault has
/// many elements in each of a few zones. 16 bytes a point of the columns that were asked for.
class ZoneColumns {
public:
    /// rows: the latitudes of the grid; outlives this.
    ZoneColumns(const GridShape& grid, const ConformalRows& rows, int zone);

    /// Columns of places, m; HUGE_VAL where a point has none. All rows of the grid, of which only the known ones count.
    struct Column {
        std::vector<double> x, y;
        int first = 0, end = 0;  ///< the rows that are known
        bool hasGaps = false;    ///< some of them have no place
    };

    /// Column `ix` with at least the rows from `first` to before `end`.
    const Column& Of(int ix, int first, int end);

private:
    void Project(int ix, int first, int end, Column& column);

    GridShape m_grid;
    const ConformalRows& m_rows;
    ZonePlane m_plane;
    std::vector<Column> m_columns;
};

}  // namespace tidora
