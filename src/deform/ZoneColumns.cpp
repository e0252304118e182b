#include "deform/ZoneColumns.h"

#include <algorithm>

namespace tidora {

ZoneColumns::ZoneColumns(const GridShape& grid, const ConformalRows& rows, int zone)
    : m_grid(grid), m_rows(rows), m_plane(zone), m_columns(static_cast<std::size_t>(std::max(grid.nx, 0))) {}

const ZoneColumns::Column& ZoneColumns::Of(int ix, int first, int end) {
    Column& column = m_columns[static_cast<std::size_t>(ix)];
    if (column.first == column.end) {
        column.x.resize(static_cast<std::size_t>(m_grid.ny));
        column.y.resize(column.x.size());
        column.first = first;
        column.end = first;
    }
    // The known rows stay one stretch: what lies between them and the wanted ones is made too.
    if (first < column.first) {
        Project(ix, first, column.first, column);
        column.first = first;
    }
    if (end > column.end) {
        Project(ix, column.end, end, column);
        column.end = end;
    }
    return column;
}

void ZoneColumns::Project(int ix, int first, int end, Column& column) {
    const auto at = static_cast<std::size_t>(first);
    const bool haveAllPlaces = m_plane.Column(m_grid.X(ix), m_rows, at, static_cast<std::size_t>(end - first),
                                              column.x.data() + at, column.y.data() + at);
    column.hasGaps = column.hasGaps || !haveAllPlaces;
}

}  // namespace tidora
