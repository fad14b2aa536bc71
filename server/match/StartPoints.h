#pragma once

#include "scene/General.h"
#include "server/match/Random.h"
#include "server/match/Ship.h"

namespace practice {

/// Where the teams of one match start, as General lays them out.
///
/// General is one for the process, with one count of slots and the C library's generator: each question lends
/// it this match's mode, counts and chance, so that matches do not disturb one another. Only GRID depends on
/// something outside the match: on how many players the process's scene holds.
class StartPoints
{
public:
    explicit StartPoints(General::Mode mode_) : mode(mode_) {}

    Vector3 next(Team team, Random& random);

private:
    General::Mode mode;
    std::int32_t blueSlot = 0;
    std::int32_t redSlot = 1;
};

/// The given starting point, or the next place ahead of it that is clear of all living ships; where a whole
/// row is taken, above it.
Vector3 clearPlace(const Vector3& wanted, const std::vector<Ship>& ships);

}  // namespace practice
