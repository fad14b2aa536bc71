#pragma once

#include "server/match/Ship.h"

#include <optional>

namespace practice {

struct Shot
{
    ObjectId id = noObject;
    ObjectId shooter = noObject;  ///< may have left the match since
    Team team = Team::red;
    Vector3 position;
    Vector3 velocity;
    float age = 0.0F;  ///< seconds since it left the muzzle
};

/// The shot that leaves the ship's muzzle now.
Shot shotFrom(const Ship& ship, ObjectId id, const Rules& rules);

/// When, as a share of the step in [0, 1], two bodies that both move in straight lines come within
/// `reach` of each other; nothing if they do not. `offset` is their distance vector at the start,
/// `motion` how it changes over the step.
std::optional<float> contactTime(Vector3 offset, Vector3 motion, float reach);

}  // namespace practice
