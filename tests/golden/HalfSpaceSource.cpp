#include "golden/HalfSpaceSource.h"

#include <cmath>

#include "okada/DC3D.h"

namespace tidora::golden {
namespace {

constexpr double kEpsilon = 1.0e-6;  ///< lengths below it count as zero, as in dc3d_

double Snap(double value) {
    return std::abs(value) < kEpsilon ? 0.0 : value;
}

using PartRoutine = void (*)(const double*, const double*, const double*, const double*, const double*, const double*,
                             double*);

Twelve CornerPart(Part part, double xi, double eta, double q, double z, const Vec3& slip) {
    Twelve u{};
    if (part == Part::C) {
        uc_(&xi, &eta, &q, &z, slip.data(), &slip[1], &slip[2], u.data());
    } else {
        const PartRoutine routine = part == Part::A ? ua_ : ub_;
        routine(&xi, &eta, &q, slip.data(), &slip[1], &slip[2], u.data());
    }
    return u;
}

/// Components 2 and 3 of a rectangle's frame into y and z, `zSign` times in z. Requires c0_.
Twelve Turned(const Twelve& u, double zSign) {
    Twelve turned = u;
    for (std::size_t i = 0; i < u.size(); i += 3) {
        turned[i + 1] = u[i + 1] * c0_.CD - u[i + 2] * c0_.SD;
        turned[i + 2] = zSign * (u[i + 1] * c0_.SD + u[i + 2] * c0_.CD);
    }
    return turned;
}

enum class Frame { Source, Xyz };

/// The corner sum with the flags for negative extensions of edges as dc3d_ sets them; as there, every corner is turned
/// into x, y, z before it is added. d: depth of the reference point, or of its image, below the observation point.
Twelve CornerSum(const Rectangle& source, Part part, double x, double y, double d, double z,
                 Frame frame = Frame::Source) {
    dccon0_(&source.medium.alpha, &source.dip);
    const double p = y * c0_.CD + d * c0_.SD;
    double q = Snap(y * c0_.SD - d * c0_.CD);
    std::array<double, 2> xi = {Snap(x - source.along[0]), Snap(x - source.along[1])};
    std::array<double, 2> eta = {Snap(p - source.up[0]), Snap(p - source.up[1])};
    const auto distance = [q](double a, double b) { return std::sqrt(a * a + b * b + q * q); };
    std::array<int, 2> kxi{};
    std::array<int, 2> ket{};
    if (xi[0] < 0.0) {
        kxi = {distance(xi[1], eta[0]) + xi[1] < kEpsilon ? 1 : 0, distance(xi[1], eta[1]) + xi[1] < kEpsilon ? 1 : 0};
    }
    if (eta[0] < 0.0) {
        ket = {distance(xi[0], eta[1]) + eta[1] < kEpsilon ? 1 : 0,
               distance(xi[1], eta[1]) + eta[1] < kEpsilon ? 1 : 0};
    }
    Twelve sum{};
    for (std::size_t k = 0; k < 2; ++k) {
        for (std::size_t j = 0; j < 2; ++j) {
            dccon2_(&xi[j], &eta[k], &q, &c0_.SD, &c0_.CD, &kxi[k], &ket[j]);
            Twelve corner = CornerPart(part, xi[j], eta[k], q, z, source.slip);
            if (frame == Frame::Xyz) {
                corner = Turned(corner, 1.0);
            }
            for (std::size_t i = 0; i < sum.size(); ++i) {
                sum[i] += j == k ? corner[i] : -corner[i];
            }
        }
    }
    return sum;
}

Twelve PointPart(const PointSource& source, Part part, double x, double y, double d, double z) {
    dccon0_(&source.medium.alpha, &source.dip);
    dccon1_(&x, &y, &d);
    const auto& pot = source.potency;
    Twelve u{};
    if (part == Part::A) {
        ua0_(&x, &y, &d, pot.data(), &pot[1], &pot[2], &pot[3], u.data());
    } else {
        const auto routine = part == Part::B ? ub0_ : uc0_;
        routine(&x, &y, &d, &z, pot.data(), &pot[1], &pot[2], &pot[3], u.data());
    }
    return u;
}

/// u as a function of -z: its z derivatives change sign.
Twelve Mirrored(Twelve u) {
    for (std::size_t i = 9; i < u.size(); ++i) {
        u[i] = -u[i];
    }
    return u;
}

Motion MotionOf(const Twelve& u) {
    Motion motion;
    for (std::size_t i = 0; i < kDirections; ++i) {
        motion.u[i] = u[i];
        for (std::size_t j = 0; j < kDirections; ++j) {
            motion.gradient[i][j] = u[3 + 3 * j + i];
        }
    }
    return motion;
}

/// A(image) - A(source) + B + z C, and the derivatives of the sum.
Motion Combine(const Twelve& image, const Twelve& real, const Twelve& b, const Twelve& c, double z) {
    Twelve u{};
    for (std::size_t i = 0; i < u.size(); ++i) {
        u[i] = image[i] - real[i] + b[i] + z * c[i];
    }
    for (std::size_t i = 0; i < kDirections; ++i) {
        u[9 + i] += c[i];
    }
    return MotionOf(u);
}

/// Part A of the source itself at the observation point: that of the image at the mirrored point.
Twelve SourcePartA(const Rectangle& source, const Vec3& at) {
    return Turned(Mirrored(CornerSum(source, Part::A, at[0], at[1], source.depth + at[2], at[2])), 1.0);
}
Twelve SourcePartA(const PointSource& source, const Vec3& at) {
    return Mirrored(PointPart(source, Part::A, at[0], at[1], source.depth + at[2], at[2]));
}

Twelve Negative(Twelve u) {
    for (double& value : u) {
        value = -value;
    }
    return u;
}

}  // namespace

Twelve PartOf(const Rectangle& source, Part part, const Vec3& at) {
    return CornerSum(source, part, at[0], at[1], source.depth - at[2], at[2]);
}
Twelve PartOf(const PointSource& source, Part part, const Vec3& at) {
    return PointPart(source, part, at[0], at[1], source.depth - at[2], at[2]);
}

Vec3 SurfaceDisplacement(const Rectangle& source, const Vec3& at) {
    const double d = source.depth - at[2];
    return MotionOf(CornerSum(source, Part::B, at[0], at[1], d, at[2], Frame::Xyz)).u;
}
Vec3 SurfaceDisplacement(const PointSource& source, const Vec3& at) {
    return MotionOf(PartOf(source, Part::B, at)).u;
}

Motion FullMotion(const Rectangle& source, const Vec3& at) {
    return Combine(Turned(PartOf(source, Part::A, at), 1.0), SourcePartA(source, at),
                   Turned(PartOf(source, Part::B, at), 1.0), Turned(PartOf(source, Part::C, at), -1.0), at[2]);
}
Motion FullMotion(const PointSource& source, const Vec3& at) {
    return Combine(PartOf(source, Part::A, at), SourcePartA(source, at), PartOf(source, Part::B, at),
                   PartOf(source, Part::C, at), at[2]);
}

Motion FullSpaceMotion(const Rectangle& source, const Vec3& at) {
    return MotionOf(Negative(SourcePartA(source, at)));
}
Motion FullSpaceMotion(const PointSource& source, const Vec3& at) {
    return MotionOf(Negative(SourcePartA(source, at)));
}

SourceFrame FrameOf(double dip) {
    const double sd = std::sin(dip * kPi / 180.0);
    const double cd = std::cos(dip * kPi / 180.0);
    return {{0.0, cd, sd}, {0.0, -sd, cd}};
}

}  // namespace tidora::golden
