#include "server/net/MatchBroadcast.h"

#include "network/Messages.h"
#include "server/net/DatagramPacker.h"
#include "server/net/StateFrames.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace practice {

namespace {

/// Steps (0.15 s) that a client must have shown a projectile before its end: it shows the explosion where the
/// projectile was last drawn, so one that ends in the frame of its creation would explode at the origin.
constexpr std::uint64_t leastShownSteps = 9;

/// Far above any id that a match hands out in years.
constexpr ObjectId firstDebris = Match::firstId << 8U;

/// A dying ship bursts into debris, projectiles as the clients see it, that explode one after the other.
struct Debris
{
    Vector3 offset;       ///< world units from the ship
    std::uint64_t steps;  ///< until it explodes
};
const std::array<Debris, 3> burst = {{{Vector3(0, 0, 0), leastShownSteps},
                                      {Vector3(4, 3, -2), leastShownSteps + 6},
                                      {Vector3(-3, -2, 4), leastShownSteps + 12}}};

std::uint64_t stepsSince(float seconds)
{
    return static_cast<std::uint64_t>(std::lround(seconds / Match::stepTime));
}

}  // namespace

MatchBroadcast::MatchBroadcast(const Match& match_, ReliableSink sink_)
    : match(match_), sink(std::move(sink_)), nextDebris(firstDebris)
{
}

std::vector<std::string> MatchBroadcast::introduction() const
{
    std::vector<std::string> frames;
    for (const Ship& ship : match.allShips()) {
        if (ship.alive) {
            frames.push_back(shipInfoFrame(ship, match));
        }
    }
    for (const Shot& shot : match.allShots()) {
        frames.push_back(shotInfoFrame(shot, match.timestamp()));
    }
    return frames;
}

void MatchBroadcast::afterStep()
{
    const auto later =
        std::stable_partition(dueDestroys.begin(), dueDestroys.end(),
                              [this](const DueDestroy& due) { return due.step <= match.stepCount(); });
    std::for_each(dueDestroys.begin(), later,
                  [this](const DueDestroy& due) { sink(messages::destroyFrame(due.id)); });
    dueDestroys.erase(dueDestroys.begin(), later);
}

std::vector<std::string> MatchBroadcast::takeSnapshot()
{
    DatagramPacker packer;
    for (const Ship& ship : match.allShips()) {
        if (!ship.alive || isAnnouncedNow(ship.id)) {
            continue;
        }
        if (changed.count(ship.id) != 0) {
            announce(ship);
        } else {
            packer.add(messages::updateFrame(ship.id, match.timestamp(), ship.position, ship.orientation));
        }
    }
    changed.clear();
    return packer.take();
}

void MatchBroadcast::announce(const Ship& ship)
{
    if (announcedAt != match.stepCount()) {
        announced.clear();
        announcedAt = match.stepCount();
    }
    announced.insert(ship.id);
    changed.erase(ship.id);
    sink(shipInfoFrame(ship, match));
}

bool MatchBroadcast::isAnnouncedNow(ObjectId id) const
{
    return announcedAt == match.stepCount() && announced.count(id) != 0;
}

void MatchBroadcast::destroyAfter(ObjectId id, std::uint64_t steps)
{
    dueDestroys.push_back({id, match.stepCount() + steps});
}

void MatchBroadcast::shipAppeared(const Ship& ship)
{
    announce(ship);
}

void MatchBroadcast::shipVanished(const Ship& ship)
{
    changed.erase(ship.id);
    sink(messages::destroyFrame(ship.id));
}

void MatchBroadcast::shipDataChanged(const Ship& ship)
{
    changed.insert(ship.id);
}

void MatchBroadcast::shotFired(const Shot& shot)
{
    sink(shotInfoFrame(shot, match.timestamp()));
}

void MatchBroadcast::shotEnded(const Shot& shot)
{
    const std::uint64_t shown = stepsSince(shot.age);
    if (shown >= leastShownSteps) {
        sink(messages::destroyFrame(shot.id));
    } else {
        destroyAfter(shot.id, leastShownSteps - shown);
    }
}

void MatchBroadcast::shipExploded(const Ship& ship)
{
    for (const Debris& piece : burst) {
        Shot debris;
        debris.id = nextDebris++;
        debris.team = ship.team;
        debris.position = ship.position + piece.offset;
        debris.velocity = ship.velocity;
        sink(shotInfoFrame(debris, match.timestamp()));
        destroyAfter(debris.id, piece.steps);
    }
}

}  // namespace practice
