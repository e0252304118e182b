#include "globe/GlobeFrame.h"

namespace tidora {

GlobeFrame MakeGlobeFrame(double lonDeg, double latDeg) noexcept {
    const Parallel p = ParallelOf(latDeg);
    const Meridian m = MeridianOf(lonDeg);
    return {
        PlaceOn(p, m),      -m.sine, m.cosine, -p.sine * m.cosine, -p.sine * m.sine, p.cosine, 1.0 / p.meridianRadius,
        1.0 / p.primeRadius};
}

}  // namespace tidora
