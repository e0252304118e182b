#pragma once

// The batched finite source.
// A template over the lane type, for sources that are compiled for one instruction set each. Every function is a member
// of it: none may be shared with code that runs on any machine, and none of the standard library is used.
// Symbols as in CornerSums.h.
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

#include <cstddef>
#include <cstdint>

#include "okada/batch/CornerSums.h"
#include "okada/batch/KernelSteps.h"

namespace tidora {

template <typename Lanes>
class FiniteKernel {
public:
    template <bool kHorizontal, bool kVertical>
    static std::size_t Run(const FiniteKernelSource& s, const SurfacePoints& points, const SurfaceDisplacements& out,
                           std::uint16_t* singular) noexcept {
        return KernelSteps<Lanes>::template ForEach<kHorizontal, Sums>(
            points, out, singular,
            [&s](const SurfacePoints& in, Sums& sums) {
                CornerKernel<Lanes>::template SumCorners<kHorizontal, kVertical>(s, in, sums);
            },
            [&s](const Sums& sums, const SurfaceDisplacements& u) {
                return Lanes::Or(sums.singular, Lanes::Not(Finish<kHorizontal, kVertical>(s, sums, u)));
            });
    }

private:
    using Math = LaneMath<Lanes>;
    using Doubles = typename Lanes::Doubles;
    using Mask = typename Lanes::Mask;
    using Sums = CornerSums<Lanes>;

    /// Rounds a component into `rounded`. True in the lanes where it stands clear of the scalar routine's own noise;
    /// not where it is not a number.
    static Mask Round(Doubles values, Doubles noise, float* rounded) noexcept {
        Lanes::StoreRounded(rounded, values);
        return Lanes::AtLeast(Lanes::Abs(values), noise);
    }

    /// Theta(1,1) - Theta(1,2) - Theta(2,1) + Theta(2,2) from the argument of the product of all four numbers. Each
    /// lies within (-pi/2, pi/2), the differences of both pairs within (-pi, pi): the whole misses a turn just when
    /// both have one sign and it has the other.
    static Doubles Unwound(Doubles argument, const Sums& f) noexcept {
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
    static Mask Finish(const FiniteKernelSource& s, const Sums& f, const SurfaceDisplacements& u) noexcept {
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
    static Mask StoreInclined(const FiniteKernelSource& s, const Sums& f, const Transcendentals& t,
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
    static Mask StoreVertical(const FiniteKernelSource& s, const Sums& f, const Transcendentals& t,
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
};

}  // namespace tidora
