#include "server/match/StartPoints.h"

#include <algorithm>
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
    constexpr int rowLength = 8;  // places along the runway, that is along +z, until it ends
    for (int i = 0;; ++i) {
        const int row = i / rowLength;
        const int column = i % rowLength;
        const Vector3 place =
            wanted + Vector3(0.0F, room * static_cast<float>(row), room * static_cast<float>(column));
        if (isClear(place, ships)) {
            return place;
        }
    }
}

}  // namespace practice
