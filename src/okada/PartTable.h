#pragma once

#include <algorithm>
#include <cmath>

namespace tidora {

/// Lengths below this (in the caller's unit) count as zero, and so does a cosine of the dip below it: on an edge or on
/// a vertical plane the general formulas divide by the difference that is then lost to rounding.
inline constexpr double kOkadaEpsilon = 1.0e-6;
inline constexpr double kTwoPi = 6.283185307179586;                ///< scripts/polynomials.py, as the next
inline constexpr double kRadiansPerDegree = 0.017453292519943295;  ///< pi / 180

/// Arguments are single precision, arithmetic is double: the one place where the first becomes the second.
[[nodiscard]] constexpr double Widen(float value) noexcept {
    return static_cast<double>(value);
}

/// Exactly 0 selects the special cases of the formulas; what is not a number stays.
[[nodiscard]] inline double ZeroIfTiny(double value) noexcept {
    return std::abs(value) < kOkadaEpsilon ? 0.0 : value;
}

/// One row of a table: the three components of a vector.
struct Row {
    double f1 = 0.0, f2 = 0.0, f3 = 0.0;
};

/// One slip type of a part: the displacement (Okada 1992, Tables 2 and 6) and its derivatives with respect to x (Tables
/// 3 and 7), y (Tables 4 and 8) and z (Tables 5 and 9).
struct PartColumn {
    Row u, x, y, z;
};

/// Product and sum are rounded one after the other, in this order for all slip types.
inline void AddRow(double slip, const Row& row, double* u) noexcept {
    u[0] += slip * row.f1;
    u[1] += slip * row.f2;
    u[2] += slip * row.f3;
}

inline void AddColumn(double slip, const PartColumn& column, double* u) noexcept {
    AddRow(slip, column.u, u);
    AddRow(slip, column.x, u + 3);
    AddRow(slip, column.y, u + 6);
    AddRow(slip, column.z, u + 9);
}

/// Every part routine starts from twelve zeros and divides its twelve values by 2 pi at the end.
inline void ClearPart(double* u) noexcept {
    std::fill_n(u, 12, 0.0);
}
inline void FinishPart(double* u) noexcept {
    std::for_each(u, u + 12, [](double& value) { value /= kTwoPi; });
}

/// Writes zeros to the outputs of dc3d_ and dc3d0_.
template <typename... Outputs>
void ZeroOutputs(Outputs*... outputs) noexcept {
    ((*outputs = 0.0F), ...);
}

}  // namespace tidora
