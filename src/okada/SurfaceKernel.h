#pragma once

// The batched surface kernels, one template for all instruction sets. Included by the sources that are compiled for one
// set each, and by nothing else: nothing here may be shared with code that runs on any machine.
//
//   paper            code                 meaning
//   xi, eta, q       xi[j], eta[k], q     co-ordinates of corner (j, k); j counts along strike, k up dip
//   R                R                    sqrt(xi^2 + eta^2 + q^2)
//   X                X[j]                 sqrt(xi^2 + q^2)
//   y~, d~           Y[k], D[k]           eta cos + q sin, eta sin - q cos
//   X11, Y11         x11, y11             1 / (R (R + xi)), 1 / (R (R + eta))
//   (1-alpha)/alpha  a3
//   Theta            theta                arctan(xi eta / (q R))
//
// Okada (1992), Bull. Seism. Soc. Am. 82, Table 6, part B, in Chinnery's notation f|| = f(1,1) - f(1,2) - f(2,1) +
// f(2,2) and rotated into x, y, z. Inserting I1 to I4 and collecting, for cos(delta) != 0 and with
//     A = arctan[(eta (X + q cos) + X (R + X) sin) / (xi (R + X) cos)], 0 where xi = 0,
//     I3 = [y~ cos/(R + d~) - ln(R + eta) + sin ln(R + d~)] / cos^2,   I4 = [xi sin cos/(R + d~) + 2 A] / cos^2,
//   strike  uz = q^2 Y11 cos - q sin/R - a3 (sin/cos) [ln(R + d~) - sin ln(R + eta)]
//           ux = -xi q Y11 - Theta + a3 sin [xi cos/(R + d~) + I4 sin]
//           uy = -q cos/R - q^2 Y11 sin + a3 [y~ sin cos/(R + d~) + sin^2 (ln(R + d~) + I3 sin)]
//   dip     uz = -d~ q X11 - Theta sin + 2 a3 A sin
//           ux = -q/R + a3 I3 sin cos
//           uy = -y~ q X11 - Theta cos - a3 [xi sin cos^2/(R + d~) + I4 sin^2 cos]
// and for cos(delta) = 0, with I3 = [eta/(R + d~) + y~ q/(R + d~)^2 - ln(R + eta)] / 2, I4 = xi y~ / (2 (R + d~)^2),
//   strike  uz = -q sin/R + a3 y~ sin^2/(R + d~)
//           ux = -xi q Y11 - Theta + a3 I4 sin^2
//           uy = -q^2 Y11 sin + a3 sin^2 (ln(R + d~) + I3 sin)
//   dip     uz = -eta q X11 sin - Theta sin,   ux = -q/R,   uy = -q^2 X11 sin.

#include <xsimd/xsimd.hpp>

#include "okada/SurfaceKernelArguments.h"

namespace tidora {

template <typename Arch>
class SurfaceKernel {
public:
    using Batch = xsimd::batch<double, Arch>;
    static constexpr std::size_t kLanes = Batch::size;

    template <bool kHorizontal, bool kVertical>
    static void RunFinite(const FiniteKernelSource& s, const SurfacePoints& points, const SurfaceDisplacements& out,
                          unsigned char* singular) noexcept {
        ForEachStep<kHorizontal>(points, out, singular, [&s](const Lanes& in, Lanes& u) {
            return FiniteStep<kHorizontal, kVertical>(s, in, u);
        });
    }

    template <bool kHorizontal>
    static void RunPoint(const PointKernelSource& s, const SurfacePoints& points, const SurfaceDisplacements& out,
                         unsigned char* singular) noexcept {
        ForEachStep<kHorizontal>(points, out, singular,
                                 [&s](const Lanes& in, Lanes& u) { return PointStep<kHorizontal>(s, in, u); });
    }

private:
    using Mask = typename Batch::batch_bool_type;

    /// Three values per lane: x, y and depth of the points going in, the displacements coming out. In single precision
    /// before the first use on purpose: dc3d_ forms the differences from its float arguments in float.
    struct Lanes {
        alignas(64) float x[kLanes];
        alignas(64) float y[kLanes];
        alignas(64) float z[kLanes];
    };

    static Batch Widened(const float* values) noexcept {
        alignas(64) double wide[kLanes];
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            wide[lane] = static_cast<double>(values[lane]);
        }
        return Batch::load_aligned(wide);
    }

    static void Round(const Batch& values, float* rounded) noexcept {
        alignas(64) double wide[kLanes];
        values.store_aligned(wide);
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            rounded[lane] = static_cast<float>(wide[lane]);
        }
    }

    /// Calls step(points, displacements) for every `kLanes` points; it returns the mask of the lanes that it could not
    /// do. The last step repeats its first point in the lanes that are left over.
    template <bool kHorizontal, typename Step>
    static void ForEachStep(const SurfacePoints& points, const SurfaceDisplacements& out, unsigned char* singular,
                            Step step) noexcept {
        for (std::size_t at = 0; at < points.count; at += kLanes) {
            const std::size_t left = points.count - at;
            const std::size_t count = left < kLanes ? left : kLanes;
            Lanes in;  // NOLINT(cppcoreguidelines-pro-type-member-init): every lane is set below
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                const std::size_t from = at + (lane < count ? lane : 0);
                in.x[lane] = points.x[from];
                in.y[lane] = points.y[from];
                in.z[lane] = points.depth[from];
            }
            Lanes u;  // NOLINT(cppcoreguidelines-pro-type-member-init): every lane is set by the step
            alignas(64) double isSingular[kLanes];
            xsimd::select(step(in, u), Batch(1.0), Batch(0.0)).store_aligned(isSingular);
            for (std::size_t lane = 0; lane < count; ++lane) {
                out.uz[at + lane] = u.z[lane];
                singular[at + lane] = isSingular[lane] != 0.0 ? 1 : 0;
                if constexpr (kHorizontal) {
                    out.ux[at + lane] = u.x[lane];
                    out.uy[at + lane] = u.y[lane];
                }
            }
        }
    }

    static Batch ZeroIfTiny(const Batch& value) noexcept {
        return xsimd::select(xsimd::abs(value) < Batch(kKernelEpsilon), Batch(0.0), value);
    }

    /// value + term at corners (1,1) and (2,2), value - term at the others.
    static Batch CornerAdd(const Batch& value, const Batch& term, std::size_t k, std::size_t j) noexcept {
        return k == j ? value + term : value - term;
    }

    /// A complex number with a real part of at least 0.
    struct Complex {
        Batch re, im;
    };
    static Complex Product(const Complex& a, const Complex& b) noexcept {
        return {xsimd::fms(a.re, b.re, a.im * b.im), xsimd::fma(a.im, b.re, a.re * b.im)};
    }
    static Complex ProductWithConjugate(const Complex& a, const Complex& b) noexcept {
        return {xsimd::fma(a.re, b.re, a.im * b.im), xsimd::fms(a.im, b.re, a.re * b.im)};
    }

    /// arg z(1,1) - arg z(1,2) - arg z(2,1) + arg z(2,2), each between -pi/2 and pi/2. Each pair's difference lies
    /// within
    /// (-pi, pi), so the argument of the whole product misses a turn just when both have one sign and it has the other.
    static Batch CornerSumOfArguments(const Complex (&z)[2][2]) noexcept {
        const Complex first = ProductWithConjugate(z[0][0], z[0][1]);
        const Complex second = ProductWithConjugate(z[1][1], z[1][0]);
        const Complex whole = Product(first, second);
        const Batch angle = xsimd::atan2(whole.im, whole.re);
        const Batch zero(0.0);
        const Mask up = (first.im >= zero) && (second.im >= zero) && (angle < zero);
        const Mask down = (first.im < zero) && (second.im < zero) && (angle > zero);
        return xsimd::select(up, angle + Batch(kKernelTwoPi), xsimd::select(down, angle - Batch(kKernelTwoPi), angle));
    }

    /// ln v(1,1) - ln v(1,2) - ln v(2,1) + ln v(2,2).
    static Batch CornerSumOfLogs(const Batch (&v)[2][2]) noexcept {
        return xsimd::log((v[0][0] * v[1][1]) / (v[0][1] * v[1][0]));
    }

    /// What the four corners add up to. R and its sums with xi, eta and d~ are formed as in the scalar routine,
    /// operation for operation and unfused: near the extension of an edge their last bits are all that counts.
    struct CornerSums {
        Batch uxStrike = Batch(0.0), uyStrike = Batch(0.0), uzStrike = Batch(0.0);  ///< of the terms with q in front
        Batch uxDip = Batch(0.0), uyDip = Batch(0.0), uzDip = Batch(0.0);
        Batch yOverRd = Batch(0.0), xiOverRd = Batch(0.0);  ///< y~ / (R + d~), xi / (R + d~)
        Batch etaTerm = Batch(0.0), xiTerm = Batch(0.0);    ///< vertical: eta/(R+d~) + y~ q/(R+d~)^2, xi y~/(R+d~)^2
        Batch theta = Batch(0.0), a = Batch(0.0), logRd = Batch(0.0), logRe = Batch(0.0);
        Mask singular = Mask(false);
    };

    // The branches are the four instantiations, not decisions.
    template <bool kHorizontal, bool kVertical>
    // NOLINTNEXTLINE(readability-function-cognitive-complexity)
    static CornerSums SumCorners(const FiniteKernelSource& s, const Lanes& in) noexcept {
        const Batch sd(s.sd), cd(s.cd), zero(0.0), epsilon(kKernelEpsilon);
        Batch xi[2], eta[2];
        {
            alignas(64) float difference[2][kLanes];
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                difference[0][lane] = in.x[lane] - s.al1;
                difference[1][lane] = in.x[lane] - s.al2;
            }
            xi[0] = ZeroIfTiny(Widened(difference[0]));
            xi[1] = ZeroIfTiny(Widened(difference[1]));
        }
        const Batch y = Widened(in.y), d = Widened(in.z);
        const Batch p = y * cd + d * sd;
        const Batch q = ZeroIfTiny(y * sd - d * cd);
        eta[0] = ZeroIfTiny(p - Batch(s.aw1));
        eta[1] = ZeroIfTiny(p - Batch(s.aw2));
        const Batch q2 = q * q;
        const Batch sizeOfQ = xsimd::abs(q);
        const Batch signOfQ = xsimd::select(q < zero, Batch(-1.0), Batch(1.0));

        CornerSums sums;
        Mask regular = sizeOfQ > zero;
        Complex theta[2][2], a[2][2];
        Batch rd[2][2], re[2][2];
        for (std::size_t j = 0; j < 2; ++j) {
            const Batch xi2 = xi[j] * xi[j];
            const Batch X = xsimd::sqrt(xi2 + q2);
            const Mask onLine = xi[j] == zero;
            for (std::size_t k = 0; k < 2; ++k) {
                const Batch D = eta[k] * sd - q * cd;
                const Batch R = xsimd::sqrt(xi2 + eta[k] * eta[k] + q2);
                const Batch rx = R + xi[j];
                re[k][j] = R + eta[k];
                rd[k][j] = R + D;
                // Written so that what is not a number counts as singular too.
                regular = regular && (rx >= epsilon) && (re[k][j] >= epsilon) && (rd[k][j] >= epsilon) &&
                          (R < Batch(kKernelLargest));

                // The reciprocals share one division.
                const Batch product = rx * re[k][j];
                Batch inverse, overRd;
                if constexpr (kHorizontal || kVertical) {
                    const Batch corner = R * product;
                    const Batch inverseOfAll = Batch(1.0) / (corner * rd[k][j]);
                    inverse = rd[k][j] * inverseOfAll;
                    overRd = corner * inverseOfAll;
                } else {
                    inverse = Batch(1.0) / (R * product);
                }
                const Batch overR = product * inverse;
                const Batch x11 = re[k][j] * inverse;
                const Batch y11 = rx * inverse;
                const Batch qy11 = q * y11, qx11 = q * x11, qOverR = q * overR;

                if constexpr (kVertical) {
                    sums.uzStrike = CornerAdd(sums.uzStrike, -qOverR * sd, k, j);
                    sums.uzDip = CornerAdd(sums.uzDip, -eta[k] * qx11 * sd, k, j);
                } else {
                    sums.uzStrike = CornerAdd(sums.uzStrike, q * qy11 * cd - qOverR * sd, k, j);
                    sums.uzDip = CornerAdd(sums.uzDip, -D * qx11, k, j);
                }
                if constexpr (kHorizontal || kVertical) {
                    const Batch Y = eta[k] * cd + q * sd;
                    sums.yOverRd = CornerAdd(sums.yOverRd, Y * overRd, k, j);
                    if constexpr (kHorizontal) {
                        sums.xiOverRd = CornerAdd(sums.xiOverRd, xi[j] * overRd, k, j);
                        sums.uxStrike = CornerAdd(sums.uxStrike, -xi[j] * qy11, k, j);
                        sums.uxDip = CornerAdd(sums.uxDip, -qOverR, k, j);
                        if constexpr (kVertical) {
                            sums.uyStrike = CornerAdd(sums.uyStrike, -q * qy11 * sd, k, j);
                            sums.uyDip = CornerAdd(sums.uyDip, -q * qx11 * sd, k, j);
                            sums.etaTerm = CornerAdd(sums.etaTerm, (eta[k] + Y * q * overRd) * overRd, k, j);
                            sums.xiTerm = CornerAdd(sums.xiTerm, xi[j] * Y * overRd * overRd, k, j);
                        } else {
                            sums.uyStrike = CornerAdd(sums.uyStrike, -qOverR * cd - q * qy11 * sd, k, j);
                            sums.uyDip = CornerAdd(sums.uyDip, -Y * qx11, k, j);
                        }
                    }
                }
                theta[k][j] = {sizeOfQ * R, signOfQ * xi[j] * eta[k]};
                if constexpr (!kVertical) {
                    const Batch rX = R + X;
                    const Batch below = xi[j] * rX * cd;
                    const Batch above = xsimd::fma(eta[k], X + q * cd, X * rX * sd);
                    a[k][j] = {xsimd::select(onLine, Batch(1.0), xsimd::abs(below)),
                               xsimd::select(onLine, zero, xsimd::select(below < zero, -above, above))};
                }
            }
        }
        sums.singular = !regular;
        sums.theta = CornerSumOfArguments(theta);
        if constexpr (!kVertical) {
            sums.a = CornerSumOfArguments(a);
        }
        if constexpr (!kVertical || kHorizontal) {
            sums.logRd = CornerSumOfLogs(rd);
            sums.logRe = CornerSumOfLogs(re);
        }
        return sums;
    }

    /// Rounds a component into `rounded`. True in the lanes where it stands clear of the scalar routine's own noise.
    static Mask Round(const Batch& values, const Batch& noise, float* rounded) noexcept {
        Round(values, rounded);
        return xsimd::abs(values) >= noise;
    }

    template <bool kHorizontal>
    static Mask StoreInclined(const FiniteKernelSource& s, const CornerSums& f, Lanes& u) noexcept {
        const Batch sd(s.sd), cd(s.cd), a3(s.a3), strike(s.strikeSlip), dip(s.dipSlip), noise(s.noise);
        const Batch uzStrike = f.uzStrike - a3 * Batch(s.sd / s.cd) * (f.logRd - sd * f.logRe);
        const Batch uzDip = f.uzDip + sd * (Batch(2.0) * a3 * f.a - f.theta);
        Mask clear = Round(strike * uzStrike + dip * uzDip, noise, u.z);
        if constexpr (kHorizontal) {
            const Batch overCdCd(1.0 / (s.cd * s.cd)), sdcd(s.sd * s.cd);
            const Batch I3 = (f.yOverRd * cd - f.logRe + sd * f.logRd) * overCdCd;
            const Batch I4 = (f.xiOverRd * sdcd + Batch(2.0) * f.a) * overCdCd;
            const Batch uxStrike = f.uxStrike - f.theta + a3 * sd * (f.xiOverRd * cd + I4 * sd);
            const Batch uyStrike = f.uyStrike + a3 * (f.yOverRd * sdcd + sd * sd * (f.logRd + I3 * sd));
            const Batch uxDip = f.uxDip + a3 * I3 * sdcd;
            const Batch uyDip = f.uyDip - f.theta * cd - a3 * sdcd * (f.xiOverRd * cd + I4 * sd);
            clear = clear && Round(strike * uxStrike + dip * uxDip, noise, u.x);
            clear = clear && Round(strike * uyStrike + dip * uyDip, noise, u.y);
        }
        return clear;
    }

    template <bool kHorizontal>
    static Mask StoreVertical(const FiniteKernelSource& s, const CornerSums& f, Lanes& u) noexcept {
        const Batch sd(s.sd), a3(s.a3), strike(s.strikeSlip), dip(s.dipSlip), noise(s.noise);
        const Batch uzStrike = f.uzStrike + a3 * f.yOverRd;  // the square of the sine is 1
        const Batch uzDip = f.uzDip - f.theta * sd;
        Mask clear = Round(strike * uzStrike + dip * uzDip, noise, u.z);
        if constexpr (kHorizontal) {
            const Batch half(0.5);
            const Batch I3 = (f.etaTerm - f.logRe) * half;
            const Batch uxStrike = f.uxStrike - f.theta + a3 * f.xiTerm * half;
            const Batch uyStrike = f.uyStrike + a3 * (f.logRd + I3 * sd);
            clear = clear && Round(strike * uxStrike + dip * f.uxDip, noise, u.x);
            clear = clear && Round(strike * uyStrike + dip * f.uyDip, noise, u.y);
        }
        return clear;
    }

    template <bool kHorizontal, bool kVertical>
    static Mask FiniteStep(const FiniteKernelSource& s, const Lanes& in, Lanes& u) noexcept {
        const CornerSums sums = SumCorners<kHorizontal, kVertical>(s, in);
        if constexpr (kVertical) {
            return sums.singular || !StoreVertical<kHorizontal>(s, sums, u);
        } else {
            return sums.singular || !StoreInclined<kHorizontal>(s, sums, u);
        }
    }

    /// Okada (1992), Table 2, part B, at z = 0, where c = d.
    template <bool kHorizontal>
    static Mask PointStep(const PointKernelSource& s, const Lanes& in, Lanes& u) noexcept {
        const Batch sd(s.sd), cd(s.cd), one(1.0), two(2.0), three(3.0);
        const Batch x = ZeroIfTiny(Widened(in.x)), y = ZeroIfTiny(Widened(in.y)), d = ZeroIfTiny(Widened(in.z));
        const Batch p = y * cd + d * sd;
        const Batch q = y * sd - d * cd;
        const Batch x2 = x * x, y2 = y * y;
        const Batch R2 = x2 + y2 + d * d;
        const Batch R = xsimd::sqrt(R2);
        const Batch rd = R + d;
        const Mask regular = (rd >= Batch(kKernelEpsilon)) && (R < Batch(kKernelLargest));

        const Batch inverse = one / (R * rd);
        const Batch overR = rd * inverse;
        const Batch overR2 = overR * overR, overR3 = overR2 * overR;
        const Batch overRd = R * inverse;
        const Batch qr = three * q * overR3 * overR2;
        const Batch along = s.strikePotency * x + s.dipPotency * p;  // of the terms with q in front
        const Batch strike(s.strikePotency * s.a3 * s.sd), dip(s.dipPotency * s.a3 * s.sd * s.cd);
        const Batch twoRd = (two * R + d) * overR3 * overRd * overRd;
        const Batch I4 = -(x * y) * twoRd;
        const Batch I5 = inverse - x2 * twoRd;
        Round((dip * I5 - strike * I4 - d * along * qr) * Batch(kKernelOverTwoPi), u.z);
        if constexpr (kHorizontal) {
            const Batch g1 = inverse * overRd;
            const Batch g2 = (three * R + d) * overR3 * overRd * overRd * overRd;
            const Batch I1 = y * (g1 - x2 * g2);
            const Batch I2 = x * (g1 - y2 * g2);
            const Batch I3 = x * overR3 - I2;
            Round((dip * I3 - strike * I1 - x * along * qr) * Batch(kKernelOverTwoPi), u.x);
            Round((dip * I1 - strike * I2 - y * along * qr) * Batch(kKernelOverTwoPi), u.y);
        }
        return !regular;
    }
};

/// Fills the table of one instruction set; called by its source.
template <typename Arch>
constexpr SurfaceKernels MakeSurfaceKernels() noexcept {
    using Kernel = SurfaceKernel<Arch>;
    return {{{&Kernel::template RunFinite<false, false>, &Kernel::template RunFinite<false, true>},
             {&Kernel::template RunFinite<true, false>, &Kernel::template RunFinite<true, true>}},
            {&Kernel::template RunPoint<false>, &Kernel::template RunPoint<true>}};
}

}  // namespace tidora
