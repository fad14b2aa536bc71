#pragma once

#include "math/Vector3.h"

#include <optional>

namespace practice {

// The carriers' hulls: a few boxes around the model that clients draw at the teams' bases. Shots end at them,
// ships slide along them. A runway's deck lies 5 units below its base.

/// The way by which a sphere leaves the hulls; zero if it touches none. From deep inside it takes several.
Vector3 wayOutOfHulls(const Vector3& centre, float radius);

/// The share of a straight motion, in [0, 1], at which it meets a hull; nothing if it meets none.
std::optional<float> hullContact(const Vector3& from, const Vector3& motion);

}  // namespace practice
