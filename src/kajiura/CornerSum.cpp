#include "kajiura/CornerSum.h"

#include <algorithm>

#include "simd/PlainLanes.h"

namespace tidora {
namespace {

using Doubles = PlainLanes::Doubles;
static_assert(PlainLanes::kDoubles == 2, "an entry of the table and the next one are a vector");

Doubles All(double value) noexcept {
    return PlainLanes::All(value);
}

/// A lattice that touches fewer pixels than this takes its rows less their value at the first line. Larger ones lose
/// nothing: what rounding leaves of an entry is divided by the pixels in the square of a depth, of which this is 1.
constexpr std::ptrdiff_t kFewPixels = 79;

/// One line of corners, between two rows of the table.
template <bool isRelative>
class Line {
public:
    Line(const double* row, std::size_t stride, std::ptrdiff_t first) noexcept
        : m_low(row), m_high(row + stride), m_lowFirst(All(m_low[first])), m_highFirst(All(m_high[first])) {}

    void Add(Doubles factor, std::ptrdiff_t entry) noexcept {
        Doubles low = PlainLanes::Load(m_low + entry);
        Doubles high = PlainLanes::Load(m_high + entry);
        if constexpr (isRelative) {
            low = low - m_lowFirst;
            high = high - m_highFirst;
        }
        m_lowSum = m_lowSum + factor * low;
        m_highSum = m_highSum + factor * high;
    }

    [[nodiscard]] Doubles Between(const double (&share)[2]) const noexcept {
        return All(share[0]) * m_lowSum + All(share[1]) * m_highSum;
    }

private:
    const double* m_low;
    const double* m_high;
    Doubles m_lowFirst, m_highFirst;
    Doubles m_lowSum = All(0.0), m_highSum = All(0.0);
};

template <bool isRelative>
double SumOverLines(const UpliftTable& table, const CornerLines& columns, const CornerLines& rows) noexcept {
    const auto stride = static_cast<std::ptrdiff_t>(table.Stride());
    const std::ptrdiff_t first = columns.entry[0];
    Doubles sum = All(0.0);
    for (int j = 0; j < kEdgeDistances; ++j) {
        const int northern = kEdgeDistances + j;
        const int southern = kEdgeDistances - 1 - j;
        Line<isRelative> north(table.Sums() + rows.entry[northern] * stride, table.Stride(), first);
        Line<isRelative> south(table.Sums() + rows.entry[southern] * stride, table.Stride(), first);
        for (int k = 0; k < kCorners; ++k) {
            const Doubles factor = All(kCornerCoefficients.at[j][k]) * PlainLanes::Load(columns.share[k]);
            north.Add(factor, columns.entry[k]);
            south.Add(factor, columns.entry[k]);
        }
        sum = sum + (north.Between(rows.share[northern]) - south.Between(rows.share[southern]));
    }
    return sum[0] + sum[1];
}

}  // namespace

CornerLines::CornerLines(const double (&line)[kCorners],
                         std::size_t count) noexcept {  // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
    const double last = static_cast<double>(count - 1);
    for (int k = 0; k < kCorners; ++k) {
        // A line on the far edge belongs to the last pixel: its entry has a next one.
        entry[k] = static_cast<std::ptrdiff_t>(std::min(line[k], last));
        const double beyond = line[k] - static_cast<double>(entry[k]);
        share[k][0] = 1.0 - beyond;
        share[k][1] = beyond;
    }
}

double CornerSum(const UpliftTable& table, const CornerLines& columns, const CornerLines& rows) noexcept {
    constexpr int kLast = kCorners - 1;
    const std::ptrdiff_t pixels = (columns.entry[kLast] - columns.entry[0]) * (rows.entry[kLast] - rows.entry[0]);
    return pixels < kFewPixels ? SumOverLines<true>(table, columns, rows) : SumOverLines<false>(table, columns, rows);
}

}  // namespace tidora
