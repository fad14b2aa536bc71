#pragma once

#include "server/match/Ship.h"

namespace practice {

/// The middle of the fight around a team's carrier: it swings to and fro before the carrier's bow, in view of
/// who has just started there. `time` in seconds.
Vector3 battleFront(Team carrier, float time);

constexpr float frontRadius = 65.0F;  ///< units from its middle within which the fight stays

}  // namespace practice
