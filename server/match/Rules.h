#pragma once

namespace practice {

/// The numbers of flight, weapons and life.
///
/// Units: world units, seconds, radians, hit points. A match keeps its own copy, so two matches
/// with different rules can run side by side.
struct Rules
{
    // Flight.
    float thrust = 60.0F;         ///< units/s² along the pressed directions together
    float maxSpeed = 75.0F;       ///< units/s; 3.75 per snapshot, below the 10 at which clients snap
    float damping = 0.5F;         ///< share of the speed lost per second without thrust
    float turnRate = 3.0F;        ///< rad/s towards the requested orientation: half a turn in about a second
    float borderRadius = 900.0F;  ///< from the origin; ships beyond are pushed back, both carriers lie inside
    float borderSpring = 2.0F;    ///< units/s² per unit beyond: balances full thrust 30 units outside
    float borderLimit = 1000.0F;  ///< no ship ever gets farther out than this

    // Weapons.
    float reloadTime = 0.25F;     ///< seconds between two shots of one ship
    float shotSpeed = 220.0F;     ///< units/s on top of the shooter's own velocity
    float shotRange = 660.0F;     ///< carries misses out of the fight, so that their end is a speck far away
    float muzzleDistance = 4.0F;  ///< in front of the ship's centre
    float hitRadius = 4.5F;       ///< sphere around a ship's centre, a little larger than the hull
    float shotDamage = 12.5F;     ///< eight hits for a kill

    // Life and death.
    float fullHealth = 100.0F;
    float respawnTime = 4.0F;   ///< seconds between death and return
    float intermission = 6.0F;  ///< seconds between the end of a match, when all ships vanish, and the next
};

}  // namespace practice
