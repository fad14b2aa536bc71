#include "PracticeServer/StartPoints.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace practice {

namespace {

constexpr float room = 14.0F;  ///< units between ships that have just started; a ship is 4 long

bool isClear(const Vector3& place, const std::vector<Ship>& ships)
{
    return std::none_of(ships.begin(), ships.end(), [&](const Ship& other) {
        return other.alive && place.distanceSquared(other.position) < room * room;
    });
}

}  // namespace

Vector3 StartPoints::next(Team team, Random& random)
{
    General& general = *General::getInstance();
    general.mode = mode;
    general.blueSlot = blueSlot;
    general.redSlot = redSlot;
    general.seeded = true;  // by us, not by the clock
    std::srand(random.next());
    const Vector3 start = team == Team::blue ? general.blueStart() : general.redStart();
    blueSlot = general.blueSlot;
    redSlot = general.redSlot;
    return start;
}

Vector3 clearPlace(const Vector3& wanted, const std::vector<Ship>& ships)
{
    // Sideways and upwards, ring after ring; a carrier may be right below.
    static const std::array<Vector3, 5> directions = {Vector3(1, 0, 0), Vector3(-1, 0, 0), Vector3(0, 1, 0),
                                                      Vector3(0.7F, 0.7F, 0), Vector3(-0.7F, 0.7F, 0)};
    if (isClear(wanted, ships)) {
        return wanted;
    }
    for (int ring = 1;; ++ring) {
        for (const Vector3& direction : directions) {
            const Vector3 place = wanted + direction * (room * static_cast<float>(ring));
            if (isClear(place, ships)) {
                return place;
            }
        }
    }
}

}  // namespace practice
