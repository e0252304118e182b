// Mindlin's point force, in his frame: z and c are the depths of the observation point and of the force, x and y count
// from the force, R1 and R2 are the distances from the force and from its image, nu is Poisson's ratio. Rigidity 1.

#include "golden/PointForce.h"

#include "golden/Dual.h"

namespace tidora::golden {
namespace {

struct Geometry {
    Dual x, y, z;
    double c = 0.0, nu = 0.0;
    Dual R1, R13;       ///< 1 / R1, 1 / R1^3
    Dual R2, R23, R25;  ///< 1 / R2, 1 / R2^3, 1 / R2^5
    Dual down;          ///< 1 / (R2 + z + c)
};

using Displacement = std::array<Dual, 3>;  ///< x, y, down

Geometry GeometryOf(const Medium& medium, const Vec3& force, const Vec3& at) {
    Geometry g;
    g.x = Dual(at[0] - force[0], {1.0, 0.0, 0.0});
    g.y = Dual(at[1] - force[1], {0.0, 1.0, 0.0});
    g.z = Dual(-at[2], {0.0, 0.0, -1.0});
    g.c = -force[2];
    g.nu = medium.Poisson();
    const Dual r2 = g.x * g.x + g.y * g.y;
    const Dual image = Sqrt(r2 + (g.z + g.c) * (g.z + g.c));
    g.R1 = 1.0 / Sqrt(r2 + (g.z - g.c) * (g.z - g.c));
    g.R2 = 1.0 / image;
    g.R13 = g.R1 * g.R1 * g.R1;
    g.R23 = g.R2 * g.R2 * g.R2;
    g.R25 = g.R23 * g.R2 * g.R2;
    g.down = 1.0 / (image + g.z + g.c);
    return g;
}

/// 16 pi (1 - nu) times the displacement by a unit force downward.
Displacement DownwardForce(const Geometry& g) {
    const double nu = g.nu;
    const double k = 3.0 - 4.0 * nu;
    const Dual sum = g.z + g.c;
    const Dual difference = g.z - g.c;
    const Dual radial = difference * g.R13 + k * difference * g.R23 -
                        4.0 * (1.0 - nu) * (1.0 - 2.0 * nu) * g.R2 * g.down + 6.0 * g.c * g.z * sum * g.R25;
    const Dual down = k * g.R1 + (8.0 * (1.0 - nu) * (1.0 - nu) - k) * g.R2 + difference * difference * g.R13 +
                      (k * sum * sum - 2.0 * g.c * g.z) * g.R23 + 6.0 * g.c * g.z * sum * sum * g.R25;
    return {g.x * radial, g.y * radial, down};
}

/// 16 pi (1 - nu) times the displacement (along the force, across it, down) by a unit force along the axis `s`; `t` is
/// the other horizontal axis.
Displacement HorizontalForce(const Geometry& g, const Dual& s, const Dual& t) {
    const double k = 3.0 - 4.0 * g.nu;
    const double m = 4.0 * (1.0 - g.nu) * (1.0 - 2.0 * g.nu);
    const Dual s2 = s * s;
    const Dual along = k * g.R1 + g.R2 + s2 * (g.R13 + k * g.R23) +
                       2.0 * g.c * g.z * g.R23 * (1.0 - 3.0 * s2 * g.R2 * g.R2) +
                       m * g.down * (1.0 - s2 * g.R2 * g.down);
    const Dual across = g.R13 + k * g.R23 - 6.0 * g.c * g.z * g.R25 - m * g.R2 * g.down * g.down;
    const Dual down = (g.z - g.c) * (g.R13 + k * g.R23) - 6.0 * g.c * g.z * (g.z + g.c) * g.R25 + m * g.R2 * g.down;
    return {along, s * t * across, s * down};
}

/// `scale` times the displacement, its last component turned up.
Motion MotionOf(const Displacement& u, double scale) {
    const Vec3 toUp = {scale, scale, -scale};
    Motion motion;
    for (std::size_t i = 0; i < kDirections; ++i) {
        motion.u[i] = toUp[i] * u[i].value;
        for (std::size_t j = 0; j < kDirections; ++j) {
            motion.gradient[i][j] = toUp[i] * u[i].slope[j];
        }
    }
    return motion;
}

}  // namespace

std::array<Motion, 3> PointForceMotions(const Medium& medium, const Vec3& force, const Vec3& at) {
    const Geometry g = GeometryOf(medium, force, at);
    const double scale = 1.0 / (16.0 * kPi * (1.0 - g.nu));
    const Displacement alongY = HorizontalForce(g, g.y, g.x);
    return {MotionOf(HorizontalForce(g, g.x, g.y), scale), MotionOf({alongY[1], alongY[0], alongY[2]}, scale),
            MotionOf(DownwardForce(g), -scale)};
}

}  // namespace tidora::golden
