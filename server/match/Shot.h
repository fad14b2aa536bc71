#pragma once

#include "server/match/Ship.h"

#include <optional>
#include <vector>

namespace practice {

struct Shot
{
    ObjectId id = noObject;
    ObjectId shooter = noObject;  ///< may have left the match since
    Team team = Team::red;
    Vector3 position;
    Vector3 velocity;  ///< units/s
    float age = 0.0F;  ///< seconds since it left the muzzle
};

/// A new shot at the ship's muzzle.
Shot shotFrom(const Ship& ship, ObjectId id, const Rules& rules);

/// The ship that the shot meets first in the step of `dt` seconds, or null. The ships have moved in this step
/// already, the shot has not. A shot never hits its shooter, and its own team only under friendly fire. `end`
/// is the share of the step at which something else stops the shot.
Ship* firstHit(const Shot& shot, std::vector<Ship>& ships, const Rules& rules, bool friendlyFire, float dt,
               std::optional<float> end);

/// The time at which two bodies come within `reach` of each other, as a share of the step in [0, 1], or
/// nothing. Both move in straight lines. `offset` is the vector between them at the start, `motion` is its
/// change over the step.
std::optional<float> contactTime(const Vector3& offset, const Vector3& motion, float reach);

}  // namespace practice
