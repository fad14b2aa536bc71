#pragma once

#include "scene/General.h"

#include <cstdint>

namespace practice {

enum class Difficulty : std::uint8_t
{
    easy,
    normal,
    hard
};

/// The choices of a match's host. Rules holds all other numbers.
struct MatchSettings
{
    std::uint32_t seed = 1;  ///< the same seed and the same input of the players give the same match
    Difficulty difficulty = Difficulty::normal;  ///< of the bots
    General::Mode spawn = General::Mode::FIXED;  ///< layout of the teams' starting points
    int scoreLimit = 50;                         ///< team kills that end a match; 0: none
    int timeLimit = 600;                         ///< seconds after which a match ends; 0: never
    bool friendlyFire = false;                   ///< whether shots also hit the shooter's team
};

/// The numbers of flight, weapons and life.
///
/// Units: world units, seconds, radians, hit points. A match keeps its own copy, so two matches
/// with different rules can run side by side.
struct Rules
{
    // Flight.
    float thrust = 60.0F;     ///< units/s² along the sum of the pressed directions
    float maxSpeed = 75.0F;   ///< units/s; 3.75 per snapshot, below the 10 at which clients snap
    float damping = 0.5F;     ///< share of the speed lost per second
    float turnRate = 3.0F;    ///< rad/s towards the requested orientation: half a turn in about a second
    float shipRadius = 2.5F;  ///< units that keep a ship's centre off a carrier's hull

    // The border, a sphere around the origin. A ship beyond it is pushed back to the nearest fight.
    float borderRadius = 800.0F;  ///< units; both carriers lie inside
    float borderDepth = 120.0F;   ///< units beyond the border over which the push grows
    float borderPush = 100.0F;    ///< units/s² at most: more than thrust and damping together
    float returnRadius = 120.0F;  ///< units from the fight's middle, where the push lets go

    // Weapons.
    float reloadTime = 0.25F;     ///< seconds between two shots of one ship
    float shotSpeed = 220.0F;     ///< units/s on top of the shooter's own velocity
    float shotRange = 660.0F;     ///< units; a miss ends far from the fight, where its explosion is a speck
    float muzzleDistance = 4.0F;  ///< units before the ship's centre
    float hitRadius = 4.5F;       ///< sphere around a ship's centre, a little larger than the hull
    float shotDamage = 12.5F;     ///< eight hits for a kill

    // Life and death.
    float fullHealth = 100.0F;
    float respawnTime = 4.0F;   ///< seconds between death and return
    float intermission = 6.0F;  ///< seconds without ships between two matches
};

}  // namespace practice
