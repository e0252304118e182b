#include "deform/ZoneColumns.h"

#include <algorithm>
#include <cmath>

#include "projection/mapproject.h"

namespace tidora {

ZoneColumns::ZoneColumns(const GridShape& grid, int /*zone*/)
    : m_grid(grid), m_columns(static_cast<std::size_t>(std::max(grid.nx, 0))) {}

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
    const int count = end - first;
    const auto at = static_cast<std::size_t>(first);
    std::vector<double> lon(static_cast<std::size_t>(count), m_grid.X(ix)), lat;
    for (int iy = first; iy < end; ++iy) {
        lat.push_back(m_grid.Y(iy));
    }
    ll2xy_(&count, lon.data(), lat.data(), column.x.data() + at, column.y.data() + at);
    for (std::size_t i = at; i < at + static_cast<std::size_t>(count); ++i) {
        column.hasGaps = column.hasGaps || !std::isfinite(column.x[i]) || !std::isfinite(column.y[i]);
    }
}

}  // namespace tidora
