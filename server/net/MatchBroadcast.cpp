#include "server/net/MatchBroadcast.h"

#include "network/Messages.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <utility>

namespace practice {

namespace {

/// Steps (0.15 s) for which a client must have shown a projectile before its end. The client shows the
/// explosion where it last drew the projectile, or at the origin if it never drew it.
constexpr std::uint64_t leastShownSteps = 9;

/// Far above any id that a match assigns in years.
constexpr ObjectId firstDebris = Match::firstId << 8U;

/// A dying ship bursts into debris that explodes piece by piece. Clients get the debris as projectiles.
struct Debris
{
    Vector3 offset;       ///< world units from the ship
    std::uint64_t steps;  ///< until it explodes
};
const std::array<Debris, 3> burst = {{{Vector3(0, 0, 0), leastShownSteps},
                                      {Vector3(4, 3, -2), leastShownSteps + 6},
                                      {Vector3(-3, -2, 4), leastShownSteps + 12}}};

std::uint64_t stepsIn(float seconds)
{
    return static_cast<std::uint64_t>(std::lround(seconds / Match::stepTime));
}

/// Appends a frame to the last datagram, or to a new one if it does not fit. Never splits a frame.
void pack(std::vector<std::string>& datagrams, const std::string& frame)
{
    assert(frame.size() <= MatchBroadcast::largestDatagram);
    if (datagrams.back().size() + frame.size() > MatchBroadcast::largestDatagram) {
        datagrams.emplace_back();
    }
    datagrams.back() += frame;
}

messages::ShipState stateOf(const Ship& ship, const Match& match)
{
    return {ship.id,
            ship.team == Team::blue,
            ship.position,
            ship.orientation,
            ship.health,
            ship.name,
            ship.score,
            match.teamScore(Team::red),
            match.teamScore(Team::blue),
            match.timestamp()};
}

}  // namespace

std::string welcomeFrame(const Ship& ship, std::uint16_t qport, const Match& match)
{
    return messages::welcomeFrame(stateOf(ship, match), qport);
}

std::string shipInfoFrame(const Ship& ship, const Match& match)
{
    return messages::infoFrame(stateOf(ship, match));
}

std::string shotInfoFrame(const Shot& shot, std::uint32_t timestamp)
{
    return messages::infoFrame(
        messages::ShotState{shot.id, shot.team == Team::blue, shot.position, shot.velocity, timestamp});
}

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
    const auto later = destroyAt.upper_bound(match.stepCount());
    for (auto due = destroyAt.begin(); due != later; due = destroyAt.erase(due)) {
        sink(messages::destroyFrame(due->second));
    }
}

std::vector<std::string> MatchBroadcast::takeSnapshot()
{
    std::vector<std::string> datagrams(1);
    for (const Ship& ship : match.allShips()) {
        const auto announced = announcedAt.find(ship.id);
        if (!ship.alive || (announced != announcedAt.end() && announced->second == match.stepCount())) {
            continue;
        }
        if (changed.count(ship.id) != 0) {
            announce(ship);
        } else {
            pack(datagrams,
                 messages::updateFrame(ship.id, match.timestamp(), ship.position, ship.orientation));
        }
    }
    changed.clear();
    return datagrams;
}

void MatchBroadcast::announce(const Ship& ship)
{
    announcedAt[ship.id] = match.stepCount();
    changed.erase(ship.id);
    sink(shipInfoFrame(ship, match));
}

void MatchBroadcast::shipVanished(const Ship& ship)
{
    announcedAt.erase(ship.id);
    changed.erase(ship.id);
    sink(messages::destroyFrame(ship.id));
}

void MatchBroadcast::shotEnded(const Shot& shot)
{
    const std::uint64_t shown = stepsIn(shot.age);
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
