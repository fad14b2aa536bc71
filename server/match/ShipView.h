#pragma once

#include "server/match/Ship.h"

namespace practice {

/// What everyone in the match sees of a living ship: what the server tells every client, and what a client
/// can conclude from it. Bots know no more than this.
struct ShipView
{
    ObjectId id = noObject;
    Team team = Team::red;
    Vector3 position;
    Vector3 velocity;  ///< units/s; two states tell it
    Quaternion orientation;
    float health = 0.0F;
    float shownFor = 0.0F;  ///< seconds since it appeared
    bool newcomer = false;  ///< appeared for the first time, under an id nobody knew
    bool guest = false;     ///< its name is a guest's, not one of the bots'
    bool peaceful = true;   ///< no shot has left its nose since it appeared
};

inline ShipView viewOf(const Ship& ship)
{
    return {ship.id,     ship.team,     ship.position, ship.velocity, ship.orientation,
            ship.health, ship.shownFor, ship.newcomer, ship.human,    !ship.fired};
}

}  // namespace practice
