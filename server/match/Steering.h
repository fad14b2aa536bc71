#pragma once

#include "math/Quaternion.h"
#include "math/Vector3.h"

namespace practice {

/// `from` turned towards `to` by at most `maxAngle` radians on the shorter arc; unit length.
Quaternion turnTowards(const Quaternion& from, const Quaternion& to, float maxAngle);

/// The upright orientation whose nose points along `direction` (need not be unit, must not be zero).
Quaternion lookAlong(const Vector3& direction);

/// Where the nose of an orientation points; unit length.
Vector3 noseOf(const Quaternion& orientation);

/// The unit direction in which a shot of the given speed meets a target.
///
/// `offset` and `drift` are the target's position and velocity relative to the shooter, since a shot
/// inherits the shooter's velocity. A target that cannot be caught is aimed at directly.
Vector3 leadDirection(const Vector3& offset, const Vector3& drift, float shotSpeed);

}  // namespace practice
