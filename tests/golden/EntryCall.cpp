#include "golden/EntryCall.h"

#include "okada/DC3D.h"

namespace tidora::golden {

namespace {

EntryResult Untouched() {
    EntryResult result;
    result.u.fill(7.0F);
    result.derivatives.fill(7.0F);
    result.iret = 7;
    return result;
}

}  // namespace

EntryResult Call(const FiniteCall& a) {
    EntryResult r = Untouched();
    auto& d = r.derivatives;
    dc3d_(&a.alpha, &a.x, &a.y, &a.z, &a.depth, &a.dip, &a.al1, &a.al2, &a.aw1, &a.aw2, a.slip.data(), &a.slip[1],
          &a.slip[2], r.u.data(), &r.u[1], &r.u[2], d.data(), &d[1], &d[2], &d[3], &d[4], &d[5], &d[6], &d[7], &d[8],
          &r.iret);
    return r;
}

EntryResult Call(const PointCall& a) {
    EntryResult r = Untouched();
    auto& d = r.derivatives;
    const auto& pot = a.potency;
    dc3d0_(&a.alpha, &a.x, &a.y, &a.z, &a.depth, &a.dip, pot.data(), &pot[1], &pot[2], &pot[3], r.u.data(), &r.u[1],
           &r.u[2], d.data(), &d[1], &d[2], &d[3], &d[4], &d[5], &d[6], &d[7], &d[8], &r.iret);
    return r;
}

}  // namespace tidora::golden
