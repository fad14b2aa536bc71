#pragma once

#include "server/match/Random.h"
#include "server/match/Ship.h"

#include <vector>

namespace practice {

/// The starting points of one match's teams, laid out as the client's General does.
class StartPoints
{
public:
    explicit StartPoints(General::Mode mode_) : mode(mode_) {}

    /// The team's next starting point, or the nearest place ahead of it that is clear of all living ships.
    /// `ships` are all ships of the match: a grid has about one cell for each.
    Vector3 next(Team team, const std::vector<Ship>& ships, Random& random);

    /// A place near the middle of a fight, clear of all living ships, for a bot that is there when a match
    /// starts. A grid has none of them: its ships meet between the carriers.
    Vector3 onPatrol(const Vector3& middle, Team team, const std::vector<Ship>& ships, Random& random);

private:
    General::Mode mode;
    int blueSlot = 0;  ///< the grid's slots taken last: blue has the even ones, red the odd ones
    int redSlot = 1;
};

}  // namespace practice
