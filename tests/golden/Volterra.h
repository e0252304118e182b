#pragma once

#include "golden/HalfSpaceSource.h"

namespace tidora::golden {

/// Displacement at `at` (z <= 0, off the source) by Volterra's formula: the slip times the traction on the source by a
/// unit point force at the observation point, integrated over the source. With Mindlin's force it shares no formula
/// with the closed forms. u_k = integral of slip_i n_j sigma_ij^(k): J. A. Steketee (1958), Can. J. Phys. 36, 192-205.
/// One displacement for a unit slip of each type, whatever slip the source has. Quadrature to 1e-13.
[[nodiscard]] std::array<Vec3, 3> VolterraDisplacements(const Rectangle& source, const Vec3& at);

/// The same for the slip that the source has.
[[nodiscard]] Vec3 VolterraDisplacement(const Rectangle& source, const Vec3& at);

/// The same of a point source: slip times area is the potency. Inflation: potency times the dilatation by the force.
[[nodiscard]] Vec3 VolterraDisplacement(const PointSource& source, const Vec3& at);

}  // namespace tidora::golden
