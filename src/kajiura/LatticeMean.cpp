#include "kajiura/LatticeMean.h"

#include <algorithm>
#include <cmath>

#include "kajiura/CornerSum.h"

namespace tidora {
namespace {

constexpr int kLast = kCorners - 1;
constexpr double kWholeTurn = 360.0;  ///< degrees
/// Spacings by which a grid may miss a whole turn and still go around: single precision puts the nodes of a grid of
/// 43 200 columns, half a minute apart, so far off.
constexpr double kTurnTolerance = 1e-3;

bool IsTouched(const UpliftTable::Box& raised, const LatticeLines& lines) noexcept {
    return lines.x[0] < raised.east && lines.x[kLast] > raised.west && lines.y[0] < raised.north &&
           lines.y[kLast] > raised.south;
}

/// Of one table and all its images.
double SumOf(const UpliftTable& table, const TableDomain& domain, const LatticeLines& lines) noexcept {
    if (table.IsFlat()) {
        return 0.0;
    }
    double sum = 0.0;
    const TableDomain::Shifts shifts = domain.ShiftsUnder(lines);
    for (int image = 0; image < shifts.count; ++image) {
        const LatticeLines within = domain.Within(lines, shifts.first + image * domain.period);
        if (IsTouched(table.Raised(), within)) {
            sum += CornerSum(table, CornerLines(within.x, table.Grid().nx), CornerLines(within.y, table.Grid().ny));
        }
    }
    return sum;
}

}  // namespace

TableDomain::TableDomain(const RegularGrid& grid, bool isGeographic) noexcept
    : east(static_cast<double>(grid.nx)), north(static_cast<double>(grid.ny)) {
    if (!isGeographic) {
        return;
    }
    period = kWholeTurn / grid.spacing;
    if (east >= period - kTurnTolerance) {
        // Images then join. What is more than a turn is left off at both ends, so that nothing counts twice.
        period = std::min(period, east);
        west = (east - period) / 2.0;
        east -= west;
    }
}

TableDomain::Shifts TableDomain::ShiftsUnder(const LatticeLines& lines) const noexcept {
    if (!(lines.y[0] < north && lines.y[kLast] > 0.0)) {
        return {};
    }
    if (period == 0.0) {
        return {0.0, lines.x[0] < east && lines.x[kLast] > west ? 1 : 0};
    }
    const double first = std::ceil((lines.x[0] - east) / period);
    const double last = std::floor((lines.x[kLast] - west) / period);
    // Neither lines nor domain are wider than a turn: no more than three.
    return {first * period, last >= first ? static_cast<int>(std::min(last - first, 2.0)) + 1 : 0};
}

LatticeLines TableDomain::Within(const LatticeLines& lines, double shift) const noexcept {
    LatticeLines within;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
    for (int k = 0; k < kCorners; ++k) {
        within.x[k] = std::min(east, std::max(west, lines.x[k] - shift));
        within.y[k] = std::min(north, std::max(0.0, lines.y[k]));
    }
    return within;
}

LatticeMean::LatticeMean(const UpliftTable& own, const UpliftTable* parent, bool isGeographic) noexcept
    : m_own(own), m_parent(parent), m_ownDomain(own.Grid(), isGeographic) {
    if (parent != nullptr) {
        m_parentDomain = TableDomain(parent->Grid(), isGeographic);
        m_parentPixel = own.Grid().spacing / parent->Grid().spacing;
    }
}

double LatticeMean::At(double x, double y, double columns, double rows) const noexcept {
    LatticeLines lines;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
    for (int k = 0; k < kCorners; ++k) {
        lines.x[k] = x + columns * kCornerCoefficients.offset[k];
        lines.y[k] = y + rows * kCornerCoefficients.offset[k];
    }
    const double area = columns * rows;  // of the square of the depth, pixels
    const double mean = SumOf(m_own, m_ownDomain, lines) / area;
    if (m_parent == nullptr || m_parent->IsFlat() || IsInside(lines)) {
        return mean;
    }
    const double outside = ParentOutside(lines);
    // Without the question 0 would be divided by the 0 that the square of absurd spacings gives.
    return outside == 0.0 ? mean : mean + outside / (area * m_parentPixel * m_parentPixel);
}

bool LatticeMean::IsInside(const LatticeLines& lines) const noexcept {
    return lines.x[0] >= m_ownDomain.west && lines.x[kLast] <= m_ownDomain.east && lines.y[0] >= 0.0 &&
           lines.y[kLast] <= m_ownDomain.north;
}

LatticeLines LatticeMean::InParent(LatticeLines lines) const noexcept {
    const RegularGrid& own = m_own.Grid();
    const RegularGrid& parent = m_parent->Grid();
    const double x = (own.west - parent.west) / parent.spacing + 0.5;
    const double y = (own.south - parent.south) / parent.spacing + 0.5;
    for (int k = 0; k < kCorners; ++k) {
        lines.x[k] = (lines.x[k] - 0.5) * m_parentPixel + x;
        lines.y[k] = (lines.y[k] - 0.5) * m_parentPixel + y;
    }
    return lines;
}

/// The parent's sum, less what of it lies in the own table: the same lattice with its lines moved to the own edges.
double LatticeMean::ParentOutside(const LatticeLines& lines) const noexcept {
    double sum = SumOf(*m_parent, m_parentDomain, InParent(lines));
    const TableDomain::Shifts shifts = m_ownDomain.ShiftsUnder(lines);
    for (int image = 0; image < shifts.count; ++image) {
        const double shift = shifts.first + image * m_ownDomain.period;
        sum -= SumOf(*m_parent, m_parentDomain, InParent(m_ownDomain.Within(lines, shift)));
    }
    return sum;
}

}  // namespace tidora
