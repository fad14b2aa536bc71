#pragma once

#include "math/Quaternion.h"
#include "math/Vector3.h"
#include "server/match/Rules.h"

#include <cstdint>
#include <string>

namespace practice {

using ObjectId = std::uint64_t;

constexpr ObjectId noObject = 0;

enum class Team : std::uint8_t
{
    red,
    blue
};

/// The control bits of a client's update. A ship's nose points along its +z, up is +y. Its right is -x,
/// because the viewer looks along +z.
namespace control {
constexpr std::uint32_t forward = 1;
constexpr std::uint32_t backward = 2;
constexpr std::uint32_t right = 4;
constexpr std::uint32_t left = 8;
constexpr std::uint32_t up = 16;
constexpr std::uint32_t down = 32;
constexpr std::uint32_t fire = 0x40000000;
}  // namespace control

/// The input of a ship's pilot, human or bot.
struct ShipInput
{
    Quaternion orientation;  ///< unit; the ship turns towards it
    std::uint32_t controls = 0;
};

struct Ship
{
    ObjectId id = noObject;
    std::string name;
    Team team = Team::red;
    bool human = false;
    bool alive = false;
    Vector3 position;
    Vector3 velocity;  ///< units/s
    Quaternion orientation;
    float health = 0.0F;
    std::int32_t score = 0;     ///< kills of this match
    std::int32_t deaths = 0;    ///< in this match
    float reload = 0.0F;        ///< seconds until it may fire again
    float respawnIn = 0.0F;     ///< seconds until a dead ship returns
    float sinceSpawn = 0.0F;    ///< seconds since it last appeared
    bool firstLife = true;      ///< in its first life of its first match
    bool firedInLife = false;   ///< has fired since it last appeared
    float borderGrip = 0.0F;    ///< share of the border's full push on the ship; in [0, 1]
    Team fightsAt = Team::red;  ///< a bot fights near this team's carrier
    ShipInput input;
};

/// The middle of the fight near a team's carrier, in front of the carrier's bow.
Vector3 fightMiddle(Team carrier);

/// Moves a ship by one step of `dt` seconds: turn, thrust, damping, speed limit, border, hulls.
void flyShip(Ship& ship, const Rules& rules, float dt);

/// A turn about a unit axis by at most half a radian.
Quaternion smallTurn(const Vector3& axis, float angle);

/// Turns `from` towards `to` on the shorter arc, by at most `maxAngle` radians, itself at most 0.5; unit
/// length.
Quaternion turnTowards(const Quaternion& from, const Quaternion& to, float maxAngle);

/// The upright orientation whose nose points along `direction`, of any length but zero.
Quaternion lookAlong(const Vector3& direction);

/// The unit direction of an orientation's nose.
Vector3 noseOf(const Quaternion& orientation);

}  // namespace practice
