#pragma once

#include "okada/DC3D.h"
#include "okada/PartTable.h"

namespace tidora {

// The scalar sources with all their state in arguments. The extern "C" routines pass the module-wide blocks, everyone
// else blocks of his own: these functions may run in several threads. The batch takes them at its singular points, and
// the tests hold it to them.

/// Medium and dip (degrees) in the form of the block c0_; see dccon0_.
[[nodiscard]] TidoraBlockC0 MediumOf(double alpha, double dip) noexcept;

/// Station geometry of a point source in the form of the block c1_; see dccon1_. Sets tiny co-ordinates to 0.
void SetStation(const TidoraBlockC0& m, double& x, double& y, double& d, TidoraBlockC1& v) noexcept;

/// Station geometry of a corner in the form of the block c2_; see dccon2_. Sets tiny co-ordinates to 0.
void SetCorner(double sd, double cd, double& xi, double& eta, double& q, bool onXiExtension, bool onEtaExtension,
               TidoraBlockC2& c) noexcept;

/// Dislocations of a rectangle (m) or potencies of a point (m^3).
struct Dislocation {
    double strikeSlip = 0.0;
    double dipSlip = 0.0;
    double tensile = 0.0;
    double inflation = 0.0;  ///< point source only
};

/// Part B of a corner of a rectangle, displacement only: Okada (1992), Table 6, times the dislocations, divided by 2
/// pi. The same values as u[0..2] of ub_.
[[nodiscard]] Row CornerDisplacement(const TidoraBlockC0& m, const TidoraBlockC2& c, double xi, double eta, double q,
                                     const Dislocation& slip) noexcept;

/// Part B of a point source, displacement only: Okada (1992), Table 2, times the potencies, divided by 2 pi. The same
/// values as u[0..2] of ub0_.
[[nodiscard]] Row PointDisplacement(const TidoraBlockC0& m, const TidoraBlockC1& v, double x, double y, double d,
                                    double z, const Dislocation& potency) noexcept;

/// A rectangle and a point of observation, as dc3d_ takes them: z <= 0.
struct FinitePoint {
    float x, y, z, depth;
    float al1, al2, aw1, aw2;
};

/// dc3d_ without its status and its derivatives. True at a singular point, `u` being unchanged. m: the medium; c: work
/// space.
[[nodiscard]] bool FiniteSurfaceSource(const TidoraBlockC0& m, const FinitePoint& at, const Dislocation& slip,
                                       TidoraBlockC2& c, Row& u) noexcept;

/// dc3d0_ without its status and its derivatives; z <= 0. True at the source itself, `u` being unchanged. v: work
/// space.
[[nodiscard]] bool PointSurfaceSource(const TidoraBlockC0& m, float x, float y, float z, float depth,
                                      const Dislocation& potency, TidoraBlockC1& v, Row& u) noexcept;

}  // namespace tidora
