#include "PracticeServer/SpawnPlan.h"

#include <algorithm>
#include <limits>

namespace practice {

namespace {

constexpr int candidates = 6;  ///< enough to find room among dozens of ships

Vector3 candidate(const Ship& ship, Random& random)
{
    const float side = ship.team == Team::blue ? -1.0F : 1.0F;
    // One draw per statement: the order in which arguments are evaluated is not fixed.
    const float x = ship.human ? random.between(60.0F, 80.0F) : random.between(120.0F, 160.0F);
    const float y = ship.human ? random.between(-10.0F, 10.0F) : random.between(-50.0F, 50.0F);
    const float z = ship.human ? random.between(-150.0F, -120.0F) : random.between(-70.0F, 70.0F);
    return {side * x, y, z};
}

float roomAround(const Vector3& point, const std::vector<Ship>& ships)
{
    float room = std::numeric_limits<float>::max();
    for (const Ship& other : ships) {
        if (other.alive) {
            room = std::min(room, point.distanceSquared(other.position));
        }
    }
    return room;
}

}  // namespace

Vector3 spawnPoint(const Ship& ship, const std::vector<Ship>& ships, Random& random)
{
    Vector3 best = candidate(ship, random);
    for (int i = 1; i < candidates; ++i) {
        const Vector3 next = candidate(ship, random);
        if (roomAround(next, ships) > roomAround(best, ships)) {
            best = next;
        }
    }
    return best;
}

}  // namespace practice
