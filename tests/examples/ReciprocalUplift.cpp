#include "ReciprocalUplift.h"

#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kPoissonRatio = 0.25;

// Abscissas and weights of Gauss's rule with four points on (-1, 1): the roots of P4(x) = (35 x^4 - 30 x^2 + 3) / 8 are
// the square roots of (15 -+ 2 sqrt(30)) / 35, with the weights (18 +- sqrt(30)) / 36.
const double kInner = std::sqrt((15.0 - 2.0 * std::sqrt(30.0)) / 35.0);
const double kOuter = std::sqrt((15.0 + 2.0 * std::sqrt(30.0)) / 35.0);
const double kAbscissas[4] = {-kOuter, -kInner, kInner, kOuter};
const double kWeights[4] = {(18.0 - std::sqrt(30.0)) / 36.0, (18.0 + std::sqrt(30.0)) / 36.0,
                            (18.0 + std::sqrt(30.0)) / 36.0, (18.0 - std::sqrt(30.0)) / 36.0};

/// Cells are halved no further: a point on the rectangle itself has no distance from it.
constexpr double kSmallestCell = 1.0;  // m

/// The rectangle in a frame with x along strike, y to its left and z down, whose origin is the surface point.
struct Frame {
    double x, y, depth;  ///< start of the upper edge
    double sinDip, cosDip, sinRake, cosRake;
};

/// Part of the rectangle: along strike and down dip, m.
struct Cell {
    double s, w;  ///< centre
    double halfS, halfW;
};

/// slip_i n_j sigma_ij for a unit slip and a unit force, downward at the origin, at the point (s, w) of the rectangle.
/// With R the distance, r its horizontal part, and tension positive:
///     2 pi sigma_rr = (1 - 2 nu) / (R (R + z)) - 3 r^2 z / R^5
///     2 pi sigma_tt = (1 - 2 nu) (z / R^3 - 1 / (R (R + z)))
///     2 pi sigma_zz = -3 z^3 / R^5,    2 pi sigma_rz = -3 r z^2 / R^5
double WorkDensity(const Frame& f, double s, double w) {
    const double x = f.x + s;
    const double y = f.y - w * f.cosDip;
    const double z = f.depth + w * f.sinDip;
    const double r = std::hypot(x, y);
    const double R = std::hypot(r, z);
    const double c = r > 0.0 ? x / r : 1.0;
    const double d = r > 0.0 ? y / r : 0.0;
    const double R5 = R * R * R * R * R;
    const double plane = (1.0 - 2.0 * kPoissonRatio) / (R * (R + z));
    const double rr = plane - 3.0 * r * r * z / R5;
    const double tt = (1.0 - 2.0 * kPoissonRatio) * z / (R * R * R) - plane;
    const double zz = -3.0 * z * z * z / R5;
    const double rz = -3.0 * r * z * z / R5;
    const double xy = c * d * (rr - tt);
    const double yy = d * d * rr + c * c * tt;
    // Normal (0, -sin dip, -cos dip) into the hanging wall, and the slip of the hanging wall.
    const double tractionX = -xy * f.sinDip - c * rz * f.cosDip;
    const double tractionY = -yy * f.sinDip - d * rz * f.cosDip;
    const double tractionZ = -d * rz * f.sinDip - zz * f.cosDip;
    return (tractionX * f.cosRake + tractionY * f.sinRake * f.cosDip - tractionZ * f.sinRake * f.sinDip) / (2.0 * kPi);
}

double WorkOver(const Frame& f, const Cell& cell) {
    const double x = f.x + cell.s;
    const double y = f.y - cell.w * f.cosDip;
    const double z = f.depth + cell.w * f.sinDip;
    const double distance = std::hypot(std::hypot(x, y), z);
    const double size = 2.0 * std::hypot(cell.halfS, cell.halfW);
    // At half the distance, the rule of order 8 leaves about (1/4)^8, some 1e-5 of a cell's share.
    if (2.0 * size > distance && size > kSmallestCell) {
        if (cell.halfS >= cell.halfW) {
            const double half = cell.halfS / 2.0;
            return WorkOver(f, {cell.s - half, cell.w, half, cell.halfW}) +
                   WorkOver(f, {cell.s + half, cell.w, half, cell.halfW});
        }
        const double half = cell.halfW / 2.0;
        return WorkOver(f, {cell.s, cell.w - half, cell.halfS, half}) +
               WorkOver(f, {cell.s, cell.w + half, cell.halfS, half});
    }
    double sum = 0.0;
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) {
            sum += kWeights[i] * kWeights[j] *
                   WorkDensity(f, cell.s + kAbscissas[i] * cell.halfS, cell.w + kAbscissas[j] * cell.halfW);
        }
    }
    return sum * cell.halfS * cell.halfW;
}

}  // namespace

double UpliftByReciprocity(const SlipRectangle& rectangle, double x, double y) {
    const double rad = kPi / 180.0;
    const double alongX = std::sin(rectangle.strike * rad);
    const double alongY = std::cos(rectangle.strike * rad);
    const double east = rectangle.x - x;
    const double north = rectangle.y - y;
    const Frame f = {east * alongX + north * alongY, -east * alongY + north * alongX, rectangle.depth,
                     std::sin(rectangle.dip * rad),  std::cos(rectangle.dip * rad),   std::sin(rectangle.rake * rad),
                     std::cos(rectangle.rake * rad)};
    const Cell whole = {rectangle.length / 2.0, rectangle.width / 2.0, rectangle.length / 2.0, rectangle.width / 2.0};
    // The force of the formulas above is downward, the uplift the work of one upward.
    return -rectangle.slip * WorkOver(f, whole);
}
