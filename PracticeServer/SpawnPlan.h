#pragma once

#include "PracticeServer/Random.h"
#include "PracticeServer/Ship.h"

#include <vector>

namespace practice {

/// Where a ship of this team enters the match, clear of the living ships.
///
/// A new player's view looks along +z whatever the server says. Humans therefore start at a negative
/// z, on their team's side, with the fight around the origin in view; bots start between the origin
/// and their carrier.
Vector3 spawnPoint(const Ship& ship, const std::vector<Ship>& ships, Random& random);

}  // namespace practice
