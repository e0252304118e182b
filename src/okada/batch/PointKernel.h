#pragma once

// The batched point source; symbols as in PointSurfacePart.cpp.
// A template over the lane type, for sources that are compiled for one instruction set each. Every function is a member
// of it: none may be shared with code that runs on any machine, and none of the standard library is used.

#include <cstddef>
#include <cstdint>

#include "okada/batch/KernelSteps.h"
#include "okada/batch/SurfaceKernels.h"

namespace tidora {

template <typename Lanes>
class PointKernel {
public:
    template <bool kHorizontal>
    static std::size_t Run(const PointKernelSource& s, const SurfacePoints& points, const SurfaceDisplacements& out,
                           std::uint16_t* singular) noexcept {
        return KernelSteps<Lanes>::template ForEach<kHorizontal, SurfacePoints>(
            points, out, singular, [](const SurfacePoints& in, SurfacePoints& kept) { kept = in; },
            [&s](const SurfacePoints& in, const SurfaceDisplacements& u) { return PointStep<kHorizontal>(s, in, u); });
    }

private:
    using Doubles = typename Lanes::Doubles;
    using Mask = typename Lanes::Mask;

    static Doubles ZeroIfTiny(Doubles value) noexcept {
        return Lanes::Select(Lanes::Less(Lanes::Abs(value), Lanes::All(kKernelEpsilon)), Lanes::All(0.0), value);
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

}  // namespace tidora
