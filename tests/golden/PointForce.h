#pragma once

#include <array>

#include "golden/Field.h"

namespace tidora::golden {

/// Displacement and gradient at `at` by a unit point force at `force`, one motion each for a force along x, y and z, in
/// a half-space z <= 0 with a free surface and unit rigidity.
///
/// R. D. Mindlin (1936), Force at a point in the interior of a semi-infinite solid, Physics 7, 195-202. With the force
/// on the surface these are the solutions of Boussinesq and Cerruti (K. L. Johnson, Contact Mechanics, 1985, chapter
/// 3). Only the displacements are written down; the gradient is carried along with them.
[[nodiscard]] std::array<Motion, 3> PointForceMotions(const Medium& medium, const Vec3& force, const Vec3& at);

}  // namespace tidora::golden
