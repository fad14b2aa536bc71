#pragma once

#include "server/match/Match.h"

#include <functional>
#include <limits>
#include <vector>

namespace practice {

// Scripted human pilots, for measuring what players meet. Nothing here is part of a match's rules.

/// What a pilot saw and suffered. Times are in seconds since it joined.
struct FlightRecord
{
    static constexpr float never = std::numeric_limits<float>::max();

    float enemyInView = 0.0F;  ///< how long, in the first 15 seconds, near enough to be 20 pixels long
    float firstKill = never;
    float firstDamage = never;
    std::vector<float> unseen;  ///< for each hit: the time since its shooter was in view, or never
    int kills = 0;
    int deaths = 0;
};

/// A match of 16 bots and one scripted pilot, who sees what the client's window would show.
class PilotView
{
public:
    PilotView(const Match& match_, const Ship& self_) : match(match_), self(self_) {}

    const Match& match;
    const Ship& self;
    float time = 0.0F;

    /// Whether a living enemy within the range is in the picture and no carrier hides it.
    bool shows(const Ship& ship, float range) const;
    /// The way to the nearest enemy in view; zero if there is none within the range.
    Vector3 wayToNearest(float range) const;
};

using Pilot = std::function<ShipInput(const PilotView&)>;

/// Stands for some seconds, then flies ahead and fires, and never turns.
Pilot newcomer(float waits);

/// Turns by at most 90 degrees a second towards the place where it saw the nearest enemy 250 ms ago, without
/// leading. Aims 2 degrees off, fires when it points there. Seeing nobody, it circles to the left.
Pilot averageHuman();

/// Lets the pilot fly for `duration` seconds among 16 bots. Two of three seeds let it join a match that is
/// under way. Costs some 20 ms for each second of 40 flights.
FlightRecord fly(std::uint32_t seed, Difficulty difficulty, float duration, const Pilot& pilot);

/// A match of 16 bots.
Match botMatch(const MatchSettings& settings);

}  // namespace practice
