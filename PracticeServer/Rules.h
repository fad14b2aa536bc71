#pragma once

namespace practice {

/// Every number the rules of a match depend on.
///
/// Units: world units, seconds, radians, hit points. A match keeps its own copy, so two matches
/// with different rules can run side by side.
struct Rules
{
    // Flight.
    float thrust = 45.0F;    ///< units/s² along the pressed directions together
    float maxSpeed = 55.0F;  ///< units/s; 2.75 per snapshot, far below the 10 at which clients snap
    float damping = 0.5F;    ///< share of the speed lost per second without thrust
    float turnRate = 3.0F;   ///< rad/s towards the requested orientation: half a turn in about a second
    float borderRadius =
        600.0F;  ///< from the origin; beyond it ships are pushed back, both carriers lie inside
    float borderSpring =
        2.0F;  ///< units/s² per unit beyond the border: balances full thrust 22 units outside
    float borderLimit = 700.0F;  ///< no ship ever gets farther out than this

    // Weapons.
    float reloadTime = 0.25F;     ///< seconds between two shots of one ship
    float shotSpeed = 220.0F;     ///< units/s on top of the shooter's own velocity
    float shotRange = 660.0F;     ///< carries misses out of the fight, so that their end is a speck far away
    float muzzleDistance = 4.0F;  ///< in front of the ship's centre
    float hitRadius = 4.5F;       ///< sphere around a ship's centre, a little larger than the hull
    float shotDamage = 10.0F;     ///< ten hits for a kill

    // Life and death.
    float fullHealth = 100.0F;
    float respawnTime = 4.0F;   ///< seconds between death and return
    float joinGrace = 22.0F;    ///< seconds in which no bot aims at a player who has just joined
    float respawnGrace = 4.0F;  ///< the same after each return

    // Bots.
    float botFireDistance = 190.0F;  ///< units; farther shots would only decorate
    float botAimError = 0.08F;       ///< rad, largest error on each axis: misses by up to 10 units at 130
    float botHomeRadius =
        140.0F;  ///< the fight stays this close to the origin, in view of who has just joined
};

}  // namespace practice
