#pragma once

namespace tidora {

// The weights of the converged filter, in units of the depth d at the point that is filtered: eta is the sum over cells
// of weight times the mean of the uplift over the cell. The cells lie between the lines x = +-a and y = +-a of eight
// distances a, fine near the point and coarse far from it.
//
// A wave of wave number k is to be answered with 1 / cosh(k d): Kajiura (1963), Bull. Earthq. Res. Inst. 41, 535-571.
// The densities are the least squares fit of the cells' own responses to that, up to k d = 6 and over all directions,
// made by scripts/kajiura_weights.py; a test holds table and script together. Their errors, by the same script:
//     1.1e-3  of waves up to k d = 6, in any direction
//     2.9e-2  of shorter waves, up to k d = 27 pi along both axes: they are to be damped
//     4.2e-3  beside a step of the floor along an axis, which leaves 2 / pi arctan(exp(pi x / 2 d))
// All densities are positive: what is filtered stays between the least and the greatest uplift.

inline constexpr int kEdgeDistances = 8;
inline constexpr int kCorners = 2 * kEdgeDistances;  ///< along either axis

/// Distances of the cells' edges, in depths.
inline constexpr double kEdgeDistance[kEdgeDistances] = {0.37, 0.73, 1.07, 1.32, 1.82, 2.53, 3.35, 4.44};

/// Distance from the point to the last edge, in depths.
inline constexpr double kLatticeReach = kEdgeDistance[kEdgeDistances - 1];

/// Weight over area, d^-2, by the intervals of the cell along either axis: 0 between -a[0] and a[0], i between a[i - 1]
/// and a[i] on both sides. To six decimals; what that leaves of the sum of weights is divided away below.
inline constexpr double kCellDensity[kEdgeDistances][kEdgeDistances] = {
    {0.269808, 0.181980, 0.102532, 0.062758, 0.033217, 0.010318, 0.002521, 0.000631},
    {0.181980, 0.131738, 0.080385, 0.051670, 0.028534, 0.009454, 0.002764, 0.000440},
    {0.102532, 0.080385, 0.053241, 0.036370, 0.021461, 0.007541, 0.001660, 0.000668},
    {0.062758, 0.051670, 0.036370, 0.026188, 0.016574, 0.006258, 0.002274, 0.000279},
    {0.033217, 0.028534, 0.021461, 0.016574, 0.010807, 0.004587, 0.001332, 0.000416},
    {0.010318, 0.009454, 0.007541, 0.006258, 0.004587, 0.002245, 0.000834, 0.000243},
    {0.002521, 0.002764, 0.001660, 0.002274, 0.001332, 0.000834, 0.000339, 0.000167},
    {0.000631, 0.000440, 0.000668, 0.000279, 0.000416, 0.000243, 0.000167, 0.000000},
};

/// The sum over cells as a sum over their corners. With S(x, y) the integral of the uplift over all that lies
/// south-west of a corner, a cell's integral is S(east, north) - S(west, north) - S(east, south) + S(west, south);
/// summed by corners each S has the second difference of the densities around it, which changes sign with x and with y.
struct CornerCoefficients {
    double offset[kCorners] = {};  ///< of the lines from the point, ascending, in depths
    /// [j][k]: of the corner at x = offset[k] on the line y = +a[j]; with the opposite sign for y = -a[j].
    double at[kEdgeDistances][kCorners] = {};
};

[[nodiscard]] constexpr CornerCoefficients MakeCornerCoefficients() noexcept {
    CornerCoefficients corners;
    double width[kEdgeDistances] = {};  // of both intervals together
    for (int i = 0; i < kEdgeDistances; ++i) {
        corners.offset[kEdgeDistances + i] = kEdgeDistance[i];
        corners.offset[kEdgeDistances - 1 - i] = -kEdgeDistance[i];
        width[i] = 2.0 * (kEdgeDistance[i] - (i > 0 ? kEdgeDistance[i - 1] : 0.0));
    }
    double density[kEdgeDistances + 1][kEdgeDistances + 1] = {};  // 0 beyond the last edge
    double sum = 0.0;
    for (int j = 0; j < kEdgeDistances; ++j) {
        for (int i = 0; i < kEdgeDistances; ++i) {
            density[j][i] = kCellDensity[j][i];
            sum += density[j][i] * width[j] * width[i];
        }
    }
    for (int j = 0; j < kEdgeDistances; ++j) {
        for (int i = 0; i < kEdgeDistances; ++i) {
            const double difference = density[j][i] - density[j + 1][i] - density[j][i + 1] + density[j + 1][i + 1];
            corners.at[j][kEdgeDistances + i] = difference / sum;
            corners.at[j][kEdgeDistances - 1 - i] = -difference / sum;
        }
    }
    return corners;
}

inline constexpr CornerCoefficients kCornerCoefficients = MakeCornerCoefficients();

}  // namespace tidora
