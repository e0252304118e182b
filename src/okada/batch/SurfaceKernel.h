#pragma once

// The batched surface kernels, one template for all instruction sets. Included by the sources that are compiled for one
// set each, and by nothing else: nothing here may be shared with code that runs on any machine.
//
//   paper            code                 meaning
//   xi, eta, q       xi[j], eta[k], q     co-ordinates of corner (j, k); j counts along strike, k up dip
//   R                R                    sqrt(xi^2 + eta^2 + q^2)
//   y~, d~           Y[k], D[k]           eta cos + q sin, eta sin - q cos
//   X11, Y11         x11, y11             1 / (R (R + xi)), 1 / (R (R + eta))
//   (1-alpha)/alpha  a3
//   Theta            theta                arctan(xi eta / (q R))
//
// Okada (1992), Bull. Seism. Soc. Am. 82, Table 6, part B, in Chinnery's notation f|| = f(1,1) - f(1,2) - f(2,1) +
// f(2,2) and rotated into x, y, z. Inserting I1 to I4 and collecting, for cos(delta) != 0 and with
//     A = arctan[(eta (X + q cos) + X (R + X) sin) / (xi (R + X) cos)] with X = sqrt(xi^2 + q^2) (below in a form
//     without), I3 = [y~ cos/(R + d~) - ln(R + eta) + sin ln(R + d~)] / cos^2,   I4 = [xi sin cos/(R + d~) + 2 A] /
//     cos^2,
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

#include <cstdint>

#include <xsimd/xsimd.hpp>

#include "okada/batch/SurfaceKernelArguments.h"
#include "simd/LaneMath.h"

namespace tidora {

template <typename Arch>
class SurfaceKernel {
public:
    using Math = LaneMath<Arch>;
    using Batch = typename Math::Batch;
    static constexpr std::size_t kLanes = Math::kLanes;

    template <bool kHorizontal, bool kVertical>
    static std::size_t RunFinite(const FiniteKernelSource& s, const SurfacePoints& points,
                                 const SurfaceDisplacements& out, std::uint16_t* singular) noexcept {
        return ForEachStep<kHorizontal, CornerSums>(
            points, out, singular,
            [&s](const SurfacePoints& in, CornerSums& sums) { SumCorners<kHorizontal, kVertical>(s, in, sums); },
            [&s](const CornerSums& sums, const SurfaceDisplacements& u) {
                return sums.singular || !Finish<kHorizontal, kVertical>(s, sums, u);
            });
    }

    template <bool kHorizontal>
    static std::size_t RunPoint(const PointKernelSource& s, const SurfacePoints& points,
                                const SurfaceDisplacements& out, std::uint16_t* singular) noexcept {
        return ForEachStep<kHorizontal, SurfacePoints>(
            points, out, singular, [](const SurfacePoints& in, SurfacePoints& kept) { kept = in; },
            [&s](const SurfacePoints& in, const SurfaceDisplacements& u) { return PointStep<kHorizontal>(s, in, u); });
    }

private:
    using Mask = typename Math::Mask;
    using Complex = typename Math::Complex;

    /// Writes the numbers of the lanes of `mask`, the first of which has the number `at`; returns how many.
    static std::size_t Note(const Mask& mask, std::size_t at, std::size_t lanes, std::uint16_t* numbers) noexcept {
        if (!xsimd::any(mask)) {
            return 0;
        }
        alignas(64) double isSet[kLanes];
        xsimd::select(mask, Batch(1.0), Batch(0.0)).store_aligned(isSet);
        std::size_t count = 0;
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            if (isSet[lane] != 0.0) {
                numbers[count++] = static_cast<std::uint16_t>(at + lane);
            }
        }
        return count;
    }

    /// Steps whose first halves are done before their second halves. A step is a long chain of operations; two shorter
    /// chains, each of many steps, leave the processor fewer gaps.
    static constexpr std::size_t kGroup = 8;

    /// A step does `kLanes` points: first(points, between) and then second(between, displacements), which returns the
    /// mask of the lanes that it could not do. Their numbers go to `singular`; returns how many. The last step has
    /// points of its own behind the given ones.
    template <bool kHorizontal, typename Between, typename First, typename Second>
    static std::size_t ForEachStep(const SurfacePoints& points, const SurfaceDisplacements& out,
                                   std::uint16_t* singular, First first, Second second) noexcept {
        std::size_t singularCount = 0;
        Between between[kGroup];
        const std::size_t whole = points.count / kLanes * kLanes;
        for (std::size_t begin = 0; begin < whole; begin += kGroup * kLanes) {
            const std::size_t left = (whole - begin) / kLanes;
            const std::size_t steps = left < kGroup ? left : kGroup;
            for (std::size_t k = 0; k < steps; ++k) {
                const std::size_t at = begin + k * kLanes;
                first({kLanes, points.x + at, points.y + at, points.depth + at}, between[k]);
            }
            for (std::size_t k = 0; k < steps; ++k) {
                const std::size_t at = begin + k * kLanes;
                const SurfaceDisplacements u = {kHorizontal ? out.ux + at : nullptr,
                                                kHorizontal ? out.uy + at : nullptr, out.uz + at};
                singularCount += Note(second(between[k], u), at, kLanes, singular + singularCount);
            }
        }
        const std::size_t at = whole;
        if (at < points.count) {
            const std::size_t count = points.count - at;
            float in[3][kLanes] = {}, u[3][kLanes];
            for (std::size_t lane = 0; lane < count; ++lane) {
                in[0][lane] = points.x[at + lane];
                in[1][lane] = points.y[at + lane];
                in[2][lane] = points.depth[at + lane];
            }
            first({kLanes, in[0], in[1], in[2]}, between[0]);
            singularCount += Note(second(between[0], {u[0], u[1], u[2]}), at, count, singular + singularCount);
            for (std::size_t lane = 0; lane < count; ++lane) {
                out.uz[at + lane] = u[2][lane];
                if constexpr (kHorizontal) {
                    out.ux[at + lane] = u[0][lane];
                    out.uy[at + lane] = u[1][lane];
                }
            }
        }
        return singularCount;
    }

    static Batch ZeroIfTiny(const Batch& value) noexcept {
        return xsimd::select(xsimd::abs(value) < Batch(kKernelEpsilon), Batch(0.0), value);
    }

    /// Values at the four corners, [k][j].
    using Corners = Batch[2][2];

    /// f(1,1) - f(1,2) - f(2,1) + f(2,2).
    static Batch Sum(const Corners& f) noexcept { return (f[0][0] - f[1][0]) - (f[0][1] - f[1][1]); }
    /// The same with a factor of eta alone, or of xi alone.
    static Batch SumWithRow(const Batch (&factor)[2], const Corners& f) noexcept {
        return Math::Fnma(factor[1], f[1][0] - f[1][1], factor[0] * (f[0][0] - f[0][1]));
    }
    static Batch SumWithColumn(const Batch (&factor)[2], const Corners& f) noexcept {
        return Math::Fnma(factor[1], f[0][1] - f[1][1], factor[0] * (f[0][0] - f[1][0]));
    }

    static Complex Product(const Complex& a, const Complex& b) noexcept {
        return {Math::Fnma(a.im, b.im, a.re * b.re), Math::Fma(a.im, b.re, a.re * b.im)};
    }
    static Complex ProductWithConjugate(const Complex& a, const Complex& b) noexcept {
        return {Math::Fma(a.re, b.re, a.im * b.im), Math::Fnma(a.re, b.im, a.im * b.re)};
    }

    /// The number whose argument is the corner sum of A. Up to terms that the sum cancels,
    ///     A = -arctan[xi cos / (R (1 + sin) + eta + d~)] = arctan[xi cos / (R (1 - sin) - eta + d~)]:
    /// 2A is the solid angle between the dip line and the vertical at the corner. Of the two denominators the one with
    /// R (1 + |sin|) cannot vanish below the surface, where d~ >= 0. The numerators of the corners of one xi are equal,
    /// so that their difference lies within (-pi/2, pi/2), and the sum of two within (-pi, pi).
    static Complex ArgumentSumOfA(const FiniteKernelSource& s, const Corners& R, const Batch (&xi)[2],
                                  const Batch (&eta)[2], const Batch (&D)[2]) noexcept {
        const Batch up(s.sd >= 0.0 ? 1.0 : -1.0), rFactor(1.0 + (s.sd >= 0.0 ? s.sd : -s.sd));
        Complex pair[2];
        const Batch rest[2] = {Math::Fma(up, eta[0], D[0]), Math::Fma(up, eta[1], D[1])};
        for (std::size_t j = 0; j < 2; ++j) {
            const Batch below[2] = {Math::Fma(rFactor, R[0][j], rest[0]), Math::Fma(rFactor, R[1][j], rest[1])};
            const Batch above = xi[j] * Batch(s.cd);
            // The sign of the first form for dips of at least 0, of the second for the others.
            pair[j] = {Math::Fma(below[0], below[1], above * above), up * above * (below[0] - below[1])};
        }
        return ProductWithConjugate(pair[0], pair[1]);
    }

    /// ln v(1,1) - ln v(1,2) - ln v(2,1) + ln v(2,2) is the logarithm of this.
    static typename Math::Fraction LogSum(const Corners& v) noexcept { return {v[0][0] * v[1][1], v[0][1] * v[1][0]}; }

    /// What the four corners add up to, before logarithms and arguments are taken.
    struct CornerSums {
        Batch q;
        Batch overR, y11, xiY11;         ///< 1/R, Y11, xi Y11
        Batch dX11, yX11;                ///< d~ X11, y~ X11
        Batch yOverRd, xiOverRd;         ///< y~ / (R + d~), xi / (R + d~)
        Batch etaTerm, xiTerm;           ///< vertical: eta/(R+d~) + y~ q/(R+d~)^2, xi y~/(R+d~)^2
        Complex theta, a;                ///< numbers whose arguments are the sums of Theta, but for a turn, and of A
        Batch lowTurn, highTurn;         ///< which turn it is: the imaginary parts of both pairs of Theta, in order
        typename Math::Fraction rd, re;  ///< of the logarithms
        Mask singular;
    };

    /// Replaces each value by its inverse, for one division.
    static void Invert(Corners& v) noexcept {
        const Batch first = v[0][0] * v[0][1], second = v[1][0] * v[1][1];
        const Batch inverse = Math::Inverse(first * second);
        const Batch overFirst = inverse * second, overSecond = inverse * first;
        const Batch v00 = v[0][0], v10 = v[1][0];
        v[0][0] = overFirst * v[0][1];
        v[0][1] = overFirst * v00;
        v[1][0] = overSecond * v[1][1];
        v[1][1] = overSecond * v10;
    }

    /// R and its sums with xi, eta and d~ are formed as in the scalar routine, operation for operation and unfused:
    /// near the extension of an edge their last bits are all that counts.
    template <bool kHorizontal, bool kVertical>
    // The branches are the four instantiations, not decisions.
    // NOLINTNEXTLINE(readability-function-cognitive-complexity)
    static void SumCorners(const FiniteKernelSource& s, const SurfacePoints& in, CornerSums& sums) noexcept {
        constexpr bool kNeedsRd = kHorizontal || kVertical;
        const Batch sd(s.sd), cd(s.cd);
        Batch xi[2];
        {
            alignas(64) float difference[2][kLanes];
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                difference[0][lane] = in.x[lane] - s.al1;
                difference[1][lane] = in.x[lane] - s.al2;
            }
            xi[0] = Math::Widened(difference[0]);
            xi[1] = Math::Widened(difference[1]);
        }
        const Batch y = Math::Widened(in.y), d = Math::Widened(in.depth);
        const Batch p = y * cd + d * sd;
        const Batch q = y * sd - d * cd;
        const Batch q2 = q * q;
        const Batch sizeOfQ = xsimd::abs(q);
        const Batch eta[2] = {p - Batch(s.aw1), p - Batch(s.aw2)};
        const Batch D[2] = {eta[0] * sd - q * cd, eta[1] * sd - q * cd};

        // The scalar routine takes values below epsilon for 0, and what then vanishes for a special case.
        Batch least = sizeOfQ;
        for (std::size_t i = 0; i < 2; ++i) {
            least = xsimd::min(least, xsimd::min(xsimd::abs(xi[i]), xsimd::abs(eta[i])));
        }
        Corners R, rx, re, rd, rxe, inverse;
        for (std::size_t k = 0; k < 2; ++k) {
            const Batch eta2 = eta[k] * eta[k];
            for (std::size_t j = 0; j < 2; ++j) {
                R[k][j] = Math::Root(xi[j] * xi[j] + eta2 + q2);
                rx[k][j] = R[k][j] + xi[j];
                re[k][j] = R[k][j] + eta[k];
                rd[k][j] = R[k][j] + D[k];
                least = xsimd::min(least, xsimd::min(rx[k][j], re[k][j]));
                rxe[k][j] = R[k][j] * (rx[k][j] * re[k][j]);
                inverse[k][j] = kNeedsRd ? rxe[k][j] * rd[k][j] : rxe[k][j];
            }
        }
        const Batch largest = xsimd::max(xsimd::max(R[0][0], R[0][1]), xsimd::max(R[1][0], R[1][1]));
        sums.q = q;
        // What is not a number may get past these; it does not get past the noise.
        // A depth of 0 may come out a little less.
        sums.singular = !((least >= Batch(kKernelEpsilon)) && (xsimd::min(D[0], D[1]) > Batch(-kKernelEpsilon / 2.0)) &&
                          (largest < Batch(kKernelLargest)));

        // q and xi with the sign of q: the real part of Theta's number is to be positive.
        const Batch signedXi[2] = {xsimd::copysign(Batch(1.0), q) * xi[0], xsimd::copysign(Batch(1.0), q) * xi[1]};
        Complex theta[2][2];
        for (std::size_t k = 0; k < 2; ++k) {
            for (std::size_t j = 0; j < 2; ++j) {
                theta[k][j] = {sizeOfQ * R[k][j], signedXi[j] * eta[k]};
            }
        }
        const Complex first = ProductWithConjugate(theta[0][0], theta[0][1]);
        const Complex second = ProductWithConjugate(theta[1][1], theta[1][0]);
        sums.theta = Product(first, second);
        sums.lowTurn = xsimd::min(first.im, second.im);
        sums.highTurn = xsimd::max(first.im, second.im);
        if constexpr (!kVertical) {
            sums.a = ArgumentSumOfA(s, R, xi, eta, D);
        }
        if constexpr (!kVertical || kHorizontal) {
            sums.rd = LogSum(rd);
            sums.re = LogSum(re);
        }

        Invert(inverse);
        Corners overR, x11, y11, overRd;
        for (std::size_t k = 0; k < 2; ++k) {
            for (std::size_t j = 0; j < 2; ++j) {
                const Batch overRxe = kNeedsRd ? rd[k][j] * inverse[k][j] : inverse[k][j];
                x11[k][j] = re[k][j] * overRxe;
                y11[k][j] = rx[k][j] * overRxe;
                overR[k][j] = rx[k][j] * x11[k][j];
                if constexpr (kNeedsRd) {
                    overRd[k][j] = rxe[k][j] * inverse[k][j];
                }
            }
        }
        const Batch Y[2] = {eta[0] * cd + q * sd, eta[1] * cd + q * sd};
        sums.overR = Sum(overR);
        sums.y11 = Sum(y11);
        sums.dX11 = SumWithRow(D, x11);
        if constexpr (kHorizontal) {
            sums.xiY11 = SumWithColumn(xi, y11);
            sums.yX11 = SumWithRow(Y, x11);
            sums.xiOverRd = SumWithColumn(xi, overRd);
        }
        if constexpr (kNeedsRd) {
            sums.yOverRd = SumWithRow(Y, overRd);
        }
        if constexpr (kHorizontal && kVertical) {
            Corners overRd2;
            for (std::size_t k = 0; k < 2; ++k) {
                for (std::size_t j = 0; j < 2; ++j) {
                    overRd2[k][j] = overRd[k][j] * overRd[k][j];
                }
            }
            sums.etaTerm = SumWithRow(eta, overRd) + q * SumWithRow(Y, overRd2);
            sums.xiTerm = xi[0] * (Y[0] * overRd2[0][0] - Y[1] * overRd2[1][0]) -
                          xi[1] * (Y[0] * overRd2[0][1] - Y[1] * overRd2[1][1]);
        }
    }

    /// Rounds a component into `rounded`. True in the lanes where it stands clear of the scalar routine's own noise.
    static Mask Round(const Batch& values, const Batch& noise, float* rounded) noexcept {
        Math::Round(values, rounded);
        return xsimd::abs(values) >= noise;
    }

    /// Theta(1,1) - Theta(1,2) - Theta(2,1) + Theta(2,2) from the argument of the product of all four numbers. Each
    /// lies within (-pi/2, pi/2), the differences of both pairs within (-pi, pi): the whole misses a turn just when
    /// both have one sign and it has the other.
    static Batch Unwound(const Batch& argument, const CornerSums& f) noexcept {
        const Batch zero(0.0);
        const Mask up = (f.lowTurn >= zero) && (argument < zero);
        const Mask down = (f.highTurn < zero) && (argument > zero);
        return xsimd::select(up, argument + Batch(kKernelTwoPi),
                             xsimd::select(down, argument - Batch(kKernelTwoPi), argument));
    }

    struct Transcendentals {
        Batch theta, a, logRd, logRe;
    };

    /// The second half of a step. True in the lanes that it could do.
    template <bool kHorizontal, bool kVertical>
    static Mask Finish(const FiniteKernelSource& s, const CornerSums& f, const SurfaceDisplacements& u) noexcept {
        Transcendentals t = {};
        if constexpr (kVertical) {
            t.theta = Unwound(Math::Arguments(f.theta, f.theta).first, f);
        } else {
            const auto arguments = Math::Arguments(f.theta, f.a);
            t.theta = Unwound(arguments.first, f);
            t.a = arguments.second;
        }
        if constexpr (!kVertical || kHorizontal) {
            const auto logs = Math::Logs(f.rd, f.re);
            t.logRd = logs.first;
            t.logRe = logs.second;
        }
        if constexpr (kVertical) {
            return StoreVertical<kHorizontal>(s, f, t, u);
        } else {
            return StoreInclined<kHorizontal>(s, f, t, u);
        }
    }

    template <bool kHorizontal>
    static Mask StoreInclined(const FiniteKernelSource& s, const CornerSums& f, const Transcendentals& t,
                              const SurfaceDisplacements& u) noexcept {
        const Batch sd(s.sd), cd(s.cd), a3(s.a3), strike(s.strikeSlip), dip(s.dipSlip), noise(s.noise);
        const Batch qY11 = f.q * f.y11;
        const Batch uzStrike = f.q * (qY11 * cd - f.overR * sd) - a3 * Batch(s.sd / s.cd) * (t.logRd - sd * t.logRe);
        const Batch uzDip = sd * (Batch(2.0) * a3 * t.a - t.theta) - f.q * f.dX11;
        Mask clear = Round(strike * uzStrike + dip * uzDip, noise, u.uz);
        if constexpr (kHorizontal) {
            const Batch overCdCd(1.0 / (s.cd * s.cd)), sdcd(s.sd * s.cd);
            const Batch I3 = (f.yOverRd * cd - t.logRe + sd * t.logRd) * overCdCd;
            const Batch I4 = (f.xiOverRd * sdcd + Batch(2.0) * t.a) * overCdCd;
            const Batch uxStrike = a3 * sd * (f.xiOverRd * cd + I4 * sd) - t.theta - f.q * f.xiY11;
            const Batch uyStrike =
                a3 * (f.yOverRd * sdcd + sd * sd * (t.logRd + I3 * sd)) - f.q * (f.overR * cd + qY11 * sd);
            const Batch uxDip = a3 * I3 * sdcd - f.q * f.overR;
            const Batch uyDip = -f.q * f.yX11 - t.theta * cd - a3 * sdcd * (f.xiOverRd * cd + I4 * sd);
            clear = clear && Round(strike * uxStrike + dip * uxDip, noise, u.ux);
            clear = clear && Round(strike * uyStrike + dip * uyDip, noise, u.uy);
        }
        return clear;
    }

    template <bool kHorizontal>
    static Mask StoreVertical(const FiniteKernelSource& s, const CornerSums& f, const Transcendentals& t,
                              const SurfaceDisplacements& u) noexcept {
        const Batch sd(s.sd), a3(s.a3), strike(s.strikeSlip), dip(s.dipSlip), noise(s.noise);
        const Batch uzStrike = a3 * f.yOverRd - f.q * f.overR * sd;  // the square of the sine is 1
        const Batch uzDip = -f.q * f.dX11 - t.theta * sd;
        Mask clear = Round(strike * uzStrike + dip * uzDip, noise, u.uz);
        if constexpr (kHorizontal) {
            const Batch half(0.5);
            const Batch I3 = (f.etaTerm - t.logRe) * half;
            const Batch uxStrike = a3 * f.xiTerm * half - t.theta - f.q * f.xiY11;
            const Batch uyStrike = a3 * (t.logRd + I3 * sd) - f.q * f.q * f.y11 * sd;
            const Batch uxDip = -f.q * f.overR;
            const Batch uyDip = -f.q * f.yX11;
            clear = clear && Round(strike * uxStrike + dip * uxDip, noise, u.ux);
            clear = clear && Round(strike * uyStrike + dip * uyDip, noise, u.uy);
        }
        return clear;
    }

    /// Okada (1992), Table 2, part B, at z = 0, where c = d.
    template <bool kHorizontal>
    static Mask PointStep(const PointKernelSource& s, const SurfacePoints& in, const SurfaceDisplacements& u) noexcept {
        const Batch sd(s.sd), cd(s.cd), two(2.0), three(3.0);
        const Batch x = ZeroIfTiny(Math::Widened(in.x)), y = ZeroIfTiny(Math::Widened(in.y)),
                    d = ZeroIfTiny(Math::Widened(in.depth));
        const Batch p = y * cd + d * sd;
        const Batch q = y * sd - d * cd;
        const Batch x2 = x * x, y2 = y * y;
        const Batch R2 = x2 + y2 + d * d;
        const Batch R = xsimd::sqrt(R2);
        const Batch rd = R + d;
        const Mask regular = (rd >= Batch(kKernelEpsilon)) && (R < Batch(kKernelLargest));

        const Batch inverse = Math::Inverse(R * rd);
        const Batch overR = rd * inverse;
        const Batch overR2 = overR * overR, overR3 = overR2 * overR;
        const Batch overRd = R * inverse;
        const Batch qr = three * q * overR3 * overR2;
        const Batch along = s.strikePotency * x + s.dipPotency * p;  // of the terms with q in front
        const Batch strike(s.strikePotency * s.a3 * s.sd), dip(s.dipPotency * s.a3 * s.sd * s.cd);
        const Batch twoRd = (two * R + d) * overR3 * overRd * overRd;
        const Batch I4 = -(x * y) * twoRd;
        const Batch I5 = inverse - x2 * twoRd;
        Math::Round((dip * I5 - strike * I4 - d * along * qr) * Batch(kKernelOverTwoPi), u.uz);
        if constexpr (kHorizontal) {
            const Batch g1 = inverse * overRd;
            const Batch g2 = (three * R + d) * overR3 * overRd * overRd * overRd;
            const Batch I1 = y * (g1 - x2 * g2);
            const Batch I2 = x * (g1 - y2 * g2);
            const Batch I3 = x * overR3 - I2;
            Math::Round((dip * I3 - strike * I1 - x * along * qr) * Batch(kKernelOverTwoPi), u.ux);
            Math::Round((dip * I1 - strike * I2 - y * along * qr) * Batch(kKernelOverTwoPi), u.uy);
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
