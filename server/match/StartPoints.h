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

    /// The ship's next starting point, or the nearest place ahead of it that is clear of all living ships and
    /// the hulls. `ships` are all ships of the match: a grid has about one cell for each. A bot starts a
    /// match in its fight, except in a grid, which lies between the carriers.
    Vector3 next(const Ship& ship, const std::vector<Ship>& ships, Random& random);

private:
    General::Mode mode;
    int blueSlot = 0;  ///< the grid's slots taken last: blue has the even ones, red the odd ones
    int redSlot = 1;
};

}  // namespace practice
