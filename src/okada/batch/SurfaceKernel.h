#pragma once

// The batched surface kernels, one template for all lane types. Included by the sources that are compiled for one
// instruction set each. Every function is a member of that template: none may be shared with code that runs on any
// machine, and none of the standard library is used.
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
// and for cos(delta) = 0, where Table 6 has forms of its own, with I3 = [eta/(R + d~) + y~ q/(R + d~)^2 - ln(R + eta)]
// / 2, I4 = xi y~ / (2 (R + d~)^2),
//   strike  uz = -q sin/R + a3 y~ sin^2/(R + d~)
//           ux = -xi q Y11 - Theta + a3 I4 sin^2
//           uy = -q^2 Y11 sin + a3 sin^2 (ln(R + d~) + I3 sin)
//   dip     uz = -eta q X11 sin - Theta sin,   ux = -q/R,   uy = -q^2 X11 sin.

#include <cstdint>

#include "okada/batch/SurfaceKernels.h"
#include "simd/LaneMath.h"

namespace tidora {

template <typename Lanes>
class SurfaceKernel {
public:
    using Math = LaneMath<Lanes>;
    using Doubles = typename Lanes::Doubles;
    static constexpr std::size_t kLanes = Lanes::kDoubles;

    template <bool kHorizontal, bool kVertical>
    static std::size_t RunFinite(const FiniteKernelSource& s, const SurfacePoints& points,
                                 const SurfaceDisplacements& out, std::uint16_t* singular) noexcept {
        return ForEachStep<kHorizontal, CornerSums>(
            points, out, singular,
            [&s](const SurfacePoints& in, CornerSums& sums) { SumCorners<kHorizontal, kVertical>(s, in, sums); },
            [&s](const CornerSums& sums, const SurfaceDisplacements& u) {
                return Lanes::Or(sums.singular, Lanes::Not(Finish<kHorizontal, kVertical>(s, sums, u)));
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
    using Mask = typename Lanes::Mask;
    using Complex = typename Math::Complex;

    /// Writes the numbers of the lanes of `mask` among the first `lanes`, the first of which has the number `at`;
    /// returns how many.
    static std::size_t Note(const Mask& mask, std::size_t at, std::size_t lanes, std::uint16_t* numbers) noexcept {
        std::size_t count = 0;
        for (unsigned left = Lanes::BitsOf(mask), lane = 0; left != 0 && lane < lanes; left >>= 1U, ++lane) {
            if ((left & 1U) != 0) {
                numbers[count++] = static_cast<std::uint16_t>(at + lane);
            }
        }
        return count;
    }

    /// Steps whose first halves are done before their second halves. A step is a long chain of operations; two shorter
    /// chains, each of many steps, leave the processor fewer gaps. What lies between them, 21 vectors a step, stays in
    /// the first-level cache: 11 KiB for the widest lanes.
    static constexpr std::size_t kGroup = 8;

    /// A step does `kLanes` points: first(points, between) and then second(between, displacements), which returns the
    /// mask of the lanes that it could not do. Their numbers go to `singular`; returns how many. The last step works on
    /// a copy, filled up with zeros: nothing beyond `points.count` is read or written.
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

    static Doubles ZeroIfTiny(Doubles value) noexcept {
        return Lanes::Select(Lanes::Less(Lanes::Abs(value), Lanes::All(kKernelEpsilon)), Lanes::All(0.0), value);
    }

    /// Values at the four corners, [k][j].
    using Corners = Doubles[2][2];

    /// f(1,1) - f(1,2) - f(2,1) + f(2,2). Neighbours along eta first: far from the source their values are the closest.
    static Doubles Sum(const Corners& f) noexcept { return (f[0][0] - f[1][0]) - (f[0][1] - f[1][1]); }
    /// The same with a factor of eta alone, or of xi alone.
    static Doubles SumWithRow(const Doubles (&factor)[2], const Corners& f) noexcept {
        return Lanes::Fnma(factor[1], f[1][0] - f[1][1], factor[0] * (f[0][0] - f[0][1]));
    }
    static Doubles SumWithColumn(const Doubles (&factor)[2], const Corners& f) noexcept {
        return Lanes::Fnma(factor[1], f[0][1] - f[1][1], factor[0] * (f[0][0] - f[1][0]));
    }

    static Complex Product(const Complex& a, const Complex& b) noexcept {
        return {Lanes::Fnma(a.im, b.im, a.re * b.re), Lanes::Fma(a.im, b.re, a.re * b.im)};
    }
    static Complex ProductWithConjugate(const Complex& a, const Complex& b) noexcept {
        return {Lanes::Fma(a.re, b.re, a.im * b.im), Lanes::Fnma(a.re, b.im, a.im * b.re)};
    }

    /// The number whose argument is the corner sum of A. Up to terms that the sum cancels,
    ///     A = -arctan[xi cos / (R (1 + sin) + eta + d~)] = arctan[xi cos / (R (1 - sin) - eta + d~)]:
    /// 2A is the solid angle between the dip line and the vertical at the corner. Of the two denominators the one with
    /// R (1 + |sin|) cannot vanish below the surface, where d~ >= 0. The numerators of the corners of one xi are equal,
    /// so that their difference lies within (-pi/2, pi/2), and the sum of two within (-pi, pi).
    static Complex ArgumentSumOfA(const FiniteKernelSource& s, const Corners& R, const Doubles (&xi)[2],
                                  const Doubles (&eta)[2], const Doubles (&D)[2]) noexcept {
        const Doubles up = Lanes::All(s.sd >= 0.0 ? 1.0 : -1.0),
                      rFactor = Lanes::All(1.0 + (s.sd >= 0.0 ? s.sd : -s.sd));
        Complex pair[2];
        const Doubles rest[2] = {Lanes::Fma(up, eta[0], D[0]), Lanes::Fma(up, eta[1], D[1])};
        for (std::size_t j = 0; j < 2; ++j) {
            const Doubles below[2] = {Lanes::Fma(rFactor, R[0][j], rest[0]), Lanes::Fma(rFactor, R[1][j], rest[1])};
            const Doubles above = xi[j] * Lanes::All(s.cd);
            // The sign of the first form for dips of at least 0, of the second for the others.
            pair[j] = {Lanes::Fma(below[0], below[1], above * above), up * above * (below[0] - below[1])};
        }
        return ProductWithConjugate(pair[0], pair[1]);
    }

    /// ln v(1,1) - ln v(1,2) - ln v(2,1) + ln v(2,2) is the logarithm of this.
    static typename Math::Fraction LogSum(const Corners& v) noexcept { return {v[0][0] * v[1][1], v[0][1] * v[1][0]}; }

    /// What the four corners add up to, before logarithms and arguments are taken.
    struct CornerSums {
        Doubles q;
        Doubles overR, y11, xiY11;       ///< 1/R, Y11, xi Y11
        Doubles dX11, yX11;              ///< d~ X11, y~ X11
        Doubles yOverRd, xiOverRd;       ///< y~ / (R + d~), xi / (R + d~)
        Doubles etaTerm, xiTerm;         ///< vertical: eta/(R+d~) + y~ q/(R+d~)^2, xi y~/(R+d~)^2
        Complex theta, a;                ///< numbers whose arguments are the sums of Theta, but for a turn, and of A
        Doubles lowTurn, highTurn;       ///< which turn it is: the imaginary parts of both pairs of Theta, in order
        typename Math::Fraction rd, re;  ///< of the logarithms
        Mask singular;
    };

    /// Replaces each value by its inverse, for one division: the inverse of the product of all, times the other three.
    static void Invert(Corners& v) noexcept {
        const Doubles first = v[0][0] * v[0][1], second = v[1][0] * v[1][1];
        const Doubles inverse = Lanes::Inverse(first * second);
        const Doubles overFirst = inverse * second, overSecond = inverse * first;
        const Doubles v00 = v[0][0], v10 = v[1][0];
        v[0][0] = overFirst * v[0][1];
        v[0][1] = overFirst * v00;
        v[1][0] = overSecond * v[1][1];
        v[1][1] = overSecond * v10;
    }

    /// R and its sums with xi, eta and d~ are formed as in the scalar routine, operation for operation and unfused:
    /// near the extension of an edge their last bits are all that counts.
    template <bool kHorizontal, bool kVertical>
    // Kept whole: every line takes what the lines above it have in registers. The branches are the four instantiations,
    // not decisions.
    // NOLINTNEXTLINE(readability-function-cognitive-complexity)
    static void SumCorners(const FiniteKernelSource& s, const SurfacePoints& in, CornerSums& sums) noexcept {
        constexpr bool kNeedsRd = kHorizontal || kVertical;
        const Doubles sd = Lanes::All(s.sd), cd = Lanes::All(s.cd);
        const Doubles xi[2] = {Lanes::LoadDifference(in.x, s.al1), Lanes::LoadDifference(in.x, s.al2)};
        const Doubles y = Lanes::LoadWidened(in.y), d = Lanes::LoadWidened(in.depth);
        const Doubles p = y * cd + d * sd;
        const Doubles q = y * sd - d * cd;
        const Doubles q2 = q * q;
        const Doubles sizeOfQ = Lanes::Abs(q);
        const Doubles eta[2] = {p - Lanes::All(s.aw1), p - Lanes::All(s.aw2)};
        const Doubles D[2] = {eta[0] * sd - q * cd, eta[1] * sd - q * cd};

        // The scalar routine takes values below epsilon for 0, and what then vanishes for a special case.
        Doubles least = sizeOfQ;
        for (std::size_t i = 0; i < 2; ++i) {
            least = Lanes::Min(least, Lanes::Min(Lanes::Abs(xi[i]), Lanes::Abs(eta[i])));
        }
        Corners R, rx, re, rd, rxe, inverse;
        for (std::size_t k = 0; k < 2; ++k) {
            const Doubles eta2 = eta[k] * eta[k];
            for (std::size_t j = 0; j < 2; ++j) {
                R[k][j] = Lanes::Root(xi[j] * xi[j] + eta2 + q2);
                rx[k][j] = R[k][j] + xi[j];
                re[k][j] = R[k][j] + eta[k];
                rd[k][j] = R[k][j] + D[k];
                least = Lanes::Min(least, Lanes::Min(rx[k][j], re[k][j]));
                rxe[k][j] = R[k][j] * (rx[k][j] * re[k][j]);
                inverse[k][j] = kNeedsRd ? rxe[k][j] * rd[k][j] : rxe[k][j];
            }
        }
        const Doubles largest = Lanes::Max(Lanes::Max(R[0][0], R[0][1]), Lanes::Max(R[1][0], R[1][1]));
        sums.q = q;
        // What is not a number may get past these, Min and Max taking the other one; it does not get past the noise.
        // The depth of an edge at the surface may come out a little below 0, by the rounding of eta sin - q cos, 1e-9 m
        // at 1e7 m: half the epsilon is between that and a source above the surface.
        const Mask isRegular =
            Lanes::And(Lanes::And(Lanes::AtLeast(least, Lanes::All(kKernelEpsilon)),
                                  Lanes::Less(Lanes::All(-kKernelEpsilon / 2.0), Lanes::Min(D[0], D[1]))),
                       Lanes::Less(largest, Lanes::All(kKernelLargest)));
        sums.singular = Lanes::Not(isRegular);

        // Theta is the argument of |q| R + i xi eta sign(q): with a positive real part it lies within (-pi/2, pi/2), as
        // the arctangent does. Differences of angles are arguments of products with a conjugate number.
        const Doubles signedXi[2] = {Lanes::CopySign(Lanes::All(1.0), q) * xi[0],
                                     Lanes::CopySign(Lanes::All(1.0), q) * xi[1]};
        Complex theta[2][2];
        for (std::size_t k = 0; k < 2; ++k) {
            for (std::size_t j = 0; j < 2; ++j) {
                theta[k][j] = {sizeOfQ * R[k][j], signedXi[j] * eta[k]};
            }
        }
        const Complex first = ProductWithConjugate(theta[0][0], theta[0][1]);
        const Complex second = ProductWithConjugate(theta[1][1], theta[1][0]);
        sums.theta = Product(first, second);
        sums.lowTurn = Lanes::Min(first.im, second.im);
        sums.highTurn = Lanes::Max(first.im, second.im);
        if constexpr (!kVertical) {
            sums.a = ArgumentSumOfA(s, R, xi, eta, D);
        }
        if constexpr (!kVertical || kHorizontal) {
            sums.rd = LogSum(rd);
            sums.re = LogSum(re);
        }

        // From the inverse of the product of all factors, that of each is the product of the others times it.
        Invert(inverse);
        Corners overR, x11, y11, overRd;
        for (std::size_t k = 0; k < 2; ++k) {
            for (std::size_t j = 0; j < 2; ++j) {
                const Doubles overRxe = kNeedsRd ? rd[k][j] * inverse[k][j] : inverse[k][j];
                x11[k][j] = re[k][j] * overRxe;
                y11[k][j] = rx[k][j] * overRxe;
                overR[k][j] = rx[k][j] * x11[k][j];
                if constexpr (kNeedsRd) {
                    overRd[k][j] = rxe[k][j] * inverse[k][j];
                }
            }
        }
        const Doubles Y[2] = {eta[0] * cd + q * sd, eta[1] * cd + q * sd};
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

    /// Rounds a component into `rounded`. True in the lanes where it stands clear of the scalar routine's own noise;
    /// not where it is not a number.
    static Mask Round(Doubles values, Doubles noise, float* rounded) noexcept {
        Lanes::StoreRounded(rounded, values);
        return Lanes::AtLeast(Lanes::Abs(values), noise);
    }

    /// Theta(1,1) - Theta(1,2) - Theta(2,1) + Theta(2,2) from the argument of the product of all four numbers. Each
    /// lies within (-pi/2, pi/2), the differences of both pairs within (-pi, pi): the whole misses a turn just when
    /// both have one sign and it has the other.
    static Doubles Unwound(Doubles argument, const CornerSums& f) noexcept {
        const Doubles zero = Lanes::All(0.0);
        const Mask up = Lanes::And(Lanes::AtLeast(f.lowTurn, zero), Lanes::Less(argument, zero));
        const Mask down = Lanes::And(Lanes::Less(f.highTurn, zero), Lanes::Less(zero, argument));
        return Lanes::Select(up, argument + Lanes::All(kKernelTwoPi),
                             Lanes::Select(down, argument - Lanes::All(kKernelTwoPi), argument));
    }

    /// Corner sums of Theta, A, ln(R + d~) and ln(R + eta).
    struct Transcendentals {
        Doubles theta, a, logRd, logRe;
    };

    /// The second half of a step. True in the lanes that it could do.
    template <bool kHorizontal, bool kVertical>
    static Mask Finish(const FiniteKernelSource& s, const CornerSums& f, const SurfaceDisplacements& u) noexcept {
        Transcendentals t = {};
        if constexpr (kVertical) {
            // Without A, there is one argument to take; the other of the pair costs little.
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

    /// The formulas at the head of this file for cos(delta) != 0, summed over the corners.
    template <bool kHorizontal>
    static Mask StoreInclined(const FiniteKernelSource& s, const CornerSums& f, const Transcendentals& t,
                              const SurfaceDisplacements& u) noexcept {
        const Doubles sd = Lanes::All(s.sd), cd = Lanes::All(s.cd), a3 = Lanes::All(s.a3),
                      strike = Lanes::All(s.strikeSlip), dip = Lanes::All(s.dipSlip), noise = Lanes::All(s.noise);
        const Doubles qY11 = f.q * f.y11;
        const Doubles uzStrike =
            f.q * (qY11 * cd - f.overR * sd) - a3 * Lanes::All(s.sd / s.cd) * (t.logRd - sd * t.logRe);
        const Doubles uzDip = sd * (Lanes::All(2.0) * a3 * t.a - t.theta) - f.q * f.dX11;
        Mask clear = Round(strike * uzStrike + dip * uzDip, noise, u.uz);
        if constexpr (kHorizontal) {
            const Doubles overCdCd = Lanes::All(1.0 / (s.cd * s.cd)), sdcd = Lanes::All(s.sd * s.cd);
            const Doubles I3 = (f.yOverRd * cd - t.logRe + sd * t.logRd) * overCdCd;
            const Doubles I4 = (f.xiOverRd * sdcd + Lanes::All(2.0) * t.a) * overCdCd;
            const Doubles uxStrike = a3 * sd * (f.xiOverRd * cd + I4 * sd) - t.theta - f.q * f.xiY11;
            const Doubles uyStrike =
                a3 * (f.yOverRd * sdcd + sd * sd * (t.logRd + I3 * sd)) - f.q * (f.overR * cd + qY11 * sd);
            const Doubles uxDip = a3 * I3 * sdcd - f.q * f.overR;
            const Doubles uyDip = -f.q * f.yX11 - t.theta * cd - a3 * sdcd * (f.xiOverRd * cd + I4 * sd);
            clear = Lanes::And(clear, Round(strike * uxStrike + dip * uxDip, noise, u.ux));
            clear = Lanes::And(clear, Round(strike * uyStrike + dip * uyDip, noise, u.uy));
        }
        return clear;
    }

    /// The same for cos(delta) = 0.
    template <bool kHorizontal>
    static Mask StoreVertical(const FiniteKernelSource& s, const CornerSums& f, const Transcendentals& t,
                              const SurfaceDisplacements& u) noexcept {
        const Doubles sd = Lanes::All(s.sd), a3 = Lanes::All(s.a3), strike = Lanes::All(s.strikeSlip),
                      dip = Lanes::All(s.dipSlip), noise = Lanes::All(s.noise);
        const Doubles uzStrike = a3 * f.yOverRd - f.q * f.overR * sd;  // the square of the sine is 1
        const Doubles uzDip = -f.q * f.dX11 - t.theta * sd;
        Mask clear = Round(strike * uzStrike + dip * uzDip, noise, u.uz);
        if constexpr (kHorizontal) {
            const Doubles half = Lanes::All(0.5);
            const Doubles I3 = (f.etaTerm - t.logRe) * half;
            const Doubles uxStrike = a3 * f.xiTerm * half - t.theta - f.q * f.xiY11;
            const Doubles uyStrike = a3 * (t.logRd + I3 * sd) - f.q * f.q * f.y11 * sd;
            const Doubles uxDip = -f.q * f.overR;
            const Doubles uyDip = -f.q * f.yX11;
            clear = Lanes::And(clear, Round(strike * uxStrike + dip * uxDip, noise, u.ux));
            clear = Lanes::And(clear, Round(strike * uyStrike + dip * uyDip, noise, u.uy));
        }
        return clear;
    }

    /// Okada (1992), Table 2, part B, at z = 0, where c = d. True in the lanes that it could not do. No corners are
    /// subtracted from each other, so that there is no noise to mind.
    template <bool kHorizontal>
    static Mask PointStep(const PointKernelSource& s, const SurfacePoints& in, const SurfaceDisplacements& u) noexcept {
        const Doubles sd = Lanes::All(s.sd), cd = Lanes::All(s.cd), two = Lanes::All(2.0), three = Lanes::All(3.0);
        const Doubles x = ZeroIfTiny(Lanes::LoadWidened(in.x)), y = ZeroIfTiny(Lanes::LoadWidened(in.y)),
                      d = ZeroIfTiny(Lanes::LoadWidened(in.depth));
        const Doubles p = y * cd + d * sd;
        const Doubles q = y * sd - d * cd;
        const Doubles x2 = x * x, y2 = y * y;
        const Doubles R2 = x2 + y2 + d * d;
        const Doubles R = Lanes::Sqrt(R2);  // not Root: R is 0 at the source itself
        const Doubles rd = R + d;
        const Mask isRegular =
            Lanes::And(Lanes::AtLeast(rd, Lanes::All(kKernelEpsilon)), Lanes::Less(R, Lanes::All(kKernelLargest)));

        // As PointSurfacePart.cpp has them, each fraction from the one inverse of R (R + d): twoRd is the factor g4
        // there.
        const Doubles inverse = Lanes::Inverse(R * rd);
        const Doubles overR = rd * inverse;
        const Doubles overR2 = overR * overR, overR3 = overR2 * overR;
        const Doubles overRd = R * inverse;
        const Doubles qr = three * q * overR3 * overR2;
        const Doubles along = s.strikePotency * x + s.dipPotency * p;  // both kinds of slip share 3 q / R^5
        const Doubles strike = Lanes::All(s.strikePotency * s.a3 * s.sd),
                      dip = Lanes::All(s.dipPotency * s.a3 * s.sd * s.cd);
        const Doubles twoRd = (two * R + d) * overR3 * overRd * overRd;
        const Doubles I4 = -(x * y) * twoRd;
        const Doubles I5 = inverse - x2 * twoRd;
        Lanes::StoreRounded(u.uz, (dip * I5 - strike * I4 - d * along * qr) * Lanes::All(kKernelOverTwoPi));
        if constexpr (kHorizontal) {
            const Doubles g1 = inverse * overRd;
            const Doubles g2 = (three * R + d) * overR3 * overRd * overRd * overRd;
            const Doubles I1 = y * (g1 - x2 * g2);
            const Doubles I2 = x * (g1 - y2 * g2);
            const Doubles I3 = x * overR3 - I2;
            Lanes::StoreRounded(u.ux, (dip * I3 - strike * I1 - x * along * qr) * Lanes::All(kKernelOverTwoPi));
            Lanes::StoreRounded(u.uy, (dip * I1 - strike * I2 - y * along * qr) * Lanes::All(kKernelOverTwoPi));
        }
        return Lanes::Not(isRegular);
    }
};

/// The table of one lane type; called by its source.
template <typename Lanes>
constexpr SurfaceKernels MakeSurfaceKernels() noexcept {
    using Kernel = SurfaceKernel<Lanes>;
    return {{{&Kernel::template RunFinite<false, false>, &Kernel::template RunFinite<false, true>},
             {&Kernel::template RunFinite<true, false>, &Kernel::template RunFinite<true, true>}},
            {&Kernel::template RunPoint<false>, &Kernel::template RunPoint<true>}};
}

}  // namespace tidora
