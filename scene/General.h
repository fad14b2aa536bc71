#pragma once

#include "math/Vector3.h"

#include <cstdint>

/// The team scores, and where something of a team starts.
///
/// A singleton, created on first use and never destroyed; main thread only. Positions in world units.
class General
{
public:
    enum Mode : std::int32_t
    {
        RANDOM = 0,  ///< a random point of the team's box, from the C library's generator
        GRID = 1,    ///< the next slot of a grid in a box that both teams share
        FIXED = 2,   ///< one point per team; so does any other number
    };

    static General* instance;
    static General* getInstance();

    Vector3 blueStart();
    Vector3 redStart();

    /// A point of the box. `random`: on a grid of 0.01 units, any point, with rand() seeded by `seed`, or
    /// once by the clock where that is 0. Otherwise slot number `seed` of a grid sized for the scene's
    /// present number of players, counted along x, then y, then z, from the lower corner.
    Vector3 getStartingPointWithin(Vector3 centre, Vector3 size, bool random, int seed);

    std::int32_t redTeamScore = 0;
    std::int32_t blueTeamScore = 0;
    std::int32_t mode = FIXED;
    bool seeded = false;        ///< whether rand() has been seeded from the clock
    std::int32_t blueSlot = 0;  ///< the slots taken last: blue has the even ones, red the odd ones
    std::int32_t redSlot = 1;

private:
    Vector3 startOf(Vector3 fixedPoint, std::int32_t& slot);
    void seedGenerator(int seed);
};
