#include "server/match/StartPoints.h"

#include "server/match/Hull.h"

#include <algorithm>

namespace practice {

namespace {

constexpr float hullClearance = 4.5F;  ///< units; the fixed points lie 5 above the decks
constexpr Vector3 patrolBox(110.0F, 70.0F, 110.0F);
constexpr float spacing = 14.0F;  ///< units between ships that have just started; a ship is 4 long

bool isClear(const Vector3& place, const std::vector<Ship>& ships)
{
    return wayOutOfHulls(place, hullClearance) == Vector3() &&
           std::none_of(ships.begin(), ships.end(), [&](const Ship& other) {
               return other.alive && place.distanceSquared(other.position) < spacing * spacing;
           });
}

/// Tries rows along the runway, that is along +z, until it ends. Each next row lies above.
Vector3 clearPlace(const Vector3& wanted, const std::vector<Ship>& ships)
{
    constexpr int rowLength = 8;
    for (int i = 0;; ++i) {
        const int row = i / rowLength;
        const int column = i % rowLength;
        const Vector3 place =
            wanted + Vector3(0.0F, spacing * static_cast<float>(row), spacing * static_cast<float>(column));
        if (isClear(place, ships)) {
            return place;
        }
    }
}

Vector3 randomPoint(const Vector3& centre, const Vector3& size, Random& random)
{
    const float x = random.between(-0.5F, 0.5F);  // one a line: the language fixes no order of arguments
    const float y = random.between(-0.5F, 0.5F);
    const float z = random.between(-0.5F, 0.5F);
    return centre + Vector3(size.x * x, size.y * y, size.z * z);
}

/// The grid's cells along x, as many as in a grid of the client, whose `pow` is not the same on every
/// machine.
int cellsAlongX(std::size_t players)
{
    const Vector3 box = General::gridBox;
    const float cube = static_cast<float>(players) / (box.y / box.x) / (box.z / box.x);
    int root = 0;
    while (static_cast<float>((root + 1) * (root + 1) * (root + 1)) <= cube) {
        ++root;
    }
    return root;
}

}  // namespace

Vector3 StartPoints::next(const Ship& ship, const std::vector<Ship>& ships, Random& random)
{
    // One draw in every mode, so that the mode changes nothing else of a match.
    Random own(random.next());
    Vector3 start = ship.team == Team::blue ? General::blueBase : General::redBase;
    if (mode == General::GRID) {
        int& slot = ship.team == Team::blue ? blueSlot : redSlot;
        slot += 2;
        start = General::gridCell(General::gridCentre, General::gridBox, slot, cellsAlongX(ships.size()));
    } else if (!ship.human && ship.deaths == 0) {
        start = randomPoint(fightMiddle(ship.fightsAt), patrolBox, own);
    } else if (mode == General::RANDOM) {
        start = randomPoint(start, General::teamBox, own);
    }
    return clearPlace(start, ships);
}

}  // namespace practice
