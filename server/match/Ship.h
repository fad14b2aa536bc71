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

/// The control bits of a client's update. The ship's nose points along its +z, up is +y; its right
/// is then -x, because the viewer looks along +z.
namespace control {
constexpr std::uint32_t forward = 1;
constexpr std::uint32_t backward = 2;
constexpr std::uint32_t right = 4;
constexpr std::uint32_t left = 8;
constexpr std::uint32_t up = 16;
constexpr std::uint32_t down = 32;
constexpr std::uint32_t fire = 0x40000000;
}  // namespace control

/// What a pilot, human or bot, asks of a ship.
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
    Vector3 velocity;
    Quaternion orientation;
    float health = 0.0F;
    std::int32_t score = 0;   ///< kills of this match
    std::int32_t deaths = 0;  ///< in this match
    float reload = 0.0F;      ///< seconds until the next shot may leave
    float respawnIn = 0.0F;   ///< seconds until a dead ship returns
    float shownFor = 0.0F;    ///< seconds since it last appeared
    bool newcomer = true;     ///< has not died yet since it joined
    bool fired = false;       ///< since it last appeared
    ShipInput input;
};

/// The direction, in the ship's own frame, in which the pressed keys push; zero or unit length.
Vector3 thrustDirection(std::uint32_t controls);

/// Moves a ship by one step of its input: turn, thrust, damping, speed limit, border.
void flyShip(Ship& ship, const Rules& rules, float dt);

}  // namespace practice
