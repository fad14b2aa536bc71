#pragma once

#include "math/Vector3.h"

#include <cstddef>
#include <cstdint>

/// The team scores, and the teams' starting points.
///
/// A singleton, created on first use and never destroyed; main thread only. Positions in world units.
class General
{
public:
    enum Mode : std::int32_t
    {
        RANDOM = 0,  ///< a random point of the team's box, from the C library's generator
        GRID = 1,    ///< the next slot of a grid in a box that both teams share
        FIXED = 2,   ///< one point per team; any other number means the same
    };

    static constexpr Vector3 blueBase{-500.0F, 0.0F, 0.0F};  ///< FIXED point, and centre of the RANDOM box
    static constexpr Vector3 redBase{500.0F, 0.0F, 0.0F};
    static constexpr Vector3 teamBox{1.0F, 100.0F, 100.0F};  ///< size of each team's RANDOM box
    static constexpr Vector3 gridCentre{0.0F, 0.0F, 0.0F};   ///< the GRID box, which both teams share
    static constexpr Vector3 gridBox{500.0F, 200.0F, 200.0F};

    static General* instance;
    static General* getInstance();

    Vector3 blueStart();
    Vector3 redStart();

    /// A point of the box. `random`: on a lattice of 0.01 units, drawn with rand(), which is seeded by
    /// `seed`; seed 0 seeds it once from the clock. Not `random`: gridPoint() of slot `seed` for the scene's
    /// players.
    Vector3 getStartingPointWithin(Vector3 centre, Vector3 size, bool random, int seed);

    /// Slot number `slot` of a grid over the box, counted along x, then y, then z, from the lower corner.
    /// The grid has about one cell per player, in the proportions of the box. Pure: any thread may call it.
    static Vector3 gridPoint(Vector3 centre, Vector3 size, int slot, std::size_t players);
    /// The same of a grid with about `n` cells along x. Needs no function of the C library.
    static Vector3 gridCell(Vector3 centre, Vector3 size, int slot, int n);

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
